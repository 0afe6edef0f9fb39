// SPDX-License-Identifier: MIT
// A disk that refuses: full, failing, read-only, busy, far away. No file is ever moved for it, and the
// result codes say what happened.
#include "storehome.h"

#include <QDir>
#include <QFile>
#include <QtTest>
#include <atomic>
#include <cerrno>
#include <sqlite3.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <sys/vfs.h>
#include <thread>
#include <unistd.h>

namespace {

// What this process' disk does. The functions below take the system's place for the library.
std::atomic<long> fileSystemType{0};
std::atomic<bool> syncFails{false};
std::atomic<int> writeError{0};
std::atomic<int> readError{0};

} // namespace

extern "C" __attribute__((visibility("default"))) int fdatasync(int fd)
{
    if (syncFails) {
        errno = EIO;
        return -1;
    }
    return static_cast<int>(syscall(SYS_fdatasync, fd));
}

extern "C" __attribute__((visibility("default"))) int fsync(int fd)
{
    if (syncFails) {
        errno = EIO;
        return -1;
    }
    return static_cast<int>(syscall(SYS_fsync, fd));
}

extern "C" __attribute__((visibility("default"))) int statfs(const char *path, struct statfs *info) noexcept
{
    const int result = static_cast<int>(syscall(SYS_statfs, path, info));
    if (result == 0 && fileSystemType != 0)
        info->f_type = fileSystemType;
    return result;
}

namespace {

ssize_t writeAt(int fd, const void *bytes, size_t count, off64_t offset)
{
    if (writeError != 0) {
        errno = writeError;
        return -1;
    }
    return pwrite64(fd, bytes, count, offset);
}

ssize_t readAt(int fd, void *bytes, size_t count, off64_t offset)
{
    if (readError != 0) {
        errno = readError;
        return -1;
    }
    return pread64(fd, bytes, count, offset);
}

template<typename Function>
void replaceCall(const char *name, Function function)
{
    sqlite3_vfs *vfs = sqlite3_vfs_find(nullptr);
    vfs->xSetSystemCall(vfs, name, reinterpret_cast<sqlite3_syscall_ptr>(function));
}

} // namespace

class TestRkcfgFailures : public QObject {
    Q_OBJECT

private slots:
    void initTestCase();
    void init();
    void cleanup();

    void networkIsToldOnceInAProcess(); // has to be the first
    void fullDiskAtAWrite();
    void fullDiskAtTheStart();
    void fullDiskAtARepair();
    void failingDiskAtTheStart();
    void failingSyncIsTold();
    void failingSyncAtClosingIsTold();
    void failingSyncKeepsTheDefaultName();
    void lockedStoreIsLeftAlone();
    void patienceReturnsAfterABusyStart();
    void readOnlyFolderCanBeRead();
    void readOnlyFolderIsNotRepaired();
    void noFolderAtAll();
    void network_data();
    void network();
    void backFromTheNetwork();
    void networkStoreIsShared();

private:
    std::unique_ptr<StoreHome> m_home;
};

void TestRkcfgFailures::initTestCase()
{
    replaceCall("pwrite", writeAt);
    replaceCall("pwrite64", writeAt);
    replaceCall("pread", readAt);
    replaceCall("pread64", readAt);
}

void TestRkcfgFailures::init()
{
    m_home = std::make_unique<StoreHome>();
}

void TestRkcfgFailures::cleanup()
{
    fileSystemType = 0;
    syncFails = false;
    writeError = 0;
    readError = 0;
    chmod(QFile::encodeName(m_home->folder()).constData(), 0700);
    m_home.reset();
}

void TestRkcfgFailures::networkIsToldOnceInAProcess()
{
    fileSystemType = 0x6969;
    QVERIFY(putNumber("p", "n", 1));
    QCOMPARE(rkCFGClose(store, 1), 0);
    QVERIFY(putNumber("p", "n", 2));
    QCOMPARE(rkCFGSetDefaultName("other"), 0);
    const QStringList log = takeLog();
    QCOMPARE(log.size(), 1);
    QVERIFY2(log.first().contains(QLatin1String("network")), qPrintable(log.first()));
}

