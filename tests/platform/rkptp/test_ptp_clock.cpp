// SPDX-License-Identifier: MIT
// What a client sees of real masters: ptp4l in another network namespace.
#include "ptpnet.h"

#include "rkptp.h"

#include <QtTest>

#include <cstdarg>
#include <ctime>
#include <mutex>
#include <unistd.h>

namespace {

std::mutex logMutex;
QByteArrayList logLines;

QByteArrayList takeLog()
{
    const std::lock_guard<std::mutex> lock(logMutex);
    return std::exchange(logLines, {});
}

constexpr qint64 second = 1000000000;
constexpr int lockTimeout = 10000; // ms; generous where the time itself is not the question

qint64 realtime()
{
    timespec now{};
    clock_gettime(CLOCK_REALTIME, &now);
    return now.tv_sec * second + now.tv_nsec;
}

using TextGetter = int (*)(PTP_HANDLE, char *);

QByteArray textOf(TextGetter getter, PTP_HANDLE handle)
{
    char buffer[RKPTP_TEXT_SIZE];
    memset(buffer, 'x', sizeof buffer);
    getter(handle, buffer);
    return QByteArray(buffer);
}

// A client that ends with its scope.
class TestClient {
public:
    explicit TestClient(unsigned domain, const char *address = "10.9.0.1") : m_handle(rkPTPStart(address))
    {
        rkPTPSetTargetDomain(m_handle, domain);
        rkPTPSetTargetMacAddress(m_handle, "");
    }
    ~TestClient() { rkPTPEnd(m_handle); }
    TestClient(const TestClient &) = delete;
    TestClient &operator=(const TestClient &) = delete;

    PTP_HANDLE handle() const { return m_handle; }
    int status() const { return rkPTPGetStatus(m_handle, 0); }
    QByteArray grandmaster() const { return textOf(rkPTPGetGrandmasterID, m_handle); }

    // How far the client's time is from the master's, which runs on the clock of this machine. All masters
    // here hand out the system's time, whatever they say about the timescale.
    qint64 error(int *result = nullptr) const
    {
        uint64_t seconds = 0;
        uint32_t nanoseconds = 0;
        const qint64 before = realtime();
        const int code = rkPTPGetTime_Nano(m_handle, &seconds, &nanoseconds);
        const qint64 after = realtime();
        if (result)
            *result = code;
        const qint64 time = static_cast<qint64>(seconds) * second + nanoseconds;
        return time < before ? time - before : time > after ? time - after : 0;
    }

private:
    PTP_HANDLE m_handle;
};

constexpr qint64 tolerance = second / 1000;

} // namespace

// Instead of the log of rkos: the dynamic linker finds this one first.
extern "C" __attribute__((format(printf, 1, 2), visibility("default"))) void ErrOut(const char *format, ...)
{
    char text[1000];
    va_list arguments;
    va_start(arguments, format);
    vsnprintf(text, sizeof text, format, arguments);
    va_end(arguments);
    const std::lock_guard<std::mutex> lock(logMutex);
    logLines.append(text);
}

class TestPtpClock : public QObject {
    Q_OBJECT
private slots:
    void initTestCase();
    void firstOffsetWithinThreeSeconds();
    void timeIsRightOnEveryTimescale();
    void timeStaysRightWhenTheUtcOffsetChanges();
    void grandmasterAskedAndAnother();
    void domainChange();
    void masterDiesReturnsAndChanges();
    void allInterfaces();
    void linkDownAndUp();
    void interfaceGoneAndBack();

private:
    std::unique_ptr<PtpNet> m_net;
};

void TestPtpClock::initTestCase()
{
    m_net = std::make_unique<PtpNet>();
    m_net->addLink(QStringLiteral("v0"), 0);
    m_net->addLink(QStringLiteral("v1"), 1);
    m_net->addLink(QStringLiteral("v2"), 2);
}

