// SPDX-License-Identifier: MIT
// The ptp4l processes behind the clients: how many there are, who ends them, and what stands in their way.
#include "ptpclient.h"
#include "ptpnet.h"

#include <QtTest>

#include <atomic>
#include <cstddef>
#include <linux/filter.h>
#include <linux/seccomp.h>
#include <set>
#include <signal.h>
#include <sys/prctl.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>

#if defined(__SANITIZE_ADDRESS__)
// The child of a fork has none of the threads that own what looks like leaks there.
static bool inForkedChild = false;
extern "C" int __lsan_is_turned_off();
extern "C" int __lsan_is_turned_off()
{
    return inForkedChild;
}
#define NOTE_FORK() (inForkedChild = true)
#else
#define NOTE_FORK() ((void)0)
#endif

namespace {

const QString ptpstatus = QStringLiteral(CORVEL_BIN_DIR "/ptpstatus");
const QString kUnshared = QStringLiteral(CORVEL_TEST_DATA "/../support/unshared");

bool mayMount()
{
    return QProcess::execute(kUnshared,
                             {QStringLiteral("--as-is"), QStringLiteral("-m"), QStringLiteral("true")}) == 0;
}

size_t ptp4lCount()
{
    return childrenNamed(getpid(), "ptp4l").size();
}

bool hasZombies()
{
    siginfo_t info{};
    return waitid(P_ALL, 0, &info, WEXITED | WNOHANG | WNOWAIT) == 0 && info.si_pid != 0;
}

// A program with the library in another place: a copy of its files with a launcher of choice, or none.
class OtherPlace {
public:
    explicit OtherPlace(const QString &launcher = QString())
    {
        QDir(m_folder.path()).mkpath(QStringLiteral("lib"));
        QDir(m_folder.path()).mkpath(QStringLiteral("libexec/corvel"));
        for (const char *name : {"librkptp.so", "librkos.so"})
            QFile::copy(QStringLiteral(CORVEL_LIB_DIR "/") + QLatin1String(name),
                        m_folder.filePath(QStringLiteral("lib/") + QLatin1String(name)));
        if (!launcher.isEmpty())
            QFile::copy(launcher, m_folder.filePath(QStringLiteral("libexec/corvel/ptp_launch")));
    }

    // Starts ptpstatus with it.
    std::unique_ptr<QProcess> start(const QStringList &wrapper, const QStringList &arguments) const
    {
        auto process = std::make_unique<QProcess>();
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        environment.insert(QStringLiteral("LD_LIBRARY_PATH"), m_folder.filePath(QStringLiteral("lib")));
        process->setProcessEnvironment(environment);
        process->setProcessChannelMode(QProcess::MergedChannels);
        const QStringList command = wrapper + QStringList{ptpstatus} + arguments;
        process->start(command.first(), command.mid(1));
        return process;
    }

private:
    QTemporaryDir m_folder;
};

// Counts the system calls of one thread that are none of those a thread needs to come and go.
std::atomic<int> trapped{0};

void onTrap(int)
{
    ++trapped;
}

bool trapSystemCalls()
{
    static const int allowed[] = {SYS_clock_gettime, SYS_rt_sigreturn, SYS_rt_sigprocmask,
                                  SYS_exit,          SYS_exit_group,   SYS_madvise,
                                  SYS_munmap,        SYS_sigaltstack,  SYS_sched_yield};
    std::vector<sock_filter> code = {BPF_STMT(BPF_LD | BPF_W | BPF_ABS, offsetof(seccomp_data, nr))};
    for (int number : allowed) {
        code.push_back(BPF_JUMP(BPF_JMP | BPF_JEQ | BPF_K, static_cast<unsigned>(number), 0, 1));
        code.push_back(BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_ALLOW));
    }
    code.push_back(BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_TRAP));
    sock_fprog program = {static_cast<unsigned short>(code.size()), code.data()};
    return prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0) == 0 &&
           prctl(PR_SET_SECCOMP, SECCOMP_MODE_FILTER, &program) == 0;
}

// What the dialog calls in one tick.
void tick(PTP_HANDLE handle)
{
    char buffer[RKPTP_TEXT_SIZE];
    uint64_t seconds = 0;
    uint32_t nanoseconds = 0;
    int64_t offset = 0;
    rkPTPGetStatus(handle, 0);
    for (auto getter :
         {rkPTPGetSourcePortID, rkPTPGetIPAddress, rkPTPGetDomain, rkPTPGetVersion, rkPTPGetGrandmasterID})
        getter(handle, buffer);
    rkPTPGetTime_Nano(handle, &seconds, &nanoseconds);
    rkPTPGetOffset_Nano(handle, &offset);
}

} // namespace

