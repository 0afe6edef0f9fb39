// SPDX-License-Identifier: MIT
// What is wrong, foreign, too large or from the future is refused in one line, and local work goes on.
// Members that let ten megabytes in, as nobody should set them up.
#include "fleet/machine.h"

#include "fleet/etcd/etcdcluster.h"

#include <QFile>

namespace {

const char kPlace[] = "0/video";
const char kWord[] = "tx.dst";
constexpr int kMegabyte = 1 << 20;
const std::string kServers = "/corvel/v1/london/servers/";

std::string content(const QString &name)
{
    QFile file(name);
    return file.open(QIODevice::ReadOnly) ? file.readAll().toStdString() : std::string();
}

QByteArray documentOf(int format, const QByteArray &value)
{
    return "{\"format\":" + QByteArray::number(format) +
           ",\"path\":\"KWX\\\\Internal5\\\\IpConfig\",\"by\":{\"who\":\"x\",\"user\":\"\",\"program\":\"\","
           "\"pid\":1},"
           "\"at\":\"2026-11-21T20:22:20.761Z\",\"values\":{\"A\":{\"type\":\"string\",\"value\":\"" +
           value + "\"}}}";
}

} // namespace

class TestFleetSecurity : public QObject {
    Q_OBJECT

private slots:
    void initTestCase();
    void wrongCertificatesAreToldOnce_data();
    void wrongCertificatesAreToldOnce();
    void somebodyElsesNameIsRefused();
    void aDeskThatMayOnlyReadKeepsItsEdit();
    void foreignDocumentsAreRefusedOnce_data();
    void foreignDocumentsAreRefusedOnce();
    void foreignSignsAreNotShown_data();
    void foreignSignsAreNotShown();
    void theCommandsNeverWriteOverANewerVersion();
    void whatIsTooLargeToShareStaysHere();

private:
    // As the cluster's root, without etcdctl's own limits.
    void put(const std::string &key, const QByteArray &value);
    bool makeOldCertificate() const;
    void remove(const std::string &key);
    bool worksOn(const Machine &machine, const QByteArray &value) const
    {
        return machine.set({}, kPlace, ("tx.dst=" + value).constData()) &&
               machine.get({}, kPlace, kWord) == value;
    }
    bool agree(const QByteArray &value) const
    {
        return eventually([&] { return m_desk->get("lon-1", kPlace, kWord) == value; });
    }

    Plant m_plant;
    std::unique_ptr<Machine> m_server, m_desk;
    std::unique_ptr<fleet::EtcdCluster> m_root;
    int m_edits = 0;
};

void TestFleetSecurity::initTestCase()
{
    QVERIFY2(m_plant.start({QStringLiteral("--max-request-bytes=16777216")}) && m_plant.addServer("lon-1") &&
                 m_plant.addServer("lon-2") && m_plant.addDesk("desk-1", {QStringLiteral("lon-1")}),
             m_plant.error().constData());
    const QString other = m_plant.file(QStringLiteral("other"));
    QCOMPARE(m_plant.setup({QStringLiteral("ca"), other}).code, 0);
    QCOMPARE(m_plant.setup({QStringLiteral("server"), other, QStringLiteral("lon-2")}).code, 0);
    QVERIFY(makeOldCertificate());
    fleet::EtcdOptions options;
    for (int node = 0; node < Plant::kNodes; ++node)
        options.endpoints.push_back(m_plant.endpoint(node).toStdString());
    options.tls = {content(m_plant.file(QStringLiteral("ca.crt"))),
                   content(m_plant.file(QStringLiteral("root.crt"))),
                   content(m_plant.file(QStringLiteral("root.key")))};
    options.callMs = 30000;
    m_root = fleet::etcdCluster(options);
    m_server = std::make_unique<Machine>(m_plant, "server", "lon-1");
    m_desk = std::make_unique<Machine>(m_plant, "desk", "desk-1", "[follow]\nservers = lon-*\n");
    QVERIFY(m_server->set({}, kPlace, "tx.dst=239.1.1.1"));
    m_server->start();
    m_desk->start();
    QVERIFY(agree("239.1.1.1"));
}

// Of this plant's authority, with its name right, until a day that is over.
bool TestFleetSecurity::makeOldCertificate() const
{
    const QString script = QStringLiteral(
        "mkdir \"$1/old\" && cd \"$1/old\" && cp ../lon-2.key . && : >index && echo 77 >serial &&"
        "printf '[ca]\\ndefault_ca=a\\n[a]\\ndatabase=index\\nserial=serial\\nnew_certs_dir=.\\n"
        "default_md=sha256\\npolicy=p\\n[p]\\ncommonName=supplied\\n' >ca.conf &&"
        "openssl req -new -key lon-2.key -subj /CN=lon-2 -out request &&"
        "openssl ca -batch -notext -config ca.conf -cert ../ca.crt -keyfile ../ca.key -in request"
        " -startdate 20200101000000Z -enddate 20200102000000Z -out lon-2.crt");
    const ProgramResult result = runProgram(
        QStringLiteral("sh"), {QStringLiteral("-c"), script, QStringLiteral("sh"), m_plant.folder()});
    if (result.code != 0)
        qWarning("%s", result.err.constData());
    return result.code == 0;
}

