// SPDX-License-Identifier: MIT
#include "ops/sdpcheck.h"
#include "ops/sdptexts.h"

#include <QSet>

using namespace sdptexts;

namespace {

struct Broken {
    const char *rule;
    int line; // where it is told
    const char *from, *to;
};

// clang-format off
// Each turns the faultless text into one with that trouble, on that line.
const Broken brokenTexts[] = {
    // rule               line         what was right                        what is wrong
    {"line-form",         3,           "s=Studio 1\n",                       "Studio 1\n"},
    {"line-form",         3,           "s=Studio 1\n",                       "\n"},
    {"line-form",         3,           "s=Studio 1\n",                       "s =Studio 1\n"},
    {"line-form",         3,           "s=Studio 1\n",                       "S=Studio 1\n"},
    {"line-form",         3,           "s=Studio 1",                         "s="},
    {"line-form",         3,           "s=Studio 1",                         "s= Studio 1"},
    {"unknown-type",      5,           "t=0 0\n",                            "t=0 0\nq=1\n"},
    {"version",           1,           "v=0\n",                              "v=1\n"},
    {"version",           1,           "v=0\n",                              ""},
    {"line-order",        4,           "s=Studio 1\nt=0 0\n",                "t=0 0\ns=Studio 1\n"},
    {"line-order",        VideoMap + 1,"a=rtpmap:96 raw/90000\n",            "a=rtpmap:96 raw/90000\nb=AS:1\n"},
    {"missing-line",      1,           "s=Studio 1\n",                       ""},
    {"missing-line",      1,           "t=0 0\n",                            ""},
    {"missing-line",      1,           "o=- 1 1 IN IP4 10.0.0.5\n",          ""},
    {"origin",            2,           "o=- 1 1 IN IP4 10.0.0.5",            "o=- 1 1 IN IP4"},
    {"origin",            2,           "o=- 1 1 IN IP4 10.0.0.5",            "o=- x 1 IN IP4 10.0.0.5"},
    {"origin",            2,           "o=- 1 1 IN IP4 10.0.0.5",            "o=- 1 1 IN IP5 10.0.0.5"},
    {"origin",            2,           "o=- 1 1 IN IP4 10.0.0.5",            "o=- 1 1 IN IP4 239.0.0.5"},
    {"media-line",        Video,       "m=video 20000 RTP/AVP 96",           "m=video 20000 RTP/AVP"},
    {"media-line",        Video,       "m=video 20000 RTP/AVP 96",           "m=video 65536 RTP/AVP 96"},
    {"media-line",        Video,       "m=video 20000 RTP/AVP 96",           "m=video  20000 RTP/AVP 96"},
    {"port-zero",         Video,       "m=video 20000",                      "m=video 0"},
    {"port-odd",          Video,       "m=video 20000",                      "m=video 20001"},
    {"protocol",          Audio,       "20010 RTP/AVP",                      "20010 RTP/SAVP"},
    {"payload-type",      Video,       "RTP/AVP 96",                         "RTP/AVP 33"},
    {"payload-type",      Video,       "RTP/AVP 96",                         "RTP/AVP 128"},
    {"rtpmap",            Audio,       "a=rtpmap:97 L24/48000/8\n",          ""},
    {"rtpmap",            AudioMap,    "rtpmap:97 L24/48000/8",              "rtpmap:97 L24"},
    {"rtpmap",            AudioMap,    "rtpmap:97 ",                         "rtpmap:98 "},
    {"connection",        Anc,         "c=IN IP4 239.1.1.3/64\n",            ""},
    {"connection",        AncGroup,    "c=IN IP4 239.1.1.3/64",              "c=IN 239.1.1.3/64"},
    {"connection",        AncGroup,    "c=IN IP4 239.1.1.3/64",              "c=IN IP4 239.1.1/64"},
    {"ttl",               VideoGroup,  "239.1.1.1/64",                       "239.1.1.1"},
    {"ttl",               VideoGroup,  "239.1.1.1/64",                       "239.1.1.1/256"},
    {"ttl-unicast",       AncGroup,    "c=IN IP4 239.1.1.3/64",              "c=IN IP4 10.1.1.3/64"},
    {"several-groups",    AncGroup,    "239.1.1.3/64",                       "239.1.1.3/64/2"},
    {"control-group",     AncGroup,    "239.1.1.3/64",                       "224.0.0.3/64"},
    {"control-group",     AncGroup,    "239.1.1.3/64",                       "224.0.1.129/64"},
    {"ssm-source",        AncGroup,    "c=IN IP4 239.1.1.3/64\na=source-filter: incl IN IP4 239.1.1.3 10.0.0.5",
                                       "c=IN IP4 232.1.1.3/64"},
    {"filter-form",       AncFilter,   "a=source-filter: incl IN IP4 239.1.1.3", "a=source-filter:incl IN IP4 239.1.1.3"},
    {"filter-form",       AncFilter,   " incl IN IP4 239.1.1.3",             " only IN IP4 239.1.1.3"},
    {"filter-form",       AncFilter,   "IP4 239.1.1.3 10.0.0.5",             "IP4 239.1.1.3"},
    {"filter-destination", AncFilter,  "IP4 239.1.1.3 10.0.0.5",             "IP4 239.1.1.9 10.0.0.5"},
    {"filter-source",     AncFilter,   "IP4 239.1.1.3 10.0.0.5",             "IP4 239.1.1.3 239.0.0.5"},
    {"filter-source",     AncFilter,   "IP4 239.1.1.3 10.0.0.5",             "IP4 239.1.1.3 0.0.0.0"},
    {"video-word",        Video,       "m=video 20000",                      "m=data 20000"},
    {"clock-rate",        VideoMap,    "raw/90000",                          "raw/48000"},
    {"clock-rate",        AncMap,      "smpte291/90000",                     "smpte291/48000"},
    {"fmtp-form",         VideoFormat, "width=1920",                         "width="},
    {"fmtp-form",         VideoFormat, "width=1920",                         "width=1920; width=1920"},
    {"fmtp-form",         VideoFormat, "a=fmtp:96 ",                         "a=fmtp:100 "},
    {"video-parameters",  VideoFormat, "depth=10; ",                         ""},
    {"video-parameters",  VideoFormat, "SSN=ST2110-20:2017; ",               ""},
    {"video-sender-type", VideoFormat, "TP=2110TPN; ",                       ""},
    {"video-values",      VideoFormat, "TP=2110TPN;",                        "TP=TPN;"},
    {"video-values",      VideoFormat, "sampling=YCbCr-4:2:2",               "sampling=4:2:2"},
    {"video-values",      VideoFormat, "depth=10",                           "depth=9"},
    {"video-values",      VideoFormat, "colorimetry=BT709",                  "colorimetry=BT709-2"},
    {"video-values",      VideoFormat, "PM=2110GPM",                         "PM=GPM"},
    {"video-values",      VideoFormat, "SSN=ST2110-20:2017",                 "SSN=ST2110-20"},
    {"video-size",        VideoFormat, "width=1920",                         "width=0"},
    {"video-size",        VideoFormat, "height=1080",                        "height=1080i"},
    {"video-rate",        VideoFormat, "exactframerate=25",                  "exactframerate=25.0"},
    {"video-rate",        VideoFormat, "exactframerate=25",                  "exactframerate=50/2"},
    {"video-rate",        VideoFormat, "exactframerate=25",                  "exactframerate=29.97"},
    {"interlace-form",    VideoFormat, " interlace;",                        " interlace=1;"},
    {"interlace-form",    VideoFormat, " interlace;",                        " interlaced;"},
    {"interlace-form",    VideoFormat, " interlace;",                        " segmented;"},
    {"interlace-rate",    VideoFormat, "exactframerate=25",                  "exactframerate=50"},
    {"interlace-rate",    VideoFormat, "exactframerate=25",                  "exactframerate=60000/1001"},
    {"interlace-likely",  VideoFormat, "height=1080; exactframerate=25; depth=10; colorimetry=BT709; PM=2110GPM; "
                                       "SSN=ST2110-20:2017; TP=2110TPN; interlace;",
                                       "height=576; exactframerate=25; depth=10; colorimetry=BT601; PM=2110GPM; "
                                       "SSN=ST2110-20:2017; TP=2110TPN;"},
    {"interlace-unsaid",  VideoFormat, "exactframerate=25; depth=10; colorimetry=BT709; PM=2110GPM; "
                                       "SSN=ST2110-20:2017; TP=2110TPN; interlace;",
                                       "exactframerate=60000/1001; depth=10; colorimetry=BT709; PM=2110GPM; "
                                       "SSN=ST2110-20:2017; TP=2110TPN;"},
    {"framerate-form",    VideoFrames, "framerate:25",                       "framerate:30000/1001"},
    {"framerate-form",    VideoFrames, "framerate:25",                       "framerate:"},
    {"framerate-differs", VideoFrames, "framerate:25",                       "framerate:50"},
    {"audio-encoding",    AudioMap,    "L24/48000/8",                        "PCMU/48000/8"},
    {"audio-rate",        AudioMap,    "L24/48000/8",                        "L24/44100/8"},
    {"ptime-missing",     Audio,       "a=ptime:1\n",                        ""},
    {"ptime-unit",        AudioTime,   "a=ptime:1\n",                        "a=ptime:125\n"},
    {"ptime-unit",        AudioTime,   "a=ptime:1\n",                        "a=ptime:1000\n"},
    {"ptime-value",       AudioTime,   "a=ptime:1\n",                        "a=ptime:20\n"},
    {"ptime-value",       AudioTime,   "a=ptime:1\n",                        "a=ptime:0\n"},
    {"audio-packet-size", AudioMap,    "L24/48000/8",                        "L24/48000/12"},
    {"audio-level",       AudioMap,    "L24/48000/8",                        "L24/48000/10"},
    {"audio-level",       AudioMap,    "L24/48000/8",                        "L24/96000/6"},
    {"audio-level-c",     AudioMap,    "L24/48000/8\na=ptime:1\n",           "L24/48000/16\na=ptime:0.125\n"},
    {"anc-word",          Anc,         "m=video 20020",                      "m=data 20020"},
    {"anc-parameters",    Anc,         "a=fmtp:98 SSN=ST2110-40:2018; exactframerate=25;\n", ""},
    {"refclk-missing",    Audio,       "a=ts-refclk:ptp=IEEE1588-2008:AC-DE-48-FF-FE-23-45-67:127\na=mediaclk:direct=0\n"
                                       "a=sendonly\nm=video 20020",
                                       "a=mediaclk:direct=0\na=sendonly\nm=video 20020"},
    {"refclk-form",       AncClock,    "localmac=AC-DE-48-23-45-67",         "localmac=AC:DE:48:23:45:67"},
    {"refclk-form",       AncClock,    "localmac=AC-DE-48-23-45-67",         "ntp=10.0.0.1"},
    {"refclk-form",       VideoClock,  "ptp=IEEE1588-2008:AC-DE-48-FF-FE-23-45-67:127", "ptp=traceable"},
    {"refclk-form",       VideoClock,  "ptp=IEEE1588-2008:AC-DE-48-FF-FE-23-45-67:127", "ptp=IEEE1588-2002:AC-DE-48-FF-FE-23-45-67:0"},
    {"refclk-form",       VideoClock,  "IEEE1588-2008:AC-DE-48-FF-FE-23-45-67:127", "IEEE1588-2008:AC-DE-48-23-45-67:127"},
    {"refclk-domain",     VideoClock,  "45-67:127",                          "45-67:128"},
    {"refclk-domain",     VideoClock,  "45-67:127",                          "45-67:"},
    {"refclk-no-domain",  VideoClock,  "45-67:127",                          "45-67"},
    {"mediaclk-missing",  Anc,         "45-67\na=mediaclk:direct=0\n",       "45-67\n"},
    {"mediaclk-form",     AncMedia,    "45-67\na=mediaclk:direct=0\n",       "45-67\na=mediaclk:IEEE1588\n"},
    {"mediaclk-offset",   VideoClock + 1, "direct=0",                        "direct=963214424"},
    {"mid-twice",         Second + 8,  "mid:blue",                           "mid:red"},
    {"leg-missing",       5,           "group:DUP red blue",                 "group:DUP red green"},
    {"leg-missing",       5,           "group:DUP red blue",                 "group:DUP red"},
    {"legs-alike",        Second,      "c=IN IP4 239.2.1.1/64\na=source-filter: incl IN IP4 239.2.1.1 10.1.0.5",
                                       "c=IN IP4 239.1.1.1/64\na=source-filter: incl IN IP4 239.1.1.1 10.0.0.5"},
    {"legs-share",        Second,      "239.2.1.1 10.1.0.5",                 "239.2.1.1 10.0.0.5"},
    {"legs-share",        Second,      "c=IN IP4 239.2.1.1/64\na=source-filter: incl IN IP4 239.2.1.1 10.1.0.5",
                                       "c=IN IP4 239.1.1.1/64\na=source-filter: incl IN IP4 239.1.1.1 10.1.0.5"},
    {"legs-differ",       Second,      "TP=2110TPN;",                        "TP=2110TPW;"},
    {"stream-twice",      Anc,         "m=video 20020 RTP/AVP 98\nc=IN IP4 239.1.1.3/64",
                                       "m=video 20010 RTP/AVP 98\nc=IN IP4 239.1.1.2/64"},
};

// What comes near to a trouble and is none: the rule must not tell it, whatever others say.
const Broken narrowTexts[] = {
    {"line-form",         0,           "s=Studio 1",                         "s=-"},
    {"line-form",         0,           "s=Studio 1",                         "s=Studio = 1"},
    {"unknown-type",      0,           "t=0 0\n",                            "t=0 0\nk=prompt\n"},
    {"version",           0,           "s=Studio 1",                         "s=v=1"},
    {"line-order",        0,           "t=0 0\n",                            "b=AS:1\nt=0 0\n"},
    {"missing-line",      0,           "a=group:DUP red blue\n",             ""},
    {"origin",            0,           "o=- 1 1 IN IP4 10.0.0.5",            "o=- 0 18446744073709551615 IN IP6 ::1"},
    {"media-line",        0,           "m=video 20000 RTP/AVP 96",           "m=video 20000/2 RTP/AVP 96 97"},
    {"media-line",        0,           "m=video 20000 RTP/AVP 96",           "m=video 65535 RTP/AVP 96"},
    {"port-zero",         0,           "m=video 20000",                      "m=video 2"},
    {"port-odd",          0,           "m=video 20000",                      "m=video 0"},
    {"payload-type",      0,           "RTP/AVP 96",                         "RTP/AVP 127"},
    {"rtpmap",            0,           "rtpmap:97 L24/48000/8",              "rtpmap:97 l24/48000/8"},
    {"connection",        0,           "c=IN IP4 239.1.1.3/64",              "c=IN IP6 ff02::1"},
    {"connection",        0,           "t=0 0\n",                            "c=IN IP4 239.1.1.9/64\nt=0 0\n"},
    {"ttl",               0,           "239.1.1.1/64",                       "239.1.1.1/255"},
    {"ttl",               0,           "239.1.1.1/64",                       "239.1.1.1/0"},
    {"ttl-unicast",       0,           "c=IN IP4 239.1.1.3/64",              "c=IN IP4 10.1.1.3"},
    {"several-groups",    0,           "c=IN IP4 239.1.1.3/64",              "c=IN IP4 10.1.1.3/64/2"},
    {"control-group",     0,           "239.1.1.3/64",                       "224.0.2.1/64"},
    {"ssm-source",        0,           "c=IN IP4 239.1.1.3/64",              "c=IN IP4 233.0.0.1/64"},
    {"filter-form",       0,           " incl IN IP4 239.1.1.3",             " excl IN IP4 239.1.1.3"},
    {"filter-form",       0,           "239.1.1.3 10.0.0.5",                 "239.1.1.3 10.0.0.5 10.0.0.6"},
    {"filter-destination", 0,          "IP4 239.1.1.3 10.0.0.5",             "IP4 * 10.0.0.5"},
    {"filter-source",     0,           "IP4 239.1.1.3 10.0.0.5",             "IP4 239.1.1.3 223.255.255.255"},
    {"filter-source",     0,           "IN IP4 239.1.1.3 10.0.0.5",          "IN IP6 239.1.1.3 fe80::1"},
    {"video-word",        0,           "raw/90000",                          "H264/90000"},
    {"fmtp-form",         0,           "TP=2110TPN; interlace;",             "TP=2110TPN; interlace"},
    {"fmtp-form",         0,           "SSN=ST2110-40:2018;",                "DID_SDID={0x61,0x02}; DID_SDID={0x41,0x05};"},
    {"video-parameters",  0,           "TP=2110TPN; ",                       ""},
    {"video-values",      0,           "sampling=YCbCr-4:2:2",               "sampling=ICtCp-4:4:4"},
    {"video-values",      0,           "depth=10",                           "depth=16f"},
    {"video-values",      0,           "TP=2110TPN;",                        "TP=2110TPNL;"},
    {"video-size",        0,           "width=1920",                         "width=32767"},
    {"video-size",        0,           "width=1920",                         "width=1"},
    {"video-rate",        0,           "exactframerate=25;",                 "exactframerate=30000/1001;"},
    {"interlace-rate",    0,           "exactframerate=25;",                 "exactframerate=30;"},
    {"interlace-form",    0,           "interlace;",                         "interlace; segmented;"},
    {"framerate-form",    0,           "a=framerate:25",                     "a=framerate:25.00"},
    {"framerate-differs", 0,           "a=framerate:25",                     "a=framerate:25.01"},
    {"audio-encoding",    0,           "L24/48000/8",                        "AM824/48000/8"},
    {"audio-rate",        0,           "L24/48000/8",                        "L24/96000/4"},
    {"ptime-unit",        0,           "a=ptime:1\n",                        "a=ptime:4\n"},
    {"ptime-unit",        0,           "a=ptime:1\n",                        "a=ptime:126\n"},
    {"ptime-value",       0,           "a=ptime:1\n",                        "a=ptime:0.33\n"},
    {"audio-packet-size", 0,           "L24/48000/8",                        "L24/48000/10"},
    {"audio-level",       0,           "L24/48000/8\na=ptime:1\n",           "L24/48000/64\na=ptime:0.125\n"},
    {"audio-level-c",     0,           "L24/48000/8\na=ptime:1\n",           "L24/48000/8\na=ptime:0.125\n"},
    {"refclk-form",       0,           "2008:AC-DE-48-FF-FE-23-45-67:127",   "2008:traceable"},
    {"refclk-domain",     0,           "45-67:127",                          "45-67:0"},
    {"refclk-domain",     0,           "45-67:127",                          "45-67:domain-name=studio"},
    {"refclk-no-domain",  0,           "2008:AC-DE-48-FF-FE-23-45-67:127",   "2008:traceable"},
    {"mediaclk-form",     0,           "45-67\na=mediaclk:direct=0\n",       "45-67\na=mediaclk:direct=5 rate=90000\n"},
    {"mediaclk-offset",   0,           "45-67\na=mediaclk:direct=0\n",       "45-67\na=mediaclk:direct=5\n"},
    {"leg-missing",       0,           "a=group:DUP red blue",               "a=group:LS red green"},
    {"legs-differ",       0,           "a=framerate:25",                     "a=framerate:25.00"},
    {"legs-share",        0,           "239.1.1.1 10.0.0.5",                 "239.1.1.1 10.0.0.6"},
    {"stream-twice",      0,           "m=video 20020 RTP/AVP 98\nc=IN IP4 239.1.1.3/64",
                                       "m=video 20012 RTP/AVP 98\nc=IN IP4 239.1.1.2/64"},
};
// clang-format on

QStringList told(const ops::Findings &findings)
{
    QStringList list;
    for (const ops::Finding &finding : findings)
        list << QLatin1String(finding.rule) + QLatin1Char(' ') + QString::fromUtf8(finding.place);
    return list;
}

QStringList check(const QByteArray &text, const ops::SdpFacts &facts = {})
{
    return told(ops::checkSdp({parsed(text)}, facts));
}

} // namespace

