// SPDX-License-Identifier: MIT
#include "ops/streamrate.h"

#include <QtTest>

class TestStreamRate : public QObject {
    Q_OBJECT

private slots:
    void videoOfEveryFormat_data();
    void videoOfEveryFormat();
    void everyFormatHasARow();
    void interlacedIsToldByTheCode();
    void twoFieldsAreOnePicture();
    void audioPackets_data();
    void audioPackets();
    void audioRates_data();
    void audioRates();
};

namespace {

// Worked out apart from the program: width x height x 20 bits x pictures, and 86 bytes around each 1400.
// clang-format off
const struct {
    const char *text;
    qint64 kbit;
    bool interlaced;
} kRates[] = {
    {"1080i 59.94fps (1920)",      1319267, true},
    {"1080i 50fps (1920)",         1100489, true},
    {"1080P 60fps (1920)",         2641173, false},
    {"1080P 59.94fps (1920)",      2638535, false},
    {"1080P 50fps (1920)",         2200978, false},
    {"1080P 30fps (1920)",         1320586, false},
    {"1080P 29.97fps (1920)",      1319267, false},
    {"1080P 25fps (1920)",         1100489, false},
    {"1080P 24fps (1920)",         1056469, false},
    {"1080P 23.98fps (1920)",      1055414, false},
};
// clang-format on

const VideoFormat &format(const char *text)
{
    for (const VideoFormat &one : videoFormats()) {
        if (qstrcmp(one.text, text) == 0)
            return one;
    }
    qFatal("no format %s", text);
}

// The picture rate as a text of the table has it: "60000/1001".
double pictures(const VideoFormat &format, bool interlaced)
{
    const QList<QByteArray> parts = QByteArray(format.rate).split('/');
    const double rate = parts[0].toDouble() / (parts.size() > 1 ? parts[1].toDouble() : 1);
    return interlaced ? rate / 2 : rate;
}

} // namespace

void TestStreamRate::videoOfEveryFormat_data()
{
    QTest::addColumn<QByteArray>("text");
    for (const VideoFormat &one : videoFormats())
        QTest::newRow(one.text) << QByteArray(one.text);
}

void TestStreamRate::videoOfEveryFormat()
{
    QFETCH(QByteArray, text);
    const VideoFormat &one = format(text.constData());
    const bool interlaced = text.contains("1080i");
    QCOMPARE(ops::isInterlaced(one), interlaced);
    const double samples = QByteArray(one.width).toDouble() * QByteArray(one.height).toDouble();
    const double bits = samples * 20 * pictures(one, interlaced) * 1486 / 1400;
    QVERIFY(qAbs(double(ops::videoBitRate(one)) - bits) < 2);
}

void TestStreamRate::everyFormatHasARow()
{
    QCOMPARE(int(videoFormats().size()), 27);
    for (const auto &row : kRates)
        QVERIFY2(qAbs(ops::videoBitRate(format(row.text)) / 1000 - row.kbit) <= row.kbit / 2000, row.text);
}

void TestStreamRate::interlacedIsToldByTheCode()
{
    VideoFormat made = format("1080P 25fps (1920)");
    made.id = 0x1380b219;
    QVERIFY(ops::isInterlaced(made));
    made.id = 0x2380b219;
    QVERIFY(!ops::isInterlaced(made));
}

void TestStreamRate::twoFieldsAreOnePicture()
{
    QCOMPARE(ops::videoBitRate(format("1080i 50fps (1920)")),
             ops::videoBitRate(format("1080P 25fps (1920)")));
    QCOMPARE(ops::videoBitRate(format("1080i 59.94fps (1920)")),
             ops::videoBitRate(format("1080P 29.97fps (1920)")));
    VideoFormat unknown = format("1080P 25fps (1920)");
    unknown.rate = "";
    QCOMPARE(ops::videoBitRate(unknown), 0LL);
}

void TestStreamRate::audioPackets_data()
{
    QTest::addColumn<int>("channels");
    QTest::addColumn<int>("microseconds");
    QTest::addColumn<int>("bytes");
    const auto row = [](int channels, int microseconds, int bytes) {
        QTest::addRow("%d channels, %d us", channels, microseconds) << channels << microseconds << bytes;
    };
    row(1, 1000, 144); // 48 samples of 3 bytes
    row(2, 1000, 288);
    row(8, 1000, 1152);
    row(10, 1000, 1440); // the most
    row(11, 1000, 1584); // one too many
    row(1, 125, 18);     // 6 samples
    row(8, 125, 144);
    row(64, 125, 1152);
    row(80, 125, 1440);
    row(81, 125, 1458);
    row(8, 333, 384); // 16 samples
    row(8, 250, 288);
    row(2, 4000, 1152);
    row(0, 1000, 0);
    row(8, 0, 0);
}

void TestStreamRate::audioPackets()
{
    QFETCH(int, channels);
    QFETCH(int, microseconds);
    QFETCH(int, bytes);
    QCOMPARE(ops::audioPacketBytes(channels, microseconds), bytes);
    QCOMPARE(bytes > ops::kMostAudioBytes, channels * microseconds > 10000);
}

void TestStreamRate::audioRates_data()
{
    QTest::addColumn<int>("channels");
    QTest::addColumn<int>("microseconds");
    QTest::addColumn<qint64>("bits");
    const auto row = [](int channels, int microseconds, qint64 bits) {
        QTest::addRow("%d channels, %d us", channels, microseconds) << channels << microseconds << bits;
    };
    row(8, 1000, 9840000);  // (1152 + 78) x 8 x 1000
    row(8, 125, 14208000);  // (144 + 78) x 8 x 8000
    row(2, 1000, 2928000);  // (288 + 78) x 8 x 1000
    row(64, 125, 78720000); // (1152 + 78) x 8 x 8000
    row(16, 125, 23424000); // (288 + 78) x 8 x 8000
    row(8, 0, 9216000);     // the samples alone where no packet time is set
    row(0, 1000, 624000);   // an empty packet has its frame all the same
    row(0, 0, 0);
    row(8, -5, 9216000);
}

void TestStreamRate::audioRates()
{
    QFETCH(int, channels);
    QFETCH(int, microseconds);
    QFETCH(qint64, bits);
    QCOMPARE(ops::audioBitRate(channels, microseconds), bits);
}

QTEST_APPLESS_MAIN(TestStreamRate)
#include "test_ops_streamrate.moc"
