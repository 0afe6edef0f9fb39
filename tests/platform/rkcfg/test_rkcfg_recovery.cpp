// SPDX-License-Identifier: MIT
// What a repair takes: which copy, when none at all, and damage that SQLite does not tell by itself.
#include "changes.h"

#include <QFile>
#include <QFileInfo>
#include <QRegularExpression>
#include <QtTest>
#include <atomic>
#include <cerrno>
#include <fcntl.h>
#include <sqlite3.h>
#include <sys/stat.h>
#include <sys/time.h>
#include <unistd.h>

namespace {

// A read of the good copies fails, as on a disk with a passing error. "" lets all pass.
QByteArray failingFile;
std::atomic<int> failures{0};

int openPassingly(const char *path, int flags, int mode)
{
    if (!failingFile.isEmpty() && QByteArray(path).endsWith(failingFile)) {
        ++failures;
        errno = EIO;
        return -1;
    }
    return open(path, flags, mode);
}

// The n-th read from now on fails; 0: none.
std::atomic<int> failingRead{0};

ssize_t readPassingly(int fd, void *bytes, size_t count, off64_t offset)
{
    if (failingRead > 0 && --failingRead == 0) {
        errno = EIO;
        return -1;
    }
    return pread64(fd, bytes, count, offset);
}

} // namespace

class TestRkcfgRecovery : public QObject {
    Q_OBJECT

private slots:
    void initTestCase();
    void init() { m_home = std::make_unique<StoreHome>(); }
    void cleanup();

    void passingErrorEmptiesNothing();
    void passingErrorIsNoDamage_data();
    void passingErrorIsNoDamage();
    void damagedCopyLeavesTheOlder();
    void olderCopyKeepsTheMost();
    void headerBytes_data();
    void headerBytes();
    void newerVersionsAreLeftAlone_data();
    void newerVersionsAreLeftAlone();
    void unknownCollation();
    void damagedLog_data();
    void damagedLog();
    void halfWrittenEndOfALogIsNone();
    void goodCopyWinsOverACutLog();
    void damagedHistoryKeepsTheSettings_data();
    void damagedHistoryKeepsTheSettings();
    void strangeHistoryTable();
    void pageOfAnother_data();
    void pageOfAnother();
    void linksAreNotFollowed_data();
    void linksAreNotFollowed();
    void hardLinkedDatabaseIsLeftAlone();
    void strangeLockIsReplaced_data();
    void strangeLockIsReplaced();

private:
    void fill(int count);
    std::unique_ptr<StoreHome> m_home;
};

namespace {

constexpr int pageBytes = 1024;

QByteArray valueOf(int i)
{
    return "value " + QByteArray::number(i) + QByteArray(30, 'x');
}

int countSound()
{
    return int(values().filter(QRegularExpression(QStringLiteral("\\|'value \\d+x{30}'$"))).size());
}

void makeOlder(const QString &file, int seconds)
{
    const timeval past{time(nullptr) - seconds, 0};
    const timeval times[2] = {past, past};
    QCOMPARE(utimes(QFile::encodeName(file).constData(), times), 0);
}

} // namespace

void TestRkcfgRecovery::initTestCase()
{
    sqlite3_vfs *vfs = sqlite3_vfs_find(nullptr);
    vfs->xSetSystemCall(vfs, "open", reinterpret_cast<sqlite3_syscall_ptr>(openPassingly));
    for (const char *name : {"pread", "pread64"})
        vfs->xSetSystemCall(vfs, name, reinterpret_cast<sqlite3_syscall_ptr>(readPassingly));
}

void TestRkcfgRecovery::cleanup()
{
    failingFile.clear();
    m_home.reset();
}

void TestRkcfgRecovery::fill(int count)
{
    for (int i = 0; i < count; ++i)
        putText("KWX\\Internal0", QByteArray::number(i).constData(), valueOf(i));
}

