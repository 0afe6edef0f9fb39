// SPDX-License-Identifier: MIT
#include "files/sdpsample.h"
#include "files/sdptext.h"
#include "ops/sdpfix.h"
#include "ops/sdptexts.h"

using namespace sdptexts;

namespace {

QByteArray fixedBytes(const QByteArray &text, const ops::SdpFixOptions &options = {})
{
    return ops::sdpBytes(ops::fixSdp(parsed(text), options).text);
}

QStringList troubles(const QByteArray &text, const ops::SdpFacts &facts = {})
{
    QStringList list;
    for (const ops::Finding &finding : ops::checkSdp({parsed(text)}, facts)) {
        if (finding.severity != ops::Severity::Note)
            list << QLatin1String(finding.rule);
    }
    return list;
}

struct Repair {
    const char *name;
    const char *right; // stands in the faultless text
    const char *wrong; // and is exchanged for this
    const char *fixed; // which becomes this; null: what was right
};

// clang-format off
const Repair repairs[] = {
    // name                        what was right                 what is wrong                     what it becomes
    {"ttl",                        "239.1.1.3/64",                "239.1.1.3",                      nullptr},
    {"ttl too large",              "239.1.1.3/64",                "239.1.1.3/300",                  nullptr},
    {"ttl of one host",            "c=IN IP4 239.1.1.3/64\na=source-filter: incl IN IP4 239.1.1.3",
                                   "c=IN IP4 10.1.1.3/64\na=source-filter: incl IN IP4 10.1.1.3",
                                   "c=IN IP4 10.1.1.3\na=source-filter: incl IN IP4 10.1.1.3"},
    {"ptime 125",                  "a=ptime:1\n",                 "a=ptime:125\n",                  "a=ptime:0.125\n"},
    {"ptime 1000",                 "a=ptime:1\n",                 "a=ptime:1000\n",                 nullptr},
    {"ptime 250",                  "a=ptime:1\n",                 "a=ptime:250\n",                  "a=ptime:0.25\n"},
    {"ptime 333",                  "a=ptime:1\n",                 "a=ptime:333\n",                  "a=ptime:0.333\n"},
    {"ptime 4000",                 "a=ptime:1\n",                 "a=ptime:4000\n",                 "a=ptime:4\n"},
    {"mono without a number",      "L24/48000/8",                 "L24/48000",                      "L24/48000/1"},
    {"data for ancillary data",    "m=video 20020",               "m=data 20020",                   nullptr},
    {"filter without its blank",   "a=source-filter: incl IN IP4 239.1.1.3", "a=source-filter:incl IN IP4 239.1.1.3", nullptr},
    {"filter of another group",    "IP4 239.1.1.3 10.0.0.5",      "IP4 239.1.1.9 10.0.0.5",         nullptr},
    {"filter without source",      "a=source-filter: incl IN IP4 239.1.1.3 10.0.0.5\n", "a=source-filter: incl IN IP4 239.1.1.3 \n", ""},
    {"filter with no destination", "a=source-filter: incl IN IP4 239.1.1.3 10.0.0.5\n", "a=source-filter: incl IN IP4  10.0.0.5\n", ""},
    {"field rate",                 "exactframerate=25",           "exactframerate=50",              nullptr},
    {"interlaced",                 " interlace;",                 " interlaced;",                   nullptr},
    {"interlace=1",                " interlace;",                 " interlace=1;",                  nullptr},
    {"segmented alone",            " interlace;",                 " segmented;",                    " segmented; interlace;"},
    {"rate with a point",          "exactframerate=25",           "exactframerate=25.0",            nullptr},
    {"rate not in lowest terms",   "exactframerate=25",           "exactframerate=50/2",            nullptr},
    {"no SSN",                     "SSN=ST2110-20:2017; TP=2110TPN; interlace;", "TP=2110TPN; interlace;", "TP=2110TPN; interlace; SSN=ST2110-20:2017;"},
    {"separators without blanks",  "depth=10; colorimetry=BT709; ", "depth=10;colorimetry=BT709;",   nullptr},
    {"framerate of another rate",  "a=framerate:25",              "a=framerate:50",                 nullptr},
    {"framerate empty",            "a=framerate:25",              "a=framerate:",                   nullptr},
    {"colons in an address",       "AC-DE-48-23-45-67",           "AC:DE:48:23:45:67",              nullptr},
    {"clock identity as address",  "localmac=AC-DE-48-23-45-67",  "localmac=AC-DE-48-FF-FE-23-45-67", nullptr},
    {"address as clock identity",  "2008:AC-DE-48-FF-FE-23-45-67:127", "2008:AC-DE-48-23-45-67:127", nullptr},
    {"identity without separators", "2008:AC-DE-48-FF-FE-23-45-67:127", "2008:ACDE48FFFE234567:127", nullptr},
    {"identity with points",       "2008:AC-DE-48-FF-FE-23-45-67:127", "2008:ACDE48.FFFE.234567:127", nullptr},
    {"identity with colons",       "2008:AC-DE-48-FF-FE-23-45-67:127", "2008:AC:DE:48:FF:FE:23:45:67:127", nullptr},
    {"no version of PTP",          "ptp=IEEE1588-2008:AC-DE",     "ptp=AC-DE",                      nullptr},
    {"old traceable",              "ptp=IEEE1588-2008:AC-DE-48-FF-FE-23-45-67:127", "ptp=traceable", "ptp=IEEE1588-2008:traceable"},
    {"domain left empty",          "2008:AC-DE-48-FF-FE-23-45-67:127", "2008:AC-DE-48-FF-FE-23-45-67:", "2008:AC-DE-48-FF-FE-23-45-67"},
    {"no media clock",             "45-67\na=mediaclk:direct=0\na=sendonly\n", "45-67\na=sendonly\n", "45-67\na=sendonly\na=mediaclk:direct=0\n"},
    {"no version",                 "v=0\n",                       "",                               nullptr},
    {"other version",              "v=0\n",                       "v=1\n",                          nullptr},
    {"no name",                    "s=Studio 1\n",                "",                               "s=-\n"},
    {"empty name",                 "s=Studio 1\n",                "s= \n",                          "s=-\n"},
    {"no time",                    "t=0 0\n",                     "",                               nullptr},
    {"no origin",                  "o=- 1 1 IN IP4 10.0.0.5",     "",                               "o=- 1 0 IN IP4 10.0.0.5"},
    {"origin without address",     "o=- 1 1 IN IP4 10.0.0.5",     "o=- 1 1 IN IP4 ",                nullptr},
    {"order of the session",       "s=Studio 1\nt=0 0\n",         "t=0 0\ns=Studio 1\n",            nullptr},
    {"order of a section",         "a=rtpmap:98 smpte291/90000\n", "a=rtpmap:98 smpte291/90000\nb=AS:9\n", "a=rtpmap:98 smpte291/90000\n"},
    {"empty line",                 "t=0 0\n",                     "t=0 0\n\n",                      nullptr},
    {"stray line",                 "t=0 0\n",                     "hello\nt=0 0\n",                 nullptr},
    {"unknown type",               "t=0 0\n",                     "t=0 0\nq=1\n",                   nullptr},
    {"blank behind the equals",    "t=0 0\n",                     "t= 0 0\n",                       nullptr},
    {"blank at the end",           "t=0 0\n",                     "t=0 0 \n",                       nullptr},
    {"byte order mark",            "v=0\n",                       "\xef\xbb\xbfv=0\n",              nullptr},
};
// clang-format on

} // namespace