class TestSdpCheck : public QObject {
    Q_OBJECT

private slots:
    void theFaultlessTextIsAccepted();
    void eachTroubleIsToldAtItsLine_data();
    void eachTroubleIsToldAtItsLine();
    void whatIsNearIsNotTold_data();
    void whatIsNearIsNotTold();
    void everyRuleHasATextThatBreaksIt();
    void everyRuleHasANameOfItsOwn();
    void theManualNamesEveryRule();
    void rightVariantsAreAccepted_data();
    void rightVariantsAreAccepted();
    void lineEndsAndStrayBytesAreTold();
    void anEmptyTextHasNoMedia();
    void anInterlacedSignalMustSaySo();
    void theNumberOfChannelsIsComparedWithWhatIsKnown();
    void aSessionClockIsNotEnough();
    void sessionLinesHoldForTheSections();
    void oneGroupInTwoFilesIsTold();
    void aPairOfFilesOfOneSessionIsNot();
    void aSenderAndItsReceiverShareAGroup();
    void findingsComeInTheOrderOfTheLines();
    void theReasonNamesWhatStandsThere();
    void anyBytesAreTaken();
    void aLargeTextIsCheckedOnce();
};

void TestSdpCheck::theFaultlessTextIsAccepted()
{
    QCOMPARE(check(faultless()), QStringList());
}

