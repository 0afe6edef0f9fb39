// SPDX-License-Identifier: MIT
// Several processes and threads on one store: what is seen, what survives a kill, who repairs.
#include "storehome.h"

#include <QDir>
#include <QFile>
#include <QRandomGenerator>
#include <QtTest>
#include <atomic>
#include <csignal>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>

class TestRkcfgProcesses : public QObject {
    Q_OBJECT

private slots:
    void init() { m_home = std::make_unique<StoreHome>(); }
    void cleanup() { m_home.reset(); }

    void writesAreSeenAtOnce();
    void killAfterAWriteLosesNothing();
    void killAtAnyMomentLosesNothing();
    void killWhileMakingTheStore();
    void killWhileRepairing();
    void manyStartTogether();
    void manyRepairTogether();
    void runningProcessSurvivesARepairByAnother();
    void waitsForAnotherWriter();
    void givesUpOnAStuckWriter();
    void stuckRepairerIsNotWaitedForForever();
    void removedLockFileHoldsNobodyUp();
    void threadsShareTheStore();
    void childAfterForkHasItsOwn();
    void childHoldsRealLocks();
    void forkAmongBusyThreads();

private:
    std::unique_ptr<StoreHome> m_home;
};

namespace {

// Runs a body in a forked child. True when it returned true there.
template<typename Body>
bool inChild(Body body)
{
    const pid_t child = fork();
    if (child == 0)
        _exit(body() ? 0 : 1);
    int status = -1;
    return waitpid(child, &status, 0) == child && WIFEXITED(status) && WEXITSTATUS(status) == 0;
}

// Waits some microseconds, so that a kill meets another moment each time. Nothing is asserted on it.
void moment(int most)
{
    usleep(static_cast<useconds_t>(QRandomGenerator::global()->bounded(most)));
}

QStringList setNumber(const QString &name, int value)
{
    return {QStringLiteral("set-dword"), QStringLiteral("p"), name, QString::number(value)};
}

// Starts the tool many times at once and waits for all. The number of those that succeeded.
int startTogether(int count)
{
    std::vector<std::unique_ptr<QProcess>> processes;
    for (int i = 0; i < count; ++i) {
        processes.push_back(std::make_unique<QProcess>());
        processes.back()->start(QStringLiteral(CORVEL_BIN_DIR "/rkcfg"), setNumber(QString::number(i), i));
    }
    int succeeded = 0;
    for (const auto &process : processes)
        succeeded += process->waitForFinished() && process->exitStatus() == QProcess::NormalExit &&
                     process->exitCode() == 0;
    return succeeded;
}

void killTool(const QStringList &arguments, int mostMicroseconds)
{
    QProcess process;
    process.start(QStringLiteral(CORVEL_BIN_DIR "/rkcfg"), arguments);
    process.waitForStarted();
    moment(mostMicroseconds);
    process.kill();
    process.waitForFinished();
}

} // namespace

void TestRkcfgProcesses::writesAreSeenAtOnce()
{
    Worker worker;
    for (uint32_t n = 1; n <= 50; ++n) {
        QVERIFY(putNumber("p", "ours", n));
        QCOMPARE(worker.ask("getn p ours"), "=" + QByteArray::number(n));
        QCOMPARE(worker.ask("setn p theirs " + QByteArray::number(n)), QByteArray("1"));
        QCOMPARE(number("p", "theirs"), n);
    }
    QVERIFY(!putNumber("p", "theirs", 50));
}

void TestRkcfgProcesses::killAfterAWriteLosesNothing()
{
    for (int round = 1; round <= 10; ++round) {
        Worker worker;
        QCOMPARE(worker.ask("setn p n " + QByteArray::number(round)), QByteArray("1"));
        worker.kill();
        QCOMPARE(number("p", "n"), uint32_t(round));
        closeStore();
    }
    QCOMPARE(takeLog(), QStringList());
}

