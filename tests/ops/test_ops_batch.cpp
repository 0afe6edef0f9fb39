// SPDX-License-Identifier: MIT
#include "ops/batch.h"
#include "ops/jsontext.h"
#include "rows.h"

class TestBatch : public QObject {
    Q_OBJECT

private slots:
    void places_data();
    void places();
    void lines_data();
    void lines();
    void wrongLines_data();
    void wrongLines();
    void severalPlacesAndWords();
    void aWrongWordFailsTheWhole();
    void unsetOfWords_data();
    void unsetOfWords();
    void unsetOfAPlace_data();
    void unsetOfAPlace();
    void labels_data();
    void labels();
};

namespace {

constexpr ops::Rules kStrict{};
constexpr ops::Rules kForced{ops::Foreign::Allow, true};

// Channels 0 and 1 of two, each with something of every kind, and a key of a site's own.
ops::Snapshot server()
{
    ops::Snapshot values;
    values.set("KWX\\Config", "MaxIntChannels", number(2));
    for (int one = 0; one < 2; ++one) {
        values.set(channel(one), "ClockDomain", number(127));
        values.set(channel(one), "ReceiveDestinationIp", text("239.1.1.1"));
        values.set(channel(one), "ReceiveAudInterface", text("10.0.0.1"));
        values.set(channel(one), "ReceiveAudDestinationIp0", text("239.1.1.2"));
        values.set(channel(one), "TransmitAudFlags3", number(10));
        values.set(channel(one), "TransmitAncIp", text("10.0.0.2"));
        values.set(channel(one), "SiteOwn", number(5));
    }
    return values;
}

// The changes without the part of the paths that all of them share: "1 ClockDomain 127 > -".
QByteArray brief(const ops::Draft &draft)
{
    return told(draft.changes()).replace("KWX\\Internal", "").replace("\\IpConfig", "");
}

} // namespace

void TestBatch::places_data()
{
    QTest::addColumn<QByteArray>("text");
    QTest::addColumn<bool>("forced");
    QTest::addColumn<QByteArray>("wanted");
    const auto row = [](const char *text, bool forced, const char *wanted) {
        QTest::addRow("%s%s", text, forced ? " forced" : "")
            << QByteArray(text) << forced << QByteArray(wanted);
    };
    const char *const noTwo =
        "there is no channel 2: the server has 2 (\"server channels\"); --force stores it anyway";
    row("0", false, "0");
    row("0-1", false, "0 1");
    row("1,0", false, "1 0");
    row("*", false, "0 1");
    row("*/video", false, "0/video 1/video");
    row("1/audio/2-3", false, "1/audio/2 1/audio/3");
    row("server", false, "server");
    row("KWX\\Config", false, "KWX\\Config");
    row("2", false, noTwo);
    row("0-2", false, noTwo);
    row("2/video", false, noTwo);
    row("2", true, "2");
    row("0-2/anc", true, "0/anc 1/anc 2/anc");
    row("65535", true, "65535");
    row("65536", true, "\"65536\" is no channel and no range of channels such as 1-7");
}

void TestBatch::places()
{
    QFETCH(QByteArray, text);
    QFETCH(bool, forced);
    QFETCH(QByteArray, wanted);
    const auto places = ops::placesOf(text, forced ? kForced : kStrict, server());
    QByteArrayList names;
    if (places) {
        for (const ops::Place &place : *places)
            names.append(ops::placeText(place));
    }
    QCOMPARE(places ? names.join(' ') : places.failure().text, wanted);
}

void TestBatch::lines_data()
{
    QTest::addColumn<QByteArray>("text");
    QTest::addColumn<QByteArray>("wanted");
    const auto row = [](const char *name, const char *text, const char *wanted) {
        QTest::newRow(name) << QByteArray(text) << QByteArray(wanted);
    };
    row("nothing", "", "");
    row("blank lines and comments", "\n  \n# 0 domain=1\n\t# and more\n", "");
    row("one", "0 domain=1\n", "0 ClockDomain 127 > 1");
    row("no end of the last line", "0 domain=1", "0 ClockDomain 127 > 1");
    row("line ends of another system", "0 domain=1\r\n1 domain=2\r\n",
        "0 ClockDomain 127 > 1|1 ClockDomain 127 > 2");
    row("blanks around", "   0    domain=1   ", "0 ClockDomain 127 > 1");
    row("several words", "0 domain=1 gm=\n", "0 ClockDomain 127 > 1|0 ClockGrandMaster - > \"\"");
    row("quotes keep blanks", "0 \"format=1080P 50fps (1920)\"\n", "0 SignalFormat - > 595636786");
    row("quotes inside a word", "0 format=\"1080P 50fps (1920)\"\n", "0 SignalFormat - > 595636786");
    row("a later line sees an earlier one", "0 channels=4\n0 flows=2\n",
        "0 ReceiveAudChannels - > 4|0 ReceiveAudTotalChannels - > 8|0 TransmitAudChannels - > 4|0 "
        "TransmitAudTotalChannels - > 8");
    row("what is so already", "0 domain=127\n", "");
    row("there and back", "0 domain=1\n0 domain=127\n", "");
    row("all channels", "*/video rx.dst=239.9.9.9\n",
        "0 ReceiveDestinationIp \"239.1.1.1\" > \"239.9.9.9\"|1 ReceiveDestinationIp \"239.1.1.1\" > "
        "\"239.9.9.9\"");
}

