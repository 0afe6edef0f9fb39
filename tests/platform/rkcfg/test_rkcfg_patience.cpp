// SPDX-License-Identifier: MIT
// How long calls wait for other processes. The time itself is not measured: all sleeps of the library and
// of SQLite go through this program, which adds up what they ask for.
#include "storehome.h"
#include "support/sleepcount.h"

#include <QFile>
#include <QtTest>
#include <cerrno>
#include <fcntl.h>
#include <sqlite3.h>
#include <thread>

using SleepCount::mostMs;
using SleepCount::slept;

namespace {

std::atomic<bool> unlockFails{false};

int lockFile(int fd, int command, void *argument)
{
    const bool locking = command == F_SETLK || command == F_SETLKW;
    if (unlockFails && locking && static_cast<struct flock *>(argument)->l_type == F_UNLCK) {
        errno = EIO;
        return -1;
    }
    return fcntl(fd, command, argument);
}

} // namespace

class TestRkcfgPatience : public QObject {
    Q_OBJECT

private slots:
    void initTestCase();
    void init();
    void cleanup();

    void stuckWriterIsWaitedForOnce();
    void stuckWriterDoesNotDisturbReading();
    void stuckRepairerAtAWrite();
    void stuckRepairerAtTheStart();
    void stuckReaderAtTheStart();
    void stuckTransactionOfAnother();
    void heldStoreIsToldOnce();
    void failingUnlock();
    void turnsCountAsWaiting();

private:
    std::unique_ptr<StoreHome> m_home;
};

namespace {

// Another process that holds the directory's lock until it is told.
class Holder {
public:
    explicit Holder(const StoreHome &home)
    {
        m_process.start(QStringLiteral("flock"),
                        {home.path(QStringLiteral(".rkcfg-lock")), QStringLiteral("sh"), QStringLiteral("-c"),
                         QStringLiteral("echo; read x")});
        if (!m_process.waitForReadyRead())
            qFatal("no lock");
    }
    ~Holder() { release(); }
    Holder(const Holder &) = delete;
    Holder &operator=(const Holder &) = delete;

    void release()
    {
        m_process.closeWriteChannel();
        m_process.waitForFinished();
    }

private:
    QProcess m_process;
};

} // namespace

void TestRkcfgPatience::initTestCase()
{
    sqlite3_vfs *vfs = sqlite3_vfs_find(nullptr);
    vfs->xSetSystemCall(vfs, "fcntl", reinterpret_cast<sqlite3_syscall_ptr>(lockFile));
}

void TestRkcfgPatience::init()
{
    m_home = std::make_unique<StoreHome>();
    putNumber("p", "n", 1);
    save();
    slept();
}

void TestRkcfgPatience::cleanup()
{
    unlockFails = false;
    m_home.reset();
}

void TestRkcfgPatience::stuckWriterIsWaitedForOnce()
{
    Direct writer(m_home->database());
    QCOMPARE(writer.ask("BEGIN IMMEDIATE"), QByteArray());
    QVERIFY(!putNumber("p", "n", 2));
    const int64_t first = slept();
    QVERIFY2(first > 0 && first <= mostMs, qPrintable(QString::number(first)));
    for (uint32_t n = 0; n < 50; ++n) {
        QVERIFY(!putNumber("p", "n", n + 100));
        QCOMPARE(number("p", "n"), 1u);
    }
    QCOMPARE(slept(), 0);
    QCOMPARE(writer.ask("COMMIT"), QByteArray());
    QVERIFY(putNumber("p", "n", 2));
    // From here on it is waited again.
    QCOMPARE(writer.ask("BEGIN IMMEDIATE"), QByteArray());
    QVERIFY(!putNumber("p", "n", 3));
    QVERIFY(slept() > 0);
}

void TestRkcfgPatience::stuckWriterDoesNotDisturbReading()
{
    Direct writer(m_home->database());
    QCOMPARE(writer.ask("BEGIN IMMEDIATE"), QByteArray());
    QCOMPARE(number("p", "n"), 1u);
    QVERIFY(!putNumber("p", "n", 1));
    QCOMPARE(save(), 0);
    QCOMPARE(slept(), 0);
}