void TestSdpCheck::eachTroubleIsToldAtItsLine_data()
{
    QTest::addColumn<int>("row");
    int row = 0;
    for (const Broken &broken : brokenTexts)
        QTest::addRow("%s: %s", broken.rule, QByteArray(broken.to).replace('\n', '|').left(60).constData())
            << row++;
}

void TestSdpCheck::eachTroubleIsToldAtItsLine()
{
    QFETCH(int, row);
    const Broken &broken = brokenTexts[row];
    const QString expected = QStringLiteral("%1 a.sdp:%2").arg(QLatin1String(broken.rule)).arg(broken.line);
    const QStringList found = check(edited(faultless(), broken.from, broken.to));
    QVERIFY2(found.contains(expected),
             qPrintable(expected + QLatin1String(" not in: ") + found.join(QLatin1String("; "))));
}

void TestSdpCheck::whatIsNearIsNotTold_data()
{
    QTest::addColumn<int>("row");
    int row = 0;
    for (const Broken &one : narrowTexts)
        QTest::addRow("%s: %s", one.rule, QByteArray(one.to).replace('\n', '|').left(60).constData())
            << row++;
}

void TestSdpCheck::whatIsNearIsNotTold()
{
    QFETCH(int, row);
    const Broken &one = narrowTexts[row];
    const QStringList found = check(edited(faultless(), one.from, one.to));
    QVERIFY2(found.filter(QRegularExpression(QLatin1Char('^') + QLatin1String(one.rule) + QLatin1Char(' ')))
                 .isEmpty(),
             qPrintable(found.join(QLatin1String("; "))));
}

