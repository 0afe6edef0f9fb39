// SPDX-License-Identifier: MIT
// What the store asks of the file system: who a file is, files closed to others, and the lock of a folder.
#include "files.h"

#include <QDir>
#include <QTemporaryDir>
#include <QtTest>

#include <csignal>
#include <fcntl.h>
#include <sys/file.h>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>

using namespace rkcfg;
using Kind = FolderLock::Kind;
using Outcome = FolderLock::Outcome;

class TestRkcfgFileSystem : public QObject {
    Q_OBJECT

    std::unique_ptr<QTemporaryDir> m_place;

    std::string path(const char *name) const
    {
        return m_place->filePath(QString::fromLatin1(name)).toStdString();
    }
    std::string folder() const { return m_place->path().toStdString() + "/"; }
    std::string lockPath() const { return path(".rkcfg-lock"); }
    std::string make(const char *name, const QByteArray &text = "text", mode_t mode = 0644) const
    {
        QFile file(QString::fromStdString(path(name)));
        if (!file.open(QIODevice::WriteOnly) || file.write(text) != text.size())
            qFatal("cannot write %s", name);
        file.close();
        chmod(path(name).c_str(), mode);
        return path(name);
    }
    static mode_t modeOf(const std::string &file)
    {
        struct stat info {};
        return lstat(file.c_str(), &info) == 0 ? info.st_mode & 07777U : 0;
    }

private slots:
    void init() { m_place = std::make_unique<QTemporaryDir>(); }

    void whoAFileIs();
    void aReplacedFileIsAnother();
    void linksAndFoldersAreNoPlainFiles();
    void agesAreToldInSeconds();
    void aFolderIsClosedToOthers();
    void aFileIsClosedToOthers();
    void aNewFileReplacesWhateverLayThere();
    void readableToItsEnd();
    void syncsSayWhetherTheyCould();
    void uris_data();
    void uris();
    void thisMachinesDisksAreNoNetwork();
    void sharedWithTheShared();
    void exclusiveAlone();
    void aCrashFreesTheLock();
    void whoWaitsGetsItWhenItIsFree();
    void aRemovedLockFileIsMadeAnew();
    void aLinkUnderTheLocksNameIsTakenAway();
    void aFolderThatIsNotThere();
    void theGuardLetsGo();
};

void TestRkcfgFileSystem::whoAFileIs()
{
    const FileState missing = fileState(path("missing"));
    QVERIFY(!missing.exists && missing.missing() && !missing.plain());
    QCOMPARE(missing.size(), off_t{0});
    const FileState below = fileState(make("file") + "/below");
    QCOMPARE(below.error, ENOTDIR);
    QVERIFY(!below.missing()); // it cannot be said
    const FileState file = fileState(path("file"));
    QVERIFY(file.exists && file.regular() && file.plain() && !file.missing());
    QCOMPARE(file.size(), off_t{4});
    QVERIFY(file.sameFile(fileState(path("file"))));
    QVERIFY(file.sameContent(fileState(Descriptor(open(path("file").c_str(), O_RDONLY)))));
    QVERIFY(!file.sameFile(missing));
    QVERIFY(missing.sameFile(fileState(path("also missing"))));
    QVERIFY(!fileState(Descriptor()).exists);
}

void TestRkcfgFileSystem::aReplacedFileIsAnother()
{
    const FileState before = fileState(make("file"));
    const Descriptor held(open(path("file").c_str(), O_RDONLY)); // its number is not given away meanwhile
    make("new", "text");
    QCOMPARE(rename(path("new").c_str(), path("file").c_str()), 0);
    const FileState after = fileState(path("file"));
    QVERIFY(!after.sameFile(before));
    QVERIFY(!after.sameContent(before));
    // Written again it is the same file with another content.
    make("file", "other text");
    QVERIFY(fileState(path("file")).sameFile(after));
    QVERIFY(!fileState(path("file")).sameContent(after));
}

