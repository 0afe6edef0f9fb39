// SPDX-License-Identifier: MIT
// The launcher: what it refuses, and what it hands on to ptp4l.
#include "ptpnet.h"

#include "../../../platform/rkptp/launcher/launchcodes.h"

#include <QtTest>

#include <fcntl.h>
#include <sys/stat.h>
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
