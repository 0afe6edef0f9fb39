// SPDX-License-Identifier: MIT
// Every format of a channel, described as the dialog does, then corrected. The numbers that must stand in the
// end are written down here, apart from the product's table; a small reader of its own looks for them.
#include "channel/videoformats.h"
#include "ops/sdpdescribe.h"
#include "ops/sdpfix.h"
#include "ops/streamrate.h"
#include "rows.h"
#include "sentchannel.h"

class TestSdpFormats : public QObject {
    Q_OBJECT

private slots:
    void everyFormatIsListed();
    void isDescribedAndCorrected_data();
    void isDescribedAndCorrected();
    void theCheckKnowsAnInterlacedChannel_data();
    void theCheckKnowsAnInterlacedChannel();
    void audioOfEveryLayout_data();
    void audioOfEveryLayout();
    void ratesAreThoseOfTheStandard_data();
    void ratesAreThoseOfTheStandard();
};

namespace {

struct Picture {
    const char *word; // as a command takes it
    int width, height;
    const char *rate; // of frames, as the standard writes it
    bool interlaced;
    double gigabits; // 4:2:2, ten bits, without anything around: pixels * 20 * frames
};

// clang-format off
const Picture kPictures[] = {
    {"1080i59.94",         1920, 1080, "30000/1001", true,  1.2430},
    {"1080i50",            1920, 1080, "25",         true,  1.0368},
    {"1080p60",            1920, 1080, "60",         false, 2.4883},
    {"1080p59.94",         1920, 1080, "60000/1001", false, 2.4858},
    {"1080p50",            1920, 1080, "50",         false, 2.0736},
    {"1080p30",            1920, 1080, "30",         false, 1.2442},
    {"1080p29.97",         1920, 1080, "30000/1001", false, 1.2429},
    {"1080p25",            1920, 1080, "25",         false, 1.0368},
    {"1080p24",            1920, 1080, "24",         false, 0.9953},
    {"1080p23.98",         1920, 1080, "24000/1001", false, 0.9943},
    {"3840x2160p23.98",    3840, 2160, "24000/1001", false, 3.9773},
    {"3840x2160p24",       3840, 2160, "24",         false, 3.9813},
    {"3840x2160p25",       3840, 2160, "25",         false, 4.1472},
    {"3840x2160p29.97",    3840, 2160, "30000/1001", false, 4.9717},
    {"3840x2160p30",       3840, 2160, "30",         false, 4.9766},
    {"3840x2160p50",       3840, 2160, "50",         false, 8.2944},
    {"3840x2160p59.94",    3840, 2160, "60000/1001", false, 9.9433},
    {"3840x2160p60",       3840, 2160, "60",         false, 9.9533},
    {"4096x2160p23.98",    4096, 2160, "24000/1001", false, 4.2425},
    {"4096x2160p24",       4096, 2160, "24",         false, 4.2467},
    {"4096x2160p25",       4096, 2160, "25",         false, 4.4237},
    {"4096x2160p29.97",    4096, 2160, "30000/1001", false, 5.3031},
    {"4096x2160p30",       4096, 2160, "30",         false, 5.3084},
    {"4096x2160p48",       4096, 2160, "48",         false, 8.4935},
    {"4096x2160p50",       4096, 2160, "50",         false, 8.8474},
    {"4096x2160p59.94",    4096, 2160, "60000/1001", false, 10.6062},
    {"4096x2160p60",       4096, 2160, "60",         false, 10.6168},
};
// clang-format on

QByteArray described(const ops::Snapshot &values, const char *place)
{
    return ops::describeChannel(values, *ops::parsePlace(place), {true, -1, 1}).tx.toUtf8();
}

QByteArray corrected(const QByteArray &text, const ops::SdpFacts &facts)
{
    ops::SdpFixOptions options;
    options.facts = facts;
    return ops::sdpBytes(ops::fixSdp(ops::parseSdp(text, "x.sdp"), options).text);
}

QStringList troubles(const QByteArray &text, const ops::SdpFacts &facts)
{
    QStringList rules;
    for (const ops::Finding &finding : ops::checkSdp({ops::parseSdp(text, "x.sdp")}, facts)) {
        if (finding.severity != ops::Severity::Note)
            rules << QLatin1String(finding.rule);
    }
    return rules;
}

// The reader of this test: what stands behind "name=" in the first format line, or behind "a=name:".
QByteArray parameter(const QByteArray &text, const QByteArray &name)
{
    for (QByteArray line : text.split('\n')) {
        line = line.trimmed();
        if (line.startsWith("a=" + name + ':'))
            return line.mid(name.size() + 3);
        if (!line.startsWith("a=fmtp:"))
            continue;
        for (const QByteArray &part : line.mid(line.indexOf(' ') + 1).split(';')) {
            const int equals = part.indexOf('=');
            if (part.split('=').first().trimmed() == name)
                return equals < 0 ? QByteArray("set") : part.mid(equals + 1).trimmed();
        }
    }
    return QByteArray();
}

void addPictures()
{
    QTest::addColumn<int>("row");
    int row = 0;
    for (const Picture &picture : kPictures)
        QTest::newRow(picture.word) << row++;
}

const VideoFormat &formatOf(const Picture &picture)
{
    const ops::Snapshot values = channelOf({QByteArray("0 format=") + picture.word});
    const VideoFormat *format = findVideoFormat(values.rows().front().value.number);
    if (!format)
        qFatal("%s", picture.word);
    return *format;
}

} // namespace