void TestBatch::lines()
{
    QFETCH(QByteArray, text);
    QFETCH(QByteArray, wanted);
    const ops::Snapshot values = server();
    ops::Draft draft(values);
    const auto done = ops::setLines(text, kStrict, draft);
    QVERIFY2(done, done ? "" : done.failure().text.constData());
    QCOMPARE(brief(draft), wanted);
}

void TestBatch::wrongLines_data()
{
    QTest::addColumn<QByteArray>("text");
    QTest::addColumn<QByteArray>("says");
    const auto row = [](const char *name, const QByteArray &text, const char *says) {
        QTest::newRow(name) << text << QByteArray(says);
    };
    row("a place alone", "0\n", "line 1: a line is a place and at least one WORD=VALUE");
    row("in the third line", "0 domain=1\n\n0 domain\n", "line 3: \"domain\" is no WORD=VALUE");
    row("comments count as lines", "# one\n# two\n0 dmain=1\n",
        "line 3: 0 has no \"dmain\"; did you mean domain?");
    row("an unknown place", "nowhere domain=1\n",
        "line 1: no place \"nowhere\": a channel such as 2, 2/video, 2/audio/3, or server");
    row("a channel that is not offered", "7 domain=1\n",
        "line 1: there is no channel 7: the server has 2 (\"server channels\"); --force stores it anyway");
    row("out of range", "0 domain=128\n",
        "line 1: 0 domain: \"128\": a PTP domain is a number from 0 to 127");
    row("not UTF-8", "0 gm=\xff\n", "line 1: not UTF-8");
    row("a zero byte", QByteArray("0 domain=1\n0 gm=\0\n", 18), "line 2: a zero byte in a line of text");
    row("a key of a site's own", "0 SiteOwn=6\n", "line 1: 0 has no \"SiteOwn\"");
    row("one wrong channel of several", "0-2 domain=1\n",
        "line 1: there is no channel 2: the server has 2 (\"server channels\"); --force stores it anyway");
}

void TestBatch::wrongLines()
{
    QFETCH(QByteArray, text);
    QFETCH(QByteArray, says);
    const ops::Snapshot values = server();
    ops::Draft draft(values);
    const auto done = ops::setLines(text, kStrict, draft);
    QVERIFY(!done);
    QCOMPARE(done.failure().kind, ops::Failure::Input);
    QCOMPARE(done.failure().text, says);
}

void TestBatch::severalPlacesAndWords()
{
    const ops::Snapshot values = server();
    ops::Draft draft(values);
    QVERIFY(ops::setWords("0-1", {"domain=1", "clock=internal"}, kStrict, draft));
    QCOMPARE(brief(draft),
             QByteArray("0 ClockDomain 127 > 1|0 ClockType - > 0|1 ClockDomain 127 > 1|1 ClockType - > 0"));
    ops::Draft forced(values);
    QVERIFY(ops::setWords("5", {"SiteOwn=x", "Other:=7"}, kForced, forced));
    QCOMPARE(brief(forced), QByteArray("5 Other - > 7|5 SiteOwn - > \"x\""));
}

void TestBatch::aWrongWordFailsTheWhole()
{
    const ops::Snapshot values = server();
    ops::Draft draft(values);
    QVERIFY(!ops::setWords("0-1", {"domain=1", "domain=x"}, kStrict, draft));
    QVERIFY(!ops::setWords("", {"domain=1"}, kStrict, draft));
}