void TestRkcfgFileSystem::linksAndFoldersAreNoPlainFiles()
{
    make("file");
    QCOMPARE(symlink("file", path("link").c_str()), 0);
    const FileState link = fileState(path("link"));
    QVERIFY(link.exists && !link.regular() && !link.plain());
    const FileState place = fileState(folder());
    QVERIFY(place.exists && !place.regular());
    QVERIFY(fileState(path("file")).plain());
    QCOMPARE(::link(path("file").c_str(), path("second name").c_str()), 0);
    QVERIFY(fileState(path("file")).regular());
    QVERIFY(!fileState(path("file")).plain());
}

void TestRkcfgFileSystem::agesAreToldInSeconds()
{
    const auto setTime = [](const std::string &file, time_t seconds, long nanoseconds) {
        const timespec times[] = {{seconds, nanoseconds}, {seconds, nanoseconds}};
        return utimensat(AT_FDCWD, file.c_str(), times, 0) == 0;
    };
    QVERIFY(setTime(make("old"), 1000, 0));
    QVERIFY(setTime(make("new"), 1002, 500000000));
    const FileState old = fileState(path("old"));
    const FileState young = fileState(path("new"));
    QCOMPARE(ageSeconds(old, {1010, 0}), 10.0);
    QCOMPARE(ageSeconds(young, {1010, 0}), 7.5);
    QCOMPARE(ageSeconds(young, {1000, 0}), -2.5);
    QCOMPARE(ageSeconds(fileState(path("missing")), {1010, 0}), 0.0);
    QVERIFY(newerThan(young, old));
    QVERIFY(!newerThan(old, young));
    QVERIFY(!newerThan(old, old));
    QVERIFY(newerThan(old, fileState(path("missing"))));
    QVERIFY(!newerThan(fileState(path("missing")), old));
}

void TestRkcfgFileSystem::aFolderIsClosedToOthers()
{
    QVERIFY(makePrivateFolder(path("new")));
    QCOMPARE(modeOf(path("new")), mode_t{0700});
    QCOMPARE(chmod(path("new").c_str(), 0755), 0);
    QVERIFY(makePrivateFolder(path("new")));
    QCOMPARE(modeOf(path("new")), mode_t{0700});
    // What its user has taken away from himself stays away.
    QCOMPARE(chmod(path("new").c_str(), 0555), 0);
    QVERIFY(makePrivateFolder(path("new")));
    QCOMPARE(modeOf(path("new")), mode_t{0500});
    QVERIFY(!makePrivateFolder(make("file")));
    QVERIFY(!makePrivateFolder(path("missing/below")));
    // The user may have it elsewhere.
    QCOMPARE(symlink("new", path("link").c_str()), 0);
    QVERIFY(makePrivateFolder(path("link")));
}

void TestRkcfgFileSystem::aFileIsClosedToOthers()
{
    make("file", "x", 0664);
    makePrivateFile(path("file"), fileState(path("file")));
    QCOMPARE(modeOf(path("file")), mode_t{0600});
    make("closed", "x", 0400);
    makePrivateFile(path("closed"), fileState(path("closed")));
    QCOMPARE(modeOf(path("closed")), mode_t{0400});
    // One with a second name is also somebody else's.
    make("shared", "x", 0644);
    QCOMPARE(::link(path("shared").c_str(), path("shared2").c_str()), 0);
    makePrivateFile(path("shared"), fileState(path("shared")));
    QCOMPARE(modeOf(path("shared")), mode_t{0644});
    QCOMPARE(symlink("file", path("link").c_str()), 0);
    QCOMPARE(chmod(path("file").c_str(), 0644), 0);
    makePrivateFile(path("link"), fileState(path("link")));
    QCOMPARE(modeOf(path("file")), mode_t{0644});
}

void TestRkcfgFileSystem::aNewFileReplacesWhateverLayThere()
{
    QVERIFY(createPrivateFile(path("new")));
    QCOMPARE(modeOf(path("new")), mode_t{0600});
    make("target", "kept");
    QCOMPARE(symlink("target", path("link").c_str()), 0);
    QVERIFY(createPrivateFile(path("link")));
    QVERIFY(fileState(path("link")).plain());
    QCOMPARE(fileState(path("link")).size(), off_t{0});
    QCOMPARE(fileState(path("target")).size(), off_t{4});
    QCOMPARE(mkdir(path("folder").c_str(), 0700), 0);
    QVERIFY(!createPrivateFile(path("folder")));
    QVERIFY(!createPrivateFile(path("missing/file")));
}

