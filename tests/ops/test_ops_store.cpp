// SPDX-License-Identifier: MIT
// On a real store: reading, writing as one step, also while others write, and the history of it.
#include "freshhome.h"
#include "ops/draft.h"
#include "ops/history.h"
#include "ops/store.h"
#include "randomstore.h"
#include "rows.h"

#include <sys/wait.h>
#include <unistd.h>

namespace {

// Done by another process; false when it could not.
bool byOther(const ops::Changes &changes)
{
    const pid_t child = fork();
    if (child == 0)
        _exit(ops::Store().apply(changes, "other") ? 0 : 1);
    int status = -1;
    waitpid(child, &status, 0);
    return status == 0;
}

bool countUp(int rounds)
{
    const auto plan = [](const ops::Snapshot &values) -> ops::Outcome<ops::Changes> {
        const quint32 count = values.number("p", "count");
        return ops::Changes{{"p", "count", number(count), number(count + 1)}};
    };
    int done = 0;
    for (int attempt = 0; done < rounds && attempt < 100 * rounds; ++attempt)
        done += bool(ops::Store().change(plan, "count"));
    return done == rounds;
}

} // namespace

class TestStore : public QObject {
    Q_OBJECT

private slots:
    void init() { m_home = std::make_unique<FreshHome>(); }
    void cleanup() { m_home.reset(); }

    void readsWhatWasWritten();
    void anythingComesBack();
    void aFailingChangeLeavesNothing();
    void aPlanSeesWhatIsThere();
    void aPlanThatFailsChangesNothing();
    void aPlanWithoutChangesIsNoBatch();
    void togetherIsOneBatchOrNothing();
    void nobodyComesBetweenReadingAndWriting();
    void severalProcessesCountTogether();
    void takingBackSeesWhatIsThere();
    void nothingToDoIsNoBatch();
    void everyApplyIsOneBatchWithItsLabel();
    void takingBackAndPuttingBack();
    void randomBatchesGoBackToTheStart();
    void batchesOfTwoProcessesLieBetweenEachOther();
    void followingTheHistory();

private:
    ops::Snapshot now() { return *ops::Store().read(); }
    bool apply(const ops::Changes &changes, const QByteArray &label = QByteArray())
    {
        return bool(ops::Store().apply(changes, label));
    }
    std::unique_ptr<FreshHome> m_home;
};

void TestStore::readsWhatWasWritten()
{
    QVERIFY(apply({{"p", "text", {}, text("x\xff")},
                   {"p", "number", {}, number(4294967295u)},
                   {"q", "empty", {}, text("")}}));
    QCOMPARE(told(ops::difference({}, now())),
             QByteArray("p number - > 4294967295|p text - > \"x\xff\"|q empty - > \"\""));
    QCOMPARE(int(ops::Store().read("q")->rows().size()), 1);
    QVERIFY(apply({{"p", "text", text("x"), {}}, {"p", "number", {}, text("7")}}));
    QCOMPARE(told(ops::difference({}, now())), QByteArray("p number - > \"7\"|q empty - > \"\""));
}

void TestStore::anythingComesBack()
{
    for (unsigned seed = 0; seed < 50; ++seed) {
        const ops::Snapshot wanted = RandomStore(seed).anything();
        QVERIFY(apply(ops::difference(now(), wanted, ops::Spelling::Exact)));
        QVERIFY(ops::difference(now(), wanted, ops::Spelling::Exact).empty());
    }
}

// A value that is to be deleted and is not there any more: somebody was quicker, and nothing of it is done.
void TestStore::aFailingChangeLeavesNothing()
{
    const auto done = ops::Store().apply({{"p", "a", {}, number(1)}, {"p", "gone", number(1), {}}}, "try");
    QVERIFY(!done);
    QCOMPARE(done.failure().kind, ops::Failure::Store);
    QVERIFY(now().empty());
    QVERIFY(apply({{"p", "a", {}, number(2)}}));
    QCOMPARE(int(ops::readHistory(ops::Store())->size()), 1);
}

void TestStore::aPlanSeesWhatIsThere()
{
    QVERIFY(apply({{"p", "a", {}, number(1)}}));
    ops::Store store;
    QVERIFY(byOther({{"p", "a", {}, number(7)}}));
    const auto done = store.change(
        [](const ops::Snapshot &values) -> ops::Outcome<ops::Changes> {
            return ops::Changes{
                {"p", "a", number(values.number("p", "a")), number(values.number("p", "a") + 1)}};
        },
        "count");
    QVERIFY(done);
    QCOMPARE(told(*done), QByteArray("p a 7 > 8"));
    QCOMPARE(now().number("p", "a"), 8u);
    QCOMPARE(ops::readHistory(store)->front().label, QByteArray("count"));
}

void TestStore::aPlanThatFailsChangesNothing()
{
    ops::Store store;
    const auto done = store.change(
        [](const ops::Snapshot &) -> ops::Outcome<ops::Changes> { return ops::wrong("no such word"); }, "x");
    QVERIFY(!done);
    QCOMPARE(done.failure().text, QByteArray("no such word"));
    QCOMPARE(done.failure().kind, ops::Failure::Input);
    QVERIFY(byOther({{"p", "a", {}, number(1)}})); // the store is everybody's again
    QVERIFY(apply({{"p", "b", {}, number(1)}}));
    QCOMPARE(ops::readHistory(store)->front().label, QByteArray());
}

