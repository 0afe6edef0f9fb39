// SPDX-License-Identifier: MIT
#include "ops/ptpdoctor.h"

#include <QtTest>

Q_DECLARE_METATYPE(ops::PtpSight)

class TestPtpDoctor : public QObject {
    Q_OBJECT

private slots:
    void finds_data();
    void finds();
    void everyFindingSaysWhatToDo();
};

namespace {

ops::PtpMaster master(quint32 domain, const char *identity, int clockClass = 6, quint32 ageMs = 100)
{
    ops::PtpMaster made;
    made.domain = domain;
    made.grandmaster = identity;
    made.interface = "eth1";
    made.clockClass = clockClass;
    made.ageMs = ageMs;
    return made;
}

ops::PtpSight sight(ClockState state, std::vector<ops::PtpMaster> masters = {})
{
    ops::PtpSight made;
    made.interface = "10.0.0.1";
    made.domain = 127;
    made.state = state;
    made.masters = std::move(masters);
    return made;
}

ops::PtpSight lockedWithoutGroup()
{
    ops::PtpSight made = sight(ClockState::Locked, {master(127, "A")});
    made.joined = false;
    return made;
}

ops::PtpSight strangeAddress()
{
    ops::PtpSight made = sight(ClockState::NoInterface);
    made.addressIsHere = false;
    return made;
}

QByteArray rules(const ops::Findings &findings)
{
    QByteArrayList names;
    for (const ops::Finding &finding : findings)
        names.append(finding.rule);
    return names.join(' ');
}

} // namespace

void TestPtpDoctor::finds_data()
{
    QTest::addColumn<ops::PtpSight>("seen");
    QTest::addColumn<QByteArray>("found");
    const auto row = [](const char *name, const ops::PtpSight &seen, const char *found) {
        QTest::newRow(name) << seen << QByteArray(found);
    };
    row("all well", sight(ClockState::Locked, {master(127, "A")}), "");
    row("no answer", sight(ClockState::Starting), "ptp-client");
    row("no client", sight(ClockState::NotRunning), "ptp-client");
    row("no address", strangeAddress(), "ptp-interface");
    row("link down", sight(ClockState::NoInterface), "ptp-interface");
    row("no capability", sight(ClockState::NotAllowed), "ptp-capability");
    row("other binder", sight(ClockState::SystemClient), "ptp-ports");
    row("no ptp4l", sight(ClockState::Failed), "ptp-program");
    row("not in the group", lockedWithoutGroup(), "ptp-igmp");
    row("nobody", sight(ClockState::NoMaster), "ptp-no-master");
    row("another domain", sight(ClockState::NoMaster, {master(0, "A")}), "ptp-domain");
    row("two other domains", sight(ClockState::NoMaster, {master(0, "A"), master(1, "B")}),
        "ptp-domain ptp-domain");
    row("bad clock", sight(ClockState::Locked, {master(127, "A", 248)}), "ptp-quality");
    row("holdover", sight(ClockState::Locked, {master(127, "A", 7)}), "");
    row("announce late", sight(ClockState::Locked, {master(127, "A", 6, 3001)}), "ptp-announce");
    row("two masters", sight(ClockState::Locked, {master(127, "A"), master(127, "B")}), "ptp-two-masters");
    row("one master twice", sight(ClockState::Locked, {master(127, "A"), master(127, "A")}), "");
    row("a bad clock elsewhere", sight(ClockState::Locked, {master(0, "B", 248), master(127, "A")}), "");
    row("other master", sight(ClockState::OtherMaster, {master(127, "A")}), "ptp-other-master");
    row("gone", sight(ClockState::Stale), "ptp-no-master ptp-stale");
}

void TestPtpDoctor::finds()
{
    QFETCH(ops::PtpSight, seen);
    QFETCH(QByteArray, found);
    QCOMPARE(rules(ops::examinePtp(seen)), found);
}

void TestPtpDoctor::everyFindingSaysWhatToDo()
{
    for (int state = 0; state <= int(ClockState::Failed); ++state) {
        QVERIFY(qstrlen(clockStateWord(ClockState(state))) > 0);
        const auto seen =
            sight(ClockState(state), {master(0, "A"), master(127, "B", 248, 9999), master(127, "C")});
        for (const ops::Finding &finding : ops::examinePtp(seen))
            QVERIFY2(!finding.reason.isEmpty() && !finding.remedy.isEmpty(), finding.rule);
    }
}

QTEST_APPLESS_MAIN(TestPtpDoctor)
#include "test_ops_ptpdoctor.moc"
