// SPDX-License-Identifier: MIT
// The record of changes: what is in it, who and when, batches and labels.
#include "changes.h"

#include <QDateTime>
#include <QFile>
#include <QtTest>
#include <unistd.h>

class TestRkcfgHistory : public QObject {
    Q_OBJECT

private slots:
    void init() { m_home = std::make_unique<StoreHome>(); }
    void cleanup() { m_home.reset(); }

    void everyChangeIsRecorded();
    void equalWritesAreNot();
    void pathsHaveTheStoresCase();
    void tellsWhoAndWhen();
    void saveEndsABatch();
    void labelStandsOnItsBatch();
    void unusedLabelIsDropped();
    void strangeLabelsAreRefused();
    void walkGoesBothWays();
    void walkSeesOneMoment();
    void walkEndsWhenTold();
    void anotherProcessHasItsOwnBatch();
    void olderStoreIsBroughtUp();
    void olderProgramStillWorks();
    void goodCopyKeepsIt();
    void removedValueIsGone();
    void changesAreBounded();
    void wholeBatchesAreKept();
    void daysAreBounded();
    void manyGoStepByStep();
    void boundsWaitForNobody();

private:
    std::unique_ptr<StoreHome> m_home;
};

namespace {

struct Seen {
    std::vector<RKCFG_CHANGE> rows; // texts are not kept
    QStringList labels;
    QStringList writers;
    int stopAfter = 1000000;
};

Seen see(int64_t after, int stopAfter = 1000000)
{
    Seen seen;
    seen.stopAfter = stopAfter;
    const auto add = [](void *context, const RKCFG_CHANGE *change) {
        auto *all = static_cast<Seen *>(context);
        all->rows.push_back(*change);
        all->labels << (change->label ? QString::fromUtf8(change->label) : QStringLiteral("(none)"));
        all->writers << QString::fromUtf8(change->program) + QLatin1Char('/') +
                            QString::fromUtf8(change->user);
        return int(all->rows.size()) >= all->stopAfter ? 1 : 0;
    };
    if (rkCFGHistory(store, after, add, &seen) != 0)
        seen.labels << QStringLiteral("failed");
    return seen;
}

QStringList words(const char *text)
{
    return QString::fromLatin1(text).split(QLatin1Char(' '), Qt::SkipEmptyParts);
}

bool removeValue(const char *path, const char *name)
{
    return rkCFGRemove(store, path, name) != 0;
}

} // namespace

void TestRkcfgHistory::everyChangeIsRecorded()
{
    QCOMPARE(changes(), QStringList());
    putText("p", "t", "a");
    putText("p", "t", "");
    putNumber("p", "t", 4294967295u);
    putText("p", "t", QByteArray("x\0y", 3));
    removeValue("p", "t");
    QCOMPARE(changes(), QStringList({QStringLiteral("p|t|->'a'"), QStringLiteral("p|t|'a'>''"),
                                     QStringLiteral("p|t|''>4294967295"),
                                     QString::fromLatin1("p|t|4294967295>'x\0y'", 20),
                                     QString::fromLatin1("p|t|'x\0y'>-", 11)}));
}

void TestRkcfgHistory::equalWritesAreNot()
{
    putNumber("p", "n", 1);
    QVERIFY(!putNumber("p", "n", 1));
    QVERIFY(!removeValue("p", "other"));
    QCOMPARE(changes(), words("p|n|->1"));
}

void TestRkcfgHistory::pathsHaveTheStoresCase()
{
    putNumber("KWX\\A", "n", 1);
    putNumber("kwx\\a", "n", 2);
    putNumber("kwx\\a", "m", 2);
    removeValue("kwx\\A", "n");
    QCOMPARE(changes(), words("KWX\\A|n|->1 KWX\\A|n|1>2 KWX\\A|m|->2 KWX\\A|n|2>-"));
}

