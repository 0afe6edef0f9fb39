// SPDX-License-Identifier: MIT
// corvel-fleet.conf: what is taken, and what is said about a bad one.
#include "fleet/service/config.h"

#include <QtTest>

namespace {

const QByteArray kServer = "[fleet]\nrole = server\nsite = london\nname = lon-play-17\n"
                           "[cluster]\nendpoints = 10.0.1.1:2379, [::1]:2379 ,node3:2379\n"
                           "ca = /c/ca.crt\ncertificate = /c/lon.crt\nkey = /c/lon.key\n";

QByteArray desk()
{
    return QByteArray(kServer).replace("role = server", "role = desk") +
           "[follow]\nservers = lon-*, rec-0?\n";
}

} // namespace

class TestFleetConfig : public QObject {
    Q_OBJECT

private slots:
    void aServersFileIsTaken();
    void aDesksFileIsTaken();
    void namesOfServersMayBePatterns_data();
    void namesOfServersMayBePatterns();
    void theExampleIsTaken();
    void aBadFileIsToldWithItsLine_data();
    void aBadFileIsToldWithItsLine();
    void aFileThatIsNotThereIsTold();
};

void TestFleetConfig::aServersFileIsTaken()
{
    const auto config =
        fleet::parseConfig(kServer + "[share]\nconfigurations = night\n[metrics]\nport = 9184\n", "f");
    QVERIFY2(config, config ? "" : config.failure().text.constData());
    QVERIFY(!config->isDesk());
    QCOMPARE(config->site, QByteArray("london"));
    QCOMPARE(config->name, QByteArray("lon-play-17"));
    QCOMPARE(config->endpoints, QByteArrayList({"10.0.1.1:2379", "[::1]:2379", "node3:2379"}));
    QCOMPARE(config->authorityFile, QByteArray("/c/ca.crt"));
    QCOMPARE(config->certificateFile, QByteArray("/c/lon.crt"));
    QCOMPARE(config->keyFile, QByteArray("/c/lon.key"));
    QCOMPARE(config->configurations, QByteArrayList({"night"}));
    QCOMPARE(config->metricsPort, 9184);
}

void TestFleetConfig::aDesksFileIsTaken()
{
    const auto config = fleet::parseConfig(desk(), "f");
    QVERIFY2(config, config ? "" : config.failure().text.constData());
    QVERIFY(config->isDesk());
    QCOMPARE(config->follow, QByteArrayList({"lon-*", "rec-0?"}));
    QCOMPARE(config->metricsPort, 0);
}

void TestFleetConfig::namesOfServersMayBePatterns_data()
{
    QTest::addColumn<QByteArray>("name");
    QTest::addColumn<bool>("followed");
    QTest::newRow("any letters") << QByteArray("lon-play-17") << true;
    QTest::newRow("no letters") << QByteArray("lon-") << true;
    QTest::newRow("one letter") << QByteArray("rec-07") << true;
    QTest::newRow("two letters") << QByteArray("rec-017") << false;
    QTest::newRow("another name") << QByteArray("par-1") << false;
    QTest::newRow("in the middle") << QByteArray("x-lon-1") << false;
}

void TestFleetConfig::namesOfServersMayBePatterns()
{
    QFETCH(QByteArray, name);
    const auto config = fleet::parseConfig(desk(), "f");
    QVERIFY(config);
    QTEST(config->follows(name), "followed");
}

void TestFleetConfig::theExampleIsTaken()
{
    const auto config = fleet::readConfig(CORVEL_SOURCE_DIR "/packaging/fleet/corvel-fleet.conf");
    QVERIFY2(config, config ? "" : config.failure().text.constData());
    QCOMPARE(config->endpoints.size(), 3);
}