class TestSdpFix : public QObject {
    Q_OBJECT

private slots:
    void theFaultlessTextStays();
    void eachTroubleIsPutRight_data();
    void eachTroubleIsPutRight();
    void everyChangeIsTold();
    void whatOnlyTheSenderKnowsStays_data();
    void whatOnlyTheSenderKnowsStays();
    void optionsSupplyWhatTheSenderKnows();
    void optionsDoNotOverrideTheText();
    void interlacedIsAddedWhenKnown();
    void theSessionClockIsCopied();
    void ancillaryDataTakesTheOneRateOfThePictures();
    void everyWrittenTextIsFixed_data();
    void everyWrittenTextIsFixed();
    void fixingTwiceChangesNothing_data();
    void fixingTwiceChangesNothing();
    void clockForms_data();
    void clockForms();
};

void TestSdpFix::theFaultlessTextStays()
{
    const ops::SdpFixed fixed = ops::fixSdp(parsed(faultless()));
    QCOMPARE(ops::sdpBytes(fixed.text), faultless());
    QVERIFY(fixed.changes.empty());
    QVERIFY(!fixed.lineEnds);
    QCOMPARE(ops::sdpChangesText(fixed), QByteArray());
}

void TestSdpFix::eachTroubleIsPutRight_data()
{
    QTest::addColumn<int>("row");
    int row = 0;
    for (const Repair &repair : repairs)
        QTest::newRow(repair.name) << row++;
}

