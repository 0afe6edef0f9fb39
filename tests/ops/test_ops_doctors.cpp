// SPDX-License-Identifier: MIT
// The clock's doctor and a model of the machine: each trouble alone, in every state that the client can be
// in, and the certainty that a healthy clock is left alone.
#include "ops/ptpdoctor.h"

#include <QSet>
#include <QtTest>

class TestDoctors : public QObject {
    Q_OBJECT

private slots:
    void aHealthyClockIsLeftAlone();
    void everyFindingHasAllItsParts_data();
    void everyFindingHasAllItsParts();
    void oneThingWrong_data();
    void oneThingWrong();
    void theAddressComesBeforeEverythingElse();
};

namespace {

ops::PtpMaster master(quint32 domain, const char *identity)
{
    ops::PtpMaster one;
    one.domain = domain;
    one.grandmaster = identity;
    one.interface = "eth0";
    one.priority1 = one.priority2 = 128;
    one.clockClass = 6;
    one.clockAccuracy = 0x21;
    one.stepsRemoved = 1;
    one.ageMs = 400;
    return one;
}

// Locked to the one master that there is, in the domain that is wanted.
ops::PtpSight healthy()
{
    ops::PtpSight sight;
    sight.state = ClockState::Locked;
    sight.interface = "10.0.0.5";
    sight.addressIsHere = true;
    sight.domain = 127;
    sight.joined = true;
    sight.masters = {master(127, "AC-DE-48-FF-FE-00-00-01")};
    return sight;
}

QByteArrayList rules(const ops::PtpSight &sight)
{
    QByteArrayList names;
    for (const ops::Finding &finding : ops::examinePtp(sight))
        names.append(finding.rule);
    return names;
}

const ClockState kStates[] = {ClockState::NotRunning,  ClockState::Starting,   ClockState::Locked,
                              ClockState::OtherMaster, ClockState::NoMaster,   ClockState::Stale,
                              ClockState::NoInterface, ClockState::NotAllowed, ClockState::SystemClient,
                              ClockState::Failed};

} // namespace

void TestDoctors::aHealthyClockIsLeftAlone()
{
    QCOMPARE(rules(healthy()), QByteArrayList());
    ops::PtpSight sight = healthy();
    sight.wanted = "AC-DE-48-FF-FE-00-00-01";
    QCOMPARE(rules(sight), QByteArrayList());
    sight.joined.reset(); // the kernel's list cannot be read: no reason to complain
    QCOMPARE(rules(sight), QByteArrayList());
}

void TestDoctors::everyFindingHasAllItsParts_data()
{
    QTest::addColumn<int>("state");
    for (const ClockState state : kStates)
        QTest::newRow(clockStateWord(state)) << static_cast<int>(state);
}

// Every state with every other trouble on top, as they come together in the field.
void TestDoctors::everyFindingHasAllItsParts()
{
    QFETCH(int, state);
    for (int troubles = 0; troubles < 64; ++troubles) {
        ops::PtpSight sight = healthy();
        sight.state = static_cast<ClockState>(state);
        sight.addressIsHere = !(troubles & 1);
        if (troubles & 2)
            sight.joined = false;
        if (troubles & 4)
            sight.masters.clear();
        if (troubles & 8)
            sight.masters.push_back(master(127, "AC-DE-48-FF-FE-00-00-02"));
        if (troubles & 16)
            sight.masters.push_back(master(0, "AC-DE-48-FF-FE-00-00-03"));
        if (troubles & 32)
            sight.wanted = "AC-DE-48-FF-FE-00-00-09";
        QSet<QByteArray> told;
        for (const ops::Finding &finding : ops::examinePtp(sight)) {
            QVERIFY(!QByteArray(finding.rule).isEmpty() && !finding.place.isEmpty());
            QVERIFY2(!finding.reason.isEmpty() && !finding.remedy.isEmpty(), finding.rule);
            QVERIFY2(!finding.reason.endsWith('.') && !finding.reason.contains('\n'),
                     finding.reason.constData());
            const QByteArray whole = finding.rule + finding.place + finding.reason;
            QVERIFY2(!told.contains(whole), whole.constData()); // nothing is told twice
            told << whole;
        }
        const bool well = sight.state == ClockState::Locked && (troubles & 47) == 0;
        QVERIFY(!well || told.isEmpty() || (troubles & 16));
    }
}

void TestDoctors::oneThingWrong_data()
{
    QTest::addColumn<QByteArray>("wrong");
    for (const char *wrong : {"no interface", "not allowed", "no master", "two masters", "no reference",
                              "long silence", "not joined", "other program", "not followed"})
        QTest::newRow(wrong) << QByteArray(wrong);
}

void TestDoctors::oneThingWrong()
{
    QFETCH(QByteArray, wrong);
    ops::PtpSight sight = healthy();
    if (wrong == "no interface")
        sight.addressIsHere = false;
    else if (wrong == "not allowed")
        sight.state = ClockState::NotAllowed;
    else if (wrong == "other program")
        sight.state = ClockState::Failed;
    else if (wrong == "no master")
        sight.masters.clear();
    else if (wrong == "two masters")
        sight.masters.push_back(master(127, "AC-DE-48-FF-FE-00-00-02"));
    else if (wrong == "no reference")
        sight.masters[0].clockClass = 248;
    else if (wrong == "long silence")
        sight.masters[0].ageMs = 60000;
    else if (wrong == "not joined")
        sight.joined = false;
    if (wrong == "no master" || wrong == "not followed")
        sight.state = ClockState::NoMaster;
    sight.reason = "as the client says";
    QVERIFY2(!rules(sight).isEmpty(), wrong.constData());
    QVERIFY(rules(sight) != rules(healthy()));
}

// Where the interface is not there, nothing else can be known.
void TestDoctors::theAddressComesBeforeEverythingElse()
{
    ops::PtpSight sight = healthy();
    sight.addressIsHere = false;
    sight.state = ClockState::NoInterface;
    sight.masters.clear();
    const ops::Findings findings = ops::examinePtp(sight);
    QVERIFY(!findings.empty());
    QVERIFY(findings.front().reason.contains("10.0.0.5"));
}

QTEST_APPLESS_MAIN(TestDoctors)
#include "test_ops_doctors.moc"
