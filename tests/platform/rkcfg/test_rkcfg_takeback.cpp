// SPDX-License-Identifier: MIT
// Taking batches back and putting them back again.
#include "changes.h"

#include <QRandomGenerator>
#include <QtTest>

class TestRkcfgTakeBack : public QObject {
    Q_OBJECT

private slots:
    void init() { m_home = std::make_unique<StoreHome>(); }
    void cleanup() { m_home.reset(); }

    void givesTheOldValues();
    void newValuesAreDeleted();
    void deletedValuesReturn();
    void canBeTakenBackItself();
    void lastOfSeveralCounts();
    void conflictsAreLeftAlone();
    void conflictsCanBeForced();
    void dryRunChangesNothing();
    void whatIsBackAlreadyStays();
    void unknownBatch();
    void endsTheRunningBatch();
    void keepsItsLabel();
    void insideATransaction();
    void anyRunOfBatchesReturnsToTheStart();

private:
    std::unique_ptr<StoreHome> m_home;
};

namespace {

QStringList words(const char *text)
{
    return QString::fromLatin1(text).split(QLatin1Char(' '), Qt::SkipEmptyParts);
}

int64_t undoneBy(int64_t id)
{
    int64_t undoes = -1;
    const auto first = [](void *context, const RKCFG_CHANGE *change) {
        *static_cast<int64_t *>(context) = change->undoes;
        return 1;
    };
    rkCFGHistory(store, id - 1, first, &undoes);
    return undoes;
}

// A few writes and removals of a small set of keys, in any case, as one batch.
void randomBatch(QRandomGenerator &random)
{
    const char *paths[] = {"KWX\\A", "kwx\\a", "KWX\\A\\B", "p"};
    const char *names[] = {"a", "b", "A", ""};
    for (int writes = random.bounded(1, 6); writes > 0; --writes) {
        const char *path = paths[random.bounded(4)];
        const char *name = names[random.bounded(4)];
        const quint32 value = random.bounded(3u);
        switch (random.bounded(3)) {
        case 0:
            putNumber(path, name, value);
            break;
        case 1:
            putText(path, name, QByteArray::number(value));
            break;
        default:
            rkCFGRemove(store, path, name);
        }
    }
    save();
}

} // namespace

void TestRkcfgTakeBack::givesTheOldValues()
{
    putNumber("p", "a", 1);
    putText("p", "b", "x");
    save();
    putText("p", "a", "other type");
    putText("p", "b", "y");
    save();
    const TakenBack result = takeBack(3);
    QCOMPARE(result.conflicts, 0);
    QCOMPARE(result.batch, 5);
    QCOMPARE(values(), words("p|a|1 p|b|'x'"));
    QCOMPARE(undoneBy(5), 3);
    QCOMPARE(undoneBy(6), 3);
    QCOMPARE(undoneBy(4), 0);
    QCOMPARE(newestBatch(), 5);
}

void TestRkcfgTakeBack::newValuesAreDeleted()
{
    putNumber("p", "a", 1);
    save();
    QCOMPARE(takeBack(1).conflicts, 0);
    QCOMPARE(values(), QStringList());
    QCOMPARE(changes(), words("p|a|->1 p|a|1>-"));
}

void TestRkcfgTakeBack::deletedValuesReturn()
{
    putText("KWX\\A", "a", "x");
    save();
    rkCFGRemove(store, "kwx\\a", "a");
    save();
    QCOMPARE(takeBack(2).conflicts, 0);
    QCOMPARE(values(), words("KWX\\A|a|'x'"));
}

void TestRkcfgTakeBack::canBeTakenBackItself()
{
    putNumber("p", "a", 1);
    save();
    putNumber("p", "a", 2);
    save();
    const TakenBack undo = takeBack(2);
    QCOMPARE(number("p", "a"), 1u);
    const TakenBack redo = takeBack(undo.batch);
    QCOMPARE(redo.conflicts, 0);
    QCOMPARE(number("p", "a"), 2u);
    QCOMPARE(takeBack(redo.batch).conflicts, 0);
    QCOMPARE(number("p", "a"), 1u);
}

void TestRkcfgTakeBack::lastOfSeveralCounts()
{
    putNumber("p", "a", 1);
    save();
    putNumber("p", "a", 2);
    putNumber("P", "a", 3);
    putNumber("p", "b", 3);
    rkCFGRemove(store, "p", "b");
    save();
    QCOMPARE(takeBack(2).conflicts, 0);
    QCOMPARE(values(), words("p|a|1"));
}

void TestRkcfgTakeBack::conflictsAreLeftAlone()
{
    putNumber("p", "a", 1);
    putNumber("p", "b", 1);
    save();
    putNumber("p", "a", 2);
    putNumber("p", "b", 2);
    save();
    putNumber("p", "b", 3);
    save();
    const TakenBack result = takeBack(3);
    QCOMPARE(result.conflicts, 1);
    QCOMPARE(result.lines, words("p|b|1>3"));
    QCOMPARE(values(), words("p|a|1 p|b|3"));
}