void TestRkcfgRecovery::passingErrorEmptiesNothing()
{
    fill(80);
    QCOMPARE(rkCFGClose(store, 1), 0);
    const QByteArray damage = noise(20000, 1);
    overwrite(m_home->database(), damage);
    const QStringList files = m_home->files();
    failingFile = ".rkcfg.good";
    QCOMPARE(values(), QStringList(QStringLiteral("failed")));
    QVERIFY(!putNumber("p", "n", 1));
    QVERIFY(save() != 0);
    QVERIFY(failures > 0);
    QCOMPARE(m_home->files(), files);
    QCOMPARE(content(m_home->database()), damage);
    failingFile.clear();
    QCOMPARE(countSound(), 80);
}

void TestRkcfgRecovery::passingErrorIsNoDamage_data()
{
    QTest::addColumn<bool>("damaged");
    QTest::newRow("of a sound store") << false;
    QTest::newRow("of a good copy") << true;
}

// Each read in turn, also those in the middle of a check: what is there stays there.
void TestRkcfgRecovery::passingErrorIsNoDamage()
{
    QFETCH(bool, damaged);
    fill(80);
    QCOMPARE(rkCFGClose(store, 1), 0);
    const QByteArray database = damaged ? noise(20000, 1) : content(m_home->database());
    for (int n = 1; n <= 60; ++n) {
        overwrite(m_home->database(), database);
        for (const QString &file : m_home->quarantined())
            QFile::remove(m_home->path(file));
        failingRead = n;
        number("KWX\\Internal0", "n");
        failingRead = 0;
        QVERIFY2(m_home->quarantined().size() <= int(damaged), qPrintable(takeLog().join(QLatin1Char('\n'))));
        QCOMPARE(countSound(), 80);
        closeStore();
    }
}

void TestRkcfgRecovery::damagedCopyLeavesTheOlder()
{
    const QString copy = m_home->database() + QStringLiteral(".good");
    fill(80);
    save();
    makeOlder(copy, 700);
    putNumber("p", "n", 1);
    QCOMPARE(rkCFGClose(store, 1), 0);
    QVERIFY(QFile::exists(copy + QStringLiteral("-older")));
    overwrite(copy, noise(20000, 2));
    overwrite(m_home->database(), noise(20000, 3));
    QCOMPARE(countSound(), 80);
    QCOMPARE(number("p", "n"), std::nullopt);
    QCOMPARE(takeLog().filter(QStringLiteral("last good copy")).size(), 1);
}

void TestRkcfgRecovery::olderCopyKeepsTheMost()
{
    const QString copy = m_home->database() + QStringLiteral(".good");
    fill(80);
    save();
    for (int round = 0; round < 3; ++round) {
        for (int i = 20 * round; i < 20 * round + 20; ++i)
            rkCFGRemove(store, "KWX\\Internal0", QByteArray::number(i).constData());
        makeOlder(copy, 700);
        save();
    }
    QCOMPARE(Direct(copy).ask("SELECT count(*) FROM setting"), QByteArray("20"));
    QCOMPARE(Direct(copy + QStringLiteral("-older")).ask("SELECT count(*) FROM setting"), QByteArray("80"));
}

void TestRkcfgRecovery::headerBytes_data()
{
    QTest::addColumn<int>("offset");
    QTest::addColumn<int>("value");
    for (int offset = 0; offset < 100; ++offset) {
        for (const int value : {0, 3, 255})
            QTest::addRow("byte %d is %d", offset, value) << offset << value;
    }
}

// Either the values are there, or the file was set aside and the copy is; never an unusable store.
void TestRkcfgRecovery::headerBytes()
{
    QFETCH(int, offset);
    QFETCH(int, value);
    // A version that a newer program may have written is another case.
    if (offset == 63 && value > 1 && value < 10)
        return;
    fill(30);
    QCOMPARE(rkCFGClose(store, 1), 0);
    scribble(m_home->database(), offset, QByteArray(1, char(value)));
    QCOMPARE(countSound(), 30);
    QVERIFY(putNumber("p", "n", 1));
    QCOMPARE(rkCFGClose(store, 1), 0);
    QCOMPARE(countSound(), 30);
    QCOMPARE(number("p", "n"), 1u);
    QCOMPARE(takeLog().size(), m_home->quarantined().size());
}

