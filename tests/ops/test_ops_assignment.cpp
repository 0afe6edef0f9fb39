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
    row("2/video", "rx.dst", "WORD=VALUE");
    row("2/video", "=5", "WORD=VALUE");
    row("2/video", "rx.dts=239.1.1.1", "did you mean rx.dst?");
    row("2", "RecieveDestinationIp=1.2.3.4", "did you mean ReceiveDestinationIp?");
    row("2", "rx.dst=1.2.3.4", "name an element");
    row("2/audio", "rx.dst=1.2.3.4", "each flow has its own");
    row("2/video", "rx.dst=239.1.1.1:x", "a port is a number");
    row("2/video", "rx.dst=:5", "rx.dst");
    row("2/video", "rx.dst-port=70000", "0 to 65535");
    row("2", "channels=0", "1 to 64");
    row("2", "flows=9", "1 to 8");
    row("2", "flows=two", "flows");
    row("server", "nmos.log=perhaps", "on or off");
    row("server", "channel=5", "did you mean channels?");
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
    QVERIFY2(done.failure().text.contains(says), done.failure().text.constData());
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