void TestRkcfgHistory::tellsWhoAndWhen()
{
    const int64_t before = QDateTime::currentMSecsSinceEpoch() * 1000;
    putNumber("p", "n", 1);
    const int64_t after = (QDateTime::currentMSecsSinceEpoch() + 1) * 1000;
    const Seen seen = see(0);
    QCOMPARE(seen.rows.size(), size_t(1));
    QVERIFY(seen.rows[0].time_us >= before && seen.rows[0].time_us <= after);
    QCOMPARE(seen.rows[0].size, uint32_t(sizeof(RKCFG_CHANGE)));
    QCOMPARE(seen.rows[0].pid, uint32_t(getpid()));
    QProcess id;
    id.start(QStringLiteral("id"), {QStringLiteral("-un")});
    QVERIFY(id.waitForFinished());
    QCOMPARE(seen.writers,
             QStringList(QStringLiteral("test_rkcfg_history/") + QString::fromUtf8(id.readAll()).trimmed()));
}

void TestRkcfgHistory::saveEndsABatch()
{
    putNumber("p", "a", 1);
    putNumber("p", "b", 1);
    save();
    save();
    putNumber("p", "a", 2);
    closeStore();
    putNumber("p", "b", 2);
    QList<int64_t> ids;
    QList<int64_t> batches;
    for (const RKCFG_CHANGE &change : see(0).rows) {
        ids << change.id;
        batches << change.batch;
    }
    QCOMPARE(ids, (QList<int64_t>{1, 2, 3, 4}));
    QCOMPARE(batches, (QList<int64_t>{1, 1, 3, 4}));
}

void TestRkcfgHistory::labelStandsOnItsBatch()
{
    QCOMPARE(rkCFGLabel(store, "Load File \xC3\xA4.ipp"), 0);
    putNumber("p", "a", 1);
    putNumber("p", "b", 1);
    save();
    putNumber("p", "a", 2);
    // A label begins a batch of its own.
    QCOMPARE(rkCFGLabel(store, "second"), 0);
    putNumber("p", "a", 3);
    QCOMPARE(see(0).labels, QStringList({QString::fromUtf8("Load File \xC3\xA4.ipp"),
                                         QString::fromUtf8("Load File \xC3\xA4.ipp"),
                                         QStringLiteral("(none)"), QStringLiteral("second")}));
    QCOMPARE(see(-1).labels.first(), QStringLiteral("second"));
}

void TestRkcfgHistory::unusedLabelIsDropped()
{
    rkCFGLabel(store, "unused");
    save();
    putNumber("p", "a", 1);
    save();
    rkCFGLabel(store, "unused");
    rkCFGLabel(store, nullptr);
    putNumber("p", "a", 2);
    save();
    rkCFGLabel(store, "unused");
    closeStore();
    putNumber("p", "a", 3);
    QCOMPARE(see(0).labels,
             QStringList({QStringLiteral("(none)"), QStringLiteral("(none)"), QStringLiteral("(none)")}));
}

void TestRkcfgHistory::strangeLabelsAreRefused()
{
    QCOMPARE(rkCFGLabel(store, QByteArray(200, 'x').constData()), 0);
    QVERIFY(rkCFGLabel(store, QByteArray(201, 'x').constData()) != 0);
    QVERIFY(rkCFGLabel(store, "Gr\xF6\xDF") != 0);
    putNumber("p", "a", 1);
    QCOMPARE(see(0).labels, QStringList(QString(200, QLatin1Char('x'))));
}

void TestRkcfgHistory::walkGoesBothWays()
{
    // More than one page of the walk.
    for (uint32_t n = 1; n <= 1203; ++n)
        putNumber("p", "n", n);
    const Seen forward = see(0);
    const Seen backward = see(-1);
    QCOMPARE(forward.rows.size(), size_t(1203));
    QCOMPARE(backward.rows.size(), size_t(1203));
    for (size_t i = 0; i < 1203; ++i) {
        QCOMPARE(forward.rows[i].newNumber, uint32_t(i + 1));
        QCOMPARE(backward.rows[i].newNumber, uint32_t(1203 - i));
    }
    QCOMPARE(see(1200).rows.size(), size_t(3));
    QCOMPARE(see(1203).rows.size(), size_t(0));
    QCOMPARE(see(99999).rows.size(), size_t(0));
    QVERIFY(rkCFGHistory(
                store, -2, [](void *, const RKCFG_CHANGE *) { return 0; }, nullptr) != 0);
    QVERIFY(rkCFGHistory(store, 0, nullptr, nullptr) != 0);
}