void TestRkcfgFailures::fullDiskAtAWrite()
{
    putNumber("p", "n", 1);
    QCOMPARE(save(), 0);
    const QStringList files = m_home->files();
    writeError = ENOSPC;
    QVERIFY(!putNumber("p", "n", 2));
    QVERIFY(!putNumber("p", "m", 2));
    // An equal write needs no room and succeeds by leaving everything as it is.
    QVERIFY(!putNumber("p", "n", 1));
    QCOMPARE(number("p", "n"), 1u);
    writeError = 0;
    // The save that was to cover the lost write says so, once.
    QVERIFY(save() != 0);
    QCOMPARE(save(), 0);
    QCOMPARE(m_home->files(), files);
    QVERIFY(putNumber("p", "n", 2));
    QCOMPARE(save(), 0);
    const QStringList log = takeLog();
    QCOMPARE(log.size(), 1);
    QVERIFY2(log.first().contains(QLatin1String("full")), qPrintable(log.first()));
}

void TestRkcfgFailures::fullDiskAtTheStart()
{
    writeError = ENOSPC;
    QVERIFY(!putNumber("p", "n", 1));
    QVERIFY(save() != 0);
    QCOMPARE(m_home->files(QStringLiteral("default*")), QStringList());
    QCOMPARE(takeLog().size(), 1);
    writeError = 0;
    QVERIFY(putNumber("p", "n", 1));
    QCOMPARE(m_home->quarantined(), QStringList());
}

void TestRkcfgFailures::fullDiskAtARepair()
{
    putNumber("p", "n", 1);
    QCOMPARE(rkCFGClose(store, 1), 0);
    const QByteArray damage = noise(20000, 1);
    overwrite(m_home->database(), damage);
    const QStringList files = m_home->files();
    writeError = ENOSPC;
    QCOMPARE(number("p", "n"), std::nullopt);
    QCOMPARE(m_home->files(), files);
    QCOMPARE(content(m_home->database()), damage);
    writeError = 0;
    QCOMPARE(number("p", "n"), 1u);
    QCOMPARE(content(m_home->path(m_home->quarantined().value(0))), damage);
}

void TestRkcfgFailures::failingDiskAtTheStart()
{
    putNumber("p", "n", 1);
    QCOMPARE(rkCFGClose(store, 1), 0);
    const QStringList files = m_home->files();
    readError = EIO;
    QCOMPARE(number("p", "n"), std::nullopt);
    QVERIFY(!putNumber("p", "n", 2));
    QVERIFY(save() != 0);
    readError = 0;
    QCOMPARE(m_home->files(), files);
    QCOMPARE(number("p", "n"), 1u);
}

void TestRkcfgFailures::failingSyncIsTold()
{
    putNumber("p", "n", 1);
    QCOMPARE(save(), 0);
    putNumber("p", "n", 2);
    syncFails = true;
    QVERIFY(save() != 0);
    QVERIFY(save() != 0);
    QCOMPARE(takeLog().size(), 1);
    syncFails = false;
    QCOMPARE(save(), 0);
    QCOMPARE(number("p", "n"), 2u);
}

void TestRkcfgFailures::failingSyncAtClosingIsTold()
{
    putNumber("p", "n", 1);
    syncFails = true;
    QVERIFY(rkCFGClose(store, 1) != 0);
    syncFails = false;
    QCOMPARE(number("p", "n"), 1u);
    QCOMPARE(rkCFGClose(store, 1), 0);
}

void TestRkcfgFailures::failingSyncKeepsTheDefaultName()
{
    QCOMPARE(rkCFGSetDefaultName("one"), 0);
    QCOMPARE(rkCFGSetDefaultName("two"), 0);
    QCOMPARE(rkCFGSetDefaultName("one"), 0);
    syncFails = true;
    QVERIFY(rkCFGSetDefaultName("two") != 0);
    syncFails = false;
    char name[100] = "";
    QCOMPARE(rkCFGGetDefaultName(name, sizeof name), 0);
    QCOMPARE(name, "one");
    QVERIFY(putNumber("p", "n", 1));
    QCOMPARE(rkCFGSetDefaultName("two"), 0);
    QCOMPARE(number("p", "n"), std::nullopt);
    QCOMPARE(m_home->files(QStringLiteral("default-config*")), QStringList(QStringLiteral("default-config")));
}

