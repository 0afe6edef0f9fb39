// SPDX-License-Identifier: MIT
#include "eventsocket.h"
#include "rkos.h"
#include "surroundings.h"

#include <QProcess>
#include <QtTest>

#include <atomic>
#include <csignal>
#include <fcntl.h>
#include <memory>
#include <poll.h>
#include <sys/socket.h>
#include <sys/syscall.h>
#include <sys/un.h>
#include <thread>
#include <unistd.h>
#include <vector>

namespace {

constexpr const char *eventName = "HalvectNMOSConfigChange_1_tx_{8ba14a78-0bb2-b00b-5f55-bfe29a74a8d8}";
constexpr int longMs = 60000;
#if defined(__SANITIZE_THREAD__)
constexpr int kills = 100; // each program takes its time to start there
#else
constexpr int kills = 1000;
#endif

// A clock that only poll() moves on, and at once; -1: the machine's own.
std::atomic<int> pretendedMs{-1};

uint64_t openEvent(const char *name = eventName)
{
    return rkOSOpenEvent(RKOS_GENERIC_READ | RKOS_GENERIC_WRITE, 0, name);
}

int openDescriptors()
{
    return static_cast<int>(QDir(QStringLiteral("/proc/self/fd")).count());
}

// A service in a process of its own: rkevent, with a pipe for what it prints.
class Service {
public:
    explicit Service(const char *name = eventName, const char *count = "0")
    {
        int ends[2];
        if (pipe2(ends, O_CLOEXEC) != 0)
            return;
        m_pid = fork();
        if (m_pid == 0) {
            dup2(ends[1], STDOUT_FILENO);
            execl(CORVEL_BIN_DIR "/rkevent", "rkevent", "wait", name, "-n", count,
                  static_cast<char *>(nullptr));
            _exit(127);
        }
        close(ends[1]);
        m_output = ends[0];
    }
    Service(const Service &) = delete;
    Service &operator=(const Service &) = delete;
    ~Service()
    {
        end(SIGKILL);
        close(m_output);
    }

    void signal(int number) const { kill(m_pid, number); }

    // Ends the process and waits until it is gone.
    int end(int number)
    {
        int status = 0;
        if (m_pid > 0) {
            kill(m_pid, number);
            waitpid(m_pid, &status, 0);
        }
        m_pid = -1;
        return status;
    }

    // The next line it prints; empty when it ends or stays silent.
    QByteArray line()
    {
        while (!m_text.contains('\n')) {
            pollfd waiting = {m_output, POLLIN, 0};
            char buffer[512];
            if (poll(&waiting, 1, longMs) <= 0)
                return {};
            const ssize_t got = read(m_output, buffer, sizeof buffer);
            if (got <= 0)
                return {};
            m_text.append(buffer, static_cast<int>(got));
        }
        const int end = m_text.indexOf('\n');
        const QByteArray line = m_text.left(end);
        m_text.remove(0, end + 1);
        return line;
    }

    bool waits() { return line() == "waiting"; }
    bool wakes() { return line().endsWith(eventName); }

private:
    pid_t m_pid = -1;
    int m_output = -1;
    QByteArray m_text;
};

} // namespace

// The library's waiting goes through these two.
extern "C" __attribute__((visibility("default"))) int poll(pollfd *what, nfds_t count, int timeoutMs)
{
    if (pretendedMs >= 0) {
        pretendedMs += timeoutMs;
        return 0;
    }
    const timespec most{timeoutMs / 1000, timeoutMs % 1000 * 1000000L};
    return ppoll(what, count, timeoutMs < 0 ? nullptr : &most, nullptr);
}

extern "C" __attribute__((visibility("default"))) int clock_gettime(clockid_t clock, timespec *now) noexcept
{
    const int pretended = pretendedMs;
    if (pretended < 0)
        return static_cast<int>(syscall(SYS_clock_gettime, clock, now));
    *now = {pretended / 1000, pretended % 1000 * 1000000L};
    return 0;
}

class TestRkosEvents : public QObject {
    Q_OBJECT

    std::unique_ptr<Surroundings> m_home;

    QByteArray events(const char *name = "") const { return m_home->path("run/corvel/events/") + name; }

private slots:
    void init() { m_home = std::make_unique<Surroundings>(); }
    void cleanup() { m_home.reset(); }