void TestPtpClock::firstOffsetWithinThreeSeconds()
{
    const auto master = m_net->startMaster(QStringLiteral("v0"), 1, QStringLiteral("001dc1.fffe.000001"));
    QElapsedTimer elapsed;
    elapsed.start();
    const TestClient client(1);
    QCOMPARE(client.status(), RKPTP_STARTING);
    int result = RKPTP_OK;
    QVERIFY(qAbs(client.error(&result)) < tolerance);
    QCOMPARE(result, RKPTP_NOT_SYNCED);
    int64_t offset = 4711;
    QCOMPARE(rkPTPGetOffset_Nano(client.handle(), &offset), RKPTP_NOT_SYNCED);
    QCOMPARE(offset, int64_t{4711});
    QTRY_COMPARE_WITH_TIMEOUT(client.status(), RKPTP_LOCKED, 3000);
    qInfo("locked after %lld ms", elapsed.elapsed());
    QCOMPARE(textOf(rkPTPGetVersion, client.handle()), QByteArray("PTPv2"));
    QCOMPARE(textOf(rkPTPGetDomain, client.handle()), QByteArray("1"));
    QCOMPARE(textOf(rkPTPGetIPAddress, client.handle()), QByteArray("10.9.0.1"));
    QCOMPARE(client.grandmaster(), QByteArray("00-1D-C1-FF-FE-00-00-01"));
    QCOMPARE(textOf(rkPTPGetSourcePortID, client.handle()), QByteArray("00-1D-C1-FF-FE-00-00-01-1"));
    QCOMPARE(rkPTPGetOffset_Nano(client.handle(), &offset), RKPTP_OK);
    QVERIFY(qAbs(qint64{offset}) < tolerance);
    QVERIFY(qAbs(client.error(&result)) < tolerance);
    QCOMPARE(result, RKPTP_OK);
}

void TestPtpClock::timeIsRightOnEveryTimescale()
{
    struct Case {
        unsigned domain;
        int utcOffset;
        bool valid;
        bool timescale;
    };
    // The last one announces an offset that it does not vouch for: 37, the built-in one, is applied.
    const Case cases[] = {{10, 0, true, true},
                          {11, 37, true, true},
                          {12, 38, true, true},
                          {13, 37, false, false},
                          {14, 36, false, true}};
    std::vector<std::unique_ptr<Master>> masters;
    std::vector<std::unique_ptr<TestClient>> clients;
    for (const Case &one : cases) {
        masters.push_back(m_net->startMaster(QStringLiteral("v0"), one.domain,
                                             QStringLiteral("001dc1.fffe.0000%1").arg(one.domain)));
        masters.back()->announce(one.utcOffset, one.valid, one.timescale);
        clients.push_back(std::make_unique<TestClient>(one.domain));
    }
    for (const auto &client : clients)
        QTRY_COMPARE_WITH_TIMEOUT(client->status(), RKPTP_LOCKED, 2 * lockTimeout);
    for (int i = 0; i < 100; ++i) {
        for (size_t j = 0; j < clients.size(); ++j) {
            const qint64 error = clients[j]->error();
            QVERIFY2(qAbs(error) < tolerance,
                     qPrintable(QStringLiteral("domain %1: %2 ns").arg(cases[j].domain).arg(error)));
        }
        QTest::qWait(10);
    }
}

void TestPtpClock::timeStaysRightWhenTheUtcOffsetChanges()
{
    const auto master = m_net->startMaster(QStringLiteral("v0"), 15, QStringLiteral("001dc1.fffe.000015"));
    master->announce(37, true, true);
    const TestClient client(15);
    QTRY_COMPARE_WITH_TIMEOUT(client.status(), RKPTP_LOCKED, lockTimeout);
    QElapsedTimer elapsed;
    elapsed.start();
    bool changed = false;
    while (elapsed.elapsed() < 2500) {
        if (!changed && elapsed.elapsed() > 300) {
            master->announce(38, true, true);
            changed = true;
        }
        const qint64 error = client.error();
        QVERIFY2(qAbs(error) < tolerance, qPrintable(QStringLiteral("%1 ns").arg(error)));
        QTest::qWait(2);
    }
    QCOMPARE(client.status(), RKPTP_LOCKED);
}