void TestFleetConfig::aBadFileIsToldWithItsLine_data()
{
    QTest::addColumn<QByteArray>("text");
    QTest::addColumn<QByteArray>("told");
    const auto with = [](const QByteArray &from, const QByteArray &to) {
        return QByteArray(kServer).replace(from, to);
    };
    QTest::newRow("a word for a line") << with("site = london", "site london")
                                       << QByteArray("f:3: neither [section], nor key = value, nor # remark");
    QTest::newRow("an unknown key")
        << with("endpoints", "endpoint")
        << QByteArray("f:6: no such key: [cluster] endpoint; did you mean [cluster] endpoints?");
    QTest::newRow("an unknown section")
        << with("[cluster]", "[clusters]")
        << QByteArray("f:6: no such key: [clusters] endpoints; did you mean [cluster] endpoints?");
    QTest::newRow("a key twice") << with("site = london", "name = x")
                                 << QByteArray("f:4: [fleet] name is there twice");
    QTest::newRow("no role of ours") << with("role = server", "role = host")
                                     << QByteArray("f:2: role: server or desk");
    QTest::newRow("a role in capitals")
        << with("role = server", "role = Server") << QByteArray("f:2: role: server or desk");
    QTest::newRow("a name with a slash")
        << with("lon-play-17", "lon/17")
        << QByteArray("f:4: name: a name has 1 to 64 of a-z 0-9 . _ - and does not begin with a dot");
    QTest::newRow("a name with capitals")
        << with("lon-play-17", "Lon-17")
        << QByteArray("f:4: name: a name has 1 to 64 of a-z 0-9 . _ - and does not begin with a dot");
    QTest::newRow("a long name")
        << with("lon-play-17", QByteArray(65, 'x'))
        << QByteArray("f:4: name: a name has 1 to 64 of a-z 0-9 . _ - and does not begin with a dot");
    QTest::newRow("an empty site")
        << with("site = london", "site =")
        << QByteArray("f:3: site: a name has 1 to 64 of a-z 0-9 . _ - and does not begin with a dot");
    QTest::newRow("no port") << with("10.0.1.1:2379", "10.0.1.1")
                             << QByteArray("f:6: endpoints: HOST:PORT of each member, with commas between");
    QTest::newRow("a URL") << with("10.0.1.1:2379", "https://10.0.1.1:2379")
                           << QByteArray("f:6: endpoints: HOST:PORT of each member, with commas between");
    QTest::newRow("a file beside") << with("/c/ca.crt", "ca.crt")
                                   << QByteArray("f:7: ca: a file name that begins with /");
    QTest::newRow("a port of letters") << kServer + "[metrics]\nport = many\n"
                                       << QByteArray("f:11: port: a port, or 0 for none");
    QTest::newRow("a port too high") << kServer + "[metrics]\nport = 65536\n"
                                     << QByteArray("f:11: port: a port, or 0 for none");
    QTest::newRow("no name") << with("name = lon-play-17\n", "") << QByteArray("f: [fleet] name is missing");
    QTest::newRow("nothing") << QByteArray() << QByteArray("f: [fleet] role is missing");
    QTest::newRow("a server that follows")
        << kServer + "[follow]\nservers = x\n"
        << QByteArray("f: [follow] servers is for a desk, and role says server");
    QTest::newRow("a desk that shares")
        << desk() + "[share]\nconfigurations = x\n"
        << QByteArray("f: [share] configurations is for a server, and role says desk");
    QTest::newRow("a desk that follows nobody") << desk().replace("[follow]\nservers = lon-*, rec-0?\n", "")
                                                << QByteArray("f: [follow] servers is missing");
    QTest::newRow("a long line") << kServer + '#' + QByteArray(200, 'x') + '\n'
                                 << QByteArray("f:10: no line of a text, or longer than 190 bytes");
    QTest::newRow("a zero") << QByteArray("[fleet]\nrole = ser\0ver\n", 22)
                            << QByteArray("f:2: no line of a text, or longer than 190 bytes");
    QTest::newRow("two bad lines, the first is told")
        << with("site = london", "rubbish").replace("/c/ca.crt", "ca")
        << QByteArray("f:3: neither [section], nor key = value, nor # remark");
    QTest::newRow("two bad lines the other way")
        << with("role = server", "role = x").replace("ca = /c/ca.crt", "rubbish")
        << QByteArray("f:2: role: server or desk");
}

void TestFleetConfig::aBadFileIsToldWithItsLine()
{
    QFETCH(QByteArray, text);
    QFETCH(QByteArray, told);
    const auto config = fleet::parseConfig(text, "f");
    QVERIFY(!config);
    QCOMPARE(config.failure().text, told);
    QCOMPARE(config.failure().kind, ops::Failure::Input);
}

void TestFleetConfig::aFileThatIsNotThereIsTold()
{
    const auto config = fleet::readConfig("/nowhere/corvel-fleet.conf");
    QVERIFY(!config);
    QVERIFY(config.failure().text.contains("/nowhere/corvel-fleet.conf"));
}

QTEST_GUILESS_MAIN(TestFleetConfig)
#include "test_fleet_config.moc"
