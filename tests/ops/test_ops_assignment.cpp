// SPDX-License-Identifier: MIT
#include "ops/assignment.h"
#include "ops/batch.h"
#include "rows.h"

class TestAssignment : public QObject {
    Q_OBJECT

private slots:
    void sets_data();
    void sets();
    void refuses_data();
    void refuses();
    void selects_data();
    void selects();
    void foreignNamesStandWhereTheyMay_data();
    void foreignNamesStandWhereTheyMay();
    void theWordsOfAPlace();
    void channelsOfTheServer_data();
    void channelsOfTheServer();
    void flowsOfAChannel_data();
    void flowsOfAChannel();
    void countsKeepTheTotalsRight();
    void whatIsSoAlreadyIsNoChange();
    void foreignNamesNeedPermission();
    void channelsBeyondTheServerNeedPermission();
};

void TestAssignment::sets_data()
{
    QTest::addColumn<QByteArray>("place");
    QTest::addColumn<QByteArray>("assignment");
    QTest::addColumn<QByteArray>("changes");
    const auto row = [](const char *place, const char *assignment, const char *changes) {
        QTest::addRow("%s %s", place, assignment)
            << QByteArray(place) << QByteArray(assignment) << QByteArray(changes);
    };
    row("2/video", "rx.dst=239.20.2.1", "ReceiveDestinationIp - > \"239.20.2.1\"");
    row("2/video", "rx.dst=239.20.2.1:20000",
        "ReceiveDestinationIp - > \"239.20.2.1\"|ReceiveDestinationPort - > 20000");
    row("2/video", "tx.src=10.0.0.1:5000", "TransmitIp - > \"10.0.0.1\"|TransmitSourcePort - > 5000");
    row("2/video", "tx.dst-port=5", "TransmitRemotePort - > 5");
    row("2/video", "if=10.0.0.1", "ReceiveInterface - > \"10.0.0.1\"|TransmitInterface - > \"10.0.0.1\"");
    row("2/audio/3", "rx.dst=239.1.1.1:5",
        "ReceiveAudDestinationIp3 - > \"239.1.1.1\"|ReceiveAudDestinationPort3 - > 5");
    row("2/audio/single", "tx.use=dst", "TransmitAudFlags - > 8");
    row("2/audio/3", "rx.if=10.0.0.1", "ReceiveAudInterface - > \"10.0.0.1\"");
    row("2/anc", "tx.dst=239.1.1.1", "TransmitAncDestinationIp - > \"239.1.1.1\"");
    row("2", "ptime=125", "ReceiveAudPacketLength - > 125|TransmitAudPacketLength - > 125");
    row("2", "format=1080p50", "SignalFormat - > 595636786");
    row("2", "ReceiveDestinationIp=239.1.1.1", "ReceiveDestinationIp - > \"239.1.1.1\"");
    row("2/video", "ReceiveFlags=31", "ReceiveFlags - > 31");
}

void TestAssignment::sets()
{
    QFETCH(QByteArray, place);
    QFETCH(QByteArray, assignment);
    QFETCH(QByteArray, changes);
    const ops::Snapshot nothing;
    ops::Draft draft(nothing);
    QVERIFY(ops::assign(*ops::parsePlace(place), assignment, ops::Foreign::Refuse, draft));
    QCOMPARE(told(draft.changes()).replace(channel(2) + ' ', ""), changes);
}