class TestPtpChildren : public QObject {
    Q_OBJECT
private slots:
    void initTestCase();
    void handlesWithoutAClient_data();
    void handlesWithoutAClient();
    void endedHandle();
    void addressesNobodyHas_data();
    void addressesNobodyHas();
    void textsKeepToTheirBuffer();
    void tickMakesNoSystemCall();
    void restartTakesTheChildOver();
    void fiftyStartsAndEndsSpawnFewChildren();
    void killedPtp4lIsReportedAndReplaced();
    void tenKilledPtp4lLeaveNothingBehind();
    void killedProgramsLeaveNoPtp4l();
    void endingProgramLeavesNothing();
    void callsInTheChildOfAFork();
    void missingParts();
    void foldersOfDeadProgramsAreSwept();
    void takenNamesDoNotStopAClient_data();
    void takenNamesDoNotStopAClient();

private:
    std::unique_ptr<PtpNet> m_net;
    int m_threads = 0; // before the first client
    int m_descriptors = 0;
};

void TestPtpChildren::initTestCase()
{
    m_net = std::make_unique<PtpNet>();
    m_net->addLink(QStringLiteral("v0"), 0);
    m_threads = countOf("task");
    m_descriptors = countOf("fd");
}

void TestPtpChildren::handlesWithoutAClient_data()
{
    QTest::addColumn<qulonglong>("value");
    QTest::newRow("null") << 0ull;
    QTest::newRow("never given") << 123456ull;
    QTest::newRow("all bits") << ~0ull;
}

void TestPtpChildren::handlesWithoutAClient()
{
    QFETCH(qulonglong, value);
    PTP_HANDLE handle = reinterpret_cast<PTP_HANDLE>(static_cast<uintptr_t>(value));
    rkPTPEnd(handle);
    QCOMPARE(rkPTPGetStatus(handle, 0), RKPTP_NO_CLIENT);
    QCOMPARE(rkPTPSetTargetDomain(handle, 1), RKPTP_NO_CLIENT);
    QCOMPARE(rkPTPSetTargetMacAddress(handle, ""), RKPTP_NO_CLIENT);
    char buffer[RKPTP_TEXT_SIZE] = "before";
    for (auto getter :
         {rkPTPGetVersion, rkPTPGetDomain, rkPTPGetSourcePortID, rkPTPGetIPAddress, rkPTPGetGrandmasterID}) {
        buffer[0] = 'x';
        QCOMPARE(getter(handle, buffer), RKPTP_NO_CLIENT);
        QCOMPARE(buffer[0], '\0');
        QCOMPARE(getter(handle, nullptr), RKPTP_BAD_ARGUMENT);
    }
    uint64_t seconds = 0;
    QCOMPARE(rkPTPGetTime_Nano(handle, &seconds, nullptr), RKPTP_NO_CLIENT);
    QVERIFY(qAbs(static_cast<qint64>(seconds) - systemTime() / kNanosPerSecond) <= 1);
    QCOMPARE(rkPTPGetTime_Nano(handle, nullptr, nullptr), RKPTP_NO_CLIENT);
    int64_t offset = 42;
    QCOMPARE(rkPTPGetOffset_Nano(handle, &offset), RKPTP_NO_CLIENT);
    QCOMPARE(offset, int64_t{42});
    QCOMPARE(rkPTPGetOffset_Nano(handle, nullptr), RKPTP_BAD_ARGUMENT);
}

void TestPtpChildren::endedHandle()
{
    PTP_HANDLE first = rkPTPStart("10.9.0.1");
    QVERIFY(first);
    QCOMPARE(rkPTPGetStatus(first, 0), RKPTP_STARTING);
    rkPTPEnd(first);
    QCOMPARE(rkPTPGetStatus(first, 0), RKPTP_NO_CLIENT);
    rkPTPEnd(first);
    PTP_HANDLE second = rkPTPStart("10.9.0.1");
    QVERIFY(second != first);
    QCOMPARE(rkPTPGetStatus(first, 0), RKPTP_NO_CLIENT);
    rkPTPEnd(second);
}

