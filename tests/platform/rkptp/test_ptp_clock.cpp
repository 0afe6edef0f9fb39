// SPDX-License-Identifier: MIT
// What a client sees of real masters: ptp4l in another network namespace.
#include "ptpclient.h"
#include "ptpnet.h"

#include <QtTest>

class TestPtpClock : public QObject {
    Q_OBJECT
private slots:
    void initTestCase();
    void whatALockedClientTells();
    void timeIsRightOnEveryTimescale();
    void timeStaysRightWhenTheUtcOffsetChanges();
    void grandmasterAskedAndAnother();
    void domainChange();

private:
    std::unique_ptr<PtpNet> m_net;
};

void TestPtpClock::initTestCase()
{
    m_net = std::make_unique<PtpNet>();
    m_net->addLink(QStringLiteral("v0"), 0);
}

void TestPtpClock::whatALockedClientTells()
{
    const auto master = m_net->startMaster(QStringLiteral("v0"), 1, QStringLiteral("001dc1.fffe.000001"));
    master->waitUntilActive();
    const TestClient client(1);
    QCOMPARE(client.status(), RKPTP_STARTING);
    int result = RKPTP_OK;
    QVERIFY(qAbs(client.error(&result)) < tolerance);
    QCOMPARE(result, RKPTP_NOT_SYNCED);
    int64_t offset = 4711;
    QCOMPARE(rkPTPGetOffset_Nano(client.handle(), &offset), RKPTP_NOT_SYNCED);
    QCOMPARE(offset, int64_t{4711});
    QTRY_COMPARE_WITH_TIMEOUT(client.status(), RKPTP_LOCKED, lockTimeout);
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
    for (size_t i = 0; i < clients.size(); ++i) {
        const qint64 error = clients[i]->worstError(8);
        QVERIFY2(error < tolerance,
                 qPrintable(QStringLiteral("domain %1: %2 ns").arg(cases[i].domain).arg(error)));
    }
}

void TestPtpClock::timeStaysRightWhenTheUtcOffsetChanges()
{
    const auto master = m_net->startMaster(QStringLiteral("v0"), 15, QStringLiteral("001dc1.fffe.000015"));
    master->announce(37, true, true);
    const TestClient client(15);
    QTRY_COMPARE_WITH_TIMEOUT(client.status(), RKPTP_LOCKED, lockTimeout);
    for (const int utcOffset : {37, 38}) {
        master->announce(utcOffset, true, true);
        const qint64 error = client.worstError(16);
        QVERIFY2(error < tolerance, qPrintable(QStringLiteral("%1 ns").arg(error)));
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
    QByteArrayList lines;
    QTRY_VERIFY_WITH_TIMEOUT(!(lines += takeLog()).isEmpty(), lockTimeout);
    QVERIFY(client.worstError(16) < tolerance);
    lines += takeLog(); // it is said once only
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

QTEST_GUILESS_MAIN(TestPtpClock)
#include "test_ptp_clock.moc"
