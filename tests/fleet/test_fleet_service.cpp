// SPDX-License-Identifier: MIT
// The service as people have it: three members, servers and a desk, each with a store of its own on disk.
#include "fleet/machine.h"

#include <QFile>
#include <QRandomGenerator>
#include <QTcpSocket>

namespace {

const char kPlace[] = "0/video";
const char kWord[] = "tx.dst";
const QByteArray kFollow = "[follow]\nservers = lon-*\n";
const QString kOwn = QStringLiteral("/corvel/v1/london/servers/lon-1/");

// CORVEL_FLEET_KILLS: how often the service is killed; the plain run keeps it short.
int kills()
{
    const int wanted = qEnvironmentVariableIntValue("CORVEL_FLEET_KILLS");
    return wanted > 0 ? wanted : 5;
}

} // namespace

class TestFleetService : public QObject {
    Q_OBJECT

private slots:
    void initTestCase();
    void anEditOnADeskIsOnTheServerAndBack();
    void aDeletionGoesAcrossToo();
    void bothSidesChangedTheServersEditStands();
    void foreignDocumentsAreRefusedInOneLine_data();
    void foreignDocumentsAreRefusedInOneLine();
    void compactionWhileAwayLosesNothing();
    void killedAtAnyMomentNothingIsLost();
    void aLostLeaderDelaysButLosesNothing();
    void whatIsWrongEndsTheServiceWithOneLine_data();
    void whatIsWrongEndsTheServiceWithOneLine();
    void aWrongRoleLeavesLocalWorkAlone();
    void aDeskDoesNotRunWhereAnEngineIs();
    void aConfigurationOfTheDeskItselfIsLeftAlone();
    void theFiguresAreToldOnLoopback();
    void stoppedItTakesItsSignOfLifeAndItsStatus();

private:
    // Both have the value.
    bool agree(const QByteArray &value, int limitMs = 30000)
    {
        return eventually(
            [&] {
                return m_server->get({}, kPlace, kWord) == value &&
                       m_desk->get("lon-1", kPlace, kWord) == value;
            },
            limitMs);
    }
    void restart(Machine &machine)
    {
        if (!machine.running())
            machine.start();
    }

    Plant m_plant;
    std::unique_ptr<Machine> m_server, m_desk;
};

void TestFleetService::initTestCase()
{
    QVERIFY2(m_plant.start() && m_plant.addServer("lon-1") && m_plant.addServer("lon-2") &&
                 m_plant.addDesk("desk-1", {QStringLiteral("lon-1")}) && m_plant.addCertificate("stranger"),
             m_plant.error().constData());
    m_server = std::make_unique<Machine>(m_plant, "server", "lon-1");
    m_desk = std::make_unique<Machine>(m_plant, "desk", "desk-1", kFollow);
    QVERIFY(m_server->set({}, kPlace, "tx.dst=239.1.1.1"));
    m_server->start();
    m_desk->start();
    QVERIFY2(agree("239.1.1.1"), m_desk->said().constData());
}

void TestFleetService::anEditOnADeskIsOnTheServerAndBack()
{
    QVERIFY(m_desk->set("lon-1", kPlace, "tx.dst=239.1.1.2"));
    QVERIFY(agree("239.1.1.2"));
    QVERIFY(m_server->set({}, kPlace, "tx.dst=239.1.1.3"));
    QVERIFY(agree("239.1.1.3"));
    const QByteArray history = m_server->ctl({}, {QStringLiteral("history")}).out;
    QVERIFY2(history.contains("desk-1"), history.constData()); // who it was can be seen, and taken back
}

void TestFleetService::aDeletionGoesAcrossToo()
{
    QVERIFY(m_server->set({}, "1/video", "tx.dst=239.1.9.9"));
    QVERIFY(eventually([&] { return m_desk->get("lon-1", "1/video", kWord) == "239.1.9.9"; }));
    QCOMPARE(
        m_desk->ctl("lon-1", {QStringLiteral("unset"), QStringLiteral("1"), QStringLiteral("--all")}).code,
        0);
    QVERIFY(eventually([&] { return m_server->get({}, "1/video", kWord) != "239.1.9.9"; }));
}

