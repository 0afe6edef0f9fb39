// SPDX-License-Identifier: MIT
//
// The merge under everything that can go wrong, and the same with each of its rules broken: a model that
// finds nothing then would be worth nothing. CORVEL_MODEL_SCHEDULES gives another number of schedules, and
// CORVEL_MODEL_FIRST the first of them: to look at one that failed.
#include "fleet/mergemodel.h"

#include <QtTest>

using namespace fleet;

Q_DECLARE_METATYPE(Breakage)

class TestFleetModel : public QObject {
    Q_OBJECT

private slots:
    void holds();
    void noticesABrokenRule_data();
    void noticesABrokenRule();
};

namespace {

constexpr int kSchedules = 300;
constexpr quint64 kMostSchedules = 3000; // for a broken rule: the first failure ends it

quint64 schedules()
{
    const int wanted = qEnvironmentVariableIntValue("CORVEL_MODEL_SCHEDULES");
    return static_cast<quint64>(wanted > 0 ? wanted : kSchedules);
}

QString runSchedules(quint64 count, const Breakage &breakage)
{
    const auto first = static_cast<quint64>(qEnvironmentVariableIntValue("CORVEL_MODEL_FIRST"));
    for (quint64 seed = std::max<quint64>(1, first); seed <= count; ++seed) {
        const QString wrong = MergeModel(seed, breakage).run();
        if (!wrong.isEmpty())
            return wrong + QStringLiteral(" (schedule %1)").arg(seed);
    }
    return QString();
}

// clang-format off
const Breakage kBreakages[] = {
    {"server: its edits stay here",             Role::Server, Situation::LocalOnly,  Action::Nothing},
    {"server: edits of desks are ignored",      Role::Server, Situation::RemoteOnly, Action::Nothing},
    {"server: edits of desks are written over", Role::Server, Situation::RemoteOnly, Action::Push},
    {"server: common states are not noted",     Role::Server, Situation::BothSame,   Action::Nothing},
    {"server: its own edit does not stand",     Role::Server, Situation::BothDiffer, Action::Yield},
    {"server: its own edit is dropped",         Role::Server, Situation::BothDiffer, Action::Apply},
    {"server: the desk's edit is dropped",      Role::Server, Situation::BothDiffer, Action::Push},
    {"server: a lost document stays lost",      Role::Server, Situation::Gone,       Action::Nothing},
    {"server: goes back with the cluster",      Role::Server, Situation::Older,      Action::Apply},
    {"desk: its edits stay here",               Role::Desk,   Situation::LocalOnly,  Action::Nothing},
    {"desk: edits of others are ignored",       Role::Desk,   Situation::RemoteOnly, Action::Nothing},
    {"desk: edits of others are written over",  Role::Desk,   Situation::RemoteOnly, Action::Push},
    {"desk: common states are not noted",       Role::Desk,   Situation::BothSame,   Action::Nothing},
    {"desk: its edit stands",                   Role::Desk,   Situation::BothDiffer, Action::Overrule},
    {"desk: its edit is dropped",               Role::Desk,   Situation::BothDiffer, Action::Apply},
    {"desk: the cluster's edit is dropped",     Role::Desk,   Situation::BothDiffer, Action::Push},
    {"desk: puts back what the cluster lost",   Role::Desk,   Situation::Gone,       Action::Push},
    {"desk: forgets what only it has left",     Role::Desk,   Situation::Older,      Action::Apply},
};
// clang-format on

Breakage broken(const char *name, void (*how)(MemoryReplica &, MemoryLink &))
{
    Breakage breakage;
    breakage.name = name;
    breakage.break_ = how;
    return breakage;
}

} // namespace

void TestFleetModel::holds()
{
    QCOMPARE(runSchedules(schedules(), Breakage()), QString());
}

void TestFleetModel::noticesABrokenRule_data()
{
    QTest::addColumn<Breakage>("breakage");
    const auto row = [](const Breakage &breakage) { QTest::newRow(breakage.name) << breakage; };
    for (const Breakage &breakage : kBreakages)
        row(breakage);
    row(broken("pushes without comparing", [](MemoryReplica &, MemoryLink &link) { link.compares = false; }));
    row(broken("applies without comparing",
               [](MemoryReplica &replica, MemoryLink &) { replica.compares = false; }));
    row(broken("keeps no conflicts",
               [](MemoryReplica &replica, MemoryLink &) { replica.keepsConflicts = false; }));
    row(broken("notes no common states",
               [](MemoryReplica &replica, MemoryLink &) { replica.keepsBases = false; }));
    row(broken("does not note what is on its way",
               [](MemoryReplica &replica, MemoryLink &) { replica.keepsFlights = false; }));
    row(broken("values and notes are two transactions",
               [](MemoryReplica &replica, MemoryLink &) { replica.torn = true; }));
    row(broken("conflicts are not uploaded",
               [](MemoryReplica &, MemoryLink &link) { link.swallowConflicts = true; }));
}

void TestFleetModel::noticesABrokenRule()
{
    QFETCH(Breakage, breakage);
    const QString wrong = runSchedules(kMostSchedules, breakage);
    QVERIFY2(!wrong.isEmpty(), breakage.name);
    qInfo("%s", qPrintable(wrong));
}

QTEST_GUILESS_MAIN(TestFleetModel)
#include "test_fleet_model.moc"