void TestRkcfgHistory::walkSeesOneMoment()
{
    for (uint32_t n = 1; n <= 700; ++n)
        putNumber("p", "n", n);
    int seen = 0;
    const auto write = [](void *context, const RKCFG_CHANGE *change) {
        ++*static_cast<int *>(context);
        putNumber("p", "m", uint32_t(change->id));
        return 0;
    };
    QCOMPARE(rkCFGHistory(store, 0, write, &seen), 0);
    QCOMPARE(seen, 700);
}

void TestRkcfgHistory::walkEndsWhenTold()
{
    for (uint32_t n = 1; n <= 5; ++n)
        putNumber("p", "n", n);
    QCOMPARE(see(0, 2).rows.size(), size_t(2));
    QCOMPARE(see(-1, 3).rows.size(), size_t(3));
}

void TestRkcfgHistory::anotherProcessHasItsOwnBatch()
{
    putNumber("p", "ours", 1);
    Worker worker;
    worker.ask("setn p theirs 1");
    putNumber("p", "ours", 2);
    worker.ask("setn p theirs 2");
    const Seen seen = see(0);
    QList<int64_t> batches;
    for (const RKCFG_CHANGE &change : seen.rows)
        batches << change.batch;
    QCOMPARE(batches, (QList<int64_t>{1, 2, 1, 2}));
    QCOMPARE(seen.rows[1].pid, uint32_t(worker.process().processId()));
    QVERIFY(seen.writers[1].startsWith(QLatin1String("rkcfg_worker/")));
}

void TestRkcfgHistory::olderStoreIsBroughtUp()
{
    putNumber("p", "n", 1);
    closeStore();
    {
        Direct direct(m_home->database());
        direct.ask("DROP TABLE history");
        direct.ask("DROP TABLE writer");
    }
    QCOMPARE(changes(), QStringList());
    QCOMPARE(number("p", "n"), 1u);
    QCOMPARE(takeBack(1).conflicts, -1);
    takeLog();
    putNumber("p", "n", 2);
    QCOMPARE(changes(), words("p|n|1>2"));
    QCOMPARE(Direct(m_home->database()).ask("PRAGMA user_version"), QByteArray("1"));
    QCOMPARE(takeLog(), QStringList());
}

// What the library did before there was a history.
void TestRkcfgHistory::olderProgramStillWorks()
{
    putNumber("p", "n", 1);
    Direct older(m_home->database());
    QCOMPARE(older.ask("PRAGMA quick_check(1)"), QByteArray("ok"));
    QCOMPARE(older.ask("SELECT count(*) FROM sqlite_schema WHERE type = 'table' AND name = 'setting'"),
             QByteArray("1"));
    QCOMPARE(older.ask("INSERT INTO setting (path, name, type, value) VALUES ('p', 'n', 2, 7)"
                       " ON CONFLICT (path, name) DO UPDATE SET value = excluded.value"),
             QByteArray());
    QCOMPARE(number("p", "n"), 7u);
    putNumber("p", "n", 8);
    QCOMPARE(changes(), words("p|n|->1 p|n|7>8"));
}

void TestRkcfgHistory::goodCopyKeepsIt()
{
    putNumber("p", "n", 1);
    putNumber("p", "n", 2);
    QCOMPARE(rkCFGClose(store, 1), 0);
    overwrite(m_home->database(), noise(20000, 7));
    QCOMPARE(changes(), words("p|n|->1 p|n|1>2"));
    putNumber("p", "n", 3);
    QCOMPARE(changes(), words("p|n|->1 p|n|1>2 p|n|2>3"));
}