void TestSdpFix::eachTroubleIsPutRight()
{
    QFETCH(int, row);
    const Repair &repair = repairs[row];
    const QByteArray wrong = edited(faultless(), repair.right, repair.wrong);
    QByteArray right = repair.fixed ? edited(faultless(), repair.right, repair.fixed) : faultless();
    if (qstrcmp(repair.name, "order of a section") == 0)
        right = edited(right, "c=IN IP4 239.1.1.3/64\n", "c=IN IP4 239.1.1.3/64\nb=AS:9\n");
    const QByteArray fixed = fixedBytes(wrong);
    QCOMPARE(fixed, right);
    QCOMPARE(fixedBytes(fixed), fixed);
    QVERIFY(!ops::fixSdp(parsed(wrong)).changes.empty());
}

void TestSdpFix::everyChangeIsTold()
{
    QByteArray text = edited(faultless(), "a=ptime:1\n", "a=ptime:125\n");
    text = edited(text, "a=source-filter: incl IN IP4 239.1.1.3 10.0.0.5\n",
                  "a=source-filter: incl IN IP4 239.1.1.3\n");
    text = edited(text, "a=fmtp:98 SSN=ST2110-40:2018; exactframerate=25;\n", "");
    text = edited(text, "s=Studio 1\nt=0 0\n", "t=0 0\ns=Studio 1\n");
    const ops::SdpFixed fixed = ops::fixSdp(parsed(text.replace("\r\n", "\n")));
    QCOMPARE(ops::sdpChangesText(fixed),
             QByteArray("a.sdp: every line ends in CR LF\n"
                        "a.sdp:4: moved to its place: s=Studio 1\n"
                        "a.sdp:36: removed a=source-filter: incl IN IP4 239.1.1.3\n"
                        "a.sdp:30: a=ptime:125 -> a=ptime:0.125\n"
                        "a.sdp:40: added a=fmtp:98 SSN=ST2110-40:2018; exactframerate=25;\n"));
}

void TestSdpFix::whatOnlyTheSenderKnowsStays_data()
{
    QTest::addColumn<QByteArray>("from");
    QTest::addColumn<QByteArray>("to");
    QTest::addColumn<QString>("left");
    const auto row = [](const char *name, const char *from, const char *to, const char *left) {
        QTest::newRow(name) << QByteArray(from) << QByteArray(to) << QString::fromLatin1(left);
    };
    row("no packet time", "a=ptime:1\n", "", "ptime-missing");
    row("packet time 0", "a=ptime:1\n", "a=ptime:0\n", "ptime-value");
    row("no depth", "depth=10; ", "", "video-parameters");
    row("no sender type", "TP=2110TPN; ", "", "video-sender-type");
    row("odd port", "m=audio 20010", "m=audio 20011", "port-odd");
    row("control group", "239.1.1.2", "224.0.1.2", "control-group");
    row("no connection", "c=IN IP4 239.1.1.3/64\n", "", "connection");
    row("clock of neither kind", "localmac=AC-DE-48-23-45-67", "ntp=10.0.0.1", "refclk-form");
    row("domain out of range", "45-67:127", "45-67:200", "refclk-domain");
    row("a leg missing", "DUP red blue", "DUP red green", "leg-missing");
}

void TestSdpFix::whatOnlyTheSenderKnowsStays()
{
    QFETCH(QByteArray, from);
    QFETCH(QByteArray, to);
    QFETCH(QString, left);
    const QByteArray wrong = edited(faultless(), from, to);
    QVERIFY(troubles(wrong).contains(left));
    QVERIFY(troubles(fixedBytes(wrong)).contains(left));
}

void TestSdpFix::optionsSupplyWhatTheSenderKnows()
{
    QByteArray text = edited(faultless(), "a=ptime:1\n", "").replace("TP=2110TPN; ", "");
    text.replace("a=ts-refclk:ptp=IEEE1588-2008:AC-DE-48-FF-FE-23-45-67:127\r\n", "").replace("/64", "");
    ops::SdpFixOptions options;
    options.timeToLive = 16;
    options.ptp = "acde48234567:5";
    options.packetTime = "0.125";
    options.senderType = "2110TPW";
    options.facts.channels = 4;
    const QByteArray fixed = fixedBytes(text, options);
    QCOMPARE(troubles(fixed, options.facts), QStringList());
    QCOMPARE(fixed.count("/16\r\n"), 4);
    QCOMPARE(fixed.count("a=ts-refclk:ptp=IEEE1588-2008:ac-de-48-FF-FE-23-45-67:5\r\n"), 3);
    QCOMPARE(fixed.count("a=ptime:0.125\r\n"), 1);
    QCOMPARE(fixed.count(" TP=2110TPW;"), 2);
    QVERIFY(fixed.contains("a=rtpmap:97 L24/48000/4\r\n"));
    options.ptp.clear();
    options.localMac = "AC-DE-48-23-45-67";
    QCOMPARE(fixedBytes(text, options).count("a=ts-refclk:localmac=AC-DE-48-23-45-67\r\n"), 4);
}

