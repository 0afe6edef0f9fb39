// SPDX-License-Identifier: MIT
#include "rkos.h"
#include "routes.h"

#include <QNetworkInterface>
#include <QtTest>

#include <sstream>

class TestRkosInterfaces : public QObject {
    Q_OBJECT

private slots:
    void whatIsNoLocalAddress_data()
    {
        QTest::addColumn<QByteArray>("address");
        for (const char *address :
             {"", "0.0.0.0", "255.255.255.255", "192.0.2.77", "127.0.0.1 ", " 127.0.0.1", "127.0.0", "127.1",
              "127.0.0.1.1", "127.0.0.256", "127.0.0.01x", "0x7f.0.0.1", "127.0.0.1/8", "::1",
              "::ffff:127.0.0.1", "localhost", "lo", "%s%n", "\xff"})
            QTest::newRow(address) << QByteArray(address);
        QTest::newRow("long") << QByteArray(100000, '1');
    }
    void whatIsNoLocalAddress()
    {
        QFETCH(QByteArray, address);
        QCOMPARE(rkOSIPExists(address.constData()), 0);
    }

    void nullIsNoAddress() { QCOMPARE(rkOSIPExists(nullptr), 0); }

    void everyAddressOfTheMachineIsFound()
    {
        int seen = 0;
        for (const QHostAddress &address : QNetworkInterface::allAddresses()) {
            if (address.protocol() != QAbstractSocket::IPv4Protocol)
                continue;
            ++seen;
            QVERIFY2(rkOSIPExists(address.toString().toLatin1().constData()) != 0,
                     address.toString().toLatin1().constData());
        }
        QVERIFY(seen > 0);
        QVERIFY(rkOSIPExists("127.0.0.1") != 0);
    }

    void defaultRoute_data()
    {
        QTest::addColumn<QString>("table");
        QTest::addColumn<QString>("expected");
        const auto row = [](const char *name, const char *lines, const char *expected) {
            const QString head = QStringLiteral(
                "Iface\tDestination\tGateway \tFlags\tRefCnt\tUse\tMetric\tMask\t\tMTU\tWindow\tIRTT\n");
            QTest::newRow(name) << head + QString::fromLatin1(lines) << QString::fromLatin1(expected);
        };
        row("none", "", "");
        row("one", "eth0\t00000000\t010200C0\t0003\t0\t0\t100\t00000000\t0\t0\t0\n", "eth0");
        row("lowest metric",
            "wifi0\t00000000\t010200C0\t0003\t0\t0\t600\t00000000\t0\t0\t0\n"
            "eth1\t00000000\t010200C0\t0003\t0\t0\t100\t00000000\t0\t0\t0\n",
            "eth1");
        row("first of equals",
            "a\t00000000\t010200C0\t0003\t0\t0\t0\t00000000\t0\t0\t0\n"
            "b\t00000000\t010200C0\t0003\t0\t0\t0\t00000000\t0\t0\t0\n",
            "a");
        row("a network is no default", "eth0\t000200C0\t00000000\t0001\t0\t0\t0\t00FFFFFF\t0\t0\t0\n", "");
        row("half of the world is no default", "tun0\t00000000\t00000000\t0001\t0\t0\t0\t00000080\t0\t0\t0\n",
            "");
        row("down", "eth0\t00000000\t010200C0\t0002\t0\t0\t0\t00000000\t0\t0\t0\n", "");
        row("reject", "lo\t00000000\t00000000\t0201\t0\t0\t0\t00000000\t0\t0\t0\n", "");
        row("short line", "eth0\t00000000\t0102\n", "");
        row("noise", "\x01\x02\xff 0 0 0\n\n\n", "");
    }
    void defaultRoute()
    {
        QFETCH(QString, table);
        QFETCH(QString, expected);
        std::istringstream stream(table.toStdString());
        QCOMPARE(QString::fromStdString(rkos::defaultRouteInterface(stream)), expected);
    }
};

QTEST_GUILESS_MAIN(TestRkosInterfaces)
#include "test_rkos_interfaces.moc"