void TestRkcfgFailures::lockedStoreIsLeftAlone()
{
    putNumber("p", "n", 1);
    QCOMPARE(rkCFGClose(store, 1), 0);
    const QStringList files = m_home->files();
    const QByteArray before = content(m_home->database());
    {
        Direct other(m_home->database());
        other.ask("PRAGMA locking_mode = EXCLUSIVE");
        QCOMPARE(other.ask("BEGIN EXCLUSIVE"), QByteArray());
        for (int i = 0; i < 30; ++i)
            QCOMPARE(number("p", "n"), std::nullopt);
        QVERIFY(!putNumber("p", "n", 2));
        QVERIFY(save() != 0);
        QCOMPARE(takeLog().size(), 1);
    }
    QCOMPARE(m_home->files(), files);
    QCOMPARE(content(m_home->database()), before);
    QCOMPARE(number("p", "n"), 1u);
}

void TestRkcfgFailures::patienceReturnsAfterABusyStart()
{
    putNumber("p", "n", 1);
    QCOMPARE(rkCFGClose(store, 1), 0);
    {
        Direct other(m_home->database());
        other.ask("PRAGMA locking_mode = EXCLUSIVE");
        QCOMPARE(other.ask("BEGIN EXCLUSIVE"), QByteArray());
        QCOMPARE(number("p", "n"), std::nullopt);
    }
    QCOMPARE(number("p", "n"), 1u);
    QVERIFY(putNumber("p", "n", 3)); // what is written shows that nobody holds the store any more
    Direct writer(m_home->database());
    QCOMPARE(writer.ask("BEGIN IMMEDIATE"), QByteArray());
    bool written = false;
    std::thread thread([&written] { written = putNumber("p", "n", 2); });
    // Somebody else with more patience than an impatient call, and far less than a patient one, gives up
    // meanwhile.
    Direct third(m_home->database());
    third.ask("PRAGMA busy_timeout = 400");
    QVERIFY(third.ask("BEGIN IMMEDIATE").contains("locked"));
    QCOMPARE(writer.ask("COMMIT"), QByteArray());
    thread.join();
    QVERIFY(written);
}

void TestRkcfgFailures::readOnlyFolderCanBeRead()
{
    putNumber("p", "n", 1);
    QCOMPARE(rkCFGClose(store, 1), 0);
    const QStringList files = m_home->files();
    Worker worker;
    worker.ask("unprivileged");
    chmod(QFile::encodeName(m_home->folder()).constData(), 0500);
    QCOMPARE(worker.ask("getn p n"), QByteArray("=1"));
    QCOMPARE(worker.ask("setn p n 2"), QByteArray("0"));
    QCOMPARE(worker.ask("setn p n 1"), QByteArray("0"));
    QVERIFY(worker.ask("save") != QByteArray("0"));
    QVERIFY(worker.ask("default other") != QByteArray("0"));
    QCOMPARE(worker.ask("default"), QByteArray("default"));
    QCOMPARE(m_home->files(), files);
    // As soon as it can be written again, it is.
    chmod(QFile::encodeName(m_home->folder()).constData(), 0700);
    QCOMPARE(worker.ask("setn p n 3"), QByteArray("1"));
    QCOMPARE(worker.ask("save"), QByteArray("0"));
    QCOMPARE(number("p", "n"), 3u);
}

void TestRkcfgFailures::readOnlyFolderIsNotRepaired()
{
    putNumber("p", "n", 1);
    QCOMPARE(rkCFGClose(store, 1), 0);
    const QByteArray damage = noise(20000, 2);
    overwrite(m_home->database(), damage);
    const QStringList files = m_home->files();
    Worker worker;
    worker.ask("unprivileged");
    chmod(QFile::encodeName(m_home->folder()).constData(), 0500);
    QCOMPARE(worker.ask("getn p n"), QByteArray("absent"));
    QCOMPARE(worker.ask("setn p n 2"), QByteArray("0"));
    QCOMPARE(m_home->files(), files);
    QCOMPARE(content(m_home->database()), damage);
    chmod(QFile::encodeName(m_home->folder()).constData(), 0700);
    QCOMPARE(worker.ask("getn p n"), QByteArray("=1"));
}