void TestFleetSecurity::put(const std::string &key, const QByteArray &value)
{
    fleet::Put put;
    put.key = key;
    put.value = value.toStdString();
    QCOMPARE(m_root->commit({put}, nullptr), fleet::Outcome::Done);
}

void TestFleetSecurity::remove(const std::string &key)
{
    fleet::Put put;
    put.key = key;
    put.remove = true;
    QCOMPARE(m_root->commit({put}, nullptr), fleet::Outcome::Done);
}

void TestFleetSecurity::wrongCertificatesAreToldOnce_data()
{
    QTest::addColumn<QByteArray>("from");
    QTest::addColumn<QByteArray>("to");
    QTest::newRow("of another plant") << QByteArray("/lon-2.") << QByteArray("/other/lon-2.");
    QTest::newRow("members of another plant") << QByteArray("/ca.crt") << QByteArray("/other/ca.crt");
    QTest::newRow("run out") << QByteArray("/lon-2.") << QByteArray("/old/lon-2.");
}

void TestFleetSecurity::wrongCertificatesAreToldOnce()
{
    QFETCH(QByteArray, from);
    QFETCH(QByteArray, to);
    Machine machine(m_plant, "server", "lon-2");
    machine.writeConfig(machine.config().replace(from, to));
    machine.start();
    QVERIFY(eventually([&] { return machine.said().contains("the cluster is away"); }));
    QVERIFY(worksOn(machine, "239.1.2.1"));
    QVERIFY(machine.status().contains("\"connected\":false"));
    QVERIFY2(machine.said().count("the cluster is away") == 1, machine.said().constData());
    QCOMPARE(machine.stop(), 0);
}

void TestFleetSecurity::somebodyElsesNameIsRefused()
{
    Machine machine(m_plant, "server", "lon-2");
    machine.writeConfig(machine.config().replace("name = lon-2", "name = lon-1"));
    machine.start();
    QVERIFY2(eventually([&] { return machine.status().contains("permission denied"); }),
             machine.said().constData());
    QVERIFY(worksOn(machine, "239.1.2.2"));
    QCOMPARE(machine.said().count("permission denied"), 1);
    QCOMPARE(machine.stop(), 0);
    QCOMPARE(m_server->get({}, kPlace, kWord), QByteArray("239.1.1.1"));
}

void TestFleetSecurity::aDeskThatMayOnlyReadKeepsItsEdit()
{
    Machine server(m_plant, "server", "lon-2");
    QVERIFY(server.set({}, kPlace, "tx.dst=239.1.3.1"));
    server.start();
    QVERIFY(eventually([&] { return m_desk->get("lon-2", kPlace, kWord) == "239.1.3.1"; }));
    QVERIFY(m_desk->set("lon-2", kPlace, "tx.dst=239.1.3.2"));
    QVERIFY(eventually([&] { return m_desk->said().contains("lon-2: the cluster does not take it"); }));
    QVERIFY(m_desk->set("lon-1", kPlace, "tx.dst=239.1.3.3")); // the others go on
    QVERIFY(eventually([&] { return m_server->get({}, kPlace, kWord) == "239.1.3.3"; }));
    QCOMPARE(server.get({}, kPlace, kWord), QByteArray("239.1.3.1"));
    QCOMPARE(m_desk->get("lon-2", kPlace, kWord), QByteArray("239.1.3.2"));
    QCOMPARE(m_desk->said().count("does not take it"), 1);
    QCOMPARE(server.stop(), 0);
}

void TestFleetSecurity::foreignDocumentsAreRefusedOnce_data()
{
    QTest::addColumn<QByteArray>("value");
    QTest::addColumn<QByteArray>("told");
    QTest::newRow("ten megabytes of nothing")
        << QByteArray(10 * kMegabyte, '\0') << QByteArray("longer than 65536");
    QTest::newRow("a document of ten megabytes")
        << documentOf(1, QByteArray(10 * kMegabyte, 'x')) << QByteArray("longer than 65536");
    QTest::newRow("one byte too much") << documentOf(1, QByteArray(65537 - documentOf(1, {}).size(), 'x'))
                                       << QByteArray("longer than 65536");
    QTest::newRow("a newer version") << documentOf(2, "x")
                                     << QByteArray("written by a newer version (format 2)");
    QTest::newRow("nested deeply") << "{\"format\":1,\"x\":" + QByteArray(10000, '[') +
                                          QByteArray(10000, ']') + '}'
                                   << QByteArray("nested deeper");
    QTest::newRow("a control character")
        << documentOf(1, "x").replace("\"A\"", "\"\\u0007\"") << QByteArray("refused");
}