void TestSdpCheck::everyRuleHasATextThatBreaksIt()
{
    // These have tests of their own.
    QSet<QByteArray> broken = {"no-media", "interlace-missing", "audio-channels", "line-ends",
                               "control-bytes"};
    for (const Broken &row : brokenTexts)
        broken << row.rule;
    for (const char *rule : ops::sdpRuleNames())
        QVERIFY2(broken.contains(rule), rule);
    QCOMPARE(broken.size(), int(ops::sdpRuleNames().size()));
}

void TestSdpCheck::everyRuleHasANameOfItsOwn()
{
    QSet<QByteArray> names;
    for (const char *rule : ops::sdpRuleNames())
        names << rule;
    QCOMPARE(names.size(), int(ops::sdpRuleNames().size()));
}

void TestSdpCheck::theManualNamesEveryRule()
{
    QFile manual(QStringLiteral(CORVEL_TEST_DATA "/../../docs/corvelctl-sdp.1"));
    QVERIFY(manual.open(QIODevice::ReadOnly));
    const QByteArray text = manual.readAll();
    for (const char *rule : ops::sdpRuleNames())
        QVERIFY2(text.contains(QByteArray(".It Li ") + rule + " Pq "), rule);
    QCOMPARE(text.count(".It Li "), int(ops::sdpRuleNames().size()));
}