    void withoutAServiceNothingOpens()
    {
        QCOMPARE(openEvent(), RKOS_INVALID_HANDLE);
        QCOMPARE(rkOSFileExists(events(eventName).constData()), 0);
    }

    void aSetWakesOnce()
    {
        const uint64_t service = rkOSCreateEvent(eventName);
        QVERIFY(service != RKOS_INVALID_HANDLE && service != 0);
        QCOMPARE(rkOSWaitEvent(service, 0), RKOS_WAIT_TIMEOUT);
        const uint64_t event = openEvent();
        QVERIFY(event != RKOS_INVALID_HANDLE && event != 0 && event != service);
        for (int i = 0; i < 5; ++i)
            QCOMPARE(rkOSSetEvent(event), 1);
        QCOMPARE(rkOSCloseEvent(event), 1);
        QCOMPARE(rkOSWaitEvent(service, RKOS_INFINITE), 0);
        QCOMPARE(rkOSWaitEvent(service, 0), RKOS_WAIT_TIMEOUT);
        QCOMPARE(rkOSCloseEvent(service), 1);
    }

    void theNameIsReadableAndPrivate()
    {
        const uint64_t service = rkOSCreateEvent(eventName);
        struct stat info {};
        QVERIFY(lstat(events(eventName).constData(), &info) == 0 && S_ISSOCK(info.st_mode));
        QCOMPARE(modeOf(events(eventName)), 0600);
        QCOMPARE(modeOf(events()), 0700);
        rkOSCloseEvent(service);
        QCOMPARE(rkOSFileExists(events(eventName).constData()), 0);
        QCOMPARE(openEvent(), RKOS_INVALID_HANDLE);
    }

    void names_data()
    {
        QTest::addColumn<QByteArray>("name");
        QTest::addColumn<bool>("good");
        QTest::newRow("one byte") << QByteArray("x") << true;
        QTest::newRow("blank and braces") << QByteArray("a b {c}") << true;
        QTest::newRow("utf-8") << QByteArray("K\xc3\xb6ln") << true;
        QTest::newRow("longer than a socket address") << QByteArray(150, 'n') << true;
        QTest::newRow("longest") << QByteArray(200, 'n') << true;
        QTest::newRow("too long") << QByteArray(201, 'n') << false;
        QTest::newRow("far too long") << QByteArray(1000000, 'n') << false;
        QTest::newRow("empty") << QByteArray("") << false;
        QTest::newRow("slash") << QByteArray("a/b") << false;
        QTest::newRow("up") << QByteArray("..") << false;
        QTest::newRow("lock file") << QByteArray(".lock") << false;
        QTest::newRow("passing name") << QByteArray(".new") << false;
        QTest::newRow("line end") << QByteArray("a\nb") << false;
    }
    void names()
    {
        QFETCH(QByteArray, name);
        QFETCH(bool, good);
        const uint64_t service = rkOSCreateEvent(name.constData());
        QCOMPARE(service != RKOS_INVALID_HANDLE, good);
        const uint64_t event = openEvent(name.constData());
        QCOMPARE(event != RKOS_INVALID_HANDLE, good);
        QCOMPARE(rkOSSetEvent(event), good ? 1 : 0);
        QCOMPARE(rkOSWaitEvent(service, 0), good ? 0 : RKOS_WAIT_FAILED);
        rkOSCloseEvent(event);
        rkOSCloseEvent(service);
    }

    void nullNames()
    {
        QCOMPARE(rkOSCreateEvent(nullptr), RKOS_INVALID_HANDLE);
        QCOMPARE(rkOSOpenEvent(0, 1, nullptr), RKOS_INVALID_HANDLE);
    }

    void aDeepRuntimeDirectoryWorks()
    {
        QByteArray deep = m_home->path("run");
        while (deep.size() < 300) {
            deep += "/a-directory-with-a-long-name";
            QVERIFY(mkdir(deep.constData(), 0700) == 0);
        }
        qputenv("XDG_RUNTIME_DIR", deep);
        const uint64_t service = rkOSCreateEvent(eventName);
        const uint64_t event = openEvent();
        QCOMPARE(rkOSSetEvent(event), 1);
        QCOMPARE(rkOSWaitEvent(service, 0), 0);
        rkOSCloseEvent(event);
        rkOSCloseEvent(service);
    }

