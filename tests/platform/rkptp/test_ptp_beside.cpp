// SPDX-License-Identifier: MIT
// Beside the machine's own ptp4l: ours never takes its datagrams, and shows what that one sees where it may
// be read.
#include "ptpclient.h"
#include "ptpnet.h"

#include <QtTest>

#include <algorithm>
#include <unistd.h>

namespace {

const QString ptpstatus = QStringLiteral(CORVEL_BIN_DIR "/ptpstatus");

struct Mode {
    const char *name;
    QStringList master; // further options
    QByteArray client;  // further settings
};

const Mode modes[] = {
    {"multicast", {}, {}},
    {"hybrid", {QStringLiteral("--hybrid_e2e=1")}, "hybrid_e2e 1\n"},
    {"negotiated unicast",
     {QStringLiteral("--unicast_listen=1"), QStringLiteral("--inhibit_multicast_service=1")},
     "logAnnounceInterval 0\nlogSyncInterval -3\n[unicast_master_table]\ntable_id 1\nlogQueryInterval "
     "0\nUDPv4 10.9.0.2\n[v0]\nunicast_master_table "
     "1\n"},
};

} // namespace

class TestPtpBeside : public QObject {
    Q_OBJECT
private slots:
    void initTestCase();
    void cleanup() { takeLog(); }
    void theSystemsClientKeepsItsMaster_data();
    void theSystemsClientKeepsItsMaster();
    void theSystemsClientComesLaterAndGoesAgain_data();
    void theSystemsClientComesLaterAndGoesAgain();
    void oneThatCannotBeReadKeepsOursAway();
    void anotherDomainIsToldApart();
    void anotherInterfaceIsNoReason();
    void ptpstatusDoesTheSame();
    void whoOnlyReadsSeesTheSystemsClient();
    void whoOnlyReadsSeesTheHousesClientAndStartsNone();

private:
    // The ptp4l processes that the library has started: their socket tells.
    static size_t ownClients()
    {
        const std::vector<pid_t> all = childrenNamed(getpid(), "ptp4l");
        return static_cast<size_t>(std::count_if(all.begin(), all.end(), [](pid_t pid) {
            QFile file(QStringLiteral("/proc/%1/cmdline").arg(pid));
            return file.open(QIODevice::ReadOnly) && file.readAll().contains(".ptp4l");
        }));
    }
    std::unique_ptr<Master> startMaster(const Mode &mode, unsigned domain)
    {
        auto master = m_net->startMaster(QStringLiteral("v0"), domain, QStringLiteral("001dc1.fffe.000001"),
                                         mode.master);
        master->waitUntilActive();
        return master;
    }

    std::unique_ptr<PtpNet> m_net;
};

void TestPtpBeside::initTestCase()
{
    m_net = std::make_unique<PtpNet>();
    m_net->addLink(QStringLiteral("v0"), 0);
    m_net->addLink(QStringLiteral("v1"), 1);
}

void TestPtpBeside::theSystemsClientKeepsItsMaster_data()
{
    QTest::addColumn<int>("mode");
    for (int i = 0; i < 3; ++i)
        QTest::newRow(modes[i].name) << i;
}
void TestPtpBeside::theSystemsClientKeepsItsMaster()
{
    QFETCH(int, mode);
    const auto master = startMaster(modes[mode], 4);
    SystemClient system(QStringLiteral("v0"), 4, modes[mode].client);
    QTRY_VERIFY_WITH_TIMEOUT(system.follows(), 30000);
    {
        const TestClient client(4);
        QTRY_COMPARE_WITH_TIMEOUT(client.status(), RKPTP_LOCKED, lockTimeout);
        QCOMPARE(rkPTPUsesSystemClient(client.handle()), 1);
        QCOMPARE(rkPTPGetState(client.handle()), RKPTP_STATE_LOCKED);
        QCOMPARE(client.grandmaster(), QByteArray("00-1D-C1-FF-FE-00-00-01"));
        QCOMPARE(textOf(rkPTPGetIPAddress, client.handle()), QByteArray("10.9.0.1"));
        QVERIFY2(qAbs(client.error()) < tolerance, qPrintable(QString::number(client.error())));
        QCOMPARE(ownClients(), size_t{0});
        // Its delay goes on being measured, which needs the datagrams that are meant for it alone.
        const int before = system.delayAnswers();
        QTRY_VERIFY_WITH_TIMEOUT(system.delayAnswers() > before + 3, 20000);
        QCOMPARE(client.status(), RKPTP_LOCKED);
    }
    const int after = system.delayAnswers();
    QTRY_VERIFY_WITH_TIMEOUT(system.delayAnswers() > after + 1, 20000);
    QVERIFY2(!system.log().contains("ANNOUNCE_RECEIPT_TIMEOUT_EXPIRES"), system.log().constData());
    QVERIFY(system.follows());
}