void TestStore::aPlanWithoutChangesIsNoBatch()
{
    ops::Store store;
    QVERIFY(
        store.change([](const ops::Snapshot &) { return ops::Outcome<ops::Changes>(ops::Changes()); }, "x"));
    QVERIFY(ops::readHistory(store)->empty());
    QVERIFY(apply({{"p", "a", {}, number(1)}}));
    QCOMPARE(ops::readHistory(store)->front().label, QByteArray());
}

void TestStore::togetherIsOneBatchOrNothing()
{
    ops::Store store;
    const ops::Change one{"p", "a", {}, number(1)}, other{"p", "b", {}, text("x")};
    const auto both = [&]() -> ops::Outcome<ops::Done> {
        const auto done = store.write(one);
        return done ? store.write(other) : done;
    };
    QVERIFY(store.together("both", both));
    QVERIFY(store.save());
    QCOMPARE(told(ops::difference({}, now())), QByteArray("p a - > 1|p b - > \"x\""));
    auto history = *ops::readHistory(store);
    QCOMPARE(int(history.size()), 1);
    QCOMPARE(history[0].label, QByteArray("both"));
    const auto half = [&]() -> ops::Outcome<ops::Done> {
        const auto done = store.write({"p", "a", {}, number(2)});
        return done ? ops::Outcome<ops::Done>(ops::wrong("enough")) : done;
    };
    const auto failed = store.together("half", half);
    QVERIFY(!failed);
    QCOMPARE(failed.failure().text, QByteArray("enough"));
    QCOMPARE(now().number("p", "a"), 1u);
    QCOMPARE(int(ops::readHistory(store)->size()), 1);
    QVERIFY(!store.together("inside", [&] { return store.together("another", both); }));
    QCOMPARE(int(ops::readHistory(store)->size()), 1);
}

// Somebody writes while the plan is being made: he waits in vain, and what was read is still so at the end.
void TestStore::nobodyComesBetweenReadingAndWriting()
{
    QVERIFY(apply({{"p", "a", {}, number(1)}}));
    ops::Store store;
    bool otherWrote = true;
    const auto done = store.change(
        [&](const ops::Snapshot &values) -> ops::Outcome<ops::Changes> {
            otherWrote = byOther({{"p", "a", {}, number(9)}});
            return ops::Changes{{"p", "b", {}, number(values.number("p", "a"))}};
        },
        "copy");
    QVERIFY(done);
    QVERIFY(!otherWrote);
    QCOMPARE(now().number("p", "a"), 1u);
    QCOMPARE(now().number("p", "b"), 1u);
    QVERIFY(byOther({{"p", "a", {}, number(9)}}));
}

// Each adds one to what it finds. One that was busy tries again; none may be lost.
void TestStore::severalProcessesCountTogether()
{
    constexpr int processes = 4, rounds = 10;
    std::vector<pid_t> children;
    for (int process = 0; process < processes; ++process) {
        const pid_t child = fork();
        if (child == 0)
            _exit(countUp(rounds) ? 0 : 1);
        children.push_back(child);
    }
    for (const pid_t child : children) {
        int status = -1;
        QCOMPARE(waitpid(child, &status, 0), child);
        QCOMPARE(status, 0);
    }
    QCOMPARE(now().number("p", "count"), quint32(processes * rounds));
    QCOMPARE(int(ops::readHistory(ops::Store())->size()), processes * rounds);
}

// The history was read, then somebody changed one of the values: his stays, and is told.
void TestStore::takingBackSeesWhatIsThere()
{
    QVERIFY(apply({{"p", "a", {}, number(1)}, {"p", "b", {}, number(1)}}));
    ops::Store store;
    const auto history = *ops::readHistory(store);
    QVERIFY(byOther({{"p", "a", {}, number(9)}}));
    const auto taken = ops::takeBack(store, ops::lastToUndo(history), false, "undo");
    QVERIFY(taken);
    QCOMPARE(told(taken->changes), QByteArray("p b 1 > -"));
    QCOMPARE(told(taken->conflicts), QByteArray("p a 9 > -"));
    QCOMPARE(told(ops::difference({}, now())), QByteArray("p a - > 9"));
}

void TestStore::nothingToDoIsNoBatch()
{
    QVERIFY(apply({}, "nothing"));
    QVERIFY(ops::readHistory(ops::Store())->empty());
}