    void wrongHandles_data()
    {
        QTest::addColumn<quint64>("handle");
        QTest::newRow("0") << quint64(0);
        QTest::newRow("all ones") << quint64(RKOS_INVALID_HANDLE);
        QTest::newRow("small") << quint64(3);
        QTest::newRow("file kind") << (quint64(0x46) << 56) + 1;
        QTest::newRow("never given") << (quint64(0x45) << 56) + 1000000000;
    }
    void wrongHandles()
    {
        QFETCH(quint64, handle);
        QCOMPARE(rkOSSetEvent(handle), 0);
        QCOMPARE(rkOSWaitEvent(handle, RKOS_INFINITE), RKOS_WAIT_FAILED);
        QCOMPARE(rkOSCloseEvent(handle), 0);
    }

    void anOpenedEventCannotBeWaitedFor()
    {
        const uint64_t service = rkOSCreateEvent(eventName);
        const uint64_t event = openEvent();
        QCOMPARE(rkOSWaitEvent(event, RKOS_INFINITE), RKOS_WAIT_FAILED);
        rkOSCloseEvent(event);
        QCOMPARE(rkOSCloseEvent(event), 0);
        rkOSCloseEvent(service);
    }

    void onlyOneServicePerName()
    {
        const uint64_t first = rkOSCreateEvent(eventName);
        QCOMPARE(rkOSCreateEvent(eventName), RKOS_INVALID_HANDLE);
        QCOMPARE(inSecondProcess([] { return rkOSCreateEvent(eventName) == RKOS_INVALID_HANDLE ? 0 : 1; }),
                 0);
        const uint64_t event = openEvent();
        QCOMPARE(rkOSSetEvent(event), 1);
        QCOMPARE(rkOSWaitEvent(first, 0), 0);
        rkOSCloseEvent(event);
        rkOSCloseEvent(first);
    }

    // Twenty processes at once: one gets the name.
    void aRaceForTheNameHasOneWinner()
    {
        int start[2];
        int stop[2];
        int result[2];
        QVERIFY(pipe(start) == 0 && pipe(stop) == 0 && pipe(result) == 0);
        std::vector<pid_t> children;
        for (int i = 0; i < 20; ++i) {
            const pid_t child = fork();
            if (child == 0) {
                char byte = 0;
                close(start[1]);
                close(stop[1]);
                if (read(start[0], &byte, 1) != 0) // returns when all are let go
                    _exit(1);
                byte = rkOSCreateEvent(eventName) != RKOS_INVALID_HANDLE ? 'y' : 'n';
                if (write(result[1], &byte, 1) != 1 || read(stop[0], &byte, 1) != 0)
                    _exit(1);
                _exit(0);
            }
            children.push_back(child);
        }
        close(start[1]);
        QByteArray answers;
        while (answers.size() < 20) {
            char byte = 0;
            QVERIFY(read(result[0], &byte, 1) == 1);
            answers += byte;
        }
        close(stop[1]);
        for (const pid_t child : children)
            waitpid(child, nullptr, 0);
        for (const int fd : {start[0], stop[0], result[0], result[1]})
            close(fd);
        QCOMPARE(answers.count('y'), 1);
    }

    void aServiceMaySetItsOwnEvent()
    {
        const uint64_t service = rkOSCreateEvent(eventName);
        QCOMPARE(rkOSSetEvent(service), 1);
        QCOMPARE(rkOSWaitEvent(service, 0), 0);
        rkOSCloseEvent(service);
    }

    void plantedThingsDoNotOpen_data()
    {
        QTest::addColumn<QString>("kind");
        for (const char *kind : {"link", "file", "directory", "pipe", "stream socket"})
            QTest::newRow(kind) << QString::fromLatin1(kind);
    }
    void plantedThingsDoNotOpen()
    {
        QFETCH(QString, kind);
        const uint64_t real = rkOSCreateEvent("real");
        const QByteArray path = events("planted");
        int listener = -1;
        if (kind == QLatin1String("link"))
            QVERIFY(symlink("real", path.constData()) == 0);
        else if (kind == QLatin1String("file"))
            QVERIFY(putContent(path, "x"));
        else if (kind == QLatin1String("directory"))
            QVERIFY(mkdir(path.constData(), 0700) == 0);
        else if (kind == QLatin1String("pipe"))
            QVERIFY(mkfifo(path.constData(), 0600) == 0);
        else {
            sockaddr_un address{};
            address.sun_family = AF_UNIX;
            qstrncpy(address.sun_path, path.constData(), sizeof address.sun_path);
            listener = socket(AF_UNIX, SOCK_STREAM, 0);
            QVERIFY(bind(listener, reinterpret_cast<sockaddr *>(&address), sizeof address) == 0 &&
                    listen(listener, 1) == 0);
        }
        QCOMPARE(openEvent("planted"), RKOS_INVALID_HANDLE);
        close(listener);
        rkOSCloseEvent(real);
    }