void TestRkcfgTakeBack::conflictsCanBeForced()
{
    putNumber("p", "a", 1);
    save();
    rkCFGRemove(store, "p", "a");
    const TakenBack result = takeBack(1, true);
    QCOMPARE(result.conflicts, 0);
    QCOMPARE(values(), QStringList());
    putNumber("p", "a", 5);
    const TakenBack forced = takeBack(1, true);
    QCOMPARE(forced.conflicts, 0);
    QCOMPARE(forced.lines, words("p|a|->5"));
    QCOMPARE(values(), QStringList());
}

void TestRkcfgTakeBack::dryRunChangesNothing()
{
    putNumber("p", "a", 1);
    putNumber("p", "b", 1);
    save();
    putNumber("p", "b", 2);
    save();
    const QStringList before = changes();
    const TakenBack result = takeBack(1, false, true);
    QCOMPARE(result.conflicts, 1);
    QCOMPARE(result.batch, 0);
    QCOMPARE(result.lines, words("p|b|->2"));
    QCOMPARE(changes(), before);
    QCOMPARE(values(), words("p|a|1 p|b|2"));
}

void TestRkcfgTakeBack::whatIsBackAlreadyStays()
{
    putNumber("p", "a", 1);
    save();
    putNumber("p", "a", 2);
    save();
    putNumber("p", "a", 1);
    save();
    const TakenBack result = takeBack(2);
    QCOMPARE(result.conflicts, 0);
    QCOMPARE(result.batch, 0);
    QCOMPARE(changes().size(), 3);
}

void TestRkcfgTakeBack::unknownBatch()
{
    putNumber("p", "a", 1);
    putNumber("p", "a", 2);
    save();
    const QStringList before = changes();
    for (const int64_t batch : {int64_t(-1), int64_t(0), int64_t(2), int64_t(3), INT64_MAX}) {
        QCOMPARE(takeBack(batch).conflicts, -1);
        QCOMPARE(changes(), before);
    }
    QCOMPARE(rkCFGTakeBack(nullptr, 1, 0, 0, nullptr, nullptr, nullptr), -1);
    QVERIFY(putNumber("p", "a", 3));
}

void TestRkcfgTakeBack::endsTheRunningBatch()
{
    putNumber("p", "a", 1);
    QCOMPARE(takeBack(1).batch, 2);
    putNumber("p", "a", 5);
    QCOMPARE(newestBatch(), 3);
}

void TestRkcfgTakeBack::keepsItsLabel()
{
    putNumber("p", "a", 1);
    save();
    rkCFGLabel(store, "Taken back");
    const int64_t batch = takeBack(1).batch;
    QString label;
    const auto first = [](void *context, const RKCFG_CHANGE *change) {
        *static_cast<QString *>(context) = QString::fromUtf8(change->label);
        return 1;
    };
    rkCFGHistory(store, batch - 1, first, &label);
    QCOMPARE(label, QStringLiteral("Taken back"));
}

void TestRkcfgTakeBack::insideATransaction()
{
    putNumber("p", "a", 1);
    save();
    putNumber("p", "a", 2);
    save();
    QCOMPARE(rkCFGBegin(store), 0);
    QCOMPARE(takeBack(2).conflicts, 0);
    QCOMPARE(takeBack(1).conflicts, 0);
    QCOMPARE(values(), QStringList());
    QCOMPARE(rkCFGEnd(store, 0), 0);
    QCOMPARE(values(), words("p|a|2"));
    QCOMPARE(changes().size(), 2);
    rkCFGBegin(store);
    const TakenBack second = takeBack(2);
    const TakenBack first = takeBack(1);
    QCOMPARE(rkCFGEnd(store, 1), 0);
    QVERIFY(second.batch != first.batch);
    QCOMPARE(values(), QStringList());
    QCOMPARE(undoneBy(second.batch), 2);
    QCOMPARE(undoneBy(first.batch), 1);
}

void TestRkcfgTakeBack::anyRunOfBatchesReturnsToTheStart()
{
    QRandomGenerator random(20261);
    for (int i = 0; i < 10; ++i)
        randomBatch(random);
    const QStringList start = values();
    const int64_t first = newestBatch();
    for (int i = 0; i < 1000; ++i)
        randomBatch(random);
    QList<int64_t> batches;
    const auto collect = [](void *context, const RKCFG_CHANGE *change) {
        auto *all = static_cast<QList<int64_t> *>(context);
        if (all->isEmpty() || all->last() != change->batch)
            *all << change->batch;
        return 0;
    };
    QCOMPARE(rkCFGHistory(store, -1, collect, &batches), 0);
    for (const int64_t batch : batches) {
        if (batch > first)
            QCOMPARE(takeBack(batch).conflicts, 0);
    }
    QCOMPARE(values(), start);
}

QTEST_GUILESS_MAIN(TestRkcfgTakeBack)
#include "test_rkcfg_takeback.moc"