void TestFleetSecurity::foreignDocumentsAreRefusedOnce()
{
    QFETCH(QByteArray, value);
    QFETCH(QByteArray, told);
    const std::string key = kServers + "lon-1/default/kwx/internal5/ipconfig";
    const int server = m_server->said().count("is refused"), desk = m_desk->said().count("is refused");
    put(key, value);
    QVERIFY2(eventually([&] {
                 return m_server->said().count("is refused") > server &&
                        m_desk->said().count("is refused") > desk;
             }),
             (m_server->said() + m_desk->said()).constData());
    QVERIFY2(m_server->said().contains(told), m_server->said().constData());
    const QByteArray next = "239.1.4." + QByteArray::number(++m_edits);
    QVERIFY(worksOn(*m_server, next));
    QVERIFY(agree(next));
    QVERIFY(m_desk->fleet({QStringLiteral("status")}).err.contains("not taken"));
    // Ten megabytes may take longer than a call has, which is another line.
    QCOMPARE(m_server->said().count("is refused"), server + 1);
    QCOMPARE(m_desk->said().count("is refused"), desk + 1);
    QCOMPARE(m_server->get({}, "5", "clock"),
             m_server->get({}, "6", "clock")); // nothing of it is in the store
    remove(key);
}

void TestFleetSecurity::foreignSignsAreNotShown_data()
{
    QTest::addColumn<QByteArray>("value");
    QTest::newRow("large") << QByteArray(2 * kMegabyte, 'x');
    QTest::newRow("newer") << QByteArray("{\"format\":99,\"version\":\"9\"}");
    QTest::newRow("for the terminal") << QByteArray("{\"format\":1,\"version\":\"\\u001b[2J\"}");
    QTest::newRow("plainly for the terminal") << QByteArray("\033[2J");
}

void TestFleetSecurity::foreignSignsAreNotShown()
{
    QFETCH(QByteArray, value);
    const char *const keys[] = {"servers/lon-9/alive", "servers/lon-9/default",
                                "conflicts/lon-9/default/kwx/x/1", "servers/lon-9/%/kwx",
                                "servers/lon-9/default/kwx/config"};
    for (const char *key : keys)
        put(std::string("/corvel/v1/london/") + key, value);
    const ProgramResult status = m_desk->fleet({QStringLiteral("status")});
    QCOMPARE(status.code, 0);
    QVERIFY2(status.out.size() < 2000 && !status.out.contains('\033'), status.out.left(2000).constData());
    QVERIFY(status.out.contains("lon-1"));
    QVERIFY(m_desk->fleet({QStringLiteral("check")}).code <= 1);
    for (const char *key : keys)
        remove(std::string("/corvel/v1/london/") + key);
}

void TestFleetSecurity::theCommandsNeverWriteOverANewerVersion()
{
    const std::string key = kServers + "lon-1/default/kwx/internal5/ipconfig";
    put(key, documentOf(2, "x"));
    const ProgramResult result =
        m_desk->fleet({QStringLiteral("--yes"), QStringLiteral("set"), QStringLiteral("5/video"),
                       QStringLiteral("tx.dst=239.1.5.5"), QStringLiteral("--force"),
                       QStringLiteral("--where"), QStringLiteral("lon-1")});
    QCOMPARE(result.code, 3);
    QVERIFY2(result.err.contains("is not written over: written by a newer version (format 2)"),
             result.err.constData());
    remove(key);
}

void TestFleetSecurity::whatIsTooLargeToShareStaysHere()
{
    const QByteArray large = "A=" + QByteArray(70000, 'x');
    QCOMPARE(m_server
                 ->ctl({}, {QStringLiteral("set"), QStringLiteral("7"), QString::fromLatin1(large),
                            QStringLiteral("--force")})
                 .code,
             0);
    QVERIFY(eventually([&] { return m_server->said().contains("is not shared"); }));
    QVERIFY(worksOn(*m_server, "239.1.6.1"));
    QVERIFY(agree("239.1.6.1"));
    QCOMPARE(m_server->said().count("is not shared"), 1);
    QVERIFY(m_server->status().contains("\"refused\":1"));
}

QTEST_GUILESS_MAIN(TestFleetSecurity)
#include "test_fleet_security.moc"