void TestSdpCheck::rightVariantsAreAccepted_data()
{
    QTest::addColumn<QByteArray>("from");
    QTest::addColumn<QByteArray>("to");
    QTest::newRow("blank session name") << QByteArray("s=Studio 1") << QByteArray("s= ");
    QTest::newRow("user and host name in the origin")
        << QByteArray("o=- 1 1 IN IP4 10.0.0.5") << QByteArray("o=studio 1 2 IN IP4 host.example.org");
    QTest::newRow("traceable") << QByteArray("2008:AC-DE-48-FF-FE-23-45-67:127")
                               << QByteArray("2008:traceable");
    QTest::newRow("lower case identity")
        << QByteArray("AC-DE-48-FF-FE-23-45-67") << QByteArray("ac-de-48-ff-fe-23-45-67");
    QTest::newRow("filter for any destination") << QByteArray("IP4 239.1.1.3 10") << QByteArray("IP4 * 10");
    QTest::newRow("no filter") << QByteArray("a=source-filter: incl IN IP4 239.1.1.3 10.0.0.5\n")
                               << QByteArray();
    QTest::newRow("source specific with its source")
        << QByteArray("c=IN IP4 239.1.1.3/64\na=source-filter: incl IN IP4 239.1.1.3")
        << QByteArray("c=IN IP4 232.1.1.3/64\na=source-filter: incl IN IP4 232.1.1.3");
    QTest::newRow("one host") << QByteArray("c=IN IP4 239.1.1.3/64\na=source-filter: incl IN IP4 239.1.1.3")
                              << QByteArray("c=IN IP4 10.1.1.3\na=source-filter: incl IN IP4 10.1.1.3");
    QTest::newRow("packet time of AES67's text") << QByteArray("a=ptime:1\n") << QByteArray("a=ptime:0.12\n");
    QTest::newRow("one decimal") << QByteArray("a=ptime:1\n") << QByteArray("a=ptime:1.0\n");
    QTest::newRow("mono without a number") << QByteArray("L24/48000/8") << QByteArray("L24/48000");
    QTest::newRow("sixteen bits") << QByteArray("L24/48000/8") << QByteArray("L16/48000/8");
    QTest::newRow("extension map") << QByteArray("a=ptime:1\n")
                                   << QByteArray("a=ptime:1\na=extmap:1 urn:x\n");
    QTest::newRow("bandwidth") << QByteArray("c=IN IP4 239.1.1.3/64\n")
                               << QByteArray("c=IN IP4 239.1.1.3/64\nb=AS:100\n");
    QTest::newRow("repeated times") << QByteArray("t=0 0\n") << QByteArray("t=0 0\nr=1 1 0\nt=0 0\n");
    QTest::newRow("sender's media clock")
        << QByteArray("45-67\na=mediaclk:direct=0") << QByteArray("45-67\na=mediaclk:sender");
    QTest::newRow("other kind of group")
        << QByteArray("a=group:DUP red blue") << QByteArray("a=group:LS red blue");
}