void TestRkcfgProcesses::killAtAnyMomentLosesNothing()
{
    for (int round = 0; round < 20; ++round) {
        Worker worker({QStringLiteral("count")});
        worker.readLine();
        moment(30000);
        worker.kill();
        QByteArray told = worker.process().readAll();
        // The last line may be cut; all before it were told after their write had returned.
        told.truncate(told.lastIndexOf('\n'));
        const uint32_t last = told.mid(told.lastIndexOf('\n') + 1).toUInt();
        const uint32_t stored = number("Count", "n").value_or(0);
        QVERIFY2(stored >= last && stored <= last + 2,
                 qPrintable(QStringLiteral("%1 %2").arg(last).arg(stored)));
        closeStore();
    }
    QCOMPARE(m_home->quarantined(), QStringList());
    QCOMPARE(takeLog(), QStringList());
}

void TestRkcfgProcesses::killWhileMakingTheStore()
{
    for (int round = 0; round < 25; ++round) {
        QDir(m_home->folder()).removeRecursively();
        killTool(setNumber(QStringLiteral("n"), 1), 8000);
        QVERIFY(putNumber("p", "m", 2));
        QCOMPARE(save(), 0);
        QCOMPARE(number("p", "m"), 2u);
        QCOMPARE(m_home->quarantined(), QStringList());
        closeStore();
    }
    QCOMPARE(takeLog(), QStringList());
}

void TestRkcfgProcesses::killWhileRepairing()
{
    const QByteArray damage = noise(30000, 71);
    for (int round = 0; round < 20; ++round) {
        QDir(m_home->folder()).removeRecursively();
        putText("p", "text", "precious");
        QCOMPARE(rkCFGClose(store, 1), 0);
        overwrite(m_home->database(), damage);
        killTool({QStringLiteral("list")}, 8000);
        QCOMPARE(text("p", "text"), QByteArray("precious"));
        closeStore();
        int kept = 0;
        for (const QString &file : m_home->quarantined())
            kept += content(m_home->path(file)) == damage;
        QVERIFY(kept >= 1);
        QCOMPARE(kept, m_home->quarantined().size());
    }
}

void TestRkcfgProcesses::manyStartTogether()
{
    for (int round = 0; round < 3; ++round) {
        QDir(m_home->folder()).removeRecursively();
        QCOMPARE(startTogether(12), 12);
        for (uint32_t i = 0; i < 12; ++i)
            QCOMPARE(number("p", QByteArray::number(i).constData()), i);
        QCOMPARE(m_home->quarantined(), QStringList());
        closeStore();
    }
}

void TestRkcfgProcesses::manyRepairTogether()
{
    for (int round = 0; round < 3; ++round) {
        QDir(m_home->folder()).removeRecursively();
        putText("p", "text", "precious");
        QCOMPARE(rkCFGClose(store, 1), 0);
        overwrite(m_home->database(), noise(30000, 81));
        QCOMPARE(startTogether(12), 12);
        QCOMPARE(text("p", "text"), QByteArray("precious"));
        for (uint32_t i = 0; i < 12; ++i)
            QCOMPARE(number("p", QByteArray::number(i).constData()), i);
        QCOMPARE(m_home->quarantined().size(), 1);
        closeStore();
    }
}

void TestRkcfgProcesses::runningProcessSurvivesARepairByAnother()
{
    putText("p", "text", "precious");
    QCOMPARE(save(), 0);
    Worker worker;
    QCOMPARE(worker.ask("get p text"), QByteArray("=precious"));
    // Damage that a fresh process finds at its start, while the worker still works from its memory.
    scribble(m_home->database(), 0, noise(8192, 91));
    closeStore();
    QFile::remove(m_home->database() + QStringLiteral("-wal"));
    QCOMPARE(text("p", "text"), QByteArray("precious"));
    QCOMPARE(m_home->quarantined().size(), 1);
    QCOMPARE(worker.ask("setn p n 3"), QByteArray("1"));
    QCOMPARE(number("p", "n"), 3u);
    QVERIFY(worker.finish());
    // Its end did not take the new file's log away.
    QCOMPARE(number("p", "n"), 3u);
    closeStore();
    QCOMPARE(number("p", "n"), 3u);
}