void TestFleetService::bothSidesChangedTheServersEditStands()
{
    QCOMPARE(m_server->stop(), 0);
    QVERIFY(m_server->set({}, kPlace, "tx.dst=239.1.2.1"));
    QVERIFY(m_desk->set("lon-1", kPlace, "tx.dst=239.1.2.2"));
    QVERIFY(eventually([&] {
        return m_plant.etcdctl({QStringLiteral("get"), QStringLiteral("--prefix"), kOwn})
            .out.contains("239.1.2.2");
    }));
    m_server->start();
    QVERIFY(agree("239.1.2.1"));
    QVERIFY(eventually([&] {
        const QByteArray conflicts = m_plant
                                         .etcdctl({QStringLiteral("get"), QStringLiteral("--prefix"),
                                                   QStringLiteral("/corvel/v1/london/conflicts/lon-1/")})
                                         .out;
        return conflicts.contains("239.1.2.2") && conflicts.contains("desk-1") && conflicts.contains("lon-1");
    }));
}

void TestFleetService::foreignDocumentsAreRefusedInOneLine_data()
{
    QTest::addColumn<QByteArray>("value");
    QTest::newRow("no JSON") << QByteArray("rubbish");
    QTest::newRow("another path") << QByteArray("{\"format\":1,\"path\":\"KWX\\\\Else\"}");
    QTest::newRow("a newer version") << QByteArray(
        "{\"format\":99,\"path\":\"KWX\\\\Internal5\\\\IpConfig\"}");
    QTest::newRow("a large one") << "{\"format\":1,\"values\":\"" + QByteArray(100000, 'x') + "\"}";
}

void TestFleetService::foreignDocumentsAreRefusedInOneLine()
{
    QFETCH(QByteArray, value);
    const int before = m_server->said().count('\n');
    QCOMPARE(m_plant
                 .etcdctl({QStringLiteral("put"), kOwn + QStringLiteral("default/kwx/internal5/ipconfig"),
                           QString::fromUtf8(value)})
                 .code,
             0);
    QVERIFY(eventually([&] { return m_server->said().count('\n') > before; }));
    QVERIFY(m_server->set({}, kPlace, "tx.dst=239.1.3.1"));
    QVERIFY(agree("239.1.3.1"));
    QVERIFY(m_server->set({}, kPlace, "tx.dst=239.1.3.2"));
    QVERIFY(agree("239.1.3.2"));
    QCOMPARE(m_server->said().count('\n'), before + 1);
}

void TestFleetService::compactionWhileAwayLosesNothing()
{
    QCOMPARE(m_server->stop(), 0);
    for (const char *value : {"tx.dst=239.1.4.1", "tx.dst=239.1.4.2", "tx.dst=239.1.4.3"}) {
        QVERIFY(m_desk->set("lon-1", kPlace, value));
        const QByteArray written = QByteArray(value).mid(7);
        QVERIFY(eventually([&] {
            return m_plant.etcdctl({QStringLiteral("get"), QStringLiteral("--prefix"), kOwn})
                .out.contains(written);
        }));
    }
    const QByteArray json = m_plant
                                .etcdctl({QStringLiteral("get"), QStringLiteral("x"), QStringLiteral("-w"),
                                          QStringLiteral("json")})
                                .out;
    const int at = json.indexOf("\"revision\":") + 11;
    const QByteArray revision = json.mid(at, json.indexOf(',', at) - at);
    QCOMPARE(m_plant.etcdctl({QStringLiteral("compact"), QString::fromLatin1(revision)}).code, 0);
    m_server->start();
    QVERIFY(agree("239.1.4.3"));
}

void TestFleetService::killedAtAnyMomentNothingIsLost()
{
    QByteArray last;
    for (int round = 0; round < kills(); ++round) {
        Machine &victim = round % 2 == 0 ? *m_server : *m_desk;
        last = "239.1.5." + QByteArray::number(round % 250 + 1);
        QVERIFY(victim.set(round % 2 == 0 ? "" : "lon-1", kPlace, ("tx.dst=" + last).constData()));
        QTest::qWait(static_cast<int>(QRandomGenerator::global()->bounded(30))); // any moment of the push
        victim.kill();
        victim.start();
        QVERIFY2(agree(last), (m_server->said() + m_desk->said()).constData());
    }
}

void TestFleetService::aLostLeaderDelaysButLosesNothing()
{
    const int leader = m_plant.leader();
    QVERIFY(leader >= 0);
    m_plant.killNode(leader);
    QVERIFY(m_desk->set("lon-1", kPlace, "tx.dst=239.1.6.1")); // does not wait for anybody
    QVERIFY(agree("239.1.6.1"));
    QVERIFY(m_plant.startNode(leader));
    QVERIFY(eventually([&] { return m_plant.healthy(); }));
}