void TestRkcfgFileSystem::readableToItsEnd()
{
    QVERIFY(readable(make("file", QByteArray(100000, 'x'))));
    QVERIFY(readable(make("empty", "")));
    QVERIFY(!readable(path("missing")));
    QVERIFY(!readable(folder()));
    QCOMPARE(symlink("file", path("link").c_str()), 0);
    QVERIFY(!readable(path("link")));
}

void TestRkcfgFileSystem::syncsSayWhetherTheyCould()
{
    QVERIFY(syncFile(make("file")));
    QVERIFY(syncFolder(folder()));
    QVERIFY(!syncFile(path("missing")));
    QVERIFY(!syncFolder(path("missing")));
    QVERIFY(!syncFolder(path("file")));
}

void TestRkcfgFileSystem::uris_data()
{
    QTest::addColumn<QByteArray>("file");
    QTest::addColumn<QByteArray>("expected");
    QTest::newRow("plain") << QByteArray("/home/a-b/default.db")
                           << QByteArray("file:/home/a-b/default.db?mode=ro");
    QTest::newRow("question mark") << QByteArray("/a?b") << QByteArray("file:/a%3Fb?mode=ro");
    QTest::newRow("hash") << QByteArray("/a#b") << QByteArray("file:/a%23b?mode=ro");
    QTest::newRow("per cent") << QByteArray("/a%41") << QByteArray("file:/a%2541?mode=ro");
    QTest::newRow("blank, not ASCII") << QByteArray("/ü x") << QByteArray("file:/%C3%BC%20x?mode=ro");
    QTest::newRow("control") << QByteArray("/a\n\x7f") << QByteArray("file:/a%0A%7F?mode=ro");
}
void TestRkcfgFileSystem::uris()
{
    QFETCH(QByteArray, file);
    QTEST(QByteArray::fromStdString(fileUri(file.toStdString(), "?mode=ro")), "expected");
}

void TestRkcfgFileSystem::thisMachinesDisksAreNoNetwork()
{
    for (const char *place : {"/proc", "/sys", "/dev"})
        QVERIFY2(!onNetwork(place), place);
    QVERIFY(!onNetwork(path("missing")));
}

void TestRkcfgFileSystem::sharedWithTheShared()
{
    FolderLock one;
    FolderLock other;
    QCOMPARE(one.acquire(folder(), Kind::Shared, 0), Outcome::Held);
    QCOMPARE(other.acquire(folder(), Kind::Shared, 0), Outcome::Held);
    FolderLock third;
    QCOMPARE(third.acquire(folder(), Kind::Exclusive, 0), Outcome::Busy);
    one.release();
    QCOMPARE(third.acquire(folder(), Kind::Exclusive, 0), Outcome::Busy);
    other.release();
    QCOMPARE(third.acquire(folder(), Kind::Exclusive, 0), Outcome::Held);
    QCOMPARE(modeOf(lockPath()), mode_t{0600});
}

void TestRkcfgFileSystem::exclusiveAlone()
{
    FolderLock one;
    QCOMPARE(one.acquire(folder(), Kind::Exclusive, 0), Outcome::Held);
    for (const Kind kind : {Kind::Shared, Kind::Exclusive}) {
        FolderLock other;
        QCOMPARE(other.acquire(folder(), kind, 20), Outcome::Busy);
    }
    // Another folder has a lock of its own.
    QCOMPARE(mkdir(path("other").c_str(), 0700), 0);
    FolderLock other;
    QCOMPARE(other.acquire(path("other") + "/", Kind::Exclusive, 0), Outcome::Held);
    one.close();
    QCOMPARE(other.acquire(folder(), Kind::Exclusive, 0), Outcome::Held);
}

