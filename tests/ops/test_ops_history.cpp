// SPDX-License-Identifier: MIT
#include "ops/history.h"
#include "rows.h"

class TestHistory : public QObject {
    Q_OBJECT

private slots:
    void effectIsOneChangePerValue();
    void undoGoesBackStepByStep();
    void redoPutsBackWhatUndoTook();
    void sinceTakesWhatIsYoung();
    void planOfOneBatch();
    void laterChangesAreConflicts();
    void forceSetsConflicts();
    void severalBatchesAreOnePlan();
    void durations_data();
    void durations();
    void wrongDurations_data();
    void wrongDurations();
    void times();
};

namespace {

ops::Batch batch(qint64 id, ops::Changes changes, qint64 undoes = 0)
{
    ops::Batch made;
    made.id = id;
    made.timeUs = id * 1000000;
    made.undoes = undoes;
    made.changes = std::move(changes);
    return made;
}

ops::Change change(const char *name, std::optional<ops::Value> before, std::optional<ops::Value> after)
{
    return {"p", name, std::move(before), std::move(after)};
}

std::vector<const ops::Batch *> all(const std::vector<ops::Batch> &batches)
{
    std::vector<const ops::Batch *> pointers;
    for (const ops::Batch &one : batches)
        pointers.push_back(&one);
    return pointers;
}

qint64 idOf(const std::vector<const ops::Batch *> &batches)
{
    return batches.size() == 1 ? batches.front()->id : -1;
}

} // namespace

void TestHistory::effectIsOneChangePerValue()
{
    const auto effect =
        ops::effectOf(batch(1, {change("a", number(1), number(2)), change("b", {}, number(5)),
                                change("a", number(2), number(3)), change("b", number(5), {})}));
    QCOMPARE(told(effect), QByteArray("p a 1 > 3|p b - > -"));
}

void TestHistory::undoGoesBackStepByStep()
{
    std::vector<ops::Batch> history{batch(3, {}), batch(2, {}), batch(1, {})};
    QCOMPARE(idOf(ops::lastToUndo(history)), 3);
    history.insert(history.begin(), batch(4, {}, 3));
    history[1].takenBack = true;
    QCOMPARE(idOf(ops::lastToUndo(history)), 2);
    QCOMPARE(idOf(ops::lastToUndo({})), -1);
}

void TestHistory::redoPutsBackWhatUndoTook()
{
    std::vector<ops::Batch> history{batch(4, {}, 3), batch(3, {}), batch(2, {})};
    history[1].takenBack = true;
    QCOMPARE(idOf(ops::lastToRedo(history)), 4);
    history.insert(history.begin(), batch(5, {}, 4)); // the redo
    history[1].takenBack = true;
    history[2].takenBack = false;
    QCOMPARE(idOf(ops::lastToRedo(history)), -1);
    QCOMPARE(idOf(ops::lastToUndo(history)), 3);
}

void TestHistory::sinceTakesWhatIsYoung()
{
    std::vector<ops::Batch> history{batch(5, {}, 4), batch(4, {}), batch(3, {}), batch(2, {}), batch(1, {})};
    history[1].takenBack = true;
    const auto found = ops::since(history, 2000000);
    QCOMPARE(int(found.size()), 2);
    QCOMPARE(found[0]->id, 3);
    QCOMPARE(found[1]->id, 2);
}

void TestHistory::planOfOneBatch()
{
    ops::Snapshot now;
    now.set("p", "a", number(2));
    now.set("p", "b", number(5));
    const std::vector<ops::Batch> history{batch(
        1, {change("a", number(1), number(2)), change("b", {}, number(5)), change("c", text("x"), {})})};
    const auto plan = ops::planTakeBack(now, all(history), false);
    QCOMPARE(told(plan.changes), QByteArray("p a 2 > 1|p b 5 > -|p c - > \"x\""));
    QVERIFY(plan.conflicts.empty());
}