void TestPtpChildren::addressesNobodyHas_data()
{
    QTest::addColumn<QByteArray>("address");
    QTest::addColumn<bool>("readable");
    QTest::newRow("of nobody") << QByteArray("10.99.99.99") << true;
    QTest::newRow("broadcast") << QByteArray("255.255.255.255") << true;
    for (const char *text : {"10.9.0", "10.9.0.", "10.9.0.256", "10.9.0.1 ", "10.9.0.1.1", "eth0",
                             "10.9.0.0001", "-1.0.0.0", "::1", "10..0.1"})
        QTest::newRow(text) << QByteArray(text) << false;
}

void TestPtpChildren::addressesNobodyHas()
{
    QFETCH(QByteArray, address);
    QFETCH(bool, readable);
    const TestClient client(0, address.constData());
    QVERIFY(client.handle());
    QCOMPARE(client.status(), readable ? RKPTP_STARTING : RKPTP_NO_CLIENT);
    QTRY_COMPARE_WITH_TIMEOUT(client.status(), RKPTP_NO_CLIENT, lockTimeout);
    QCOMPARE(ptp4lCount(), size_t{0});
}

void TestPtpChildren::textsKeepToTheirBuffer()
{
    const TestClient client(1,
                            "010.009.000.001"); // leading zeros are decimal, as the address fields show them
    QTRY_COMPARE_WITH_TIMEOUT(client.status(), RKPTP_LISTENING, lockTimeout);
    char buffer[RKPTP_TEXT_SIZE + 1];
    for (auto getter :
         {rkPTPGetVersion, rkPTPGetDomain, rkPTPGetSourcePortID, rkPTPGetIPAddress, rkPTPGetGrandmasterID}) {
        memset(buffer, 'x', sizeof buffer);
        QCOMPARE(getter(client.handle(), buffer), RKPTP_OK);
        QVERIFY(memchr(buffer, 0, RKPTP_TEXT_SIZE));
        QCOMPARE(buffer[RKPTP_TEXT_SIZE], 'x');
    }
    QCOMPARE(textOf(rkPTPGetSourcePortID, client.handle()), QByteArray());
    QCOMPARE(textOf(rkPTPGetGrandmasterID, client.handle()), QByteArray());
    QCOMPARE(textOf(rkPTPGetIPAddress, client.handle()), QByteArray("10.9.0.1"));
}

void TestPtpChildren::tickMakesNoSystemCall()
{
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
    QSKIP("the sanitizer makes system calls of its own; the plain build runs this");
#endif
    const TestClient client(1);
    QTRY_COMPARE_WITH_TIMEOUT(client.status(), RKPTP_LISTENING, lockTimeout);
    struct sigaction action {};
    action.sa_handler = onTrap;
    sigaction(SIGSYS, &action, nullptr);
    bool filtered = false;
    int inTicks = -1;
    int byGetpid = -1;
    std::thread([&] {
        filtered = trapSystemCalls();
        trapped = 0;
        for (int i = 0; i < 1000; ++i)
            tick(client.handle());
        inTicks = trapped;
        syscall(SYS_getppid);
        byGetpid = trapped - inTicks;
    }).join();
    QVERIFY(filtered);
    QCOMPARE(byGetpid, 1); // the trap does work
    // A wait for the mutex, while the worker writes, is allowed to happen now and then.
    QVERIFY2(inTicks <= 5, QByteArray::number(inTicks).constData());
}

void TestPtpChildren::restartTakesTheChildOver()
{
    PTP_HANDLE handle = rkPTPStart("10.9.0.1");
    rkPTPSetTargetDomain(handle, 2);
    QTRY_COMPARE_WITH_TIMEOUT(rkPTPGetStatus(handle, 0), RKPTP_LISTENING, lockTimeout);
    const auto before = childrenNamed(getpid(), "ptp4l");
    QVERIFY(!before.empty());
    // As the dialog does while an identity is being typed.
    for (const char *typed : {"0", "00", "00-1D-C1-FF-FE-12-34-56"}) {
        rkPTPEnd(handle);
        handle = rkPTPStart("10.9.0.1");
        rkPTPSetTargetDomain(handle, 2);
        rkPTPSetTargetMacAddress(handle, typed);
        QTRY_COMPARE_WITH_TIMEOUT(rkPTPGetStatus(handle, 0), RKPTP_LISTENING, lockTimeout);
        QCOMPARE(childrenNamed(getpid(), "ptp4l"), before);
    }
    // A child that is left behind later than those is gone: whatever was due for them is over.
    {
        const TestClient later(3);
        QTRY_COMPARE_WITH_TIMEOUT(later.status(), RKPTP_LISTENING, lockTimeout);
        QCOMPARE(ptp4lCount(), size_t{2});
    }
    QTRY_COMPARE_WITH_TIMEOUT(ptp4lCount(), size_t{1}, lockTimeout);
    QCOMPARE(childrenNamed(getpid(), "ptp4l"), before);
    rkPTPEnd(handle);
    QTRY_COMPARE_WITH_TIMEOUT(ptp4lCount(), size_t{0}, lockTimeout);
}

