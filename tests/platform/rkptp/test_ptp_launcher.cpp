// SPDX-License-Identifier: MIT
// The launcher: what it refuses, and what it hands on to ptp4l.
#include "ptpnet.h"

#include "../../../platform/rkptp/launcher/launchcodes.h"

#include <QtTest>

#include <atomic>
#include <cstdio>
#include <fcntl.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>

namespace {

struct Outcome {
    int code = -1;
    QByteArray text;
};

Outcome run(const QString &program, const QStringList &arguments, const QStringList &environment = {})
{
    QProcess process;
    process.setProcessChannelMode(QProcess::MergedChannels);
    process.setEnvironment(environment);
    process.start(program, arguments);
    Outcome outcome;
    if (process.waitForFinished() && process.exitStatus() == QProcess::NormalExit)
        outcome.code = process.exitCode();
    outcome.text = process.readAll();
    return outcome;
}

const QString fake = QStringLiteral(FAKE_LAUNCHER);

} // namespace

class TestPtpLauncher : public QObject {
    Q_OBJECT
private slots:
    void initTestCase();
    void accepts();
    void refuses_data();
    void refuses();
    void refusesFoldersOfOthers();
    void refusesWhatIsNoSocket();
    void preloadDoesNotReachPtp4l();
    void environmentIsDropped_data();
    void environmentIsDropped();
    void surroundingsOpenNothing_data();
    void surroundingsOpenNothing();
    void noArgumentsAtAll();
    void folderThatChanges();
    void descriptorsAreClosed();
    void missingPtp4l();
    void missingCapability();
    void capabilityOfTheFileIsEnough();
    void refusesToListen_data();
    void refusesToListen();
    void listeningKeepsNoCapability();

private:
    QStringList good() const;
    QStringList with(int at, const QString &value) const;

    QTemporaryDir m_folder;
};

void TestPtpLauncher::initTestCase()
{
    QVERIFY(m_folder.isValid());
    QCOMPARE(chmod(QFile::encodeName(m_folder.path()).constData(), 0700), 0);
    runCommand(QStringLiteral("ip"), {QStringLiteral("link"), QStringLiteral("add"), QStringLiteral("d0"),
                                      QStringLiteral("type"), QStringLiteral("veth"), QStringLiteral("peer"),
                                      QStringLiteral("name"), QStringLiteral("d1")});
}

QStringList TestPtpLauncher::good() const
{
    return {QString::number(getpid()),
            QStringLiteral("127"),
            QStringLiteral("021dc1.fffe.123456"),
            m_folder.filePath(QStringLiteral("socket")),
            QStringLiteral("d0"),
            QStringLiteral("d1")};
}

QStringList TestPtpLauncher::with(int at, const QString &value) const
{
    QStringList arguments = good();
    arguments[at] = value;
    return arguments;
}

void TestPtpLauncher::accepts()
{
    const Outcome outcome = run(fake, good(), {QStringLiteral("FOO=bar")});
    QCOMPARE(outcome.code, 0);
    const QList<QByteArray> lines = outcome.text.split('\n');
    for (const char *line :
         {"argument -s", "argument -S", "argument -4", "argument -E", "argument --free_running=1",
          "argument --kernel_leap=0", "argument --fault_reset_interval=0", "argument --domainNumber=127",
          "argument --clockIdentity=021dc1.fffe.123456", "argument -i", "argument d0", "argument d1",
          "death signal 9", "NoNewPrivs:\t1",
          // CAP_NET_BIND_SERVICE and nothing else, though the caller is root
          "CapAmb:\t0000000000000400", "CapPrm:\t0000000000000400", "CapEff:\t0000000000000400",
          "environment LC_ALL=C", "environment PATH=/usr/sbin:/usr/bin:/sbin:/bin"})
        QVERIFY2(lines.contains(line), (line + QByteArray(" missing in\n") + outcome.text).constData());
    QCOMPARE(outcome.text.count("environment "), 2);
    QVERIFY(!outcome.text.contains("argument -f"));
}