void TestAssignment::refuses_data()
{
    QTest::addColumn<QByteArray>("place");
    QTest::addColumn<QByteArray>("assignment");
    QTest::addColumn<QByteArray>("says");
    const auto row = [](const char *place, const char *assignment, const char *says) {
        QTest::addRow("%s %s", place, assignment)
            << QByteArray(place) << QByteArray(assignment) << QByteArray(says);
    };
    row("2/video", "rx.dst", "\"rx.dst\" is no WORD=VALUE");
    row("2/video", "=5", "\"=5\" is no WORD=VALUE");
    row("2/video", "", "\"\" is no WORD=VALUE");
    row("2/video", "rx.dts=239.1.1.1", "2/video has no \"rx.dts\"; did you mean rx.dst?");
    row("2/video", "channels=5", "2/video has no \"channels\"");
    row("2/video", "flows=5", "2/video has no \"flows\"");
    row("2/anc", "ptime=125", "2/anc has no \"ptime\"");
    row("2/audio/3", "flows=5", "2/audio/3 has no \"flows\"");
    row("2", "RecieveDestinationIp=1.2.3.4",
        "2 has no \"RecieveDestinationIp\"; did you mean ReceiveDestinationIp?");
    row("2", "rx.dst=1.2.3.4", "2 has no \"rx.dst\": name an element, as in 2/video");
    row("2", "dst=1.2.3.4", "2 has no \"dst\"");
    row("2/audio", "rx.dst=1.2.3.4", "2/audio has no \"rx.dst\": each flow has its own, as in 2/audio/0");
    row("2/audio", "zebra=1", "2/audio has no \"zebra\"");
    row("2/video", "rx.dst=239.1.1.1:x", "2/video rx.dst-port: \"x\": a port is a number from 0 to 65535");
    row("2/video", "rx.dst=239.1.1.1:", "2/video rx.dst-port: \"\": a port is a number from 0 to 65535");
    row("2/video", "rx.dst=239.1.1.1:5:6",
        "2/video rx.dst-port: \"5:6\": a port is a number from 0 to 65535");
    row("2/video", "rx.dst=:5", "2/video rx.dst=:5: the address is missing");
    row("2/video", "rx.if=10.0.0.1:5",
        "2/video rx.if: \"10.0.0.1:5\" is no IPv4 address: four numbers from 0 to 255 with dots between");
    row("2/video", "rx.dst-port=70000", "2/video rx.dst-port: \"70000\": a port is a number from 0 to 65535");
    row("2", "channels=0", "channels=0: a number from 1 to 64");
    row("2", "channels=65", "channels: \"65\": a flow has 0 to 64 audio channels");
    row("2", "flows=0", "flows=0: a number from 1 to 8");
    row("2", "flows=9", "flows=9: a number from 1 to 8");
    row("2", "flows=two", "flows: \"two\": a flow has 0 to 64 audio channels");
    row("server", "nmos.log=perhaps", "server nmos.log: \"perhaps\": a switch is on or off");
    row("server", "channel=5", "server has no \"channel\"; did you mean channels?");
    row("server", "flows=5", "server has no \"flows\"");
    row("KWX\\Site", "Own=5", "KWX\\Site has no \"Own\"");
    QTest::newRow("a long word") << QByteArray("2") << QByteArray(100, 'x') + "=5"
                                 << "2 has no \"" + QByteArray(80, 'x') + '"';
    QTest::newRow("a long one without a value")
        << QByteArray("2") << QByteArray(100, 'x') << '"' + QByteArray(80, 'x') + "\" is no WORD=VALUE";
}

void TestAssignment::refuses()
{
    QFETCH(QByteArray, place);
    QFETCH(QByteArray, assignment);
    QFETCH(QByteArray, says);
    const ops::Snapshot nothing;
    ops::Draft draft(nothing);
    const auto done = ops::assign(*ops::parsePlace(place), assignment, ops::Foreign::Refuse, draft);
    QVERIFY(!done);
    QCOMPARE(done.failure().text, says);
    QCOMPARE(done.failure().kind, ops::Failure::Input);
}

void TestAssignment::selects_data()
{
    QTest::addColumn<QByteArray>("place");
    QTest::addColumn<QByteArray>("word");
    QTest::addColumn<QByteArray>("names"); // or what is said
    const auto row = [](const char *place, const char *word, const char *names) {
        QTest::addRow("%s %s", place, word) << QByteArray(place) << QByteArray(word) << QByteArray(names);
    };
    row("2/video", "rx.dst", "ReceiveDestinationIp");
    row("2/video", "dst", "ReceiveDestinationIp TransmitDestinationIp");
    row("2/video", "ReceiveDestinationIp", "ReceiveDestinationIp");
    row("2/audio/3", "dst", "ReceiveAudDestinationIp3 TransmitAudDestinationIp3");
    row("2/audio/3", "if", "ReceiveAudInterface TransmitAudInterface");
    row("2", "flows", "ReceiveAudTotalChannels TransmitAudTotalChannels");
    row("2/audio", "flows", "ReceiveAudTotalChannels TransmitAudTotalChannels");
    row("2", "channels", "ReceiveAudChannels TransmitAudChannels");
    row("2", "ptime", "ReceiveAudPacketLength TransmitAudPacketLength");
    row("2", "domain", "ClockDomain");
    row("2", "SiteOwn", "SiteOwn");
    row("2/video", "SiteOwn", "2/video has no \"SiteOwn\"");
    row("server", "SiteOwn", "server has no \"SiteOwn\"");
    row("KWX\\Site", "Own", "Own");
    row("KWX\\Site", "", "KWX\\Site has no \"\"");
}

