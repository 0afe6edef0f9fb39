// SPDX-License-Identifier: MIT
// The private folder of one process: closed to others, its own, cleared away when it goes or was killed.
#include "runfolder.h"

#include <QDir>
#include <QFileInfo>
#include <QTemporaryDir>
#include <QtTest>

#include <csignal>
#include <sys/stat.h>
#include <sys/un.h>
#include <sys/wait.h>
#include <unistd.h>

using namespace rkptp;

namespace {

QString folderOf(const RunFolder &folder)
{
    return QFileInfo(QString::fromStdString(folder.pathOf("x"))).path();
}

mode_t modeOf(const QString &path)
{
    struct stat info {};
    return lstat(QFile::encodeName(path).constData(), &info) == 0 ? info.st_mode & 07777U : 0;
}

QStringList foldersIn(const QString &path)
{
    return QDir(path).entryList({QStringLiteral("*ptp-*")}, QDir::Dirs | QDir::Hidden);
}

// A process that makes a folder with a socket's file in it and is then killed. Returns the folder.
QString folderOfKilledProcess()
{
    int ends[2];
    if (pipe(ends) != 0)
        qFatal("no pipe");
    const pid_t child = fork();
    if (child == 0) {
        RunFolder folder;
        const bool made = folder.prepare();
        const std::string path = folder.pathOf("1.ptp4l");
        close(made ? open(path.c_str(), O_CREAT | O_WRONLY, 0600) : -1);
        const ssize_t told = write(ends[1], path.data(), made ? path.size() : 0);
        close(ends[1]);
        pause();
        _exit(told < 0);
    }
    close(ends[1]);
    char text[512];
    const ssize_t size = read(ends[0], text, sizeof text);
    close(ends[0]);
    kill(child, SIGKILL);
    waitpid(child, nullptr, 0);
    return QFileInfo(QString::fromUtf8(text, int(qMax<ssize_t>(size, 0)))).path();
}

} // namespace

class TestPtpRunFolder : public QObject {
    Q_OBJECT

    std::unique_ptr<QTemporaryDir> m_session; // what the session gives its programs
    QString m_shared;                         // our name below it

private slots:
    void init()
    {
        // Below /tmp: the address of a socket has no room for a build folder.
        m_session = std::make_unique<QTemporaryDir>(QStringLiteral("/tmp/ptp-session-XXXXXX"));
        m_shared = m_session->filePath(QStringLiteral("corvel"));
        qputenv("XDG_RUNTIME_DIR", QFile::encodeName(m_session->path()));
    }

    void isMadeClosedAndGoesWithTheObject()
    {
        QString path;
        {
            RunFolder folder;
            QVERIFY(folder.prepare());
            path = folderOf(folder);
            QVERIFY2(path.startsWith(m_shared + QStringLiteral("/ptp-")), qPrintable(path));
            QCOMPARE(modeOf(path), mode_t{0700});
            QCOMPARE(modeOf(m_shared), mode_t{0700});
            QCOMPARE(QDir(path).entryList(QDir::Files), QStringList{QStringLiteral("lock")});
        }
        QVERIFY(!QFileInfo::exists(path));
        QVERIFY(QFileInfo::exists(m_shared));
    }

    void whatIsInItGoesAsWell()
    {
        RunFolder folder;
        QVERIFY(folder.prepare());
        QFile left(QString::fromStdString(folder.pathOf("7.ask")));
        QVERIFY(left.open(QIODevice::WriteOnly));
        left.close();
        const QString path = folderOf(folder);
        folder.remove();
        QVERIFY(!QFileInfo::exists(path));
        folder.remove(); // a second time is no harm
    }

    void thePathsInItFitASocketsAddress()
    {
        RunFolder folder;
        QVERIFY(folder.prepare());
        QVERIFY(folder.pathOf("4294967295.ptp4l").size() < sizeof(sockaddr_un::sun_path));
    }

    void staysTheSameUntilItIsTakenAway()
    {
        RunFolder folder;
        QVERIFY(folder.prepare());
        const QString first = folderOf(folder);
        QVERIFY(folder.prepare());
        QCOMPARE(folderOf(folder), first);
        // A cleaner of temporary files has been there.
        QVERIFY(QDir(first).removeRecursively());
        QVERIFY(folder.prepare());
        QVERIFY(QFileInfo::exists(folderOf(folder)));
        QVERIFY(folderOf(folder) != first);
    }