void TestRkcfgRecovery::newerVersionsAreLeftAlone_data()
{
    QTest::addColumn<int>("version");
    QTest::addColumn<bool>("left");
    QTest::newRow("none") << 0 << false;
    QTest::newRow("next") << 2 << true;
    QTest::newRow("eight above") << 9 << true;
    QTest::newRow("nine above") << 10 << false;
    QTest::newRow("absurd") << 0x01000001 << false;
    QTest::newRow("negative") << -1 << false;
}

void TestRkcfgRecovery::newerVersionsAreLeftAlone()
{
    QFETCH(int, version);
    QFETCH(bool, left);
    fill(10);
    QCOMPARE(rkCFGClose(store, 1), 0);
    Direct(m_home->database())
        .ask(QByteArray("PRAGMA user_version = " + QByteArray::number(version)).constData());
    const QByteArray before = content(m_home->database());
    for (int i = 0; i < 5; ++i)
        QCOMPARE(number("KWX\\Internal0", "n"), std::nullopt);
    QCOMPARE(takeLog().size(), 1);
    QCOMPARE(m_home->quarantined().size(), left ? 0 : 1);
    QCOMPARE(content(m_home->database()) == before, left);
    QCOMPARE(countSound(), left ? 0 : 10);
}

void TestRkcfgRecovery::unknownCollation()
{
    fill(30);
    QCOMPARE(rkCFGClose(store, 1), 0);
    QByteArray bytes = content(m_home->database());
    QVERIFY(bytes.contains("NOCASE"));
    overwrite(m_home->database(), bytes.replace("NOCASE", "NOCASX"));
    QCOMPARE(countSound(), 30);
    QCOMPARE(m_home->quarantined().size(), 1);
}

void TestRkcfgRecovery::damagedLog_data()
{
    QTest::addColumn<int>("permille"); // where in the log
    QTest::addColumn<int>("bytes");
    QTest::newRow("magic") << 0 << 1;
    QTest::newRow("header") << 0 << 32;
    QTest::newRow("first frame") << 1 << 300;
    QTest::newRow("a quarter on") << 250 << 10;
    QTest::newRow("middle") << 500 << 2000;
    QTest::newRow("near the end") << 900 << 1;
    QTest::newRow("all") << 0 << -1;
}

// Every value lies in the log only: the worker was killed. The good copy has the first eighty.
void TestRkcfgRecovery::damagedLog()
{
    QFETCH(int, permille);
    QFETCH(int, bytes);
    Worker worker;
    for (int i = 0; i < 100; ++i) {
        QCOMPARE(worker.ask("set p " + QByteArray::number(i) + " value"), QByteArray("1"));
        if (i == 79)
            QCOMPARE(worker.ask("save"), QByteArray("0"));
    }
    worker.kill();
    const QString log = m_home->database() + QStringLiteral("-wal");
    const int size = int(QFileInfo(log).size());
    QVERIFY(size > 100000);
    const int at = int(qint64(size) * permille / 1000);
    scribble(log, at, noise(bytes < 0 ? size : bytes, 5));
    const QByteArray damaged = content(log);

    QVERIFY2(values().size() >= 80, qPrintable(QString::number(values().size())));
    const QStringList told = takeLog();
    QCOMPARE(told.size(), 1);
    QVERIFY2(told.first().contains(QLatin1String("log is damaged")), qPrintable(told.first()));
    QCOMPARE(content(m_home->path(m_home->quarantined().value(0)) + QStringLiteral("-wal")), damaged);
    QVERIFY(putNumber("p", "n", 1));
    QCOMPARE(rkCFGClose(store, 1), 0);
    QCOMPARE(number("p", "n"), 1u);
}

void TestRkcfgRecovery::halfWrittenEndOfALogIsNone()
{
    Worker worker;
    for (int i = 0; i < 10; ++i)
        worker.ask("setn p n " + QByteArray::number(i));
    worker.kill();
    const QString log = m_home->database() + QStringLiteral("-wal");
    QByteArray bytes = content(log);
    // A frame's head and nothing of its page.
    overwrite(log, bytes + bytes.mid(32, 24));
    QCOMPARE(number("p", "n"), 9u);
    QCOMPARE(takeLog(), QStringList());
    QCOMPARE(m_home->quarantined(), QStringList());
}

