// SPDX-License-Identifier: MIT
#include "ops/ipv4.h"
#include "ops/netpicture.h"

#include <QtTest>

using namespace ops;

namespace {

// As the kernel writes it on a machine of little endian.
const char table[] = "Iface\tDestination\tGateway \tFlags\tRefCnt\tUse\tMetric\tMask\t\tMTU\tWindow\tIRTT\n"
                     "eth0\t0000A8C0\t00000000\t0001\t0\t0\t0\t0000FFFF\t0\t0\t0\n"
                     "eth1\t000000EF\t00000000\t0001\t0\t0\t0\t000000FF\t0\t0\t0\n"
                     "*\t0000630A\t00000000\t0200\t0\t0\t0\t0000FFFF\t0\t0\t0\n"
                     "eth2\t00000A0A\t00000000\t0000\t0\t0\t0\t0000FFFF\t0\t0\t0\n";

bool routed(const std::vector<NetRoute> &routes, const char *address)
{
    NetPicture picture;
    picture.routes = routes;
    return picture.hasRoute(*parseIpv4(address));
}

} // namespace

class TestNetPicture : public QObject {
    Q_OBJECT

private slots:
    void routesThatLeadSomewhere();
    void aDefaultRouteLeadsEverywhere();
    void brokenTables_data();
    void brokenTables();
    void interfacesAreFoundByAnyOfTheirAddresses();
    void theMachineHasALoopback();
};

void TestNetPicture::routesThatLeadSomewhere()
{
    const std::vector<NetRoute> routes = parseRoutes(table);
    QCOMPARE(int(routes.size()), 2);
    QVERIFY(routed(routes, "192.168.0.1") && routed(routes, "192.168.255.255"));
    QVERIFY(!routed(routes, "192.169.0.1"));
    QVERIFY(routed(routes, "239.1.2.3") && !routed(routes, "238.1.2.3"));
    QVERIFY(!routed(routes, "10.99.0.1")); // rejected
    QVERIFY(!routed(routes, "10.10.0.1")); // not up
}

void TestNetPicture::aDefaultRouteLeadsEverywhere()
{
    const QByteArray text = "head\neth0\t00000000\t0100A8C0\t0003\t0\t0\t0\t00000000\t0\t0\t0\n";
    QVERIFY(routed(parseRoutes(text), "239.1.2.3"));
    QVERIFY(!routed({}, "239.1.2.3"));
}

void TestNetPicture::brokenTables_data()
{
    QTest::addColumn<QByteArray>("text");
    QTest::newRow("empty") << QByteArray();
    QTest::newRow("head only") << QByteArray("Iface\tDestination\n");
    QTest::newRow("short line") << QByteArray("head\neth0\t00000000\n");
    QTest::newRow("no numbers") << QByteArray("head\na b c d e f g h\n");
    QTest::newRow("cut off") << QByteArray(table).left(QByteArray(table).indexOf("0000FFFF"));
}

void TestNetPicture::brokenTables()
{
    QFETCH(QByteArray, text);
    QCOMPARE(int(parseRoutes(text).size()), 0);
}

void TestNetPicture::interfacesAreFoundByAnyOfTheirAddresses()
{
    NetPicture picture;
    picture.interfaces.resize(2);
    picture.interfaces[1].name = "eth1";
    picture.interfaces[1].addresses = {*parseIpv4("10.0.0.1"), *parseIpv4("10.0.0.2")};
    QCOMPARE(picture.withAddress(*parseIpv4("10.0.0.2"))->name, QByteArray("eth1"));
    QVERIFY(!picture.withAddress(*parseIpv4("10.0.0.3")));
}

void TestNetPicture::theMachineHasALoopback()
{
    const NetPicture picture = machinePicture();
    const auto loopback = [](const NetInterface &interface) { return interface.loopback; };
    QVERIFY(std::any_of(picture.interfaces.begin(), picture.interfaces.end(), loopback));
}

QTEST_GUILESS_MAIN(TestNetPicture)
#include "test_netpicture.moc"
