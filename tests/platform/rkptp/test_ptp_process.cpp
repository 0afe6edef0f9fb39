// SPDX-License-Identifier: MIT
// One child process: how it is started, what is read of it, how its end is seen. The launcher is a script.
#include "process.h"

#include "descriptor.h"

#include <QFile>
#include <QTemporaryDir>
#include <QtTest>

#include <csignal>
#include <fcntl.h>
#include <poll.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

using namespace rkptp;

namespace {

bool readableSoon(int fd)
{
    pollfd one{fd, POLLIN, 0};
    return poll(&one, 1, 60000) == 1;
}

// Its whole output in lines, and its end.
struct Story {
    QByteArrayList lines;
    ProcessEnd end;
};

Story follow(Process &process)
{
    Story story;
    process.setReader([&story](const std::string &line) {
        story.lines << QByteArray::fromStdString(line);
        return true;
    });
    while (process.logFd() >= 0 && readableSoon(process.logFd()))
        process.drainLog();
    if (!readableSoon(process.pidFd()))
        qFatal("the process does not end");
    if (const auto end = process.reap())
        story.end = *end;
    return story;
}

ProcessRequest someRequest(const QString &launcher)
{
    ProcessRequest request;
    request.launcher = launcher.toStdString();
    request.interfaces = {"eth0", "eth1"};
    request.domain = 127;
    request.identity = "021dc1.fffe.123456";
    request.socketPath = "/run/x y/1.ptp4l";
    return request;
}

} // namespace

class TestPtpProcess : public QObject {
    Q_OBJECT

    QTemporaryDir m_folder;