void TestSdpCheck::rightVariantsAreAccepted()
{
    QFETCH(QByteArray, from);
    QFETCH(QByteArray, to);
    QCOMPARE(check(edited(faultless(), from, to)), QStringList());
}

void TestSdpCheck::lineEndsAndStrayBytesAreTold()
{
    const QStringList ends = {QStringLiteral("line-ends a.sdp:1")};
    QCOMPARE(check(faultless().replace("\r\n", "\n")), ends);
    QCOMPARE(check(faultless().replace(0, 5, "v=0\n")), ends);
    QCOMPARE(check(faultless().chopped(2)), ends);
    QVERIFY(!ops::hasTrouble(ops::checkSdp({parsed(faultless().chopped(2))}))); // most readers do not mind
    const QStringList bytes = {QStringLiteral("control-bytes a.sdp:3")};
    QCOMPARE(check(faultless().replace("Studio 1", "Studio\r1")), bytes);
    QCOMPARE(check(faultless().replace("Studio 1", QByteArray("Studio\0001", 8))), bytes);
}

void TestSdpCheck::anEmptyTextHasNoMedia()
{
    QVERIFY(check(QByteArray()).contains(QStringLiteral("no-media a.sdp:1")));
    QVERIFY(check("v=0\r\no=- 1 1 IN IP4 10.0.0.5\r\ns=-\r\nt=0 0\r\n")
                .contains(QStringLiteral("no-media a.sdp:1")));
}