void TestPtpLauncher::refuses_data()
{
    QTest::addColumn<QStringList>("arguments");
    const QString empty;
    QTest::newRow("nothing") << QStringList();
    QTest::newRow("no interface") << QStringList(good().mid(0, 4));
    QTest::newRow("nine interfaces") << good().mid(0, 4) +
                                            QStringLiteral("d0 d1 lo a b c d e f").split(QLatin1Char(' '));
    struct Row {
        const char *name;
        int at;
        const char *value;
    };
    const Row rows[] = {
        {"parent empty", 0, ""},
        {"parent zero", 0, "0"},
        {"parent negative", 0, "-5"},
        {"parent text", 0, "init"},
        {"parent huge", 0, "99999999999999999999"},
        {"domain empty", 1, ""},
        {"domain 128", 1, "128"},
        {"domain negative", 1, "-1"},
        {"domain plus", 1, "+1"},
        {"domain leading zero", 1, "05"},
        {"domain hex", 1, "0x5"},
        {"domain with more", 1, "5 --clock_servo=pi"},
        {"identity empty", 2, ""},
        {"identity global", 2, "001dc1.fffe.123456"},
        {"identity group", 2, "031dc1.fffe.123456"},
        {"identity upper case", 2, "021DC1.fffe.123456"},
        {"identity dashes", 2, "02-1d-c1-ff-fe-12-34-56"},
        {"identity short", 2, "021dc1.fffe.12345"},
        {"identity long", 2, "021dc1.fffe.1234567"},
        {"identity option", 2, "--free_running=0--"},
        {"socket empty", 3, ""},
        {"socket relative", 3, "socket"},
        {"socket in a missing folder", 3, "/nonexistent/socket"},
        {"socket in an open folder", 3, "/tmp/socket"},
        {"socket is a folder", 3, "/tmp/"},
        {"interface empty", 4, ""},
        {"interface missing", 4, "nosuch0"},
        {"interface option", 4, "-f"},
        {"interface path", 4, "../d0"},
        {"interface with blank", 4, "d0 d1"},
        {"interface too long", 4, "d0234567890123456"},
        {"interface twice", 4, "d1"},
    };
    for (const Row &row : rows)
        QTest::newRow(row.name) << with(row.at, QString::fromLatin1(row.value));
    const QString folder = m_folder.path();
    QTest::newRow("socket with dots") << with(3, folder + QStringLiteral("/../socket"));
    QTest::newRow("socket with line end") << with(3, folder + QStringLiteral("/a\nb"));
    QTest::newRow("socket too long") << with(3, folder + QLatin1Char('/') + QString(120, QLatin1Char('a')));
}

void TestPtpLauncher::refuses()
{
    QFETCH(QStringList, arguments);
    const Outcome outcome = run(fake, arguments);
    QCOMPARE(outcome.code, int(LAUNCH_BAD_ARGUMENT));
    QVERIFY(!outcome.text.contains("argument "));
    QVERIFY(outcome.text.contains("ptp_launch"));
}

void TestPtpLauncher::refusesFoldersOfOthers()
{
    QCOMPARE(run(fake, with(3, QStringLiteral("/proc/socket"))).code, int(LAUNCH_BAD_ARGUMENT));
    const QString link = m_folder.filePath(QStringLiteral("link"));
    QVERIFY(QFile::link(m_folder.path(), link));
    QCOMPARE(run(fake, with(3, link + QStringLiteral("/socket"))).code, int(LAUNCH_BAD_ARGUMENT));
}

// ptp4l would remove it.
void TestPtpLauncher::refusesWhatIsNoSocket()
{
    const QString path = m_folder.filePath(QStringLiteral("precious"));
    QFile file(path);
    QVERIFY(file.open(QIODevice::WriteOnly));
    QCOMPARE(run(fake, with(3, path)).code, int(LAUNCH_BAD_ARGUMENT));
    QVERIFY(QFile::exists(path));
}