    // A launcher that runs these lines of shell.
    QString script(const QByteArray &lines)
    {
        const QString path = m_folder.filePath(QStringLiteral("launcher%1").arg(m_scripts++));
        QFile file(path);
        if (!file.open(QIODevice::WriteOnly) || file.write("#!/bin/sh\n" + lines + "\n") < 0)
            qFatal("cannot write a script");
        file.close();
        file.setPermissions(QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
        return path;
    }
    int m_scripts = 0;

private slots:
    void whatItIsStartedWith();
    void whatAListenerIsStartedWith();
    void itsSurroundingsAreEmpty();
    void itsOutputIsOneAndItsInputNone();
    void signalsAreThoseOfTheBeginning();
    void itsEnd_data();
    void itsEnd();
    void oneThatRunsHasNoEnd();
    void itIsReapedOnce();
    void oneThatCannotBeStarted();
    void theLastTwoLinesAreKept();
    void itGoesWithItsObject();
    void whoReapsEverythingLearnsNoCode();
    void whoReapsEverythingNeverSignalsAStranger();
    void theLauncherStandsBesideTheLibrary();
};

void TestPtpProcess::whatItIsStartedWith()
{
    Process process;
    QCOMPARE(process.start(someRequest(script("for one; do echo \"<$one>\"; done"))), 0);
    QVERIFY(process.pid() > 0);
    const Story story = follow(process);
    QCOMPARE(story.lines, (QByteArrayList{"<" + QByteArray::number(getpid()) + ">", "<127>",
                                          "<021dc1.fffe.123456>", "</run/x y/1.ptp4l>", "<eth0>", "<eth1>"}));
    QVERIFY(story.end.exited);
    QCOMPARE(story.end.code, 0);
}

void TestPtpProcess::whatAListenerIsStartedWith()
{
    ProcessRequest request = someRequest(script("echo \"$@\""));
    request.listen = true;
    Process process;
    QCOMPARE(process.start(request), 0);
    QCOMPARE(follow(process).lines, QByteArrayList{QByteArray::number(getpid()) + " listen eth0 eth1"});
}

void TestPtpProcess::itsSurroundingsAreEmpty()
{
    qputenv("LD_PRELOAD_OF_SOMEBODY", "x");
    Process process;
    QCOMPARE(process.start(someRequest(script("/usr/bin/env -u PWD -u _ -u SHLVL -u OLDPWD; echo end"))), 0);
    QCOMPARE(follow(process).lines, QByteArrayList{"end"});
}

void TestPtpProcess::itsOutputIsOneAndItsInputNone()
{
    Process process;
    QCOMPARE(process.start(
                 someRequest(script("echo out; echo error >&2; if read line; then echo \"in $line\"; fi"))),
             0);
    QCOMPARE(follow(process).lines, (QByteArrayList{"out", "error"}));
}

// A program that ignores or blocks signals does not hand that on; and the terminal's Ctrl-C is not for the
// child.
void TestPtpProcess::signalsAreThoseOfTheBeginning()
{
    const auto before = signal(SIGTERM, SIG_IGN);
    sigset_t blocked;
    sigset_t old;
    sigemptyset(&blocked);
    sigaddset(&blocked, SIGUSR1);
    pthread_sigmask(SIG_BLOCK, &blocked, &old);
    Process process;
    const int error = process.start(someRequest(script(
        "grep -E '^Sig(Blk|Ign)' /proc/self/status; cut -d' ' -f5 /proc/$$/stat; echo $$; kill -TERM $$; "
        "echo survived")));
    const Story story = follow(process);
    signal(SIGTERM, before);
    pthread_sigmask(SIG_SETMASK, &old, nullptr);
    QCOMPARE(error, 0);
    QCOMPARE(story.lines.size(), 4);
    QCOMPARE(story.lines[0], QByteArray("SigBlk:0000000000000000"));
    // From 32 on they are the C library's own.
    QCOMPARE(story.lines[1].mid(int(qstrlen("SigIgn:"))).toULongLong(nullptr, 16) & 0x7fffffffU, 0U);
    QCOMPARE(story.lines[2], story.lines[3]); // the head of a group of its own
    QVERIFY(!story.end.exited);
    QCOMPARE(story.end.code, SIGTERM);
}

void TestPtpProcess::itsEnd_data()
{
    QTest::addColumn<QByteArray>("lines");
    QTest::addColumn<bool>("exited");
    QTest::addColumn<int>("code");
    QTest::newRow("well") << QByteArray("exit 0") << true << 0;
    QTest::newRow("a code") << QByteArray("exit 101") << true << 101;
    QTest::newRow("the highest code") << QByteArray("exit 255") << true << 255;
    QTest::newRow("killed") << QByteArray("kill -KILL $$") << false << SIGKILL;
    QTest::newRow("no program behind it") << QByteArray("exec /nonexistent") << true << 127;
}
void TestPtpProcess::itsEnd()
{
    QFETCH(QByteArray, lines);
    Process process;
    QCOMPARE(process.start(someRequest(script(lines))), 0);
    const ProcessEnd end = follow(process).end;
    QTEST(end.exited, "exited");
    QTEST(end.code, "code");
}

void TestPtpProcess::oneThatRunsHasNoEnd()
{
    Process process;
    QCOMPARE(process.start(someRequest(script("echo up; exec sleep 600"))), 0);
    QVERIFY(readableSoon(process.logFd()));
    process.drainLog();
    QCOMPARE(process.lastLines(), std::string("up"));
    QVERIFY(!process.reap().has_value());
    process.signal(SIGTERM);
    const Story story = follow(process);
    QVERIFY(!story.end.exited);
    QCOMPARE(story.end.code, SIGTERM);
}

void TestPtpProcess::itIsReapedOnce()
{
    Process process;
    QVERIFY(!process.reap().has_value()); // before it was started as well
    process.signal(SIGTERM);              // no harm, and nobody else is hit
    QCOMPARE(process.start(someRequest(script("exit 3"))), 0);
    QCOMPARE(follow(process).end.code, 3);
    QVERIFY(!process.reap().has_value());
    QCOMPARE(process.pid(), pid_t{-1});
    process.signal(SIGKILL);
}

void TestPtpProcess::oneThatCannotBeStarted()
{
    Process missing;
    QCOMPARE(missing.start(someRequest(QStringLiteral("/nonexistent/launcher"))), ENOENT);
    QCOMPARE(missing.pid(), pid_t{-1});
    QVERIFY(!missing.reap().has_value());
    const QString plain = script("exit 0");
    QFile::setPermissions(plain, QFile::ReadOwner);
    Process forbidden;
    QCOMPARE(forbidden.start(someRequest(plain)), EACCES);
}

void TestPtpProcess::theLastTwoLinesAreKept()
{
    Process process;
    QCOMPARE(
        process.start(someRequest(script("for i in 1 2 3 4 5; do echo line $i; done; printf unfinished"))),
        0);
    while (process.logFd() >= 0 && readableSoon(process.logFd()))
        process.drainLog();
    QCOMPARE(process.lastLines(), std::string("line 4; line 5"));
    // More than a pipe holds, from a child that does not wait for us.
    Process chatty;
    QCOMPARE(chatty.start(someRequest(script("yes a long line | head -n 20000; echo the last"))), 0);
    while (chatty.logFd() >= 0 && readableSoon(chatty.logFd()))
        chatty.drainLog();
    QCOMPARE(chatty.lastLines(), std::string("a long line; the last"));
}

void TestPtpProcess::itGoesWithItsObject()
{
    pid_t pid = 0;
    {
        Process process;
        QCOMPARE(process.start(someRequest(script("trap '' TERM; echo up; exec sleep 600"))), 0);
        QVERIFY(readableSoon(process.logFd()));
        pid = process.pid();
    }
    QCOMPARE(kill(pid, 0), -1);
    QCOMPARE(errno, ESRCH); // reaped as well
}

// A host that lets the kernel reap its children: that it ended is seen, how is not.
void TestPtpProcess::whoReapsEverythingLearnsNoCode()
{
    const QByteArray gate = QFile::encodeName(m_folder.filePath(QStringLiteral("gate")));
    QCOMPARE(mkfifo(gate.constData(), 0600), 0);
    const auto before = signal(SIGCHLD, SIG_IGN);
    Process process;
    const int error = process.start(someRequest(script("read line <" + gate + "; exit 7")));
    close(open(gate.constData(), O_WRONLY)); // it goes on, and ends
    const Story story = follow(process);
    signal(SIGCHLD, before);
    QCOMPARE(error, 0);
    QVERIFY(!story.end.exited);
    QCOMPARE(story.end.code, 0);
    QVERIFY(!process.reap().has_value());
}

// Then one that ends at once may be gone before it was looked at: its number is nobody's we know.
void TestPtpProcess::whoReapsEverythingNeverSignalsAStranger()
{
    const auto before = signal(SIGCHLD, SIG_IGN);
    for (int i = 0; i < 50; ++i) {
        Process process;
        const int error = process.start(someRequest(QStringLiteral("/bin/true")));
        QVERIFY2(error == 0 || error == ESRCH, strerror(error));
        QCOMPARE(process.pid() > 0, error == 0);
    }
    signal(SIGCHLD, before);
}

void TestPtpProcess::theLauncherStandsBesideTheLibrary()
{
    const QString expected = QString::fromStdString(expectedLauncher());
    QVERIFY2(expected.endsWith(QStringLiteral("/libexec/corvel/ptp_launch")), qPrintable(expected));
    const QString found = QString::fromStdString(findLauncher());
    QVERIFY(found.isEmpty() || QFileInfo(found).isExecutable());
}

QTEST_GUILESS_MAIN(TestPtpProcess)
#include "test_ptp_process.moc"