void TestAssignment::selects()
{
    QFETCH(QByteArray, place);
    QFETCH(QByteArray, word);
    QFETCH(QByteArray, names);
    const auto keys = ops::select(*ops::parsePlace(place), word, ops::Foreign::Allow);
    if (!keys) {
        QCOMPARE(keys.failure().text, names);
        return;
    }
    QByteArrayList found;
    for (const ops::Key &key : *keys) {
        found.append(key.name);
        QCOMPARE(key.path, place.contains('\\') ? place : channel(2));
    }
    QCOMPARE(found.join(' '), names);
}

void TestAssignment::foreignNamesStandWhereTheyMay_data()
{
    QTest::addColumn<QByteArray>("place");
    QTest::addColumn<QByteArray>("assignment");
    QTest::addColumn<QByteArray>("change"); // empty: refused
    const auto row = [](const char *name, const char *place, const QByteArray &assignment,
                        const QByteArray &change) {
        QTest::newRow(name) << QByteArray(place) << assignment << change;
    };
    row("text", "2", "Own=x", channel(2) + " Own - > \"x\"");
    row("no text", "2", "Own=", channel(2) + " Own - > \"\"");
    row("number", "2", "Own:=7", channel(2) + " Own - > 7");
    row("hexadecimal", "2", "Own:=0x10", channel(2) + " Own - > 16");
    row("no number", "2", "Own:=x", "");
    row("beyond a number", "2", "Own:=4294967296", "");
    row("at a path", "KWX\\Site", "Own=x", "KWX\\Site Own - > \"x\"");
    row("known at a path", "KWX\\Config", "MaxIntChannels=8", "KWX\\Config MaxIntChannels - > 8");
    row("at an element", "2/video", "Own=x", "");
    row("at the server", "server", "Own=x", "");
    row("a zero byte in the name", "2", QByteArray("O\0n=x", 5), "");
    row("a zero byte in the text", "2", QByteArray("Own=\0", 5), "");
    row("no name", "2", ":=5", "");
}

void TestAssignment::foreignNamesStandWhereTheyMay()
{
    QFETCH(QByteArray, place);
    QFETCH(QByteArray, assignment);
    QFETCH(QByteArray, change);
    const ops::Snapshot nothing;
    ops::Draft draft(nothing);
    const auto done = ops::assign(*ops::parsePlace(place), assignment, ops::Foreign::Allow, draft);
    QCOMPARE(bool(done), !change.isEmpty());
    QCOMPARE(told(draft.changes()), change);
}

void TestAssignment::theWordsOfAPlace()
{
    ops::Snapshot values;
    values.set("KWX\\Site", "b", number(1));
    values.set("KWX\\Site", "a", text("x"));
    values.set("KWX\\Site\\Below", "c", number(1));
    QCOMPARE(ops::wordsIn(values, *ops::parsePlace("kwx\\site")), QByteArrayList({"a", "b"}));
    QCOMPARE(ops::wordsIn(values, *ops::parsePlace("KWX\\Nothing")), QByteArrayList());
    QCOMPARE(ops::wordsIn(values, *ops::parsePlace("0")),
             QByteArrayList({"type", "format", "clock", "domain", "gm", "flow-mode", "file-settings"}));
}

void TestAssignment::channelsOfTheServer_data()
{
    QTest::addColumn<QByteArray>("stored");
    QTest::addColumn<int>("count");
    QTest::newRow("nothing") << QByteArray() << 4;
    QTest::newRow("none") << QByteArray("0") << 0;
    QTest::newRow("one") << QByteArray("1") << 1;
    QTest::newRow("all") << QByteArray("65536") << 65536;
    QTest::newRow("too many") << QByteArray("65537") << 65536;
    QTest::newRow("far too many") << QByteArray("4294967295") << 65536;
    QTest::newRow("a text") << QByteArray("text") << 4;
}

void TestAssignment::channelsOfTheServer()
{
    QFETCH(QByteArray, stored);
    QFETCH(int, count);
    ops::Snapshot values;
    if (!stored.isEmpty())
        values.set("KWX\\Config", "MaxIntChannels", stored == "text" ? text("2") : number(stored.toUInt()));
    QCOMPARE(ops::channelCount(values), count);
}