void TestRkcfgRecovery::goodCopyWinsOverACutLog()
{
    Worker worker;
    QCOMPARE(worker.ask("set p a first"), QByteArray("1"));
    QCOMPARE(worker.ask("save"), QByteArray("0"));
    worker.kill();
    scribble(m_home->database() + QStringLiteral("-wal"), 0, "damage");
    QCOMPARE(values(), QStringList(QStringLiteral("p|a|'first'")));
    QVERIFY(takeLog().value(0).contains(QLatin1String("last good copy")));
}

void TestRkcfgRecovery::damagedHistoryKeepsTheSettings_data()
{
    QTest::addColumn<bool>("write");
    QTest::newRow("found by a write") << true;
    QTest::newRow("found by reading the history") << false;
}

void TestRkcfgRecovery::damagedHistoryKeepsTheSettings()
{
    QFETCH(bool, write);
    fill(200);
    for (uint32_t n = 0; n < 300; ++n)
        putNumber("p", "n", n);
    QCOMPARE(rkCFGClose(store, 1), 0);
    QFile::remove(m_home->database() + QStringLiteral(".good"));
    // Its last page: the three hundred changes came last.
    const QByteArray bytes = content(m_home->database());
    scribble(m_home->database(), bytes.size() - pageBytes, noise(pageBytes, 9));
    QCOMPARE(countSound(), 200);
    if (write)
        QVERIFY(putNumber("p", "n", 1000));
    else
        QVERIFY(changes().size() > 100);
    QCOMPARE(m_home->quarantined().size(), 1);
    const QStringList told = takeLog();
    QVERIFY2(told.value(0).contains(QLatin1String("what was sound of it")),
             qPrintable(told.join(QLatin1Char(10))));
    QCOMPARE(countSound(), 200);
    QCOMPARE(number("p", "n"), write ? 1000u : 299u);
    QVERIFY(changes().size() > 100);
    QCOMPARE(rkCFGClose(store, 1), 0);
    QCOMPARE(Direct(m_home->database()).ask("PRAGMA integrity_check"), QByteArray("ok"));
}

void TestRkcfgRecovery::strangeHistoryTable()
{
    fill(20);
    QCOMPARE(rkCFGClose(store, 1), 0);
    Direct(m_home->database()).ask("ALTER TABLE history RENAME COLUMN batch TO something");
    QVERIFY(putNumber("p", "n", 1));
    QCOMPARE(countSound(), 20);
    QCOMPARE(m_home->quarantined().size(), 1);
}

void TestRkcfgRecovery::pageOfAnother_data()
{
    QTest::addColumn<char>("kind"); // of the pages
    QTest::newRow("of the settings") << char(10);
    QTest::newRow("of the history") << char(13);
}

// A disk that wrote a sound page to the place of another one: each page by itself is as it should be.
void TestRkcfgRecovery::pageOfAnother()
{
    QFETCH(char, kind);
    fill(200);
    QCOMPARE(rkCFGClose(store, 1), 0);
    const QByteArray sound = content(m_home->database());
    QList<int> leaves;
    for (int at = pageBytes; at < sound.size(); at += pageBytes) {
        if (sound.at(at) == kind)
            leaves << at;
    }
    QVERIFY(leaves.size() > 5);
    // The roots of all tables, and a leaf.
    for (const int at : {1, 2, 4, leaves.last() / pageBytes}) {
        QByteArray damaged = sound;
        overwrite(m_home->database(),
                  damaged.replace(at * pageBytes, pageBytes, sound.mid(leaves.first(), pageBytes)));
        QVERIFY2(putNumber("p", "n", uint32_t(at)), qPrintable(takeLog().join(QLatin1Char('\n'))));
        QCOMPARE(countSound(), 200);
        QCOMPARE(rkCFGClose(store, 1), 0);
    }
}