void TestRkcfgHistory::removedValueIsGone()
{
    putText("KWX\\A", "t", "x");
    QVERIFY(!removeValue("KWX\\A", "T"));
    QVERIFY(removeValue("kwx\\a", "t"));
    QVERIFY(!removeValue("KWX\\A", "t"));
    QCOMPARE(text("KWX\\A", "t"), std::nullopt);
    QCOMPARE(values(), QStringList());
    QVERIFY(!removeValue(nullptr, "t"));
    QVERIFY(!removeValue("p", nullptr));
    QCOMPARE(rkCFGRemove(nullptr, "p", "t"), 0);
}

namespace {

// Changes of one name, each a batch of its own.
void edit(uint32_t from, uint32_t to)
{
    for (uint32_t n = from; n <= to; ++n) {
        putNumber("p", "n", n);
        save();
    }
}

} // namespace

void TestRkcfgHistory::changesAreBounded()
{
    putNumber("rkcfg\\History", "Changes", 10);
    edit(1, 30);
    const Seen seen = see(0);
    QCOMPARE(seen.rows.size(), size_t(10));
    QCOMPARE(seen.rows.front().newNumber, 21u);
    // Ids go on, whatever was removed.
    QCOMPARE(seen.rows.back().id, 31);
    putNumber("rkcfg\\History", "Changes", 0);
    save();
    edit(31, 31);
    QCOMPARE(changes(), words("p|n|30>31"));
    edit(32, 33);
    QCOMPARE(see(0).rows.back().id, 35);
}

void TestRkcfgHistory::wholeBatchesAreKept()
{
    putNumber("rkcfg\\History", "Changes", 10);
    save();
    for (uint32_t n = 1; n <= 15; ++n)
        putNumber("p", QByteArray::number(n).constData(), n);
    save();
    edit(1, 5);
    QCOMPARE(see(0).rows.size(), size_t(20));
    edit(6, 10);
    QCOMPARE(see(0).rows.size(), size_t(10));
}

void TestRkcfgHistory::daysAreBounded()
{
    edit(1, 20);
    closeStore();
    Direct(m_home->database()).ask("UPDATE history SET time = time - 92 * 86400000000 WHERE id <= 12");
    QCOMPARE(see(0).rows.size(), size_t(8));
    closeStore();
    putNumber("rkcfg\\History", "Days", 30);
    closeStore();
    Direct(m_home->database()).ask("UPDATE history SET time = time - 32 * 86400000000 WHERE id <= 15");
    QCOMPARE(see(0).rows.front().id, 16);
}

void TestRkcfgHistory::manyGoStepByStep()
{
    rkCFGBegin(store);
    for (uint32_t n = 1; n <= 12000; ++n) {
        putNumber("p", "n", n);
        rkCFGLabel(store, nullptr);
    }
    rkCFGEnd(store, 1);
    putNumber("rkcfg\\History", "Changes", 10);
    edit(1, 2);
    closeStore();
    size_t before = see(0).rows.size();
    QVERIFY2(before > 10, qPrintable(QString::number(before)));
    for (int opened = 0; before > 10 && opened < 20; ++opened) {
        closeStore();
        const size_t now = see(0).rows.size();
        QVERIFY(now < before);
        before = now;
    }
    QCOMPARE(before, size_t(10));
}

void TestRkcfgHistory::boundsWaitForNobody()
{
    edit(1, 20);
    putNumber("rkcfg\\History", "Changes", 5);
    Direct writer(m_home->database());
    QCOMPARE(writer.ask("BEGIN IMMEDIATE"), QByteArray());
    QCOMPARE(save(), 0);
    QCOMPARE(see(0).rows.size(), size_t(21));
    QCOMPARE(writer.ask("COMMIT"), QByteArray());
    edit(21, 21);
    QCOMPARE(see(0).rows.size(), size_t(5));
    QCOMPARE(takeLog(), QStringList());
}

QTEST_GUILESS_MAIN(TestRkcfgHistory)
#include "test_rkcfg_history.moc"