void TestRkcfgPatience::stuckRepairerAtAWrite()
{
    Holder holder(*m_home);
    QVERIFY(!putNumber("p", "n", 2));
    QVERIFY(slept() <= mostMs);
    for (uint32_t n = 0; n < 50; ++n)
        QVERIFY(!putNumber("p", "n", n + 100));
    QVERIFY(rkCFGBegin(store) != 0);
    QCOMPARE(slept(), 0);
    holder.release();
    QVERIFY(putNumber("p", "n", 2));
}

void TestRkcfgPatience::stuckRepairerAtTheStart()
{
    closeStore();
    Holder holder(*m_home);
    QCOMPARE(number("p", "n"), std::nullopt);
    QVERIFY(slept() <= mostMs);
    for (int i = 0; i < 50; ++i)
        QCOMPARE(number("p", "n"), std::nullopt);
    QVERIFY(!putNumber("p", "n", 2));
    QCOMPARE(slept(), 0);
    holder.release();
    QCOMPARE(number("p", "n"), 1u);
}

void TestRkcfgPatience::stuckReaderAtTheStart()
{
    closeStore();
    Direct other(m_home->database());
    other.ask("PRAGMA locking_mode = EXCLUSIVE");
    QCOMPARE(other.ask("BEGIN EXCLUSIVE"), QByteArray());
    QCOMPARE(number("p", "n"), std::nullopt);
    QVERIFY(slept() <= mostMs);
    for (int i = 0; i < 50; ++i)
        QVERIFY(!putNumber("p", "n", 2));
    QCOMPARE(slept(), 0);
}

void TestRkcfgPatience::stuckTransactionOfAnother()
{
    Worker worker;
    QCOMPARE(worker.ask("begin"), QByteArray("0"));
    QVERIFY(rkCFGBegin(store) != 0);
    QVERIFY(slept() <= mostMs);
    QVERIFY(!putNumber("p", "n", 2));
    QVERIFY(rkCFGBegin(store) != 0);
    QCOMPARE(slept(), 0);
    QCOMPARE(worker.ask("end 1"), QByteArray("0"));
    QCOMPARE(rkCFGBegin(store), 0);
    QCOMPARE(rkCFGEnd(store, 1), 0);
}

// However often it is tried, and although reading works in between.
void TestRkcfgPatience::heldStoreIsToldOnce()
{
    Worker worker;
    for (int turn = 0; turn < 2; ++turn) {
        QCOMPARE(worker.ask("begin"), QByteArray("0"));
        takeLog();
        for (int i = 0; i < 5; ++i) {
            QVERIFY(rkCFGBegin(store) != 0);
            number("p", "n");
        }
        QCOMPARE(takeLog().size(), 1);
        QCOMPARE(worker.ask("end 1"), QByteArray("0"));
        QCOMPARE(rkCFGBegin(store), 0);
        QCOMPARE(rkCFGEnd(store, 1), 0);
    }
}

void TestRkcfgPatience::failingUnlock()
{
    unlockFails = true;
    for (uint32_t n = 0; n < 20; ++n) {
        putNumber("p", "n", n + 2);
        QVERIFY(slept() <= mostMs);
        number("p", "n");
        QVERIFY(slept() <= mostMs);
        save();
        QVERIFY(slept() <= mostMs);
    }
    unlockFails = false;
    closeStore();
    QVERIFY(putNumber("p", "m", 77));
    QCOMPARE(number("p", "m"), 77u);
    QCOMPARE(m_home->quarantined(), QStringList());
}

// Two threads, one of which waits for the other one's call to end, wait once in all.
void TestRkcfgPatience::turnsCountAsWaiting()
{
    void *const night = rkCFGOpen("night", 1);
    Holder holder(*m_home);
    const auto write = [](void *handle) {
        uint32_t value = 5;
        rkCFGValueDword(handle, "p", "n", &value, 1);
    };
    std::thread one(write, store);
    std::thread two(write, night);
    one.join();
    two.join();
    QVERIFY(slept() <= mostMs);
    holder.release();
    rkCFGClose(night, 0);
}

QTEST_GUILESS_MAIN(TestRkcfgPatience)
#include "test_rkcfg_patience.moc"
