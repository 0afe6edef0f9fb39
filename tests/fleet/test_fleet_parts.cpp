// SPDX-License-Identifier: MIT
// The service's parts that need no cluster: the sign of life, the signs of the store, the figures, the
// roster, the gate.
#include "fleet/member.h"
#include "fleet/service/alive.h"
#include "fleet/service/gate.h"
#include "fleet/service/metrics.h"
#include "fleet/service/ptpsign.h"
#include "fleet/service/roster.h"
#include "fleet/service/storesigns.h"

#include <QFile>
#include <QTcpSocket>
#include <QtTest>

namespace {

using fleet::Member;

fleet::Config desk(const QByteArrayList &follow)
{
    fleet::Config config;
    config.role = fleet::Role::Desk;
    config.site = "london";
    config.name = "desk-1";
    config.follow = follow;
    return config;
}

QByteArrayList namesOf(const fleet::Assignments &assignments)
{
    QByteArrayList names;
    for (const fleet::Assignment &assignment : assignments)
        names.append(assignment.configuration + '=' + assignment.place.server + '/' +
                     assignment.place.configuration);
    return names;
}

} // namespace

class TestFleetParts : public QObject {
    Q_OBJECT

private slots:
    void aSignOfLifeIsReadAsItWasWritten();
    void aForeignSignOfLifeIsNotTaken_data();
    void aForeignSignOfLifeIsNotTaken();
    void filesBelongToConfigurations_data();
    void filesBelongToConfigurations();
    void aTouchedFileTellsItsConfiguration();
    void manySignsAreToldOnce();
    void signsOfNowhere();
    void figuresHaveNamesTypesAndLabels();
    void ptpIsTold_data();
    void ptpIsTold();
    void onlyTheFiguresAreAnswered();
    void whatNobodyAsksOfPtpIsNotRead();
    void patternsBecomePrefixes();
    void aDeskNamesItsCopiesAfterServers();
    void foreignNamesBecomeNoConfigurations();
    void afterNoAnswerTheGateIsClosedForAMoment();
};

void TestFleetParts::aSignOfLifeIsReadAsItWasWritten()
{
    fleet::Alive alive;
    alive.version = "8.0.0";
    alive.configuration = "n\xc3\xa4"
                          "cht";
    alive.startedMs = 1700000000123;
    alive.inStep = true;
    alive.revision = 42;
    alive.waiting = 3;
    alive.refused = 1;
    alive.interfaces.push_back({"eth0", {0x0a000001, 0x0a000002}, {{0x0a000000, 0xffffff00}, {0, 0}}});
    alive.ptp = fleet::PtpSeen{"locked", 127, "00-1D-C1-FF-FE-00-00-01"};
    const auto read = fleet::readAlive(fleet::aliveText(alive));
    QVERIFY(read);
    QCOMPARE(read->version, alive.version);
    QCOMPARE(read->configuration, alive.configuration);
    QCOMPARE(read->startedMs, alive.startedMs);
    QVERIFY(read->inStep);
    QCOMPARE(read->revision, alive.revision);
    QCOMPARE(read->waiting, 3);
    QCOMPARE(read->refused, 1);
    QCOMPARE(read->interfaces.size(), std::size_t(1));
    QCOMPARE(read->interfaces[0].name, QByteArray("eth0"));
    QVERIFY(read->interfaces[0].addresses == alive.interfaces[0].addresses);
    QCOMPARE(read->interfaces[0].networks.size(), std::size_t(2));
    QCOMPARE(read->interfaces[0].networks[0].network, 0x0a000000U);
    QCOMPARE(read->interfaces[0].networks[0].mask, 0xffffff00U);
    QCOMPARE(read->interfaces[0].networks[1].mask, 0U);
    QVERIFY(read->ptp);
    QCOMPARE(read->ptp->state, QByteArray("locked"));
    QCOMPARE(read->ptp->domain, 127U);
    QCOMPARE(read->ptp->grandmaster, QByteArray("00-1D-C1-FF-FE-00-00-01"));
}