void TestPtpChildren::fiftyStartsAndEndsSpawnFewChildren()
{
    std::set<pid_t> seen;
    size_t waits = 0;
    for (int i = 0; i < 50; ++i) {
        const TestClient client(i % 5 == 0 ? 3 : 4);
        // Mostly too short for a child to be started, now and then long enough.
        if (i % 7 == 0) {
            ++waits;
            QTRY_COMPARE_WITH_TIMEOUT(client.status(), RKPTP_LISTENING, lockTimeout);
        }
        for (pid_t pid : childrenNamed(getpid(), "ptp4l"))
            seen.insert(pid);
    }
    // The short ones start none, and often one of the others takes over what the one before left behind.
    QVERIFY2(!seen.empty() && seen.size() <= waits,
             QByteArray::number(static_cast<int>(seen.size())).constData());
}

void TestPtpChildren::killedPtp4lIsReportedAndReplaced()
{
    const TestClient client(5);
    QTRY_COMPARE_WITH_TIMEOUT(client.status(), RKPTP_LISTENING, lockTimeout);
    QTRY_COMPARE_WITH_TIMEOUT(ptp4lCount(), size_t{1}, lockTimeout);
    const pid_t first = childrenNamed(getpid(), "ptp4l")[0];
    takeLog();
    kill(first, SIGKILL);
    QTRY_COMPARE_WITH_TIMEOUT(client.status(), RKPTP_NO_CLIENT, lockTimeout);
    QVERIFY(!hasZombies());
    QTRY_COMPARE_WITH_TIMEOUT(client.status(), RKPTP_LISTENING, lockTimeout);
    QVERIFY(childrenNamed(getpid(), "ptp4l").at(0) != first);
    const QByteArrayList lines = takeLog();
    QCOMPARE(lines.size(), 1);
    QVERIFY(lines[0].contains("signal 9"));
}

void TestPtpChildren::tenKilledPtp4lLeaveNothingBehind()
{
    QTRY_COMPARE_WITH_TIMEOUT(countOf("task"), m_threads,
                              lockTimeout); // the worker ends when nothing is left to do
    QCOMPARE(countOf("fd"), m_descriptors);
    for (int round = 0; round < 2; ++round) {
        std::vector<std::unique_ptr<TestClient>> clients;
        for (unsigned i = 0; i < 5; ++i)
            clients.push_back(std::make_unique<TestClient>(10 + i));
        for (const auto &client : clients)
            QTRY_COMPARE_WITH_TIMEOUT(client->status(), RKPTP_LISTENING, lockTimeout);
        for (pid_t pid : childrenNamed(getpid(), "ptp4l"))
            kill(pid, SIGKILL);
        for (const auto &client : clients)
            QTRY_COMPARE_WITH_TIMEOUT(client->status(), RKPTP_NO_CLIENT, lockTimeout);
        QVERIFY(!hasZombies());
    }
    QTRY_COMPARE_WITH_TIMEOUT(countOf("task"), m_threads, lockTimeout);
    QCOMPARE(countOf("fd"), m_descriptors);
}

void TestPtpChildren::killedProgramsLeaveNoPtp4l()
{
    constexpr int programs = 30;
    std::vector<std::unique_ptr<QProcess>> running;
    for (int i = 0; i < programs; ++i)
        running.push_back(
            startCommand(ptpstatus, {QStringLiteral("-w"), QStringLiteral("-i"), QStringLiteral("10.9.0.1"),
                                     QStringLiteral("-d"), QString::number(20 + i)}));
    QTRY_COMPARE_WITH_TIMEOUT(ptp4lCount(), size_t{programs}, 3 * lockTimeout);
    const std::vector<pid_t> children = childrenNamed(getpid(), "ptp4l");
    for (const auto &process : running) {
        kill(static_cast<pid_t>(process->processId()), SIGKILL);
        QVERIFY(process->waitForFinished());
    }
    QTRY_VERIFY_WITH_TIMEOUT(std::none_of(children.begin(), children.end(), isAlive), lockTimeout);
}