void TestRkcfgFailures::noFolderAtAll()
{
    overwrite(QString(m_home->folder()).chopped(1), "a file where the folder should be");
    uint32_t value = 5;
    QVERIFY(rkCFGValueDword(store, "p", "n", &value, 0) != 0);
    QCOMPARE(value, 5u);
    QVERIFY(!putNumber("p", "n", 1));
    QVERIFY(save() != 0);
    QVERIFY(rkCFGSetDefaultName("x") != 0);
    char name[20] = "";
    QCOMPARE(rkCFGGetDefaultName(name, sizeof name), 0);
    QCOMPARE(name, "default");
    QFile::remove(QString(m_home->folder()).chopped(1));
    QVERIFY(putNumber("p", "n", 1));
}

void TestRkcfgFailures::network_data()
{
    QTest::addColumn<qlonglong>("type");
    QTest::addColumn<QByteArray>("journal");
    QTest::newRow("NFS") << 0x6969LL << QByteArray("delete");
    QTest::newRow("CIFS") << 0xFF534D42LL << QByteArray("delete");
    QTest::newRow("SMB2") << 0xFE534D42LL << QByteArray("delete");
    QTest::newRow("9P") << 0x01021997LL << QByteArray("delete");
    QTest::newRow("FUSE") << 0x65735546LL << QByteArray("delete");
    QTest::newRow("ext4") << 0xEF53LL << QByteArray("wal");
    QTest::newRow("tmpfs") << 0x01021994LL << QByteArray("wal");
    QTest::newRow("btrfs") << 0x9123683ELL << QByteArray("wal");
}

void TestRkcfgFailures::network()
{
    QFETCH(qlonglong, type);
    QFETCH(QByteArray, journal);
    fileSystemType = static_cast<long>(type);
    QVERIFY(putNumber("p", "n", 1));
    QVERIFY(putNumber("p", "n", 2));
    QCOMPARE(save(), 0);
    const bool logThere = QFile::exists(m_home->database() + QStringLiteral("-wal"));
    QCOMPARE(logThere, journal == "wal");
    QCOMPARE(Direct(m_home->database()).ask("PRAGMA journal_mode"), journal);
    QCOMPARE(rkCFGClose(store, 1), 0);
    QCOMPARE(number("p", "n"), 2u);
}

void TestRkcfgFailures::backFromTheNetwork()
{
    fileSystemType = 0x6969;
    QVERIFY(putNumber("p", "n", 1));
    QCOMPARE(rkCFGClose(store, 1), 0);
    fileSystemType = 0;
    QCOMPARE(number("p", "n"), 1u);
    QVERIFY(putNumber("p", "n", 2));
    QCOMPARE(Direct(m_home->database()).ask("PRAGMA journal_mode"), QByteArray("wal"));
    QCOMPARE(rkCFGClose(store, 1), 0);
    fileSystemType = 0x6969;
    QCOMPARE(number("p", "n"), 2u);
    QCOMPARE(Direct(m_home->database()).ask("PRAGMA journal_mode"), QByteArray("delete"));
}

void TestRkcfgFailures::networkStoreIsShared()
{
    fileSystemType = 0x6969;
    for (uint32_t n = 1; n <= 5; ++n) {
        QVERIFY(putNumber("p", "n", n));
        QCOMPARE(Direct(m_home->database()).ask("SELECT value FROM setting"), QByteArray::number(n));
        QCOMPARE(Direct(m_home->database()).ask("UPDATE setting SET value = value + 10"), QByteArray());
        QCOMPARE(number("p", "n"), n + 10);
    }
    QCOMPARE(m_home->quarantined(), QStringList());
}

QTEST_GUILESS_MAIN(TestRkcfgFailures)
#include "test_rkcfg_failures.moc"