void TestHistory::laterChangesAreConflicts()
{
    ops::Snapshot now;
    now.set("p", "a", number(9));
    now.set("p", "b", number(1));
    const std::vector<ops::Batch> history{
        batch(1, {change("a", number(1), number(2)), change("b", number(1), number(2)),
                  change("c", {}, number(2))})};
    const auto plan = ops::planTakeBack(now, all(history), false);
    QCOMPARE(told(plan.conflicts), QByteArray("p a 9 > 1"));
    QCOMPARE(told(plan.changes), QByteArray()); // b and c are so already
}

void TestHistory::forceSetsConflicts()
{
    ops::Snapshot now;
    now.set("p", "a", number(9));
    const std::vector<ops::Batch> history{batch(1, {change("a", number(1), number(2))})};
    const auto plan = ops::planTakeBack(now, all(history), true);
    QCOMPARE(told(plan.changes), QByteArray("p a 9 > 1"));
    QCOMPARE(told(plan.conflicts), QByteArray("p a 9 > 1"));
}

void TestHistory::severalBatchesAreOnePlan()
{
    ops::Snapshot now;
    now.set("p", "a", number(3));
    const std::vector<ops::Batch> history{batch(2, {change("a", number(2), number(3))}),
                                          batch(1, {change("a", number(1), number(2))})};
    const auto plan = ops::planTakeBack(now, all(history), false);
    QCOMPARE(told(plan.changes), QByteArray("p a 3 > 1"));
    QVERIFY(plan.conflicts.empty());
}

void TestHistory::durations_data()
{
    QTest::addColumn<QByteArray>("text");
    QTest::addColumn<qint64>("seconds");
    QTest::newRow("seconds") << QByteArray("90s") << qint64(90);
    QTest::newRow("minutes") << QByteArray("10m") << qint64(600);
    QTest::newRow("hours") << QByteArray("2h") << qint64(7200);
    QTest::newRow("days") << QByteArray("1d") << qint64(86400);
    QTest::newRow("mixed") << QByteArray("1h30m") << qint64(5400);
    QTest::newRow("all four") << QByteArray("1d1h1m1s") << qint64(90061);
    QTest::newRow("any order") << QByteArray("1s1d") << qint64(86401);
    QTest::newRow("a unit twice") << QByteArray("10m10m") << qint64(1200);
    QTest::newRow("more than a day of minutes") << QByteArray("1500m") << qint64(90000);
    QTest::newRow("a hundred years") << QByteArray("36500d") << qint64(3153600000);
    QTest::newRow("zero") << QByteArray("0s") << qint64(0);
}

void TestHistory::durations()
{
    QFETCH(QByteArray, text);
    QFETCH(qint64, seconds);
    const auto duration = ops::parseDuration(text);
    QVERIFY(duration);
    QCOMPARE(*duration, seconds * 1000000);
}

void TestHistory::wrongDurations_data()
{
    QTest::addColumn<QByteArray>("text");
    for (const char *text :
         {"", "10", "m", "10x", "10 m", "-10m", "1h30", "99999999999999999999d", "1.5h", "10mm", "36501d"})
        QTest::newRow(*text ? text : "empty") << QByteArray(text);
    QTest::newRow("more than a number holds") << QByteArray("9999999d").repeated(20);
    QTest::newRow("a long text") << QByteArray(100, 'x');
}

void TestHistory::wrongDurations()
{
    QFETCH(QByteArray, text);
    const auto duration = ops::parseDuration(text);
    QVERIFY(!duration);
    QCOMPARE(duration.failure().kind, ops::Failure::Input);
    QCOMPARE(duration.failure().text, '"' + text.left(40) + "\" is no time such as 90s, 10m, 2h or 1d");
}

void TestHistory::times()
{
    QCOMPARE(ops::isoTime(1795278000123456), QByteArray("2026-11-21T16:20:00.123456Z"));
    QCOMPARE(ops::isoTime(0), QByteArray("1970-01-01T00:00:00.000000Z"));
}

QTEST_APPLESS_MAIN(TestHistory)
#include "test_ops_history.moc"