void TestPtpLauncher::preloadDoesNotReachPtp4l()
{
    // The second is for a launcher built with the address sanitizer, which wants to be loaded first.
    const QStringList environment = {QStringLiteral("LD_PRELOAD=" PRELOAD_LIBRARY),
                                     QStringLiteral("ASAN_OPTIONS=verify_asan_link_order=0")};
    // It does get into an ordinary program, so the test can tell.
    QVERIFY(run(QStringLiteral("/bin/true"), {}, environment).text.contains("preloaded"));
    const Outcome outcome = run(fake, good(), environment);
    QCOMPARE(outcome.code, 0);
    QVERIFY(!outcome.text.contains("LD_PRELOAD"));
    // Once at most, in the launcher itself when it runs without its file capability.
    QVERIFY(outcome.text.count("preloaded") <= 1);
    QVERIFY(outcome.text.lastIndexOf("preloaded") < outcome.text.indexOf("argument "));
}

void TestPtpLauncher::environmentIsDropped_data()
{
    QTest::addColumn<QStringList>("environment");
    for (const char *variable : {"LD_LIBRARY_PATH=/tmp",
                                 "LD_BIND_NOT=1",
                                 "LD_DEBUG=all",
                                 "LD_PROFILE=libc.so.6",
                                 "GCONV_PATH=/tmp",
                                 "GLIBC_TUNABLES=glibc.malloc.check=3",
                                 "MALLOC_TRACE=/tmp/trace",
                                 "LOCPATH=/tmp",
                                 "NLSPATH=/tmp/%N",
                                 "RES_OPTIONS=debug",
                                 "HOSTALIASES=/tmp/hosts",
                                 "TZDIR=/tmp",
                                 "TMPDIR=/tmp",
                                 "PATH=/tmp",
                                 "IFS=/",
                                 "LC_ALL=xx_XX",
                                 "LANGUAGE=../../tmp",
                                 "PTP4L=/tmp/ptp4l",
                                 "=",
                                 "no equals sign"})
        QTest::newRow(variable) << QStringList(QString::fromLatin1(variable));
    QTest::newRow("two of a name") << QStringList{QStringLiteral("PATH=/a"), QStringLiteral("PATH=/b")};
    QStringList many;
    for (int i = 0; i < 3000; ++i)
        many << QStringLiteral("V%1=x").arg(i);
    QTest::newRow("three thousand") << many;
    QTest::newRow("a long one") << QStringList(QStringLiteral("V=") + QString(100000, QLatin1Char('x')));
}

void TestPtpLauncher::environmentIsDropped()
{
    QFETCH(QStringList, environment);
    const Outcome outcome = run(fake, good(), environment);
    QVERIFY2(outcome.code == 0, outcome.text.left(2000).constData());
    QCOMPARE(outcome.text.count("environment "), 2);
    QVERIFY(outcome.text.contains("environment PATH=/usr/sbin:/usr/bin:/sbin:/bin\n"));
}

void TestPtpLauncher::surroundingsOpenNothing_data()
{
    QTest::addColumn<QString>("shell");
    QTest::newRow("no input") << QStringLiteral("exec \"$@\" <&-");
    QTest::newRow("no errors") << QStringLiteral("exec \"$@\" 2>&-");
    QTest::newRow("three descriptors") << QStringLiteral("ulimit -n 3; exec \"$@\"");
    QTest::newRow("five descriptors") << QStringLiteral("ulimit -n 5; exec \"$@\"");
    QTest::newRow("no file size") << QStringLiteral("ulimit -f 0; exec \"$@\"");
    QTest::newRow("little memory") << QStringLiteral("ulimit -v 3000; exec \"$@\"");
    QTest::newRow("little stack") << QStringLiteral("ulimit -s 100; exec \"$@\"");
    QTest::newRow("cores") << QStringLiteral("ulimit -c unlimited; exec \"$@\"");
    QTest::newRow("one second") << QStringLiteral("ulimit -t 1; exec \"$@\"");
    QTest::newRow("umask") << QStringLiteral("umask 777; exec \"$@\"");
    QTest::newRow("signals ignored") << QStringLiteral("trap '' HUP INT QUIT TERM PIPE CHLD; exec \"$@\"");
    QTest::newRow("signals blocked") << QStringLiteral("exec env --block-signal=TERM,CHLD,ALRM \"$@\"");
    QTest::newRow("folder that is gone")
        << QStringLiteral("cd \"$(mktemp -d)\" && rmdir \"$PWD\"; exec \"$@\"");
    QTest::newRow("folder with a ptp4l")
        << QStringLiteral("cd \"$(mktemp -d)\" && cp /bin/true ptp4l; exec \"$@\"");
    QTest::newRow("through a link") << QStringLiteral(
        "l=$(mktemp -u); ln -s \"$1\" $l; shift; exec $l \"$@\"");
    QTest::newRow("another name") << QStringLiteral(
        "exec env --argv0=ptp4l \"$@\" 2>/dev/null || exec \"$@\"");
}