void TestRkcfgProcesses::waitsForAnotherWriter()
{
    putNumber("p", "n", 1);
    Direct writer(m_home->database());
    QCOMPARE(writer.ask("BEGIN IMMEDIATE"), QByteArray());
    std::atomic<bool> started{false};
    std::thread thread([&] {
        started = true;
        putNumber("p", "n", 2);
    });
    while (!started)
        std::this_thread::yield();
    moment(100000);
    QCOMPARE(writer.ask("COMMIT"), QByteArray());
    thread.join();
    QCOMPARE(number("p", "n"), 2u);
    QCOMPARE(takeLog(), QStringList());
}

void TestRkcfgProcesses::givesUpOnAStuckWriter()
{
    putNumber("p", "n", 1);
    QCOMPARE(save(), 0);
    Direct writer(m_home->database());
    QCOMPARE(writer.ask("BEGIN IMMEDIATE"), QByteArray());
    // The first waits its time; were each of them to do so, this test would run into its limit.
    for (uint32_t n = 0; n < 100; ++n)
        QVERIFY(!putNumber("p", "n", n + 100));
    QCOMPARE(number("p", "n"), 1u);
    QVERIFY(save() != 0);
    QCOMPARE(takeLog().size(), 1);
    QCOMPARE(m_home->quarantined(), QStringList());
    QCOMPARE(writer.ask("COMMIT"), QByteArray());
    QVERIFY(putNumber("p", "n", 2));
    QCOMPARE(save(), 0);
}

void TestRkcfgProcesses::stuckRepairerIsNotWaitedForForever()
{
    putNumber("p", "n", 1);
    QCOMPARE(save(), 0);
    const QString lock = m_home->path(QStringLiteral(".rkcfg-lock"));
    QProcess holder;
    holder.start(QStringLiteral("flock"),
                 {lock, QStringLiteral("sh"), QStringLiteral("-c"), QStringLiteral("echo; read x")});
    QVERIFY(holder.waitForReadyRead());
    QVERIFY(!putNumber("p", "n", 2));
    QCOMPARE(number("p", "n"), 1u);
    QVERIFY(save() != 0);
    holder.closeWriteChannel();
    QVERIFY(holder.waitForFinished());
    QVERIFY(putNumber("p", "n", 2));
    QCOMPARE(save(), 0);
}

// Whoever still has the removed file locked keeps nobody out, and a new one lies in its place.
void TestRkcfgProcesses::removedLockFileHoldsNobodyUp()
{
    putNumber("p", "n", 1);
    const QString lock = m_home->path(QStringLiteral(".rkcfg-lock"));
    QProcess holder;
    holder.start(QStringLiteral("flock"),
                 {lock, QStringLiteral("sh"), QStringLiteral("-c"), QStringLiteral("echo; read x")});
    QVERIFY(holder.waitForReadyRead());
    QVERIFY(QFile::remove(lock));
    QVERIFY(putNumber("p", "n", 2));
    QVERIFY(QFile::exists(lock));
    QCOMPARE(number("p", "n"), 2u);
    QCOMPARE(save(), 0);
    QCOMPARE(takeLog(), QStringList());
    holder.closeWriteChannel();
    QVERIFY(holder.waitForFinished());
}

void TestRkcfgProcesses::threadsShareTheStore()
{
    constexpr int threadCount = 8;
    constexpr uint32_t rounds = 100;
    std::atomic<int> wrong{0};
    std::vector<std::thread> threads;
    for (int t = 0; t < threadCount; ++t) {
        threads.emplace_back([&, t] {
            const QByteArray name = QByteArray::number(t);
            for (uint32_t n = 1; n <= rounds; ++n) {
                wrong += !putNumber("p", name.constData(), n);
                wrong += number("p", name.constData()) != n;
                if (n % 10 == 0)
                    wrong += save() != 0;
                if (n % 25 == 0)
                    closeStore();
            }
        });
    }
    for (std::thread &thread : threads)
        thread.join();
    QCOMPARE(wrong.load(), 0);
    QCOMPARE(takeLog(), QStringList());
}