void TestRkcfgRecovery::linksAreNotFollowed_data()
{
    QTest::addColumn<QString>("file");
    QTest::newRow("database") << QStringLiteral("default.rkcfg");
    QTest::newRow("log") << QStringLiteral("default.rkcfg-wal");
    QTest::newRow("default name") << QStringLiteral("default-config");
    QTest::newRow("good copy") << QStringLiteral("default.rkcfg.good");
    QTest::newRow("good copy in the making") << QStringLiteral("default.rkcfg.good.new");
    QTest::newRow("lock") << QStringLiteral(".rkcfg-lock");
}

// What lies behind a link stays as it is, bytes and mode, and nothing hangs or ends.
void TestRkcfgRecovery::linksAreNotFollowed()
{
    QFETCH(QString, file);
    putNumber("p", "n", 1);
    QCOMPARE(rkCFGClose(store, 1), 0);
    QTemporaryDir elsewhere;
    const QString target = elsewhere.filePath(QStringLiteral("target"));
    overwrite(target,
              QFile::exists(m_home->path(file)) ? content(m_home->path(file)) : QByteArray("other\n"));
    const QByteArray before = content(target);
    QCOMPARE(chmod(QFile::encodeName(target).constData(), 0644), 0);
    QFile::remove(m_home->path(file));
    QVERIFY(QFile::link(target, m_home->path(file)));
    putNumber("p", "n", 2);
    save();
    rkCFGClose(store, 1);
    struct stat info {};
    QCOMPARE(stat(QFile::encodeName(target).constData(), &info), 0);
    QCOMPARE(info.st_mode & 07777, 0644u);
    QCOMPARE(content(target), before);
}

void TestRkcfgRecovery::hardLinkedDatabaseIsLeftAlone()
{
    putNumber("p", "n", 1);
    QCOMPARE(rkCFGClose(store, 1), 0);
    const QByteArray second = QFile::encodeName(m_home->path(QStringLiteral("second")));
    QCOMPARE(link(QFile::encodeName(m_home->database()).constData(), second.constData()), 0);
    QCOMPARE(chmod(second.constData(), 0644), 0);
    const QByteArray before = content(m_home->database());
    QVERIFY(!putNumber("p", "n", 2));
    QVERIFY(save() != 0);
    QVERIFY(!takeLog().isEmpty());
    // Looking harms nobody.
    QCOMPARE(number("p", "n"), 1u);
    QCOMPARE(content(m_home->database()), before);
    struct stat info {};
    QCOMPARE(stat(second.constData(), &info), 0);
    QCOMPARE(info.st_mode & 07777, 0644u);
    unlink(second.constData());
    QVERIFY(putNumber("p", "n", 2));
}

void TestRkcfgRecovery::strangeLockIsReplaced_data()
{
    QTest::addColumn<QString>("kind");
    for (const char *kind : {"symbolic link", "hard link", "fifo"})
        QTest::newRow(kind) << QString::fromLatin1(kind);
}

void TestRkcfgRecovery::strangeLockIsReplaced()
{
    QFETCH(QString, kind);
    putNumber("p", "n", 1);
    QCOMPARE(rkCFGClose(store, 1), 0);
    const QByteArray lock = QFile::encodeName(m_home->path(QStringLiteral(".rkcfg-lock")));
    const QByteArray target = QFile::encodeName(m_home->path(QStringLiteral("target")));
    overwrite(QFile::decodeName(target), "untouched");
    unlink(lock.constData());
    if (kind == QLatin1String("fifo"))
        QCOMPARE(mkfifo(lock.constData(), 0600), 0);
    else if (kind == QLatin1String("hard link"))
        QCOMPARE(link(target.constData(), lock.constData()), 0);
    else
        QCOMPARE(symlink(target.constData(), lock.constData()), 0);
    QVERIFY(putNumber("p", "n", 2));
    struct stat info {};
    QCOMPARE(lstat(lock.constData(), &info), 0);
    QVERIFY(S_ISREG(info.st_mode) && info.st_nlink == 1);
    QCOMPARE(content(QFile::decodeName(target)), QByteArray("untouched"));
}

QTEST_GUILESS_MAIN(TestRkcfgRecovery)
#include "test_rkcfg_recovery.moc"
