// SPDX-License-Identifier: MIT
// Masters and interfaces that come and go.
#include "ptpclient.h"
#include "ptpnet.h"

#include <QtTest>

#include <unistd.h>

class TestPtpLoss : public QObject {
    Q_OBJECT
private slots:
    void initTestCase();
    void masterDiesReturnsAndChanges();
    void allInterfaces();
    void linkDownAndUp();
    void interfaceGoneAndBack();

private:
    std::unique_ptr<PtpNet> m_net;
};

void TestPtpLoss::initTestCase()
{
    m_net = std::make_unique<PtpNet>();
    m_net->addLink(QStringLiteral("v0"), 0);
    m_net->addLink(QStringLiteral("v1"), 1);
    m_net->addLink(QStringLiteral("v2"), 2);
}

void TestPtpLoss::masterDiesReturnsAndChanges()
{
    auto master = m_net->startMaster(QStringLiteral("v0"), 40, QStringLiteral("001dc1.fffe.000040"));
    const TestClient client(40);
    QTRY_COMPARE_WITH_TIMEOUT(client.status(), RKPTP_LOCKED, lockTimeout);
    master->kill();
    QTRY_COMPARE_WITH_TIMEOUT(client.status(), RKPTP_SYNC_LOST, lockTimeout);
    int result = RKPTP_NOT_SYNCED;
    QVERIFY(qAbs(client.error(&result)) < tolerance);
    QCOMPARE(result, RKPTP_OK);
    int64_t offset = INT64_MAX;
    QCOMPARE(rkPTPGetOffset_Nano(client.handle(), &offset), RKPTP_NOT_SYNCED);
    QVERIFY(offset != INT64_MAX);
    // ptp4l itself holds on to the master for six seconds; a client is not locked in that time.
    bool lost = true;
    const auto letGo = [&] {
        lost = lost && client.status() == RKPTP_SYNC_LOST;
        return client.grandmaster().isEmpty();
    };
    QVERIFY(QTest::qWaitFor(letGo, 2 * lockTimeout));
    QVERIFY(lost);
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

void TestPtpLoss::allInterfaces()
{
    // An interface without software time stamps must not keep the others from working.
    runCommand(QStringLiteral("sh"),
               {QStringLiteral("-c"), QStringLiteral("ip link add br0 type bridge && "
                                                     "ip addr add 10.9.9.1/24 dev br0 && "
                                                     "ip link set br0 up")});
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

void TestPtpLoss::linkDownAndUp()
{
    const auto master = m_net->startMaster(QStringLiteral("v0"), 60, QStringLiteral("001dc1.fffe.000060"));
    const TestClient client(60);
    QTRY_COMPARE_WITH_TIMEOUT(client.status(), RKPTP_LOCKED, lockTimeout);
    runCommand(QStringLiteral("ip"), QStringLiteral("link set v0 down").split(QLatin1Char(' ')));
    QTRY_COMPARE_WITH_TIMEOUT(client.status(), RKPTP_PORT_FAULTY, lockTimeout);
    runCommand(QStringLiteral("ip"), QStringLiteral("link set v0 up").split(QLatin1Char(' ')));
    QTRY_COMPARE_WITH_TIMEOUT(client.status(), RKPTP_LOCKED, 2 * lockTimeout);
    QVERIFY(qAbs(client.error()) < tolerance);
}

void TestPtpLoss::interfaceGoneAndBack()
{
    const TestClient client(61, "10.9.2.1");
    QTRY_COMPARE_WITH_TIMEOUT(client.status(), RKPTP_LISTENING, lockTimeout);
    runCommand(QStringLiteral("ip"), QStringLiteral("link del v2").split(QLatin1Char(' ')));
    QTRY_COMPARE_WITH_TIMEOUT(client.status(), RKPTP_PORT_FAULTY, lockTimeout);
    m_net->addLink(QStringLiteral("v2"), 2);
    const auto master = m_net->startMaster(QStringLiteral("v2"), 61, QStringLiteral("001dc1.fffe.000061"));
    QTRY_COMPARE_WITH_TIMEOUT(client.status(), RKPTP_LOCKED, 2 * lockTimeout);
}

QTEST_GUILESS_MAIN(TestPtpLoss)
#include "test_ptp_loss.moc"