// Either ptp4l starts as it always does, or nothing starts.
void TestPtpLauncher::surroundingsOpenNothing()
{
    QFETCH(QString, shell);
    const QStringList start = {QStringLiteral("-c"), shell, QStringLiteral("sh"), fake};
    const Outcome outcome =
        run(QStringLiteral("/bin/bash"), start + good(),
            {QStringLiteral("PATH=/usr/bin:/bin"), QStringLiteral("TMPDIR=") + m_folder.path()});
    QVERIFY2(outcome.code != 0 || outcome.text.contains("CapPrm:\t0000000000000400") ||
                 outcome.text.isEmpty(),
             outcome.text.constData());
    QVERIFY2(!outcome.text.contains("argument ") || outcome.text.contains("argument --free_running=1"),
             outcome.text.constData());
    QVERIFY2(!outcome.text.contains("argument ") || outcome.text.contains("NoNewPrivs:\t1"),
             outcome.text.constData());
}

// Not even its own name.
void TestPtpLauncher::noArgumentsAtAll()
{
    const QByteArray program = QFile::encodeName(fake);
    const pid_t child = fork();
    if (child == 0) {
        char *const nothing[] = {nullptr};
        execve(program.constData(), nothing, nothing);
        _exit(126);
    }
    int status = 0;
    QCOMPARE(waitpid(child, &status, 0), child);
    QVERIFY(WIFEXITED(status));
    QCOMPARE(WEXITSTATUS(status), int(LAUNCH_BAD_ARGUMENT));
}

// While it is looked at, the folder of the socket is another one, a link, and back again: what is not refused
// is as it always is.
void TestPtpLauncher::folderThatChanges()
{
    const QByteArray own = QFile::encodeName(m_folder.filePath(QStringLiteral("race")));
    const QByteArray aside = own + ".aside";
    QCOMPARE(mkdir(own.constData(), 0700), 0);
    std::atomic<bool> stop{false};
    std::thread racer([&] {
        while (!stop) {
            rename(own.constData(), aside.constData());
            if (symlink("/tmp", own.constData()) == 0)
                unlink(own.constData());
            rename(aside.constData(), own.constData());
        }
    });
    int refused = 0;
    int others = 0;
    for (int i = 0; i < 100; ++i) {
        const Outcome outcome = run(fake, with(3, QFile::decodeName(own) + QStringLiteral("/socket")));
        refused += outcome.code == int(LAUNCH_BAD_ARGUMENT);
        others += outcome.code != 0 && outcome.code != int(LAUNCH_BAD_ARGUMENT);
    }
    stop = true;
    racer.join();
    qInfo("%d of 100 refused", refused);
    QCOMPARE(others, 0);
}

void TestPtpLauncher::descriptorsAreClosed()
{
    const int leaked = open("/dev/null", O_RDONLY);
    QVERIFY(leaked > 2);
    QCOMPARE(fcntl(leaked, F_SETFD, 0), 0);
    const Outcome outcome = run(fake, good());
    ::close(leaked);
    QVERIFY2(outcome.text.contains("descriptors 3\n"), outcome.text.constData());
}

void TestPtpLauncher::missingPtp4l()
{
    const Outcome outcome = run(QStringLiteral(BARREN_LAUNCHER), good());
    QCOMPARE(outcome.code, int(LAUNCH_NO_PTP4L));
    QVERIFY(outcome.text.contains("/nonexistent/ptp4l"));
}