void TestPtpClock::grandmasterAskedAndAnother()
{
    const auto master = m_net->startMaster(QStringLiteral("v0"), 20, QStringLiteral("001dc1.fffe.000020"));
    const TestClient client(20);
    QCOMPARE(rkPTPSetTargetMacAddress(client.handle(), "001DC1000020"), RKPTP_OK);
    QTRY_COMPARE_WITH_TIMEOUT(client.status(), RKPTP_LOCKED, lockTimeout);
    takeLog();
    QCOMPARE(rkPTPSetTargetMacAddress(client.handle(), "00-1D-C1-FF-FE-99-99-99"), RKPTP_OK);
    QCOMPARE(client.status(), RKPTP_OTHER_GRANDMASTER);
    // Time and texts are those of the one it follows.
    QCOMPARE(client.grandmaster(), QByteArray("00-1D-C1-FF-FE-00-00-20"));
    QVERIFY(qAbs(client.error()) < tolerance);
    QTest::qWait(3500);
    const QByteArrayList lines = takeLog();
    QCOMPARE(lines.size(), 1);
    QVERIFY(lines[0].contains("00-1D-C1-FF-FE-00-00-20") && lines[0].contains("00-1D-C1-FF-FE-99-99-99"));
    QCOMPARE(rkPTPSetTargetMacAddress(client.handle(), "00-1D-C"), RKPTP_BAD_ARGUMENT);
    QCOMPARE(client.status(), RKPTP_OTHER_GRANDMASTER);
    QCOMPARE(rkPTPSetTargetMacAddress(client.handle(), nullptr), RKPTP_OK);
    QCOMPARE(client.status(), RKPTP_LOCKED);
}

void TestPtpClock::domainChange()
{
    const auto first = m_net->startMaster(QStringLiteral("v0"), 0, QStringLiteral("001dc1.fffe.000030"));
    const auto second = m_net->startMaster(QStringLiteral("v0"), 127, QStringLiteral("001dc1.fffe.000031"));
    const TestClient client(0);
    QTRY_COMPARE_WITH_TIMEOUT(client.status(), RKPTP_LOCKED, lockTimeout);
    QCOMPARE(client.grandmaster(), QByteArray("00-1D-C1-FF-FE-00-00-30"));
    QCOMPARE(rkPTPSetTargetDomain(client.handle(), 127), RKPTP_OK);
    QCOMPARE(client.status(), RKPTP_STARTING);
    QCOMPARE(client.grandmaster(), QByteArray());
    QTRY_COMPARE_WITH_TIMEOUT(client.status(), RKPTP_LOCKED, lockTimeout);
    QCOMPARE(client.grandmaster(), QByteArray("00-1D-C1-FF-FE-00-00-31"));
    QCOMPARE(textOf(rkPTPGetDomain, client.handle()), QByteArray("127"));
    QCOMPARE(rkPTPSetTargetDomain(client.handle(), 128), RKPTP_BAD_ARGUMENT);
    QCOMPARE(client.status(), RKPTP_NO_CLIENT);
    QCOMPARE(rkPTPSetTargetDomain(client.handle(), 0), RKPTP_OK);
    QTRY_COMPARE_WITH_TIMEOUT(client.status(), RKPTP_LOCKED, lockTimeout);
}