    void anEventDirectoryThatIsALinkIsNotUsed()
    {
        QVERIFY(mkdir(m_home->path("run/corvel").constData(), 0700) == 0);
        QVERIFY(symlink(m_home->path("tmp").constData(), m_home->path("run/corvel/events").constData()) == 0);
        QCOMPARE(rkOSCreateEvent(eventName), RKOS_INVALID_HANDLE);
        QCOMPARE(QDir(QFile::decodeName(m_home->path("tmp")))
                     .entryList(QDir::NoDotAndDotDot | QDir::AllEntries | QDir::Hidden | QDir::System)
                     .size(),
                 0);
    }

    // ---- waiting

    void aWaitLastsAsLongAsAsked()
    {
        const uint64_t service = rkOSCreateEvent(eventName);
        for (const int asked : {0, 1, 50, longMs}) {
            pretendedMs = 0;
            const int result = rkOSWaitEvent(service, static_cast<uint32_t>(asked));
            const int passed = pretendedMs.exchange(-1);
            QCOMPARE(result, RKOS_WAIT_TIMEOUT);
            QCOMPARE(passed, asked);
        }
        rkOSCloseEvent(service);
    }

    void aSignalDoesNotEndAWait()
    {
        struct sigaction action {};
        struct sigaction before {};
        action.sa_handler = [](int) {};
        sigaction(SIGUSR1, &action, &before);
        const uint64_t service = rkOSCreateEvent(eventName);
        const pthread_t waiter = pthread_self();
        std::atomic<bool> pestered{false};
        std::thread pest([&] {
            for (int i = 0; i < 200; ++i)
                pthread_kill(waiter, SIGUSR1);
            pestered = true;
            rkOSSetEvent(service);
        });
        const int waited = rkOSWaitEvent(service, RKOS_INFINITE);
        const bool early = !pestered;
        pest.join();
        sigaction(SIGUSR1, &before, nullptr);
        rkOSCloseEvent(service);
        QCOMPARE(waited, 0);
        QVERIFY(!early);
    }

    void closingEndsAWait()
    {
        const uint64_t service = rkOSCreateEvent(eventName);
        std::atomic<int> result{7};
        std::thread waiter([&] { result = rkOSWaitEvent(service, RKOS_INFINITE); });
        QCOMPARE(rkOSCloseEvent(service), 1);
        waiter.join();
        QCOMPARE(result.load(), RKOS_WAIT_FAILED);
    }

    void oneOfSeveralWaitersWakes()
    {
        const uint64_t service = rkOSCreateEvent(eventName);
        std::atomic<int> woken{0};
        std::atomic<int> ended{0};
        std::vector<std::thread> waiters;
        for (int i = 0; i < 4; ++i) {
            waiters.emplace_back([&] { (rkOSWaitEvent(service, RKOS_INFINITE) == 0 ? woken : ended) += 1; });
        }
        QCOMPARE(rkOSSetEvent(service), 1);
        QTRY_COMPARE(woken.load(), 1);
        rkOSCloseEvent(service);
        for (std::thread &waiter : waiters)
            waiter.join();
        QCOMPARE(woken.load(), 1);
        QCOMPARE(ended.load(), 3);
    }

    // ---- services that die

    void aNewServiceIsSetThroughAnOldHandle()
    {
        auto first = std::make_unique<Service>();
        QVERIFY(first->waits());
        const uint64_t event = openEvent();
        QCOMPARE(rkOSSetEvent(event), 1);
        QVERIFY(first->wakes());
        first->end(SIGKILL);
        QCOMPARE(rkOSSetEvent(event), 0);
        Service second;
        QVERIFY(second.waits());
        QCOMPARE(rkOSSetEvent(event), 1);
        QVERIFY(second.wakes());
        rkOSCloseEvent(event);
    }