    void twoDoNotShareOne()
    {
        RunFolder one;
        RunFolder other;
        QVERIFY(one.prepare());
        QVERIFY(other.prepare());
        QVERIFY(folderOf(one) != folderOf(other));
        QVERIFY(QFileInfo::exists(folderOf(one)));
    }

    void thatOfAKilledProcessIsClearedAway()
    {
        RunFolder living;
        QVERIFY(living.prepare());
        const QString dead = folderOfKilledProcess();
        QVERIFY(QFileInfo::exists(dead + QStringLiteral("/1.ptp4l")));
        RunFolder folder;
        QVERIFY(folder.prepare());
        QVERIFY(!QFileInfo::exists(dead));
        QVERIFY(QFileInfo::exists(folderOf(living)));
        QCOMPARE(foldersIn(m_shared).size(), 2);
    }

    // Without a lock in it nobody can tell that its owner is gone.
    void aFolderWithoutALockIsLeftAlone()
    {
        QVERIFY(QDir().mkpath(m_shared + QStringLiteral("/ptp-AAAAAA")));
        QVERIFY(QDir().mkpath(m_shared + QStringLiteral("/other")));
        QFile lock(m_shared + QStringLiteral("/other/lock"));
        QVERIFY(lock.open(QIODevice::WriteOnly));
        RunFolder folder;
        QVERIFY(folder.prepare());
        QVERIFY(QFileInfo::exists(m_shared + QStringLiteral("/ptp-AAAAAA")));
        QVERIFY(lock.exists());
    }

    // A link that somebody has put there leads nowhere of ours.
    void aLinkIsNotFollowed()
    {
        const QTemporaryDir elsewhere;
        QFile lock(elsewhere.filePath(QStringLiteral("lock")));
        QVERIFY(lock.open(QIODevice::WriteOnly));
        QVERIFY(QDir().mkpath(m_shared));
        QVERIFY(QFile::link(elsewhere.path(), m_shared + QStringLiteral("/ptp-BBBBBB")));
        RunFolder folder;
        QVERIFY(folder.prepare());
        QVERIFY(lock.exists());
        QVERIFY(QFileInfo(m_shared + QStringLiteral("/ptp-BBBBBB")).isSymLink());
    }

    void anOpenSessionFolderIsClosedOrNotUsed()
    {
        QVERIFY(QDir().mkpath(m_shared));
        QCOMPARE(chmod(QFile::encodeName(m_shared).constData(), 0755), 0);
        RunFolder folder;
        QVERIFY(folder.prepare());
        QCOMPARE(modeOf(folderOf(folder)), mode_t{0700});
        QCOMPARE(modeOf(m_shared), mode_t{0700});
        folder.remove();
        // One that others may look into is not the session's at all.
        QCOMPARE(chmod(QFile::encodeName(m_session->path()).constData(), 0755), 0);
        QVERIFY(folder.prepare());
        QVERIFY2(!folderOf(folder).startsWith(m_session->path()), qPrintable(folderOf(folder)));
        QCOMPARE(modeOf(folderOf(folder)), mode_t{0700});
    }

    void whereAPathWouldBeTooLongAnotherPlaceServes()
    {
        const QString deep = m_session->filePath(QString(60, QLatin1Char('d')));
        QVERIFY(QDir().mkpath(deep));
        QCOMPARE(chmod(QFile::encodeName(deep).constData(), 0700), 0);
        qputenv("XDG_RUNTIME_DIR", QFile::encodeName(deep));
        RunFolder folder;
        QVERIFY(folder.prepare());
        QVERIFY2(!folderOf(folder).startsWith(deep), qPrintable(folderOf(folder)));
        QVERIFY(folder.pathOf("4294967295.ptp4l").size() < sizeof(sockaddr_un::sun_path));
    }
};

QTEST_GUILESS_MAIN(TestPtpRunFolder)
#include "test_ptp_runfolder.moc"
