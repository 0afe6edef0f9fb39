// SPDX-License-Identifier: MIT
// Runs of writes that are one, and whether somebody else wrote.
#include "changes.h"

#include <QFile>
#include <QRandomGenerator>
#include <QtTest>
#include <sys/wait.h>
#include <unistd.h>

class TestRkcfgTransactions : public QObject {
    Q_OBJECT

private slots:
    void init() { m_home = std::make_unique<StoreHome>(); }
    void cleanup() { m_home.reset(); }

    void othersSeeItAtTheEndOnly();
    void takenBackLeavesNothing();
    void isOneBatch();
    void pathsKeepTheirFirstCase();
    void newValuesMixWithOthers();
    void nestingIsRefused();
    void endWithoutBeginIsRefused();
    void busyWhileAnotherWrites();
    void saveInsideIsPutOff();
    void closingTakesItBack();
    void switchingInsideIsRefused();
    void staysWithItsConfiguration();
    void childHasNoPartInIt();
    void killInsideLeavesNothing();
    void killAtAnyMomentIsAllOrNothing();
    void refusedValueDoesNotSpoilIt();
    void changedTellsOthersWrites();
    void changedTellsAnotherDefault();
    void changedIsQuietAboutOurselves();
    void changedTellsWhatCannotBeRead();

private:
    std::unique_ptr<StoreHome> m_home;
};

namespace {

int changed(uint64_t &mark)
{
    return rkCFGChanged(store, &mark);
}

QByteArray defaultName()
{
    char name[100] = "";
    rkCFGGetDefaultName(name, sizeof name);
    return name;
}

QStringList words(const char *text)
{
    return QString::fromLatin1(text).split(QLatin1Char(' '), Qt::SkipEmptyParts);
}

} // namespace

void TestRkcfgTransactions::othersSeeItAtTheEndOnly()
{
    Worker worker;
    putNumber("p", "a", 1);
    QCOMPARE(rkCFGBegin(store), 0);
    QVERIFY(putNumber("p", "a", 2));
    QVERIFY(putNumber("p", "b", 2));
    QVERIFY(!putNumber("p", "b", 2));
    QCOMPARE(number("p", "a"), 2u);
    QCOMPARE(worker.ask("getn p a"), QByteArray("=1"));
    QCOMPARE(worker.ask("getn p b"), QByteArray("absent"));
    QCOMPARE(rkCFGEnd(store, 1), 0);
    QCOMPARE(worker.ask("getn p a"), QByteArray("=2"));
    QCOMPARE(worker.ask("getn p b"), QByteArray("=2"));
    QCOMPARE(takeLog(), QStringList());
}

void TestRkcfgTransactions::takenBackLeavesNothing()
{
    putNumber("p", "a", 1);
    rkCFGBegin(store);
    putNumber("p", "a", 2);
    rkCFGRemove(store, "p", "a");
    putText("p", "c", "x");
    QCOMPARE(rkCFGEnd(store, 0), 0);
    QCOMPARE(values(), words("p|a|1"));
    QCOMPARE(changes(), words("p|a|->1"));
    putNumber("p", "a", 3);
    QCOMPARE(changes(), words("p|a|->1 p|a|1>3"));
}

void TestRkcfgTransactions::isOneBatch()
{
    putNumber("p", "a", 1);
    save();
    rkCFGBegin(store);
    putNumber("p", "a", 2);
    putNumber("p", "b", 2);
    rkCFGEnd(store, 1);
    QCOMPARE(newestBatch(), 2);
    putNumber("p", "a", 3);
    QCOMPARE(newestBatch(), 4);
}

// In the values as in the history; a path that is gone may come back in another case.
void TestRkcfgTransactions::pathsKeepTheirFirstCase()
{
    putNumber("Old", "a", 1);
    rkCFGBegin(store);
    putNumber("OLD", "b", 2);
    putNumber("old", "c", 3);
    putNumber("New", "a", 4);
    putNumber("NEW", "b", 5);
    rkCFGRemove(store, "new", "a");
    rkCFGRemove(store, "new", "b");
    putNumber("new", "c", 6);
    rkCFGEnd(store, 1);
    QCOMPARE(Direct(m_home->database()).ask("SELECT group_concat(path) FROM setting"),
             QByteArray("new,Old,Old,Old"));
    QCOMPARE(Direct(m_home->database())
                 .ask("SELECT group_concat(path) FROM (SELECT path FROM history ORDER BY id)"),
             QByteArray("Old,Old,Old,New,New,New,New,new"));
}