void TestPtpBeside::theSystemsClientComesLaterAndGoesAgain_data()
{
    theSystemsClientKeepsItsMaster_data();
}
void TestPtpBeside::theSystemsClientComesLaterAndGoesAgain()
{
    QFETCH(int, mode);
    const auto master = startMaster(modes[mode], 5);
    const TestClient client(5);
    QTRY_COMPARE_WITH_TIMEOUT(ownClients(), size_t{1}, lockTimeout);
    QTRY_VERIFY_WITH_TIMEOUT(client.status() != RKPTP_STARTING, lockTimeout);
    QCOMPARE(rkPTPUsesSystemClient(client.handle()), 0);
    {
        SystemClient system(QStringLiteral("v0"), 5, modes[mode].client);
        QTRY_VERIFY2_WITH_TIMEOUT(ownClients() == 0, system.log().constData(), lockTimeout);
        QTRY_VERIFY_WITH_TIMEOUT(system.follows(), 30000);
        QTRY_COMPARE_WITH_TIMEOUT(client.status(), RKPTP_LOCKED, lockTimeout);
        QCOMPARE(rkPTPUsesSystemClient(client.handle()), 1);
        const QByteArrayList lines = takeLog();
        QCOMPARE(lines.size(), 1);
        QVERIFY2(lines[0].contains("ptp4l (process " + QByteArray::number(system.pid())),
                 lines[0].constData());
    }
    // Alone again. Without multicast service it is no master for us, but it may look for one.
    QTRY_COMPARE_WITH_TIMEOUT(ownClients(), size_t{1}, lockTimeout);
    QTRY_COMPARE_WITH_TIMEOUT(rkPTPUsesSystemClient(client.handle()), 0, lockTimeout);
    if (modes[mode].master.size() < 2)
        QTRY_COMPARE_WITH_TIMEOUT(client.status(), RKPTP_LOCKED, lockTimeout);
}

void TestPtpBeside::oneThatCannotBeReadKeepsOursAway()
{
    SystemClient system(QStringLiteral("v0"), 6);
    QTRY_VERIFY_WITH_TIMEOUT(QFile::exists(system.socket()), 5000);
    QVERIFY(QFile::remove(system.socket()));
    const TestClient client(6);
    QTRY_COMPARE_WITH_TIMEOUT(rkPTPGetState(client.handle()), RKPTP_STATE_SYSTEM_CLIENT, lockTimeout);
    QCOMPARE(client.status(), RKPTP_NO_CLIENT);
    QCOMPARE(ownClients(), size_t{0});
    char reason[256];
    QVERIFY(rkPTPGetReason(client.handle(), reason, sizeof reason) > 1);
    const QByteArray who = "ptp4l (process " + QByteArray::number(system.pid()) + ") has the PTP ports on v0";
    QVERIFY2(QByteArray(reason).contains(who), reason);
    const QByteArrayList lines = takeLog();
    QCOMPARE(lines.size(), 1);
    QVERIFY2(lines[0].contains(who), lines[0].constData());
    system.kill();
    QTRY_COMPARE_WITH_TIMEOUT(client.status(), RKPTP_LISTENING, lockTimeout);
    QCOMPARE(ownClients(), size_t{1});
}