void TestPtpChildren::endingProgramLeavesNothing()
{
    QProcess process;
    process.start(ptpstatus, {QStringLiteral("-t"), QStringLiteral("1"), QStringLiteral("-i"),
                              QStringLiteral("10.9.0.1"), QStringLiteral("-d"), QStringLiteral("0")});
    QVERIFY(process.waitForStarted());
    std::vector<pid_t> children;
    const pid_t program = static_cast<pid_t>(process.processId());
    QTRY_VERIFY_WITH_TIMEOUT(!(children = childrenNamed(program, "ptp4l")).empty(), lockTimeout);
    QVERIFY(process.waitForFinished());
    // It waits for its child, so there is nothing to wait for here.
    QCOMPARE(process.exitStatus(), QProcess::NormalExit);
    QCOMPARE(process.exitCode(), 1);
    for (pid_t pid : children)
        QVERIFY(!isAlive(pid));
}

void TestPtpChildren::callsInTheChildOfAFork()
{
    const TestClient client(6);
    QTRY_COMPARE_WITH_TIMEOUT(client.status(), RKPTP_LISTENING, lockTimeout);
    const pid_t child = fork();
    if (child == 0) {
        NOTE_FORK();
        alarm(120);
        const bool ended = client.status() == RKPTP_NO_CLIENT && !rkPTPStart("10.9.0.1");
        rkPTPEnd(client.handle());
        exit(ended ? 0 : 1); // runs what the library has registered for the end of the process
    }
    int status = -1;
    QCOMPARE(waitpid(child, &status, 0), child);
    QVERIFY(WIFEXITED(status) && WEXITSTATUS(status) == 0);
    QCOMPARE(client.status(), RKPTP_LISTENING);
}

// The client says so at once and in one line, and in no more while it goes on trying.
void TestPtpChildren::missingParts()
{
    struct Case {
        QString launcher;
        QStringList wrapper;
        QByteArray line;
        std::unique_ptr<OtherPlace> place;
        std::unique_ptr<QProcess> once;
        std::unique_ptr<QProcess> watching;
    };
    const QString launcher = QStringLiteral(CORVEL_LAUNCHER);
    const QStringList noCapability = {QStringLiteral("setpriv"),
                                      QStringLiteral("--bounding-set=-net_bind_service")};
    const QStringList noFolder = {
        kUnshared,
        QStringLiteral("--as-is"),
        QStringLiteral("-m"),
        QStringLiteral("sh"),
        QStringLiteral("-c"),
        QStringLiteral("mount -t tmpfs -o ro none /mnt && mount --bind /mnt /tmp && unset TMPDIR && "
                       "XDG_RUNTIME_DIR=/nonexistent XDG_STATE_HOME=/proc/none exec \"$@\""),
        QStringLiteral("sh")};
    Case cases[] = {{QString(), {}, "launcher is missing", {}, {}, {}},
                    {QStringLiteral(BARREN_LAUNCHER), {}, "install linuxptp", {}, {}, {}},
                    {launcher, noCapability, "setcap cap_net_bind_service=p /", {}, {}, {}},
                    {launcher, noFolder, "no private folder", {}, {}, {}}};
    const QStringList arguments = {QStringLiteral("-i"), QStringLiteral("10.9.0.1")};
    // Where nobody can mount over /tmp, the last case is left out.
    const bool mountsAllowed = mayMount();
    const auto possible = [mountsAllowed, &noFolder](const Case &one) {
        return mountsAllowed || one.wrapper != noFolder;
    };
    for (Case &one : cases) {
        if (!possible(one))
            continue;
        one.place = std::make_unique<OtherPlace>(one.launcher);
        one.once = one.place->start(one.wrapper, arguments);
        one.watching = one.place->start(one.wrapper, arguments + QStringList{QStringLiteral("-w")});
    }
    for (Case &one : cases) {
        if (!possible(one))
            continue;
        QTRY_COMPARE_WITH_TIMEOUT(one.once->state(), QProcess::NotRunning, lockTimeout);
        QByteArray output = one.once->readAll();
        QVERIFY2(one.once->exitCode() == 3 && output.count(one.line) == 1, output.constData());
        output.clear();
        const auto saidTwice = [&one, &output] {
            output += one.watching->readAll();
            return output.count("no client can run") >= 2;
        };
        QVERIFY2(QTest::qWaitFor(saidTwice, lockTimeout), output.constData());
        one.watching->terminate();
        QVERIFY(one.watching->waitForFinished());
        output += one.watching->readAll();
        QVERIFY2(output.count(one.line) == 1 && output.count("PTP: ") == 1, output.constData());
    }
}