void TestSdpFix::optionsDoNotOverrideTheText()
{
    ops::SdpFixOptions options;
    options.timeToLive = 16;
    options.ptp = "traceable";
    options.packetTime = "4";
    options.senderType = "2110TPW";
    QCOMPARE(fixedBytes(faultless(), options), faultless());
}

void TestSdpFix::interlacedIsAddedWhenKnown()
{
    ops::SdpFixOptions options;
    options.facts.interlaced = true;
    QByteArray written = faultless().replace(" interlace;", "");
    written.replace("exactframerate=25; depth", "exactframerate=60000/1001; depth")
        .replace("framerate:25", "framerate:60000/1001");
    const QByteArray fixed = fixedBytes(written, options);
    QCOMPARE(fixed.count(" exactframerate=30000/1001; depth"), 2);
    QCOMPARE(fixed.count(" interlace;"), 2);
    QCOMPARE(fixed.count("a=framerate:29.97\r\n"), 2);
    QCOMPARE(fixedBytes(fixed, options), fixed);
    QVERIFY(!fixedBytes(written).contains("interlace"));
}

void TestSdpFix::theSessionClockIsCopied()
{
    QByteArray text = edited(faultless(), "t=0 0\n",
                             "t=0 0\na=ts-refclk:localmac=AC:DE:48:23:45:67\na=mediaclk:direct=7\n");
    text.replace("a=ts-refclk:ptp=IEEE1588-2008:AC-DE-48-FF-FE-23-45-67:127\r\na=mediaclk:direct=0\r\n", "");
    const QByteArray fixed = fixedBytes(text);
    QCOMPARE(fixed.count("a=ts-refclk:localmac=AC-DE-48-23-45-67\r\n"), 4);
    QCOMPARE(fixed.count("a=mediaclk:direct=7\r\n"), 4);
}

void TestSdpFix::ancillaryDataTakesTheOneRateOfThePictures()
{
    const QByteArray bare = edited(faultless(), "a=fmtp:98 SSN=ST2110-40:2018; exactframerate=25;\n", "");
    QVERIFY(fixedBytes(bare).contains("a=fmtp:98 SSN=ST2110-40:2018; exactframerate=25;\r\n"));
    const QByteArray two = edited(bare, "exactframerate=25", "exactframerate=24");
    QVERIFY(fixedBytes(two).contains("a=fmtp:98 SSN=ST2110-40:2018;\r\n"));
    const QByteArray given =
        edited(faultless(), "SSN=ST2110-40:2018; exactframerate=25;", "DID_SDID={0x61,0x02};VPID_Code=133");
    QVERIFY(fixedBytes(given).contains(
        "a=fmtp:98 DID_SDID={0x61,0x02}; VPID_Code=133; SSN=ST2110-40:2018; exactframerate=25;\r\n"));
}

void TestSdpFix::everyWrittenTextIsFixed_data()
{
    QTest::addColumn<int>("kind");
    for (int kind = 0; kind < sdpsample::kinds().size(); ++kind)
        QTest::newRow(sdpsample::kinds().at(kind).name) << kind;
}

// What the dialog's reader takes from the fixed text is what it takes from the written one.
void TestSdpFix::everyWrittenTextIsFixed()
{
    QFETCH(int, kind);
    for (int boxes = 0; boxes < 16; ++boxes) {
        for (sdpsample::Clock clock : {sdpsample::NoClock, sdpsample::Ptp, sdpsample::LocalMac}) {
            const QByteArray text =
                sdpsample::kinds().at(kind).write(sdpsample::input(3, boxes, clock)).toLatin1();
            ops::SdpFixOptions options;
            options.ptp = "AC-DE-48-FF-FE-23-45-67:127";
            const QByteArray fixed = fixedBytes(text, options);
            QCOMPARE(troubles(fixed).filter(QRegularExpression(QStringLiteral("^(?!port-odd)"))),
                     QStringList());
            QCOMPARE(storedValues(readSdpText(fixed)), storedValues(readSdpText(text)));
            QVERIFY(ops::fixSdp(parsed(fixed), options).changes.empty());
        }
    }
}