void TestFleetParts::aForeignSignOfLifeIsNotTaken_data()
{
    QTest::addColumn<QByteArray>("text");
    QTest::addColumn<bool>("taken");
    QTest::newRow("nothing") << QByteArray() << false;
    QTest::newRow("no JSON") << QByteArray("alive") << false;
    QTest::newRow("a list") << QByteArray("[]") << false;
    QTest::newRow("no format") << QByteArray("{}") << false;
    QTest::newRow("a newer version") << QByteArray("{\"format\":2}") << false;
    QTest::newRow("no UTF-8") << QByteArray("{\"format\":1,\"version\":\"\xff\"}") << false;
    QTest::newRow("too deep") << QByteArray("{\"format\":1,\"x\":[[[[[[]]]]]]}") << false;
    QTest::newRow("too long") << "{\"format\":1,\"x\":\"" + QByteArray(70000, 'x') + "\"}" << false;
    QTest::newRow("nothing else") << QByteArray("{\"format\":1}") << true;
    QTest::newRow("other types") << QByteArray(
                                        "{\"format\":1,\"version\":7,\"inStep\":\"yes\",\"waiting\":\"many\","
                                        "\"interfaces\":{\"name\":1}}")
                                 << true;
    QTest::newRow("odd interfaces")
        << QByteArray("{\"format\":1,\"interfaces\":[1,{\"name\":2},{\"addresses\":[1,\"x\"],"
                      "\"networks\":[7,\"x/y\",\"10.0.0.0\",\"10.0.0.0/33\",\"/8\"]}]}")
        << true;
    QTest::newRow("words that no terminal should get")
        << QByteArray("{\"format\":1,\"version\":\"\\u001b[2J\",\"configuration\":\"a\\nb\"}") << true;
    QTest::newRow("odd PTP") << QByteArray("{\"format\":1,\"ptp\":{\"state\":\"\\u0007\",\"domain\":\"x\"}}")
                             << true;
    QTest::newRow("no PTP") << QByteArray("{\"format\":1,\"ptp\":\"locked\"}") << true;
}

void TestFleetParts::aForeignSignOfLifeIsNotTaken()
{
    QFETCH(QByteArray, text);
    const auto alive = fleet::readAlive(text.toStdString());
    QTEST(alive.has_value(), "taken");
    if (alive)
        QVERIFY(!alive->inStep && alive->waiting == 0 && alive->version.isEmpty() && !alive->ptp);
}

void TestFleetParts::filesBelongToConfigurations_data()
{
    QTest::addColumn<QByteArray>("file");
    QTest::addColumn<QByteArray>("configuration");
    QTest::addColumn<bool>("known");
    QTest::newRow("a database") << QByteArray("night.rkcfg") << QByteArray("night") << true;
    QTest::newRow("its log") << QByteArray("night.rkcfg-wal") << QByteArray("night") << true;
    QTest::newRow("a name with a dot") << QByteArray("a.rkcfg.rkcfg") << QByteArray("a.rkcfg") << true;
    QTest::newRow("the one in use") << QByteArray("default-config") << QByteArray() << true;
    QTest::newRow("shared memory") << QByteArray("night.rkcfg-shm") << QByteArray() << false;
    QTest::newRow("a good copy") << QByteArray("night.rkcfg.good") << QByteArray() << false;
    QTest::newRow("no name") << QByteArray(".rkcfg") << QByteArray() << false;
    QTest::newRow("the status") << QByteArray("fleet-status") << QByteArray() << false;
}

void TestFleetParts::filesBelongToConfigurations()
{
    QFETCH(QByteArray, file);
    const auto configuration = fleet::configurationOfFile(file);
    QTEST(configuration.has_value(), "known");
    QTEST(configuration.value_or(QByteArray()), "configuration");
}

void TestFleetParts::aTouchedFileTellsItsConfiguration()
{
    QTemporaryDir folder;
    QByteArrayList told;
    const fleet::StoreSigns signs(folder.path().toUtf8(), [&](const QByteArray &name) { told.append(name); });
    QVERIFY(signs.works());
    QFile log(folder.filePath(QStringLiteral("night.rkcfg-wal")));
    QVERIFY(log.open(QIODevice::WriteOnly) && log.write("x") == 1 && log.flush());
    QTRY_VERIFY(told.contains("night"));
}

// The longest pause that this test has the patience for: what comes in it is told of together.
void TestFleetParts::manySignsAreToldOnce()
{
    QTemporaryDir folder;
    QByteArrayList told;
    const fleet::StoreSigns signs(
        folder.path().toUtf8(), [&](const QByteArray &name) { told.append(name); }, 500);
    QFile log(folder.filePath(QStringLiteral("night.rkcfg-wal")));
    QVERIFY(log.open(QIODevice::WriteOnly));
    for (int i = 0; i < 20; ++i) {
        QVERIFY(log.write("x") == 1 && log.flush());
        QCoreApplication::processEvents();
    }
    QTRY_COMPARE(told, QByteArrayList{"night"});
    QVERIFY(log.write("x") == 1 && log.flush()); // and it goes on listening
    QTRY_COMPARE(told.size(), 2);
}