void TestAssignment::flowsOfAChannel_data()
{
    QTest::addColumn<quint32>("total");
    QTest::addColumn<quint32>("each"); // 0: not stored
    QTest::addColumn<int>("flows");
    QTest::newRow("nothing") << 0u << 0u << 0;
    QTest::newRow("two in each, as nobody says otherwise") << 6u << 0u << 3;
    QTest::newRow("eight of two") << 16u << 2u << 8;
    QTest::newRow("never more than eight") << 18u << 2u << 8;
    QTest::newRow("the rest is none") << 7u << 2u << 3;
    QTest::newRow("fewer than one flow") << 1u << 2u << 0;
    QTest::newRow("one of all") << 64u << 64u << 1;
}

void TestAssignment::flowsOfAChannel()
{
    QFETCH(quint32, total);
    QFETCH(quint32, each);
    QFETCH(int, flows);
    ops::Snapshot values;
    values.set(channel(2), "ReceiveAudTotalChannels", number(total));
    if (each > 0)
        values.set(channel(2), "ReceiveAudChannels", number(each));
    values.set(channel(2), "TransmitAudTotalChannels", number(512)); // what is sent does not count
    QCOMPARE(ops::flowCount(values, 2), flows);
    QCOMPARE(ops::flowCount(values, 1), 0);
}

void TestAssignment::countsKeepTheTotalsRight()
{
    const ops::Snapshot nothing;
    ops::Draft draft(nothing);
    QVERIFY(ops::setWords("2", {"channels=8", "flows=4"}, ops::Rules(), draft));
    QCOMPARE(draft.number(channel(2), "ReceiveAudTotalChannels"), 32u);
    QCOMPARE(draft.number(channel(2), "TransmitAudTotalChannels"), 32u);
    QVERIFY(ops::setWords("2", {"channels=2"}, ops::Rules(), draft));
    QCOMPARE(draft.number(channel(2), "ReceiveAudTotalChannels"), 8u);
    // All flows have as many, so it is the same wherever it is said.
    QVERIFY(ops::setWords("2/audio/*", {"channels=8"}, ops::Rules(), draft));
    QCOMPARE(draft.number(channel(2), "ReceiveAudTotalChannels"), 32u);
    QCOMPARE(draft.number(channel(2), "TransmitAudChannels"), 8u);
    QVERIFY(ops::setWords("3", {"flows=3"}, ops::Rules(), draft));
    QCOMPARE(draft.number(channel(3), "ReceiveAudChannels"), 2u);
    QCOMPARE(draft.number(channel(3), "TransmitAudTotalChannels"), 6u);
}

void TestAssignment::whatIsSoAlreadyIsNoChange()
{
    ops::Snapshot now;
    now.set(channel(2), "ReceiveFlags", number(31));
    ops::Draft draft(now);
    QVERIFY(ops::setWords("2/video", {"rx.use=all"}, ops::Rules(), draft));
    QCOMPARE(told(draft.changes()), QByteArray());
}

void TestAssignment::foreignNamesNeedPermission()
{
    const ops::Snapshot nothing;
    ops::Draft draft(nothing);
    QVERIFY(!ops::setWords("2", {"SiteDelay:=5"}, ops::Rules(), draft));
    QVERIFY(ops::setWords("2", {"SiteDelay:=5", "SiteName=a=b"}, {ops::Foreign::Allow, false}, draft));
    QVERIFY(ops::setWords("Site\\Own", {"Key=x"}, {ops::Foreign::Allow, false}, draft));
    QCOMPARE(told(draft.changes()),
             channel(2) + " SiteDelay - > 5|" + channel(2) + " SiteName - > \"a=b\"|Site\\Own Key - > \"x\"");
}

void TestAssignment::channelsBeyondTheServerNeedPermission()
{
    ops::Snapshot now;
    ops::Draft draft(now);
    QVERIFY(!ops::setWords("4", {"domain=1"}, ops::Rules(), draft));
    QVERIFY(ops::setWords("4", {"domain=1"}, {ops::Foreign::Refuse, true}, draft));
    now.set("KWX\\Config", "MaxIntChannels", number(8));
    QVERIFY(ops::setWords("7", {"domain=1"}, ops::Rules(), draft));
}

QTEST_APPLESS_MAIN(TestAssignment)
#include "test_ops_assignment.moc"