void TestRkcfgFileSystem::aCrashFreesTheLock()
{
    int ends[2];
    QCOMPARE(pipe(ends), 0);
    const pid_t child = fork();
    if (child == 0) {
        FolderLock lock;
        const char held = lock.acquire(folder(), Kind::Exclusive, 0) == Outcome::Held;
        (void)!write(ends[1], &held, 1);
        pause();
        _exit(0);
    }
    char held = 0;
    QCOMPARE(read(ends[0], &held, 1), ssize_t{1});
    FolderLock lock;
    const Outcome meanwhile = lock.acquire(folder(), Kind::Exclusive, 0);
    kill(child, SIGKILL);
    waitpid(child, nullptr, 0);
    close(ends[0]);
    close(ends[1]);
    QVERIFY(held);
    QCOMPARE(meanwhile, Outcome::Busy);
    QCOMPARE(lock.acquire(folder(), Kind::Exclusive, 0), Outcome::Held);
}

void TestRkcfgFileSystem::whoWaitsGetsItWhenItIsFree()
{
    FolderLock holder;
    QCOMPARE(holder.acquire(folder(), Kind::Exclusive, 0), Outcome::Held);
    Outcome got = Outcome::Unavailable;
    std::thread waiter([&] {
        FolderLock lock;
        got = lock.acquire(folder(), Kind::Exclusive, 60000);
    });
    holder.release();
    waiter.join();
    QCOMPARE(got, Outcome::Held);
}

// Then the old one guards nothing, whoever has it locked.
void TestRkcfgFileSystem::aRemovedLockFileIsMadeAnew()
{
    FolderLock holder;
    QCOMPARE(holder.acquire(folder(), Kind::Exclusive, 0), Outcome::Held);
    QCOMPARE(unlink(lockPath().c_str()), 0);
    FolderLock other;
    QCOMPARE(other.acquire(folder(), Kind::Exclusive, 0), Outcome::Held);
    QVERIFY(fileState(lockPath()).plain());
    // The first one notices with its next turn.
    QCOMPARE(holder.acquire(folder(), Kind::Exclusive, 0), Outcome::Busy);
}

void TestRkcfgFileSystem::aLinkUnderTheLocksNameIsTakenAway()
{
    make("precious", "kept");
    QCOMPARE(symlink("precious", lockPath().c_str()), 0);
    FolderLock lock;
    QCOMPARE(lock.acquire(folder(), Kind::Exclusive, 0), Outcome::Held);
    QVERIFY(fileState(lockPath()).plain());
    QCOMPARE(fileState(path("precious")).size(), off_t{4});
    lock.close();
    // A second name of another file keeps nobody apart from its other users either.
    QCOMPARE(unlink(lockPath().c_str()), 0);
    QCOMPARE(::link(path("precious").c_str(), lockPath().c_str()), 0);
    QCOMPARE(lock.acquire(folder(), Kind::Exclusive, 0), Outcome::Held);
    QVERIFY(!fileState(lockPath()).sameFile(fileState(path("precious"))));
    lock.close();
    // A folder cannot be taken away like that.
    QCOMPARE(unlink(lockPath().c_str()), 0);
    QCOMPARE(mkdir(lockPath().c_str(), 0700), 0);
    QCOMPARE(lock.acquire(folder(), Kind::Exclusive, 0), Outcome::Unavailable);
}

void TestRkcfgFileSystem::aFolderThatIsNotThere()
{
    FolderLock lock;
    QCOMPARE(lock.acquire(path("missing") + "/", Kind::Shared, 1000), Outcome::Unavailable);
    lock.release(); // no harm
    QCOMPARE(lock.acquire(folder(), Kind::Shared, 0), Outcome::Held);
}

void TestRkcfgFileSystem::theGuardLetsGo()
{
    FolderLock lock;
    FolderLock other;
    {
        const LockGuard guard(lock, folder(), Kind::Exclusive, 0);
        QVERIFY(guard.held() && !guard.busy());
        const LockGuard second(other, folder(), Kind::Shared, 0);
        QVERIFY(!second.held() && second.busy());
    }
    const LockGuard third(other, folder(), Kind::Exclusive, 0);
    QVERIFY(third.held());
    FolderLock missing;
    const LockGuard none(missing, path("missing") + "/", Kind::Shared, 0);
    QVERIFY(!none.held() && !none.busy());
}

QTEST_GUILESS_MAIN(TestRkcfgFileSystem)
#include "test_rkcfg_filesystem.moc"