void TestPtpChildren::foldersOfDeadProgramsAreSwept()
{
    const QString runtime = qEnvironmentVariable("XDG_RUNTIME_DIR");
    QTemporaryDir other(QStringLiteral("/tmp/ptpXXXXXX"));
    qputenv("XDG_RUNTIME_DIR", QFile::encodeName(other.path()));
    const QDir folder(other.filePath(QStringLiteral("corvel")));
    const auto socketFolders = [&folder] {
        return folder.entryList({QStringLiteral("ptp-*")}, QDir::Dirs | QDir::NoDotAndDotDot).size();
    };
    auto program =
        startCommand(ptpstatus, {QStringLiteral("-w"), QStringLiteral("-i"), QStringLiteral("10.9.0.1")});
    QTRY_COMPARE_WITH_TIMEOUT(socketFolders(), 1, lockTimeout);
    struct stat info {};
    QCOMPARE(stat(QFile::encodeName(folder.path()).constData(), &info), 0);
    QCOMPARE(info.st_mode & 0777u, 0700u);
    program->kill();
    QVERIFY(program->waitForFinished());
    QCOMPARE(socketFolders(), 1);
    program =
        startCommand(ptpstatus, {QStringLiteral("-t"), QStringLiteral("1"), QStringLiteral("-i"),
                                 QStringLiteral("10.9.0.1"), QStringLiteral("-d"), QStringLiteral("9")});
    QTRY_VERIFY_WITH_TIMEOUT(!childrenNamed(getpid(), "ptp4l").empty(), lockTimeout);
    QCOMPARE(socketFolders(), 1);
    program->terminate();
    program->waitForFinished();
    qputenv("XDG_RUNTIME_DIR", QFile::encodeName(runtime));
}

void TestPtpChildren::takenNamesDoNotStopAClient_data()
{
    QTest::addColumn<QString>("state");
    QTest::addColumn<QString>("where");
    QTest::newRow("a folder in the home")
        << QStringLiteral("/tmp/state") << QStringLiteral("/tmp/state/corvel/run/ptp-*");
    QTest::newRow("no home either") << QStringLiteral("/proc/none") << QStringLiteral("/tmp/corvel-ptp-*");
}

// Somebody else has made our name in the shared folder, and there is no session folder.
void TestPtpChildren::takenNamesDoNotStopAClient()
{
    QFETCH(QString, state);
    QFETCH(QString, where);
    if (!mayMount())
        QSKIP("nothing can be mounted over /tmp here");
    const QString script =
        QStringLiteral("mount -t tmpfs -o mode=1777 none /tmp && touch /tmp/corvel-$(id -u) && "
                       "unset TMPDIR XDG_RUNTIME_DIR && export XDG_STATE_HOME=%1 && "
                       "{ %2 -t 30 -i 10.9.0.1 & } && until ls -d %3; do :; done; kill $!; wait $!; ls -d %3")
            .arg(state, ptpstatus, where);
    QProcess process;
    process.setProcessChannelMode(QProcess::MergedChannels);
    process.start(kUnshared, {QStringLiteral("--as-is"), QStringLiteral("-m"), QStringLiteral("timeout"),
                              QStringLiteral("20"), QStringLiteral("sh"), QStringLiteral("-c"), script});
    QVERIFY(process.waitForFinished(25000));
    const QByteArray output = process.readAll();
    QVERIFY2(!output.contains("PTP: ") && !output.contains("no client"), output.constData());
    // Killed it left its folder behind; what counts is that there was one.
    QVERIFY2(process.exitCode() == 0, output.constData());
}

QTEST_GUILESS_MAIN(TestPtpChildren)
#include "test_ptp_children.moc"