void TestPtpClock::masterDiesReturnsAndChanges()
{
    auto master = m_net->startMaster(QStringLiteral("v0"), 40, QStringLiteral("001dc1.fffe.000040"));
    const TestClient client(40);
    QTRY_COMPARE_WITH_TIMEOUT(client.status(), RKPTP_LOCKED, lockTimeout);
    master->kill();
    QElapsedTimer dead;
    dead.start();
    QTRY_COMPARE_WITH_TIMEOUT(client.status(), RKPTP_SYNC_LOST, 4000);
    // ptp4l itself holds on to the master for six seconds; a client is not locked in that time.
    while (dead.elapsed() < 8000) {
        QCOMPARE(client.status(), RKPTP_SYNC_LOST);
        QTest::qWait(100);
    }
    int result = RKPTP_NOT_SYNCED;
    QVERIFY(qAbs(client.error(&result)) < tolerance);
    QCOMPARE(result, RKPTP_OK);
    int64_t offset = INT64_MAX;
    QCOMPARE(rkPTPGetOffset_Nano(client.handle(), &offset), RKPTP_NOT_SYNCED);
    QVERIFY(offset != INT64_MAX);
    QCOMPARE(client.grandmaster(), QByteArray());
    master = m_net->startMaster(QStringLiteral("v0"), 40, QStringLiteral("001dc1.fffe.000040"));
    QTRY_COMPARE_WITH_TIMEOUT(client.status(), RKPTP_LOCKED, lockTimeout);
    QCOMPARE(client.grandmaster(), QByteArray("00-1D-C1-FF-FE-00-00-40"));
    // A better one takes over.
    master->kill();
    master = m_net->startMaster(QStringLiteral("v0"), 40, QStringLiteral("001dc1.fffe.000041"));
    QTRY_COMPARE_WITH_TIMEOUT(client.grandmaster(), QByteArray("00-1D-C1-FF-FE-00-00-41"), lockTimeout);
    QTRY_COMPARE_WITH_TIMEOUT(client.status(), RKPTP_LOCKED, lockTimeout);
    QVERIFY(qAbs(client.error()) < tolerance);
}

void TestPtpClock::allInterfaces()
{
    const auto master = m_net->startMaster(QStringLiteral("v1"), 50, QStringLiteral("001dc1.fffe.000050"));
    const TestClient client(50, "0.0.0.0");
    QTRY_COMPARE_WITH_TIMEOUT(client.status(), RKPTP_LOCKED, lockTimeout);
    QCOMPARE(textOf(rkPTPGetIPAddress, client.handle()), QByteArray("10.9.1.1"));
    QCOMPARE(childrenNamed(getpid(), "ptp4l").size(),
             size_t{1 + 1}); // the master and one client for all interfaces
    const TestClient elsewhere(50, "10.9.0.1");
    QTRY_COMPARE_WITH_TIMEOUT(elsewhere.status(), RKPTP_LISTENING, lockTimeout);
    QCOMPARE(textOf(rkPTPGetIPAddress, elsewhere.handle()), QByteArray("10.9.0.1"));
}

void TestPtpClock::linkDownAndUp()
{
    const auto master = m_net->startMaster(QStringLiteral("v0"), 60, QStringLiteral("001dc1.fffe.000060"));
    const TestClient client(60);
    QTRY_COMPARE_WITH_TIMEOUT(client.status(), RKPTP_LOCKED, lockTimeout);
    runCommand(QStringLiteral("ip"), QStringLiteral("link set v0 down").split(QLatin1Char(' ')));
    QTRY_COMPARE_WITH_TIMEOUT(client.status(), RKPTP_PORT_FAULTY, 5000);
    runCommand(QStringLiteral("ip"), QStringLiteral("link set v0 up").split(QLatin1Char(' ')));
    QTRY_COMPARE_WITH_TIMEOUT(client.status(), RKPTP_LOCKED, 2 * lockTimeout);
    QVERIFY(qAbs(client.error()) < tolerance);
}

void TestPtpClock::interfaceGoneAndBack()
{
    const TestClient client(61, "10.9.2.1");
    QTRY_COMPARE_WITH_TIMEOUT(client.status(), RKPTP_LISTENING, lockTimeout);
    runCommand(QStringLiteral("ip"), QStringLiteral("link del v2").split(QLatin1Char(' ')));
    QTRY_COMPARE_WITH_TIMEOUT(client.status(), RKPTP_PORT_FAULTY, 5000);
    m_net->addLink(QStringLiteral("v2"), 2);
    const auto master = m_net->startMaster(QStringLiteral("v2"), 61, QStringLiteral("001dc1.fffe.000061"));
    QTRY_COMPARE_WITH_TIMEOUT(client.status(), RKPTP_LOCKED, 2 * lockTimeout);
}

QTEST_GUILESS_MAIN(TestPtpClock)
#include "test_ptp_clock.moc"