    void noGhostAndNoLostSetInManyKills()
    {
        const int before = openDescriptors();
        for (int round = 0; round < kills; ++round) {
            Service service;
            QVERIFY2(service.waits(), QByteArray::number(round).constData());
            const uint64_t event = openEvent();
            QVERIFY(event != RKOS_INVALID_HANDLE);
            QCOMPARE(rkOSSetEvent(event), 1);
            QVERIFY2(service.wakes(), QByteArray::number(round).constData());
            service.end(SIGKILL);
            QCOMPARE(openEvent(), RKOS_INVALID_HANDLE);
            QCOMPARE(rkOSSetEvent(event), 0);
            QCOMPARE(rkOSCloseEvent(event), 1);
        }
        QCOMPARE(openDescriptors(), before);
        QDir left(QFile::decodeName(events()));
        const QStringList names =
            left.entryList(QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot);
        QCOMPARE(names.size(), 2); // the lock and what the last service left
    }

    // A setter at work all the time while services are killed and started: after each start a set
    // arrives, and in between each set says truly that nobody is there.
    void setsDuringKillsArrive()
    {
        std::atomic<bool> stop{false};
        std::atomic<long> told{0};
        std::thread setter([&] {
            while (!stop) {
                const uint64_t event = openEvent();
                if (event != RKOS_INVALID_HANDLE && rkOSSetEvent(event) == 1)
                    ++told;
                rkOSCloseEvent(event);
            }
        });
        int silent = 0;
        for (int round = 0; round < 50; ++round) {
            Service service;
            const bool good = service.waits() && service.wakes() && service.wakes();
            silent += good ? 0 : 1;
            service.end(SIGKILL);
        }
        stop = true;
        setter.join();
        QCOMPARE(silent, 0);
        QVERIFY(told >= 100);
    }

    void aMillionSetsOnAStoppedServiceWakeOnce()
    {
        Service service;
        QVERIFY(service.waits());
        const uint64_t event = openEvent();
        service.signal(SIGSTOP);
        int refused = 0;
        // One that waited for the service would never come back.
        for (int i = 0; i < 1000000; ++i)
            refused += rkOSSetEvent(event) == 1 ? 0 : 1;
        QCOMPARE(refused, 0);
        // Other openers are not held up either.
        const uint64_t other = openEvent();
        QVERIFY(other != RKOS_INVALID_HANDLE);
        QCOMPARE(rkOSSetEvent(other), 1);
        rkOSCloseEvent(other);
        service.signal(SIGCONT);
        QVERIFY(service.wakes());
        QCOMPARE(rkOSSetEvent(event), 1);
        QVERIFY(service.wakes());
        service.end(SIGTERM); // it tells of everything that was set before it goes
        QCOMPARE(service.line(), QByteArray());
        rkOSCloseEvent(event);
    }

    // Somebody else's, who knows the socket: one wake for the sets on both sides of it, none for itself.
    void anEmptyDatagramIsNoSet()
    {
        const uint64_t service = rkOSCreateEvent(eventName);
        const rkos::Descriptor socket = rkos::connectEvent(eventName);
        QCOMPARE(::send(socket.get(), "", 0, 0), ssize_t(0));
        QCOMPARE(rkOSWaitEvent(service, 0), RKOS_WAIT_TIMEOUT);
        for (const size_t size : {1u, 0u, 1u, 0u})
            QCOMPARE(::send(socket.get(), "x", size, 0), ssize_t(size));
        QCOMPARE(rkOSWaitEvent(service, 0), 0);
        QCOMPARE(rkOSWaitEvent(service, 0), RKOS_WAIT_TIMEOUT);
        rkOSCloseEvent(service);
    }

    void whatASetterOfADeadEndLeavesIsNothing()
    {
        const uint64_t service = rkOSCreateEvent(eventName);
        const int before = openDescriptors();
        for (int i = 0; i < 1000; ++i) {
            const uint64_t event = openEvent();
            QCOMPARE(rkOSSetEvent(event), 1);
            QCOMPARE(rkOSCloseEvent(event), 1);
        }
        QCOMPARE(openDescriptors(), before);
        QCOMPARE(rkOSWaitEvent(service, 0), 0);
        QCOMPARE(rkOSWaitEvent(service, 0), RKOS_WAIT_TIMEOUT);
        rkOSCloseEvent(service);
    }
};

QTEST_GUILESS_MAIN(TestRkosEvents)
#include "test_rkos_events.moc"