// What was there, what was the same, what came again and what went has its own record each, or none.
void TestRkcfgTransactions::newValuesMixWithOthers()
{
    putNumber("P", "b", 1);
    putText("P", "d", "same");
    rkCFGBegin(store);
    QVERIFY(putNumber("p", "a", 1));
    QVERIFY(putText("p", "b", "other"));
    QVERIFY(putNumber("p", "c", 1));
    QVERIFY(!putText("p", "d", "same"));
    QVERIFY(putNumber("p", "e", 1));
    QVERIFY(putNumber("p", "e", 2));
    QVERIFY(putNumber("p", "f", 1));
    QVERIFY(rkCFGRemove(store, "p", "f"));
    QVERIFY(!rkCFGRemove(store, "p", "f"));
    QVERIFY(putText("p", "f", ""));
    rkCFGEnd(store, 1);
    QCOMPARE(changes(store, 2),
             words("P|a|->1 P|b|1>'other' P|c|->1 P|e|->1 P|e|1>2 P|f|->1 P|f|1>- P|f|->''"));
    QCOMPARE(values(), words("P|a|1 P|b|'other' P|c|1 P|d|'same' P|e|2 P|f|''"));
}

void TestRkcfgTransactions::nestingIsRefused()
{
    QCOMPARE(rkCFGBegin(store), 0);
    QVERIFY(rkCFGBegin(store) != 0);
    putNumber("p", "a", 2);
    QCOMPARE(rkCFGEnd(store, 1), 0);
    QCOMPARE(number("p", "a"), 2u);
}

void TestRkcfgTransactions::endWithoutBeginIsRefused()
{
    QVERIFY(rkCFGEnd(store, 1) != 0);
    putNumber("p", "a", 2);
    QVERIFY(rkCFGEnd(store, 0) != 0);
    QCOMPARE(number("p", "a"), 2u);
}

void TestRkcfgTransactions::busyWhileAnotherWrites()
{
    putNumber("p", "a", 1);
    Direct other(m_home->database());
    QCOMPARE(other.ask("BEGIN IMMEDIATE"), QByteArray());
    QVERIFY(rkCFGBegin(store) != 0);
    QVERIFY(rkCFGEnd(store, 1) != 0);
    QCOMPARE(other.ask("COMMIT"), QByteArray());
    QCOMPARE(rkCFGBegin(store), 0);
    QCOMPARE(rkCFGEnd(store, 1), 0);
}

void TestRkcfgTransactions::saveInsideIsPutOff()
{
    rkCFGBegin(store);
    putNumber("p", "a", 1);
    QCOMPARE(save(), 0);
    putNumber("p", "b", 1);
    QCOMPARE(rkCFGEnd(store, 0), 0);
    QCOMPARE(values(), QStringList());
    rkCFGBegin(store);
    putNumber("p", "a", 1);
    QCOMPARE(save(), 0);
    putNumber("p", "b", 1);
    QCOMPARE(rkCFGEnd(store, 1), 0);
    QCOMPARE(newestBatch(), 1);
    // The put off save took the good copy.
    QVERIFY(QFile::exists(m_home->database() + QStringLiteral(".good")));
}

void TestRkcfgTransactions::closingTakesItBack()
{
    putNumber("p", "a", 1);
    rkCFGBegin(store);
    putNumber("p", "a", 2);
    QCOMPARE(rkCFGClose(store, 1), 0);
    QCOMPARE(number("p", "a"), 1u);
    QCOMPARE(rkCFGBegin(store), 0);
    QCOMPARE(rkCFGEnd(store, 1), 0);
}

void TestRkcfgTransactions::switchingInsideIsRefused()
{
    rkCFGBegin(store);
    putNumber("p", "a", 2);
    QVERIFY(rkCFGSetDefaultName("other") != 0);
    QCOMPARE(rkCFGEnd(store, 1), 0);
    QCOMPARE(number("p", "a"), 2u);
    QCOMPARE(rkCFGSetDefaultName("other"), 0);
}

void TestRkcfgTransactions::staysWithItsConfiguration()
{
    putNumber("p", "a", 1);
    Worker worker;
    rkCFGBegin(store);
    putNumber("p", "a", 2);
    QCOMPARE(tool({QStringLiteral("default"), QStringLiteral("other")}).code, 3); // made under the lock
    overwrite(m_home->path(QStringLiteral("default-config")), "other\n");
    QVERIFY(putNumber("p", "b", 2));
    QCOMPARE(defaultName(), QByteArray("default")); // whoever is inside is told where that is
    QCOMPARE(rkCFGEnd(store, 1), 0);
    QCOMPARE(defaultName(), QByteArray("other"));
    QCOMPARE(number("p", "b"), std::nullopt);
    QFile::remove(m_home->path(QStringLiteral("default-config")));
    QCOMPARE(values(), words("p|a|2 p|b|2"));
}