// The domain was asked for, so a clock of another one is not the one that was meant.
void TestPtpBeside::anotherDomainIsToldApart()
{
    const auto master = startMaster(modes[0], 7);
    const SystemClient system(QStringLiteral("v0"), 7);
    QTRY_VERIFY_WITH_TIMEOUT(system.follows(), 30000);
    const TestClient client(8);
    QTRY_COMPARE_WITH_TIMEOUT(client.status(), RKPTP_OTHER_GRANDMASTER, lockTimeout);
    QCOMPARE(textOf(rkPTPGetDomain, client.handle()), QByteArray("7"));
    QCOMPARE(rkPTPGetState(client.handle()), RKPTP_STATE_OTHER_MASTER);
}

void TestPtpBeside::anotherInterfaceIsNoReason()
{
    const SystemClient system(QStringLiteral("v1"), 9);
    QTRY_VERIFY_WITH_TIMEOUT(QFile::exists(system.socket()), 5000);
    const TestClient client(9);
    QTRY_COMPARE_WITH_TIMEOUT(client.status(), RKPTP_LISTENING, lockTimeout);
    QCOMPARE(ownClients(), size_t{1});
}

void TestPtpBeside::ptpstatusDoesTheSame()
{
    const auto master = startMaster(modes[0], 10);
    const SystemClient system(QStringLiteral("v0"), 10);
    QTRY_VERIFY_WITH_TIMEOUT(system.follows(), 30000);
    QProcess process;
    process.start(ptpstatus, {QStringLiteral("-i"), QStringLiteral("10.9.0.1"), QStringLiteral("-d"),
                              QStringLiteral("10")});
    QVERIFY(process.waitForFinished(30000));
    const QByteArray output = process.readAllStandardOutput();
    QVERIFY2(output.contains("locked to 00-1D-C1-FF-FE-00-00-01") && output.contains("system"),
             output.constData());
    QCOMPARE(process.exitCode(), 0);
    QFile::remove(system.socket());
    process.start(ptpstatus, {QStringLiteral("-i"), QStringLiteral("10.9.0.1"), QStringLiteral("-d"),
                              QStringLiteral("10")});
    QVERIFY(process.waitForFinished(30000));
    QCOMPARE(process.exitCode(), 3);
    const QByteArray complaint = process.readAllStandardError();
    QVERIFY2(complaint.contains("has the PTP ports on v0"), complaint.constData());
}

namespace {

// A client that starts nothing, until its scope ends.
class Reader {
public:
    explicit Reader(unsigned domain) : m_handle(rkPTPStartReading("10.9.0.1"))
    {
        rkPTPSetTargetDomain(m_handle, domain);
    }
    ~Reader() { rkPTPEnd(m_handle); }
    Reader(const Reader &) = delete;
    Reader &operator=(const Reader &) = delete;

    int state() const { return rkPTPGetState(m_handle); }
    QByteArray grandmaster() const { return textOf(rkPTPGetGrandmasterID, m_handle); }

private:
    const PTP_HANDLE m_handle;
};

} // namespace

void TestPtpBeside::whoOnlyReadsSeesTheSystemsClient()
{
    const auto master = startMaster(modes[0], 9);
    SystemClient system(QStringLiteral("v0"), 9, modes[0].client);
    const Reader reader(9);
    QTRY_COMPARE_WITH_TIMEOUT(reader.state(), RKPTP_STATE_LOCKED, lockTimeout);
    QCOMPARE(reader.grandmaster(), QByteArray("00-1D-C1-FF-FE-00-00-01"));
    QCOMPARE(ownClients(), size_t{0});
}

void TestPtpBeside::whoOnlyReadsSeesTheHousesClientAndStartsNone()
{
    const auto master = startMaster(modes[0], 10);
    const Reader reader(10);
    QTRY_COMPARE_WITH_TIMEOUT(reader.state(), RKPTP_STATE_NOT_RUNNING, lockTimeout);
    QCOMPARE(ownClients(), size_t{0});
    const TestClient client(10);
    QTRY_COMPARE_WITH_TIMEOUT(reader.state(), RKPTP_STATE_LOCKED, lockTimeout);
    QCOMPARE(reader.grandmaster(), QByteArray("00-1D-C1-FF-FE-00-00-01"));
    QCOMPARE(ownClients(), size_t{1});                      // the other one's
    QVERIFY(childrenNamed(getpid(), "ptp_launch").empty()); // and nobody listens to other domains for it
}

QTEST_GUILESS_MAIN(TestPtpBeside)
#include "test_ptp_beside.moc"