void TestSdpCheck::anInterlacedSignalMustSaySo()
{
    ops::SdpFacts facts;
    facts.interlaced = true;
    QCOMPARE(check(faultless(), facts), QStringList());
    const QByteArray silent = faultless().replace(" interlace;", "");
    QCOMPARE(check(silent, facts), QStringList({QStringLiteral("interlace-missing a.sdp:10"),
                                                QStringLiteral("interlace-missing a.sdp:20")}));
    QCOMPARE(check(silent), QStringList()); // 25 frames of 1080 lines may well be progressive
}

void TestSdpCheck::theNumberOfChannelsIsComparedWithWhatIsKnown()
{
    ops::SdpFacts facts;
    facts.channels = 8;
    QCOMPARE(check(faultless(), facts), QStringList());
    QCOMPARE(check(edited(faultless(), "L24/48000/8", "L24/48000/1"), facts),
             QStringList({QStringLiteral("audio-channels a.sdp:29")}));
    facts.channels = 16; // 2304 bytes
    QVERIFY(check(faultless(), facts).contains(QStringLiteral("audio-packet-size a.sdp:29")));
}

void TestSdpCheck::aSessionClockIsNotEnough()
{
    QByteArray text = edited(faultless(), "t=0 0\n", "t=0 0\na=ts-refclk:localmac=AC-DE-48-23-45-67\n");
    QCOMPARE(check(text), QStringList());
    text = edited(text, "a=ts-refclk:ptp=IEEE1588-2008:AC-DE-48-FF-FE-23-45-67:127\n", "");
    const ops::Findings found = ops::checkSdp({parsed(text)});
    QCOMPARE(told(found), QStringList({QStringLiteral("refclk-missing a.sdp:7")}));
    QVERIFY(found.front().reason.contains("session only"));
}