void TestFleetParts::signsOfNowhere()
{
    const fleet::StoreSigns nowhere("/nowhere/at/all", [](const QByteArray &) {});
    QVERIFY(!nowhere.works());
}

void TestFleetParts::figuresHaveNamesTypesAndLabels()
{
    fleet::FleetStatus status;
    fleet::KeptConfiguration kept;
    kept.configuration = "say \"hi\"\\\n";
    kept.server = "lon-1";
    kept.status.connected = true;
    kept.status.waiting = 4;
    kept.status.sinceMs = 1;
    kept.status.behindMs = 1000;
    kept.status.storeErrors = 7;
    status.configurations.push_back(kept);
    const QByteArray text = fleet::metricsText(status, 61000);
    const QByteArray labels = R"({server="lon-1",configuration="say \"hi\"\\\n"})";
    QVERIFY2(text.contains("corvel_fleet_connected" + labels + " 1\n"), text.constData());
    QVERIFY(text.contains("corvel_fleet_edits_waiting" + labels + " 4\n"));
    QVERIFY(text.contains("corvel_fleet_lag_seconds" + labels + " 60\n"));
    QVERIFY(text.contains("# TYPE corvel_fleet_lag_seconds gauge\n"));
    QVERIFY(text.contains("corvel_fleet_store_errors_total" + labels + " 7\n"));
    QVERIFY(text.contains("# TYPE corvel_fleet_store_errors_total counter\n"));
    QVERIFY(text.contains("\ncorvel_fleet_unopened 0\n"));
    status.configurations[0].status.behindMs = 0;
    QVERIFY(fleet::metricsText(status, 61000).contains("corvel_fleet_lag_seconds" + labels + " 0\n"));
}

void TestFleetParts::ptpIsTold_data()
{
    QTest::addColumn<QByteArray>("state");
    QTest::addColumn<QByteArray>("locked");
    QTest::newRow("locked") << QByteArray("locked") << QByteArray("1");
    QTest::newRow("another master") << QByteArray("other master") << QByteArray("0");
    QTest::newRow("nobody looks") << QByteArray("not running") << QByteArray("0");
    QTest::newRow("nobody wants it") << QByteArray("no ptp") << QByteArray();
    QTest::newRow("not known") << QByteArray() << QByteArray();
}

void TestFleetParts::ptpIsTold()
{
    QFETCH(QByteArray, state);
    QFETCH(QByteArray, locked);
    fleet::FleetStatus status;
    status.name = "lon-1";
    if (!state.isEmpty())
        status.ptp = fleet::PtpSeen{state, 127, "00-1D"};
    const QByteArray text = fleet::metricsText(status, 0);
    QCOMPARE(text.contains("ptp"), !locked.isEmpty());
    if (locked.isEmpty())
        return;
    QVERIFY(text.contains("corvel_fleet_ptp_locked{server=\"lon-1\"} " + locked + '\n'));
    QVERIFY(text.contains("corvel_fleet_ptp_state{server=\"lon-1\",state=\"" + state +
                          "\",domain=\"127\",grandmaster=\"00-1D\"} 1\n"));
}

void TestFleetParts::whatNobodyAsksOfPtpIsNotRead()
{
    fleet::PtpSign sign;
    QCOMPARE(sign.seen()->state, QByteArray("no ptp"));
    sign.want(ops::PtpTarget{"127.9.9.9", 5, {}}); // nobody has that address
    QTRY_COMPARE(sign.seen()->state, QByteArray("no interface"));
    QCOMPARE(sign.seen()->domain, 5U);
    sign.want(std::nullopt);
    QCOMPARE(sign.seen()->state, QByteArray("no ptp"));
}