void TestStore::everyApplyIsOneBatchWithItsLabel()
{
    QVERIFY(apply({{"p", "a", {}, number(1)}, {"p", "b", {}, number(2)}}, "first"));
    QVERIFY(apply({{"p", "a", {}, number(3)}}, "second"));
    QVERIFY(apply({{"p", "a", {}, number(4)}}));
    const auto history = ops::readHistory(ops::Store());
    QCOMPARE(int(history->size()), 3);
    QCOMPARE((*history)[2].label, QByteArray("first"));
    QCOMPARE((*history)[1].label, QByteArray("second"));
    QCOMPARE((*history)[0].label, QByteArray());
    QCOMPARE(told((*history)[2].changes), QByteArray("p a - > 1|p b - > 2"));
    QCOMPARE(told((*history)[1].changes), QByteArray("p a 1 > 3"));
    QCOMPARE((*history)[0].pid, quint32(QCoreApplication::applicationPid()));
    QVERIFY((*history)[0].timeUs >= (*history)[1].timeUs);
    QCOMPARE(int(ops::readHistory(ops::Store(), 2)->size()), 2);
}

void TestStore::takingBackAndPuttingBack()
{
    QVERIFY(apply({{"p", "a", {}, number(1)}}, "first"));
    QVERIFY(apply({{"p", "a", {}, number(2)}}, "second"));
    ops::Store store;
    auto history = *ops::readHistory(store);
    QVERIFY(ops::takeBack(store, ops::lastToUndo(history), false, "undo"));
    QCOMPARE(now().number("p", "a"), 1u);
    history = *ops::readHistory(store);
    QCOMPARE(history[0].label, QByteArray("undo second"));
    QCOMPARE(history[0].undoes, history[1].id);
    QVERIFY(history[1].takenBack);
    QVERIFY(ops::takeBack(store, ops::lastToRedo(history), false, "redo"));
    QCOMPARE(now().number("p", "a"), 2u);
    history = *ops::readHistory(store);
    QCOMPARE(history[0].label, QByteArray("redo second"));
    QVERIFY(!history[2].takenBack);
    QVERIFY(ops::lastToRedo(history).empty());
}

// Batches of any kind, each taken back in turn: the plan says beforehand what comes out. CORVEL_BATCHES asks
// for more of them, for a long run by hand.
void TestStore::randomBatchesGoBackToTheStart()
{
    ops::Store store;
    std::mt19937 random(3);
    const ops::Snapshot start = now();
    for (int batch = qMax(200, qEnvironmentVariableIntValue("CORVEL_BATCHES")); batch > 0; --batch) {
        const ops::Snapshot before = now();
        ops::Draft draft(before);
        for (unsigned change = random() % 4 + 1; change > 0; --change) {
            const QByteArray name = QByteArray::number(quint32(random() % 8));
            if (random() % 3)
                draft.set("p", name, number(quint32(random() % 5)));
            else
                draft.remove("p", name);
        }
        QVERIFY(store.apply(draft.changes(), QByteArray()));
    }
    const auto history = *ops::readHistory(store);
    std::vector<const ops::Batch *> all = ops::since(history, 0);
    const ops::TakeBackPlan plan = ops::planTakeBack(now(), all, false);
    QVERIFY(plan.conflicts.empty());
    QCOMPARE(told(plan.changes), told(ops::difference(now(), start)));
    QVERIFY(ops::takeBack(store, all, false, "undo"));
    QVERIFY(ops::difference(now(), start).empty());
}

// One has begun and not saved when the other writes: each batch is whole all the same, also when few are
// asked for.
void TestStore::batchesOfTwoProcessesLieBetweenEachOther()
{
    ops::Store store;
    const auto write = [&store](const char *name, uint32_t value) {
        return rkCFGValueDword(store.handle(), "p", name, &value, 1) != 0;
    };
    QVERIFY(write("a", 1));
    QVERIFY(byOther({{"p", "other", {}, number(5)}}));
    QVERIFY(write("b", 2));
    QVERIFY(store.save());
    const auto history = *ops::readHistory(store);
    QCOMPARE(int(history.size()), 2);
    const bool ownFirst = history[0].changes.size() == 2;
    QCOMPARE(told(history[ownFirst ? 0 : 1].changes), QByteArray("p a - > 1|p b - > 2"));
    QCOMPARE(told(history[ownFirst ? 1 : 0].changes), QByteArray("p other - > 5"));
    QCOMPARE(history[ownFirst ? 1 : 0].label, QByteArray("other"));
    const auto last = *ops::readHistory(store, 1);
    QCOMPARE(int(last.size()), 1);
    QCOMPARE(told(last[0].changes), told(history[0].changes));
}

void TestStore::followingTheHistory()
{
    ops::Store store;
    QCOMPARE(*ops::newestChange(store), 0);
    QVERIFY(apply({{"p", "a", {}, number(1)}}));
    const qint64 newest = *ops::newestChange(store);
    QVERIFY(newest > 0);
    QVERIFY(apply({{"p", "a", {}, number(2)}, {"p", "b", {}, number(3)}}));
    QByteArrayList seen;
    const auto last =
        ops::followHistory(store, newest, [&](const ops::Batch &one) { seen.append(told(one.changes)); });
    QCOMPARE(seen.join(' '), QByteArray("p a 1 > 2 p b - > 3"));
    QCOMPARE(*last, *ops::newestChange(store));
}

QTEST_GUILESS_MAIN(TestStore)
#include "test_ops_store.moc"
