// SPDX-License-Identifier: MIT
//
// The video formats against a list written down independently of the table.
#include "channel/videoformats.h"

#include <QSet>
#include <QtTest>

namespace {

struct Expected {
    const char *text;
    quint32 id;
    const char *width;
    const char *height;
    const char *rate;
};

// clang-format off
const Expected kExpected[] = {
    {"1080i 59.94fps (1920)",      327201309, "1920", "1080", "60000/1001"},
    {"1080i 50fps (1920)",         327201305, "1920", "1080", "50"},
    {"1080P 60fps (1920)",         595636796, "1920", "1080", "60"},
    {"1080P 59.94fps (1920)",      595636795, "1920", "1080", "60000/1001"},
    {"1080P 50fps (1920)",         595636786, "1920", "1080", "50"},
    {"1080P 30fps (1920)",         595636766, "1920", "1080", "30"},
    {"1080P 29.97fps (1920)",      595636765, "1920", "1080", "30000/1001"},
    {"1080P 25fps (1920)",         595636761, "1920", "1080", "25"},
    {"1080P 24fps (1920)",         595636760, "1920", "1080", "24"},
    {"1080P 23.98fps (1920)",      595636759, "1920", "1080", "24000/1001"},
    {"Quad HD 3840x2160 23.98fps", 641789975, "3840", "2160", "24000/1001"},
    {"Quad HD 3840x2160 24fps",    641789976, "3840", "2160", "24"},
    {"Quad HD 3840x2160 25fps",    641789977, "3840", "2160", "25"},
    {"Quad HD 3840x2160 29.97fps", 641789981, "3840", "2160", "30000/1001"},
    {"Quad HD 3840x2160 30fps",    641789982, "3840", "2160", "30"},
    {"Quad HD 3840x2160 50fps",    641790002, "3840", "2160", "50"},
    {"Quad HD 3840x2160 59.94fps", 641790011, "3840", "2160", "60000/1001"},
    {"Quad HD 3840x2160 60fps",    641790012, "3840", "2160", "60"},
    {"4K 4096x2160 23.98fps",      641794071, "4096", "2160", "24000/1001"},
    {"4K 4096x2160 24fps",         641794072, "4096", "2160", "24"},
    {"4K 4096x2160 25fps",         641794073, "4096", "2160", "25"},
    {"4K 4096x2160 29.97fps",      641794077, "4096", "2160", "30000/1001"},
    {"4K 4096x2160 30fps",         641794078, "4096", "2160", "30"},
    {"4K 4096x2160 48fps",         641794096, "4096", "2160", "48"},
    {"4K 4096x2160 50fps",         641794098, "4096", "2160", "50"},
    {"4K 4096x2160 59.94fps",      641794107, "4096", "2160", "60000/1001"},
    {"4K 4096x2160 60fps",         641794108, "4096", "2160", "60"},
};
// clang-format on

// The rate of a row as a number, from its exact text.
double rateOf(const VideoFormat &format)
{
    const QByteArrayList parts = QByteArray(format.rate).split('/');
    return parts.value(0).toDouble() / (parts.size() > 1 ? parts.value(1).toDouble() : 1);
}

} // namespace

class TestVideoFormats : public QObject {
    Q_OBJECT

private slots:
    void tableIsAsListed();
    void codesAndTextsAreUnique();
    void unknownCodes_data();
    void unknownCodes();
    void lowestByteIsTheRate();
    void interlacedGiveTheFieldRate();
    void oneFormatOf48Hertz();
};

void TestVideoFormats::tableIsAsListed()
{
    QCOMPARE(videoFormats().size(), std::size_t(27));
    const VideoFormat *format = videoFormats().begin();
    for (const Expected &row : kExpected) {
        QCOMPARE(format->text, row.text);
        QCOMPARE(format->id, row.id);
        QCOMPARE(format->width, row.width);
        QCOMPARE(format->height, row.height);
        QCOMPARE(format->rate, row.rate);
        QCOMPARE(findVideoFormat(row.id), format);
        ++format;
    }
}

void TestVideoFormats::codesAndTextsAreUnique()
{
    QSet<quint32> codes;
    QSet<QByteArray> texts;
    for (const VideoFormat &format : videoFormats()) {
        codes.insert(format.id);
        texts.insert(format.text);
    }
    QCOMPARE(codes.size(), 27);
    QCOMPARE(texts.size(), 27);
}

void TestVideoFormats::unknownCodes_data()
{
    QTest::addColumn<quint32>("id");
    QTest::newRow("0") << 0u;
    QTest::newRow("all bits") << 4294967295u;
    QTest::newRow("one off") << 327201310u;
    QTest::newRow("rate only") << 48u;
}

void TestVideoFormats::unknownCodes()
{
    QFETCH(quint32, id);
    QVERIFY(!findVideoFormat(id));
}

// For the interlaced formats the code holds the frame rate, half of the field rate.
void TestVideoFormats::lowestByteIsTheRate()
{
    for (const VideoFormat &format : videoFormats()) {
        const bool interlaced = format.id >> 28 == 1;
        QVERIFY2(interlaced || format.id >> 28 == 2, format.text);
        const double frames = interlaced ? rateOf(format) / 2 : rateOf(format);
        QVERIFY2((format.id & 0xff) == quint32(frames), format.text);
    }
}

// A session description of an interlaced format carries the field rate.
void TestVideoFormats::interlacedGiveTheFieldRate()
{
    QCOMPARE(findVideoFormat(327201309)->rate, "60000/1001");
    QCOMPARE(findVideoFormat(327201305)->rate, "50");
}

void TestVideoFormats::oneFormatOf48Hertz()
{
    int count = 0;
    for (const VideoFormat &format : videoFormats())
        count += qstrcmp(format.rate, "48") == 0 ? 1 : 0;
    QCOMPARE(count, 1);
    QCOMPARE(findVideoFormat(641794096)->rate, "48");
}

QTEST_GUILESS_MAIN(TestVideoFormats)
#include "test_videoformats.moc"
