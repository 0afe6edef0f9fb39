// SPDX-License-Identifier: MIT
#include "ops/ptpdoctor.h"

#include <QtTest>

using ops::PtpState;

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

ops::PtpSight sight(PtpState state, std::vector<ops::PtpMaster> masters = {})
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
    ops::PtpSight made = sight(PtpState::Locked, {master(127, "A")});
    made.joined = false;
    return made;
}

ops::PtpSight strangeAddress()
{
    ops::PtpSight made = sight(PtpState::NoInterface);
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
    row("all well", sight(PtpState::Locked, {master(127, "A")}), "");
    row("no answer", sight(PtpState::Starting), "ptp-client");
    row("no client", sight(PtpState::NotRunning), "ptp-client");
    row("no address", strangeAddress(), "ptp-interface");
    row("link down", sight(PtpState::NoInterface), "ptp-interface");
    row("no capability", sight(PtpState::NotAllowed), "ptp-capability");
    row("other binder", sight(PtpState::SystemClient), "ptp-ports");
    row("no ptp4l", sight(PtpState::Failed), "ptp-program");
    row("not in the group", lockedWithoutGroup(), "ptp-igmp");
    row("nobody", sight(PtpState::NoMaster), "ptp-no-master");
    row("another domain", sight(PtpState::NoMaster, {master(0, "A")}), "ptp-domain");
    row("two other domains", sight(PtpState::NoMaster, {master(0, "A"), master(1, "B")}),
        "ptp-domain ptp-domain");
    row("bad clock", sight(PtpState::Locked, {master(127, "A", 248)}), "ptp-quality");
    row("holdover", sight(PtpState::Locked, {master(127, "A", 7)}), "");
    row("announce late", sight(PtpState::Locked, {master(127, "A", 6, 3001)}), "ptp-announce");
    row("two masters", sight(PtpState::Locked, {master(127, "A"), master(127, "B")}), "ptp-two-masters");
    row("one master twice", sight(PtpState::Locked, {master(127, "A"), master(127, "A")}), "");
    row("a bad clock elsewhere", sight(PtpState::Locked, {master(0, "B", 248), master(127, "A")}), "");
    row("other master", sight(PtpState::OtherMaster, {master(127, "A")}), "ptp-other-master");
    row("gone", sight(PtpState::Stale), "ptp-no-master ptp-stale");
}

void TestPtpDoctor::finds()
{
    QFETCH(ops::PtpSight, seen);
    QFETCH(QByteArray, found);
    QCOMPARE(rules(ops::examinePtp(seen)), found);
}

void TestPtpDoctor::everyFindingSaysWhatToDo()
{
    for (int state = 0; state <= int(PtpState::Failed); ++state) {
        QVERIFY(qstrlen(ops::ptpStateName(PtpState(state))) > 0);
        const auto seen =
            sight(PtpState(state), {master(0, "A"), master(127, "B", 248, 9999), master(127, "C")});
        for (const ops::Finding &finding : ops::examinePtp(seen))
            QVERIFY2(!finding.reason.isEmpty() && !finding.remedy.isEmpty(), finding.rule);
    }
}

QTEST_APPLESS_MAIN(TestPtpDoctor)
#include "test_ops_ptpdoctor.moc"