void TestSdpCheck::sessionLinesHoldForTheSections()
{
    QByteArray text = edited(faultless(), "t=0 0\n", "c=IN IP4 239.1.1.9/64\nt=0 0\n");
    text = edited(text, "c=IN IP4 239.1.1.3/64\na=source-filter: incl IN IP4 239.1.1.3 10.0.0.5\n", "");
    QCOMPARE(check(text), QStringList());
    QVERIFY(check(edited(text, "239.1.1.9/64", "239.1.1.9")).contains(QStringLiteral("ttl a.sdp:4")));
}

void TestSdpCheck::oneGroupInTwoFilesIsTold()
{
    QByteArray other = edited(faultless(), "o=- 1 1", "o=- 2 1");
    const QStringList found = told(ops::checkSdp({parsed(faultless()), parsed(other, "b.sdp")}));
    QCOMPARE(found,
             QStringList({QStringLiteral("stream-twice b.sdp:6"), QStringLiteral("stream-twice b.sdp:16"),
                          QStringLiteral("stream-twice b.sdp:26"), QStringLiteral("stream-twice b.sdp:34")}));
    other.replace(" 20000 ", " 20002 ").replace("239.1.1.2", "239.1.1.12").replace("239.1.1.3", "239.1.1.13");
    QCOMPARE(told(ops::checkSdp({parsed(faultless()), parsed(other, "b.sdp")})), QStringList());
}

void TestSdpCheck::aPairOfFilesOfOneSessionIsNot()
{
    QCOMPARE(told(ops::checkSdp({parsed(faultless(), "x.rx.sdp"), parsed(faultless(), "x.tx.sdp")})),
             QStringList());
}

void TestSdpCheck::aSenderAndItsReceiverShareAGroup()
{
    const QByteArray receiver = edited(faultless(), "o=- 1 1", "o=- 2 1").replace("a=sendonly", "a=recvonly");
    QCOMPARE(told(ops::checkSdp({parsed(faultless()), parsed(receiver, "b.sdp")})), QStringList());
}

void TestSdpCheck::findingsComeInTheOrderOfTheLines()
{
    QByteArray text = edited(faultless(), "a=ptime:1\n", "a=ptime:125\n");
    text = edited(text, "239.1.1.1/64", "239.1.1.1");
    text = edited(text, "v=0", "v=1");
    QCOMPARE(check(text), QStringList({QStringLiteral("version a.sdp:1"), QStringLiteral("ttl a.sdp:7"),
                                       QStringLiteral("ptime-unit a.sdp:30")}));
}

void TestSdpCheck::theReasonNamesWhatStandsThere()
{
    const ops::Findings found = ops::checkSdp({parsed(edited(faultless(), "a=ptime:1\n", "a=ptime:125\n"))});
    QCOMPARE(ops::findingsText(found),
             QByteArray(
                 "a.sdp:30: error: ptime 125 means 125 ms; ST 2110-30 wants 0.125 [ptime-unit, RFC 4566 6]\n"
                 "    write \"a=ptime:0.125\"\n"));
}

void TestSdpCheck::anyBytesAreTaken()
{
    QByteArray all;
    for (int byte = 0; byte < 256; ++byte)
        all += char(byte);
    for (const QByteArray &text :
         {all, QByteArray("m="), QByteArray("m=\na=\nc="), QByteArray("\r\r\n\n"), QByteArray(100, '\0'),
          QByteArray("a=group:DUP\nm=video 1 RTP/AVP 1\na=fmtp:\na=rtpmap:\na=ts-refclk\na=mid\n")})
        QVERIFY(!check(text).isEmpty());
}

// Half a million lines of one stream: a rule that compares each with all would not come back.
void TestSdpCheck::aLargeTextIsCheckedOnce()
{
    QByteArray text = faultless();
    const QByteArray section =
        text.mid(text.indexOf("m=audio"), text.lastIndexOf("m=video") - text.indexOf("m=audio"));
    for (int copy = 0; copy < 5000; ++copy)
        text += section;
    const QStringList found = check(text);
    QCOMPARE(found.filter(QStringLiteral("stream-twice")).size(), 5000);
}

QTEST_GUILESS_MAIN(TestSdpCheck)
#include "test_sdpcheck.moc"