void TestSdpFix::fixingTwiceChangesNothing_data()
{
    QTest::addColumn<QByteArray>("text");
    QTest::newRow("empty") << QByteArray();
    QTest::newRow("a media line behind a stray byte") << QByteArray("v=0\n\0m=video 2 RTP/AVP 96\n", 26);
    QTest::newRow("a media line behind a byte order mark") << QByteArray("\xef\xbb\xbfm=video 2 RTP/AVP 96");
    QTest::newRow("nothing but types") << QByteArray("m=\na=\nc=\nv=\no=\n");
    QTest::newRow("session behind media") << QByteArray("m=audio 2 RTP/AVP 97\nv=0\ns=x\no=1\nt=0\n");
    QTest::newRow("a session line behind media lines")
        << QByteArray("m=audio 2 RTP/AVP 97\nv=0\nm=audio 4 RTP/AVP 97\nt=0 0\na=ptime:1\n");
    QTest::newRow("two versions") << QByteArray("v=0\nv=1\n");
    QTest::newRow("attributes without values")
        << QByteArray("m=audio 2 RTP/AVP "
                      "97\na=ptime\na=fmtp\na=rtpmap\na=mid\na=ts-refclk\na=framerate\na=source-filter\n");
    QTest::newRow("ancillary data without words")
        << QByteArray("m=data 2 RTP/AVP 97\na=rtpmap:97 smpte291/90000\na=fmtp:97\n");
    QTest::newRow("colons behind colons")
        << QByteArray("m=video 2 RTP/AVP 97\na=ts-refclk:ptp=::::\na=ts-refclk:ptp=ACDE48234567:127:\n");
    QTest::newRow("blanks") << QByteArray(
        "m=video  2  RTP/AVP 97  \na=fmtp:  97  a = b ;; c\na=source-filter:  incl  IN  IP4  *  x  y \n");
}

void TestSdpFix::fixingTwiceChangesNothing()
{
    QFETCH(QByteArray, text);
    ops::SdpFixOptions known;
    known.ptp = "traceable";
    known.packetTime = "1";
    known.senderType = "2110TPN";
    known.facts = {true, 8};
    for (const ops::SdpFixOptions &options : {ops::SdpFixOptions(), known}) {
        const QByteArray once = fixedBytes(text, options);
        const ops::SdpFixed twice = ops::fixSdp(parsed(once), options);
        QCOMPARE(ops::sdpChangesText(twice), QByteArray());
        QCOMPARE(ops::sdpBytes(twice.text), once);
    }
}

void TestSdpFix::clockForms_data()
{
    QTest::addColumn<QByteArray>("given");
    QTest::addColumn<QByteArray>("fixed");
    const auto row = [](const char *given, const char *fixed) {
        QTest::newRow(given) << QByteArray(given) << QByteArray(fixed);
    };
    row("ptp=IEEE1588-2008:AC-DE-48-FF-FE-23-45-67:127", "ptp=IEEE1588-2008:AC-DE-48-FF-FE-23-45-67:127");
    row("ptp=ACDE48234567", "ptp=IEEE1588-2008:AC-DE-48-FF-FE-23-45-67");
    row("ptp=ACDE48234567:0", "ptp=IEEE1588-2008:AC-DE-48-FF-FE-23-45-67:0");
    row("ptp=IEEE1588-2019:AC-DE-48-FF-FE-23-45-67:127", "ptp=IEEE1588-2019:AC-DE-48-FF-FE-23-45-67:127");
    row("ptp=AC-DE", "ptp=AC-DE");
    row("ptp=", "ptp=");
    row("localmac=acde.4823.4567", "localmac=ac-de-48-23-45-67");
    row("localmac=AC-DE-48-00-00-23-45-67", "localmac=AC-DE-48-00-00-23-45-67");
    row("localmac=", "localmac=");
    row("gps", "gps");
    row("", "");
}

void TestSdpFix::clockForms()
{
    QFETCH(QByteArray, given);
    QFETCH(QByteArray, fixed);
    QCOMPARE(ops::fixedClock(given), fixed);
    QCOMPARE(ops::fixedClock(fixed), fixed);
}

QTEST_GUILESS_MAIN(TestSdpFix)
#include "test_sdpfix.moc"