void TestPtpLauncher::missingCapability()
{
    QStringList arguments = {QStringLiteral("--bounding-set=-net_bind_service"), QStringLiteral("--"), fake};
    const Outcome outcome = run(QStringLiteral("/usr/bin/setpriv"), arguments + good());
    QCOMPARE(outcome.code, int(LAUNCH_NO_CAPABILITY));
    QVERIFY(!outcome.text.contains("argument "));
}

// As on a desktop: the caller has no capability at all, the file has one.
void TestPtpLauncher::capabilityOfTheFileIsEnough()
{
    const QString copy = m_folder.filePath(QStringLiteral("launcher"));
    QVERIFY(QFile::copy(fake, copy));
    const Outcome set =
        run(QStringLiteral("/usr/sbin/setcap"), {QStringLiteral("cap_net_bind_service=p"), copy});
    if (set.code != 0)
        QSKIP("this file system keeps no file capabilities");
    const QStringList powerless = {QStringLiteral("--securebits=+noroot,+noroot_locked"),
                                   QStringLiteral("--")};
    const QString setpriv = QStringLiteral("/usr/bin/setpriv");
    QCOMPARE(run(setpriv, powerless + QStringList{fake} + good()).code, int(LAUNCH_NO_CAPABILITY));
    const Outcome outcome = run(setpriv, powerless + QStringList{copy} + good());
    QVERIFY2(outcome.code == 0, outcome.text.constData());
    QVERIFY(outcome.text.contains("CapAmb:\t0000000000000400"));
    QVERIFY(outcome.text.contains("death signal 9"));
}

void TestPtpLauncher::refusesToListen_data()
{
    QTest::addColumn<QString>("interfaces");
    for (const char *interfaces : {"", "nosuch0", "d0 d0", "--", "d0 d1 lo a b c d e f"})
        QTest::newRow(interfaces) << QString::fromLatin1(interfaces);
}

void TestPtpLauncher::refusesToListen()
{
    QFETCH(QString, interfaces);
    const QStringList start = {good().first(), QStringLiteral("listen")};
    const Outcome outcome = run(fake, start + interfaces.split(QLatin1Char(' '), Qt::SkipEmptyParts));
    QCOMPARE(outcome.code, int(LAUNCH_BAD_ARGUMENT));
}

// Only the file has the capability, and once the group can be heard the process has none any more.
void TestPtpLauncher::listeningKeepsNoCapability()
{
    const QString copy = m_folder.filePath(QStringLiteral("listener"));
    QVERIFY(QFile::copy(fake, copy));
    if (run(QStringLiteral("/usr/sbin/setcap"), {QStringLiteral("cap_net_bind_service=p"), copy}).code != 0)
        QSKIP("this file system keeps no file capabilities");
    const auto contentOf = [](const QString &path) {
        QFile file(path);
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
    };
    QProcess process;
    process.start(QStringLiteral("/usr/bin/setpriv"),
                  {QStringLiteral("--securebits=+noroot,+noroot_locked"), QStringLiteral("--"), copy,
                   QString::number(getpid()), QStringLiteral("listen"), QStringLiteral("d0")});
    QVERIFY(process.waitForStarted());
    const QString status = QStringLiteral("/proc/%1/status").arg(process.processId());
    QTRY_VERIFY_WITH_TIMEOUT(contentOf(status).contains("NoNewPrivs:\t1"), 5000);
    QVERIFY(contentOf(QStringLiteral("/proc/self/net/udp")).contains("810100E0:0140"));
    for (const char *set : {"CapPrm", "CapEff", "CapInh", "CapAmb"})
        QVERIFY2(contentOf(status).contains(QByteArray(set) + ":\t0000000000000000"), set);
    QCOMPARE(process.state(), QProcess::Running);
    process.kill();
    QVERIFY(process.waitForFinished(5000));
}

QTEST_GUILESS_MAIN(TestPtpLauncher)
#include "test_ptp_launcher.moc"
