// SPDX-License-Identifier: MIT
//
// What is decided for every combination of states, as a table: the rules written down a second time.
#include "fleet/merge.h"

#include <QtTest>

#include <set>

using namespace fleet;

class TestFleetMerge : public QObject {
    Q_OBJECT

private slots:
    void decides_data();
    void decides();
    void everyCombinationIsThere();
    void lateDecisionsDoNoHarm();
};

namespace {

// "-": never heard of, "0": deleted, a letter: a document.
struct States {
    Document deleted, a, b, c;
    States()
    {
        for (Document *document : {&deleted, &a, &b, &c})
            document->path = "p";
        a.values["n"] = ops::Value::ofText("a");
        b.values["n"] = ops::Value::ofText("b");
        c.values["n"] = ops::Value::ofText("c");
    }
    State operator[](char name) const
    {
        switch (name) {
        case '0':
            return &deleted;
        case 'a':
            return &a;
        case 'b':
            return &b;
        case 'c':
            return &c;
        }
        return nullptr;
    }
};

struct Row {
    const char *states; // local, base, remote
    Action server, desk;
    Action serverRestored, deskRestored; // in a cluster that was set up again
};

constexpr Action No = Action::Nothing;
constexpr Action Note = Action::Note;
constexpr Action Push = Action::Push;
constexpr Action Take = Action::Apply;
constexpr Action Over = Action::Overrule;
constexpr Action Yield = Action::Yield;

// clang-format off
const Row kRows[] = {
    // nothing agreed on yet: what is missing was not deleted
    {"---", No,   No,    No,   No},
    {"--0", Note, Note,  Note, Note},
    {"--a", Take, Take,  Take, Take},
    {"0--", No,   No,    No,   No},
    {"0-0", Note, Note,  Note, Note},
    {"0-a", Take, Take,  Take, Take},
    {"a--", Push, Push,  Push, Push},
    {"a-0", Over, Yield, Over, Yield},
    {"a-a", Note, Note,  Note, Note},
    {"a-b", Over, Yield, Over, Yield},
    // agreed that it was deleted
    {"-0-", Push, No,    Push, No},
    {"-00", No,   No,    No,   No},
    {"-0a", Take, Take,  Over, Yield},
    {"00-", Push, No,    Push, No},
    {"000", No,   No,    No,   No},
    {"00a", Take, Take,  Over, Yield},
    {"a0-", Push, No,    Push, No},
    {"a00", Push, Push,  Push, Push},
    {"a0a", Note, Note,  Note, Note},
    {"a0b", Over, Yield, Over, Yield},
    // agreed on a document
    {"-a-", Push, No,    Push, No},
    {"-a0", Note, Note,  Note, Note},
    {"-aa", Push, Push,  Push, Push},
    {"-ab", Over, Yield, Over, Yield},
    {"0a-", Push, No,    Push, No},
    {"0a0", Note, Note,  Note, Note},
    {"0aa", Push, Push,  Push, Push},
    {"0ab", Over, Yield, Over, Yield},
    {"aa-", Push, No,    Push, No},
    {"aa0", Take, Take,  Over, Yield},
    {"aaa", No,   No,    No,   No},
    {"aab", Take, Take,  Over, Yield},
    {"ba-", Push, No,    Push, No},
    {"ba0", Over, Yield, Over, Yield},
    {"baa", Push, Push,  Push, Push},
    {"bab", Note, Note,  Note, Note},
    {"bac", Over, Yield, Over, Yield},
};
// clang-format on

} // namespace

Q_DECLARE_METATYPE(fleet::Action)

void TestFleetMerge::decides_data()
{
    QTest::addColumn<QByteArray>("states");
    QTest::addColumn<bool>("restored");
    QTest::addColumn<int>("server");
    QTest::addColumn<int>("desk");
    for (const Row &row : kRows) {
        QTest::addRow("%s", row.states)
            << QByteArray(row.states) << false << static_cast<int>(row.server) << static_cast<int>(row.desk);
        QTest::addRow("%s restored", row.states)
            << QByteArray(row.states) << true << static_cast<int>(row.serverRestored)
            << static_cast<int>(row.deskRestored);
    }
}

void TestFleetMerge::decides()
{
    QFETCH(QByteArray, states);
    QFETCH(bool, restored);
    QFETCH(int, server);
    QFETCH(int, desk);
    const States state;
    const auto decided = [&](Role role) {
        return static_cast<int>(merge(role, state[states[0]], state[states[1]], state[states[2]], restored));
    };
    QCOMPARE(decided(Role::Server), server);
    QCOMPARE(decided(Role::Desk), desk);
}

void TestFleetMerge::everyCombinationIsThere()
{
    std::set<QByteArray> kinds;
    for (const Row &row : kRows) {
        QByteArray kind(row.states);
        for (char &state : kind)
            state = state >= 'a' ? 'd' : state;
        kinds.insert(kind);
    }
    QCOMPARE(kinds.size(), std::size_t(27));
}

// After an action the same question has a quiet answer, or the push that belongs to it.
void TestFleetMerge::lateDecisionsDoNoHarm()
{
    const States state;
    for (const Row &row : kRows) {
        for (const Role role : {Role::Server, Role::Desk}) {
            State local = state[row.states[0]];
            State base = state[row.states[1]];
            State remote = state[row.states[2]];
            const Action action = merge(role, local, base, remote);
            if (action == Action::Nothing)
                continue;
            if (action == Action::Push)
                remote = local ? local : &state.deleted;
            if (action == Action::Apply || action == Action::Yield)
                local = remote;
            base = remote;
            const Action expected = action == Action::Overrule ? Action::Push : Action::Nothing;
            QVERIFY2(merge(role, local, base, remote) == expected, row.states);
        }
    }
}

QTEST_GUILESS_MAIN(TestFleetMerge)
#include "test_fleet_merge.moc"