void TestFleetParts::onlyTheFiguresAreAnswered()
{
    fleet::Metrics metrics([] { return QByteArray("figures\n"); });
    int port = 20000;
    while (!metrics.listen(port))
        ++port;
    const auto ask = [&](const QByteArray &request) {
        QTcpSocket socket;
        socket.connectToHost(QHostAddress::LocalHost, static_cast<quint16>(port));
        socket.write(request);
        QByteArray answer;
        const bool ended = QTest::qWaitFor([&] {
            answer += socket.readAll();
            return socket.state() == QAbstractSocket::UnconnectedState;
        });
        return ended ? answer : QByteArray("no end");
    };
    QVERIFY(ask("GET /metrics HTTP/1.1\r\nHost: x\r\n\r\n").endsWith("\r\n\r\nfigures\n"));
    QVERIFY(ask("GET / HTTP/1.1\r\n\r\n").startsWith("HTTP/1.1 404"));
    QVERIFY(ask("rubbish\r\n\r\n").startsWith("HTTP/1.1 404"));
    QVERIFY(ask(QByteArray(20000, 'x')).startsWith("HTTP/1.1 404"));
}

void TestFleetParts::patternsBecomePrefixes()
{
    const std::string servers = "/corvel/v1/london/servers/";
    QVERIFY(fleet::followedPrefixes(desk({"lon-1"})) == std::set<std::string>{servers + "lon-1/"});
    QVERIFY(fleet::followedPrefixes(desk({"lon-*", "rec-0?"})) ==
            (std::set<std::string>{servers + "lon-", servers + "rec-0"}));
    QVERIFY(fleet::followedPrefixes(desk({"*"})) == std::set<std::string>{servers});
}

void TestFleetParts::aDeskNamesItsCopiesAfterServers()
{
    const std::string servers = "/corvel/v1/london/servers/";
    Member member;
    member.values = {{servers + "lon-1/alive", "{}"},         {servers + "lon-1/default", "day"},
                     {servers + "lon-1/day/kwx/config", "x"}, {servers + "lon-1/night/kwx/config", "x"},
                     {servers + "lon-2/one/kwx/config", "x"}, {servers + "lon-10/day/kwx/config", "x"},
                     {servers + "par-1/day/kwx/config", "x"}};
    const fleet::Config config = desk({"lon-?"});
    fleet::DeskRoster roster(config);
    QVERIFY(roster.look(member));
    QCOMPARE(namesOf(roster.assignments()),
             QByteArrayList({"lon-1=lon-1/day", "night@lon-1=lon-1/night", "lon-2=lon-2/one"}));
    member.answer = fleet::Outcome::Unreachable;
    QVERIFY(!roster.look(member));
    QCOMPARE(roster.assignments().size(), std::size_t(3)); // what was known stays
}

void TestFleetParts::foreignNamesBecomeNoConfigurations()
{
    const std::string servers = "/corvel/v1/london/servers/";
    Member member;
    member.values = {{servers + "lon-1/%2E%2E%2Fx/kwx", "x"},
                     {servers + "lon-1/.hidden/kwx", "x"},
                     {servers + "lon-1/%00/kwx", "x"},
                     {servers + "lon-1/%zz/kwx", "x"},
                     {servers + "lon-1/" + std::string(100, 'x') + "/kwx", "x"}};
    const fleet::Config config = desk({"*"});
    fleet::DeskRoster roster(config);
    QVERIFY(roster.look(member));
    QVERIFY(roster.assignments().empty());
}

void TestFleetParts::afterNoAnswerTheGateIsClosedForAMoment()
{
    Member member;
    std::int64_t now = 1000;
    fleet::Gate gate(member, [&] { return now; });
    fleet::Range range;
    QCOMPARE(gate.get("a", &range), fleet::Outcome::Done);
    member.answer = fleet::Outcome::Refused;
    QCOMPARE(gate.commit({}, nullptr), fleet::Outcome::Refused);
    QCOMPARE(gate.commit({}, nullptr), fleet::Outcome::Refused);
    QCOMPARE(member.calls, 3); // an answer is an answer
    member.answer = fleet::Outcome::Unreachable;
    QCOMPARE(gate.range("a", &range), fleet::Outcome::Unreachable);
    QCOMPARE(gate.get("a", &range), fleet::Outcome::Unreachable);
    QCOMPARE(member.calls, 4); // nobody was asked
    now += fleet::Gate::kClosedMs;
    member.answer = fleet::Outcome::Done;
    QCOMPARE(gate.get("a", &range), fleet::Outcome::Done);
    QCOMPARE(member.calls, 5);
    QCOMPARE(gate.reason(), std::string("no answer"));
}

QTEST_GUILESS_MAIN(TestFleetParts)
#include "test_fleet_parts.moc"