void TestSdpFormats::everyFormatIsListed()
{
    QSet<quint32> seen;
    for (const Picture &picture : kPictures)
        seen << formatOf(picture).id;
    QCOMPARE(seen.size(), int(videoFormats().size()));
}

void TestSdpFormats::isDescribedAndCorrected_data()
{
    addPictures();
}

void TestSdpFormats::isDescribedAndCorrected()
{
    QFETCH(int, row);
    const Picture &picture = kPictures[row];
    const ops::SdpFacts facts{picture.interlaced, 0};
    const ops::Snapshot values = channelOf(sentStreams() << QByteArray("0 format=") + picture.word);
    const QByteArray text = corrected(described(values, "0/video"), facts);
    QCOMPARE(troubles(text, facts), QStringList());
    QCOMPARE(parameter(text, "width"), QByteArray::number(picture.width));
    QCOMPARE(parameter(text, "height"), QByteArray::number(picture.height));
    QCOMPARE(parameter(text, "exactframerate"), QByteArray(picture.rate));
    QCOMPARE(parameter(text, "interlace"), QByteArray(picture.interlaced ? "set" : ""));
    QCOMPARE(parameter(text, "depth"), QByteArray("10"));
    QCOMPARE(parameter(text, "ts-refclk"), QByteArray("ptp=IEEE1588-2008:AC-DE-48-FF-FE-23-45-67:127"));
    QVERIFY(text.contains("\r\nm=video 20000 RTP/AVP "));
    QVERIFY(text.contains("\r\nc=IN IP4 239.1.1.1/64\r\n"));
    QVERIFY(text.contains("\r\na=source-filter: incl IN IP4 239.1.1.1 10.0.0.5\r\n"));
    QCOMPARE(corrected(text, facts), text);
}

void TestSdpFormats::theCheckKnowsAnInterlacedChannel_data()
{
    addPictures();
}

// The text as the dialog writes it gives the rate of fields and no "interlace": only who knows the channel
// can tell.
void TestSdpFormats::theCheckKnowsAnInterlacedChannel()
{
    QFETCH(int, row);
    const Picture &picture = kPictures[row];
    const ops::Snapshot values = channelOf(sentStreams() << QByteArray("0 format=") + picture.word);
    const QByteArray text = described(values, "0/video");
    QVERIFY(!troubles(text, {}).contains(QStringLiteral("interlace-missing")));
    QCOMPARE(troubles(text, {picture.interlaced, 0}).contains(QStringLiteral("interlace-missing")),
             picture.interlaced);
}

void TestSdpFormats::audioOfEveryLayout_data()
{
    QTest::addColumn<int>("channels");
    QTest::addColumn<int>("microseconds");
    QTest::addColumn<int>("bytes"); // of a packet: samples * channels * 3
    const struct {
        int microseconds, samples;
    } times[] = {{125, 6}, {250, 12}, {333, 16}, {1000, 48}, {4000, 192}};
    for (const auto &time : times) {
        for (const int channels : {1, 2, 4, 6, 8, 10, 12, 16, 32, 64})
            QTest::addRow("%d channels, %d us", channels, time.microseconds)
                << channels << time.microseconds << time.samples * channels * 3;
    }
}

void TestSdpFormats::audioOfEveryLayout()
{
    QFETCH(int, channels);
    QFETCH(int, microseconds);
    QFETCH(int, bytes);
    QCOMPARE(ops::audioPacketBytes(channels, microseconds), bytes);
    const ops::Snapshot values =
        channelOf(sentStreams() << "0 channels=" + QByteArray::number(channels) << "0 flows=1"
                                << "0 ptime=" + QByteArray::number(microseconds));
    const ops::SdpFacts facts{false, channels};
    const QByteArray text = corrected(described(values, "0/audio"), facts);
    const QStringList left = troubles(text, facts);
    QCOMPARE(left.contains(QStringLiteral("audio-packet-size")), bytes > 1440);
    QVERIFY(!left.contains(QStringLiteral("ptime-unit")) && !left.contains(QStringLiteral("audio-channels")));
    QVERIFY2(parameter(text, "rtpmap").endsWith(" L24/48000/" + QByteArray::number(channels)),
             text.constData());
    const double milliseconds = parameter(text, "ptime").toDouble();
    QVERIFY2(std::abs(milliseconds * 1000 - microseconds) < 1, text.constData());
}

void TestSdpFormats::ratesAreThoseOfTheStandard_data()
{
    addPictures();
}

// What surrounds the packets adds some percent, never a tenth.
void TestSdpFormats::ratesAreThoseOfTheStandard()
{
    QFETCH(int, row);
    const Picture &picture = kPictures[row];
    const double gigabits = static_cast<double>(ops::videoBitRate(formatOf(picture))) / 1e9;
    QVERIFY2(gigabits > picture.gigabits * 1.04 && gigabits < picture.gigabits * 1.10,
             QByteArray::number(gigabits).constData());
    QCOMPARE(ops::isInterlaced(formatOf(picture)), picture.interlaced);
}

QTEST_GUILESS_MAIN(TestSdpFormats)
#include "test_ops_sdpformats.moc"