void TestBatch::unsetOfWords_data()
{
    QTest::addColumn<QByteArray>("place");
    QTest::addColumn<QByteArray>("word");
    QTest::addColumn<QByteArray>("wanted");
    const auto row = [](const char *place, const char *word, const char *wanted) {
        QTest::addRow("%s %s", place, word) << QByteArray(place) << QByteArray(word) << QByteArray(wanted);
    };
    row("0", "domain", "0 ClockDomain 127 > -");
    row("0-1", "domain", "0 ClockDomain 127 > -|1 ClockDomain 127 > -");
    row("0/video", "rx.dst", "0 ReceiveDestinationIp \"239.1.1.1\" > -");
    row("0/video", "dst", "0 ReceiveDestinationIp \"239.1.1.1\" > -"); // both sides, of which one is there
    row("0", "ReceiveDestinationIp", "0 ReceiveDestinationIp \"239.1.1.1\" > -");
    row("0/audio/3", "tx.use", "0 TransmitAudFlags3 10 > -");
    row("0/audio/3", "rx.if", "0 ReceiveAudInterface \"10.0.0.1\" > -"); // shared by all flows
    row("0", "gm", "");                                                  // not there
    row("9", "domain", "");
    row("0", "SiteOwn", "0 has no \"SiteOwn\"");
    row("0/video", "domain", "0/video has no \"domain\"");
    row("nowhere", "domain", "no place \"nowhere\": a channel such as 2, 2/video, 2/audio/3, or server");
}

void TestBatch::unsetOfWords()
{
    QFETCH(QByteArray, place);
    QFETCH(QByteArray, word);
    QFETCH(QByteArray, wanted);
    const ops::Snapshot values = server();
    ops::Draft draft(values);
    const auto done = ops::unsetWords(place, {word}, kStrict, draft);
    QCOMPARE(done ? brief(draft) : done.failure().text, wanted);
}

void TestBatch::unsetOfAPlace_data()
{
    QTest::addColumn<QByteArray>("place");
    QTest::addColumn<QByteArray>("wanted");
    const auto row = [](const char *place, const char *wanted) {
        QTest::newRow(place) << QByteArray(place) << QByteArray(wanted);
    };
    row("0/video", "0 ReceiveDestinationIp \"239.1.1.1\" > -");
    row("0/audio/3", "0 TransmitAudFlags3 10 > -");
    row("0/audio/1", "");
    row("0/audio", "0 ReceiveAudDestinationIp0 \"239.1.1.2\" > -|0 ReceiveAudInterface \"10.0.0.1\" > -|0 "
                   "TransmitAudFlags3 10 > -");
    row("0-1/anc", "0 TransmitAncIp \"10.0.0.2\" > -|1 TransmitAncIp \"10.0.0.2\" > -");
    row("1", "1 ClockDomain 127 > -|1 ReceiveAudDestinationIp0 \"239.1.1.2\" > -|1 ReceiveAudInterface "
             "\"10.0.0.1\" > -|1 ReceiveDestinationIp \"239.1.1.1\" > -|1 SiteOwn 5 > -|1 TransmitAncIp "
             "\"10.0.0.2\" > -|1 TransmitAudFlags3 10 > -");
    row("kwx\\config", "KWX\\Config MaxIntChannels 2 > -");
    row("KWX\\Nothing", "");
    row("server", "the server's values are deleted by name only");
    row("zebra", "no place \"zebra\": a channel such as 2, 2/video, 2/audio/3, or server");
}

void TestBatch::unsetOfAPlace()
{
    QFETCH(QByteArray, place);
    QFETCH(QByteArray, wanted);
    const ops::Snapshot values = server();
    ops::Draft draft(values);
    const auto done = ops::unsetPlace(place, draft);
    QCOMPARE(done ? brief(draft) : done.failure().text, wanted);
}

void TestBatch::labels_data()
{
    QTest::addColumn<QByteArrayList>("words");
    QTest::addColumn<QByteArray>("wanted");
    const QByteArray shortest(200, 'x'), long_(201, 'x');
    QTest::newRow("words") << QByteArrayList{"set", "2/video", "rx.dst=239.1.1.1"}
                           << QByteArray("set 2/video rx.dst=239.1.1.1");
    QTest::newRow("none") << QByteArrayList{} << QByteArray();
    QTest::newRow("200 bytes") << QByteArrayList{shortest} << shortest;
    QTest::newRow("201 bytes") << QByteArrayList{long_} << QByteArray(197, 'x') + "...";
    // 99 letters of two bytes and one of one: the cut falls into a letter, which then goes whole.
    const QByteArray letters = QByteArray("\xc3\x9f").repeated(99) + "abc";
    QTest::newRow("cut at a whole letter")
        << QByteArrayList{letters} << QByteArray("\xc3\x9f").repeated(98) + "...";
}

void TestBatch::labels()
{
    QFETCH(QByteArrayList, words);
    QFETCH(QByteArray, wanted);
    const QByteArray label = ops::batchLabel(words);
    QCOMPARE(label, wanted);
    QVERIFY(label.size() <= 200 && ops::isUtf8(label));
}

QTEST_APPLESS_MAIN(TestBatch)
#include "test_ops_batch.moc"