void TestRkcfgTransactions::childHasNoPartInIt()
{
    putNumber("p", "a", 1);
    rkCFGBegin(store);
    putNumber("p", "a", 2);
    const pid_t child = fork();
    if (child == 0)
        _exit(number("p", "a") == 1u && rkCFGEnd(store, 1) != 0 ? 0 : 1);
    int status = -1;
    QCOMPARE(waitpid(child, &status, 0), child);
    QCOMPARE(status, 0);
    QCOMPARE(number("p", "a"), 2u);
    QCOMPARE(rkCFGEnd(store, 1), 0);
    QCOMPARE(values(), words("p|a|2"));
}

void TestRkcfgTransactions::killInsideLeavesNothing()
{
    putNumber("p", "a", 1);
    Worker worker;
    QCOMPARE(worker.ask("begin"), QByteArray("0"));
    QCOMPARE(worker.ask("setn p a 2"), QByteArray("1"));
    worker.kill();
    QCOMPARE(values(), words("p|a|1"));
    QCOMPARE(changes(), words("p|a|->1"));
    QVERIFY(putNumber("p", "a", 3));
}

// Each transaction of the worker writes one number under two hundred names.
void TestRkcfgTransactions::killAtAnyMomentIsAllOrNothing()
{
    for (int round = 0; round < 20; ++round) {
        Worker worker({QStringLiteral("transactions")});
        worker.readLine();
        usleep(static_cast<useconds_t>(QRandomGenerator::global()->bounded(20000)));
        worker.kill();
        QSet<QString> seen;
        for (const QString &value : values())
            seen << value.section(QLatin1Char('|'), 2);
        QCOMPARE(seen.size(), 1);
        // As many records as changes: 200 per transaction.
        QCOMPARE(changes().size() % 200, 0);
        closeStore();
    }
    QCOMPARE(m_home->quarantined(), QStringList());
    QCOMPARE(takeLog(), QStringList());
}

void TestRkcfgTransactions::refusedValueDoesNotSpoilIt()
{
    rkCFGBegin(store);
    putNumber("p", "a", 1);
    QVERIFY(!putText("p", "b", QByteArray((1 << 20) + 1, 'x')));
    QCOMPARE(rkCFGEnd(store, 1), 0);
    QCOMPARE(values(), words("p|a|1"));
    QCOMPARE(takeLog().size(), 1);
}

void TestRkcfgTransactions::changedTellsOthersWrites()
{
    putNumber("p", "a", 1);
    Worker worker;
    uint64_t mark = 0;
    QCOMPARE(changed(mark), 1);
    QCOMPARE(changed(mark), 0);
    worker.ask("getn p a");
    QCOMPARE(changed(mark), 0);
    worker.ask("setn p a 1");
    QCOMPARE(changed(mark), 0);
    worker.ask("setn p a 2");
    QCOMPARE(changed(mark), 1);
    QCOMPARE(changed(mark), 0);
    // Ours before we look does not hide theirs.
    worker.ask("setn p a 3");
    putNumber("p", "b", 1);
    QCOMPARE(changed(mark), 1);
    QCOMPARE(changed(mark), 0);
}

void TestRkcfgTransactions::changedTellsAnotherDefault()
{
    putNumber("p", "a", 1);
    Worker worker;
    uint64_t mark = 0;
    changed(mark);
    QCOMPARE(worker.ask("default other"), QByteArray("0"));
    QCOMPARE(changed(mark), 1);
    QCOMPARE(changed(mark), 0);
    QCOMPARE(worker.ask("default default"), QByteArray("0"));
    QCOMPARE(changed(mark), 1);
    QCOMPARE(changed(mark), 0);
}

void TestRkcfgTransactions::changedIsQuietAboutOurselves()
{
    uint64_t mark = 0;
    changed(mark);
    for (uint32_t n = 1; n < 20; ++n) {
        putNumber("p", "a", n);
        save();
        QCOMPARE(changed(mark), 0);
    }
    rkCFGBegin(store);
    putNumber("p", "a", 100);
    QCOMPARE(changed(mark), 0);
    rkCFGEnd(store, 1);
    QCOMPARE(changed(mark), 0);
}

void TestRkcfgTransactions::changedTellsWhatCannotBeRead()
{
    uint64_t mark = 5;
    QCOMPARE(rkCFGChanged(store, nullptr), -1);
    QCOMPARE(rkCFGChanged(nullptr, &mark), -1);
    overwrite(QString(m_home->folder()).chopped(1), "a file where the folder should be");
    QCOMPARE(changed(mark), -1);
    QCOMPARE(mark, uint64_t(5));
}

QTEST_GUILESS_MAIN(TestRkcfgTransactions)
#include "test_rkcfg_transactions.moc"