void TestRkcfgProcesses::childAfterForkHasItsOwn()
{
    putNumber("p", "n", 1);
    QVERIFY(inChild([] { return number("p", "n") == 1u && putNumber("p", "n", 2) && save() == 0; }));
    QCOMPARE(number("p", "n"), 2u);
    QVERIFY(putNumber("p", "n", 3));
    QCOMPARE(tool({QStringLiteral("get"), QStringLiteral("p"), QStringLiteral("n")}).out, QByteArray("3\n"));
    // A child that closes what it never used leaves the parent's store alone.
    QVERIFY(inChild([] { return rkCFGClose(store, 1) == 0; }));
    QVERIFY(putNumber("p", "n", 4));
    QCOMPARE(tool({QStringLiteral("get"), QStringLiteral("p"), QStringLiteral("n")}).out, QByteArray("4\n"));
    QCOMPARE(takeLog(), QStringList());
}

// While a child alone uses the store, another process that comes and goes must not take it for unused
// and tidy the log away.
void TestRkcfgProcesses::childHoldsRealLocks()
{
    putNumber("p", "n", 1);
    QVERIFY(inChild([this] {
        if (!putNumber("p", "n", 2))
            return false;
        closeStore();
        return putNumber("p", "n", 3);
    }));
    int toChild[2];
    int fromChild[2];
    QCOMPARE(pipe(toChild), 0);
    QCOMPARE(pipe(fromChild), 0);
    char byte = 0;
    const pid_t child = fork();
    if (child == 0) {
        bool good = putNumber("p", "n", 4);
        good = write(fromChild[1], "x", 1) == 1 && read(toChild[0], &byte, 1) == 1 && good;
        good = number("p", "n") == 5u && putNumber("p", "n", 6) && good;
        _exit(good ? 0 : 1);
    }
    QCOMPARE(read(fromChild[0], &byte, 1), ssize_t(1));
    closeStore();
    QCOMPARE(Direct(m_home->database()).ask("UPDATE setting SET value = 5"), QByteArray());
    const bool logStayed = QFile::exists(m_home->database() + QStringLiteral("-wal"));
    QCOMPARE(write(toChild[1], "x", 1), ssize_t(1));
    int status = -1;
    QCOMPARE(waitpid(child, &status, 0), child);
    QCOMPARE(status, 0);
    QVERIFY(logStayed);
    QCOMPARE(number("p", "n"), 6u);
    for (const int fd : {toChild[0], toChild[1], fromChild[0], fromChild[1]})
        ::close(fd);
}

void TestRkcfgProcesses::forkAmongBusyThreads()
{
    constexpr int threadCount = 4;
    std::atomic<bool> stop{false};
    std::atomic<int> busy{0};
    std::vector<std::thread> threads;
    for (int t = 0; t < threadCount; ++t) {
        // Nothing but store calls once they are busy: the allocator of the address sanitizer does not survive
        // a fork in the middle of an allocation, and only inside the library does the fork wait.
        threads.emplace_back([&stop, &busy, name = QByteArray::number(t)] {
            for (uint32_t n = 0; !stop; ++n) {
                putNumber("busy", name.constData(), n);
                busy += n == 0;
            }
        });
    }
    while (busy < threadCount)
        std::this_thread::yield();
    int good = 0;
    for (uint32_t round = 1; round <= 20; ++round)
        good += inChild([round] { return putNumber("p", "n", round) && number("p", "n") == round; });
    stop = true;
    for (std::thread &thread : threads)
        thread.join();
    QCOMPARE(good, 20);
    QCOMPARE(number("p", "n"), 20u);
}

QTEST_GUILESS_MAIN(TestRkcfgProcesses)
#include "test_rkcfg_processes.moc"