void TestFleetService::whatIsWrongEndsTheServiceWithOneLine_data()
{
    QTest::addColumn<QByteArray>("from");
    QTest::addColumn<QByteArray>("to");
    QTest::addColumn<QByteArray>("told");
    QTest::newRow("a bad line") << QByteArray("role = server") << QByteArray("role = host")
                                << QByteArray("corvel-fleet.conf:2: role: server or desk");
    QTest::newRow("no certificate") << QByteArray("lon-2.crt") << QByteArray("lon-9.crt")
                                    << QByteArray("lon-9.crt");
    QTest::newRow("a key that is none") << QByteArray("lon-2.key") << QByteArray("node0.log")
                                        << QByteArray("no certificate or key in PEM form");
}

void TestFleetService::whatIsWrongEndsTheServiceWithOneLine()
{
    QFETCH(QByteArray, from);
    QFETCH(QByteArray, to);
    QFETCH(QByteArray, told);
    Machine machine(m_plant, "server", "lon-2");
    machine.writeConfig(machine.config().replace(from, to));
    machine.start();
    QCOMPARE(machine.waitForEnd(), 2);
    QVERIFY2(machine.said().contains(told), machine.said().constData());
    QCOMPARE(machine.said().count('\n'), 1);
}

void TestFleetService::aWrongRoleLeavesLocalWorkAlone()
{
    Machine machine(m_plant, "server", "stranger"); // a certificate of the plant, but no user
    machine.start();
    QVERIFY2(eventually([&] { return machine.status().contains("permission denied"); }),
             (machine.said() + machine.status()).constData());
    QVERIFY(machine.set({}, kPlace, "tx.dst=239.1.7.1"));
    QCOMPARE(machine.get({}, kPlace, kWord), QByteArray("239.1.7.1"));
    QCOMPARE(machine.stop(), 0);
}

void TestFleetService::aDeskDoesNotRunWhereAnEngineIs()
{
    Machine machine(m_plant, "desk", "desk-1", kFollow);
    QVERIFY(machine.set({}, "server", "channels=8"));
    machine.start();
    QCOMPARE(machine.waitForEnd(), 3);
    QVERIFY2(machine.said().contains("number of its channels"), machine.said().constData());
}

void TestFleetService::aConfigurationOfTheDeskItselfIsLeftAlone()
{
    Machine machine(m_plant, "desk", "desk-1", kFollow);
    QCOMPARE(machine.ctl({}, {QStringLiteral("config"), QStringLiteral("new"), QStringLiteral("lon-1")}).code,
             0);
    QVERIFY(machine.set("lon-1", kPlace, "tx.dst=10.9.9.9"));
    machine.start();
    QVERIFY(eventually([&] { return machine.said().contains("this machine's own"); }));
    QCOMPARE(machine.get("lon-1", kPlace, kWord), QByteArray("10.9.9.9"));
    QVERIFY(m_server->get({}, kPlace, kWord) != "10.9.9.9");
}

void TestFleetService::theFiguresAreToldOnLoopback()
{
    const auto port = static_cast<quint16>(20000 + QCoreApplication::applicationPid() % 10000);
    Machine machine(m_plant, "server", "lon-2", "[metrics]\nport = " + QByteArray::number(port) + '\n');
    machine.start();
    QByteArray answer;
    QVERIFY(eventually([&] { // as soon as it listens, and has looked at its store
        QTcpSocket socket;
        socket.connectToHost(QHostAddress::LocalHost, port);
        socket.write("GET /metrics HTTP/1.1\r\n\r\n");
        socket.waitForDisconnected(5000);
        answer = socket.readAll();
        return answer.contains("corvel_fleet_refused{");
    }));
    QVERIFY(answer.startsWith("HTTP/1.1 200 OK"));
    QVERIFY(answer.contains("corvel_fleet_connected{server=\"lon-2\",configuration=\"default\"}"));
    QCOMPARE(machine.stop(), 0);
}

void TestFleetService::stoppedItTakesItsSignOfLifeAndItsStatus()
{
    const QStringList alive{QStringLiteral("get"), kOwn + QStringLiteral("alive")};
    QVERIFY(eventually([&] { return m_plant.etcdctl(alive).out.contains("\"format\":1"); }));
    QCOMPARE(m_server->stop(), 0);
    QVERIFY(m_plant.etcdctl(alive).out.isEmpty());
    QVERIFY(m_server->status().isEmpty());
    QCOMPARE(m_server->get({}, kPlace, kWord), m_desk->get("lon-1", kPlace, kWord));
}

QTEST_GUILESS_MAIN(TestFleetService)
#include "test_fleet_service.moc"
