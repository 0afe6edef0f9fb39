// SPDX-License-Identifier: MIT
#include "ops/ipv4.h"

#include <QtTest>

#include <random>

class TestIpv4 : public QObject {
    Q_OBJECT

private slots:
    void isRead_data();
    void isRead();
    void wrongOnesAreNone_data();
    void wrongOnesAreNone();
    void everyOctetComesBack();
    void anyAddressComesBack();
    void blocksEndWhereTheRegistrySays_data();
    void blocksEndWhereTheRegistrySays();
    void thirtyTwoGroupsShareAnEthernetAddress();
};

void TestIpv4::isRead_data()
{
    QTest::addColumn<QByteArray>("text");
    QTest::addColumn<quint32>("address");
    const auto row = [](const char *text, quint32 address) {
        QTest::newRow(text) << QByteArray(text) << address;
    };
    row("0.0.0.0", 0);
    row("0.0.0.1", 1);
    row("1.0.0.0", 0x01000000);
    row("10.1.2.3", 0x0a010203);
    row("127.0.0.1", 0x7f000001);
    row("192.168.100.200", 0xc0a864c8);
    row("239.20.2.1", 0xef140201);
    row("255.255.255.255", 0xffffffff);
}

void TestIpv4::isRead()
{
    QFETCH(QByteArray, text);
    QFETCH(quint32, address);
    QVERIFY(ops::parseIpv4(text));
    QCOMPARE(*ops::parseIpv4(text), address);
    QCOMPARE(ops::ipv4Text(address), text);
}

void TestIpv4::wrongOnesAreNone_data()
{
    QTest::addColumn<QByteArray>("text");
    for (const char *text :
         {"",          " ",          ".",          "...",      "1",         "1.2",
          "1.2.3",     "1.2.3.",     ".1.2.3",     "1..2.3",   "1.2.3.4.",  "1.2.3.4.5",
          "256.1.1.1", "1.1.1.256",  "1.1.1.1000", "01.1.1.1", "1.1.1.01",  "001.1.1.1",
          "1.1.1.1 ",  " 1.1.1.1",   "1. 1.1.1",   "-1.1.1.1", "+1.1.1.1",  "1.1.1.1\n",
          "0x1.1.1.1", "1.1.1.a",    "a.b.c.d",    "1,1,1,1",  "::1",       "::ffff:1.2.3.4",
          "localhost", "1.1.1.1/24", "1.1.1.1:80", "16909060", "0xef140201"})
        QTest::newRow(*text ? text : "empty") << QByteArray(text);
    QTest::newRow("a zero byte behind") << QByteArray("1.2.3.4\0", 8);
    QTest::newRow("a zero byte inside") << QByteArray("1.2\0.3.4", 8);
    QTest::newRow("digits of another script") << QByteArray("\xd9\xa1.1.1.1");
    QTest::newRow("huge") << QByteArray(1000000, '1');
}

void TestIpv4::wrongOnesAreNone()
{
    QFETCH(QByteArray, text);
    QVERIFY(!ops::parseIpv4(text));
}

void TestIpv4::everyOctetComesBack()
{
    for (quint32 octet = 0; octet < 256; ++octet) {
        for (int shift = 0; shift < 32; shift += 8) {
            const quint32 address = octet << shift;
            QCOMPARE(ops::parseIpv4(ops::ipv4Text(address)), std::optional<quint32>(address));
        }
    }
}

// Beside the plainest writing that there is.
void TestIpv4::anyAddressComesBack()
{
    std::mt19937 random(1);
    for (int count = 0; count < 5000; ++count) {
        const auto address = static_cast<quint32>(random());
        const QByteArray text =
            QByteArray::number(address >> 24) + '.' + QByteArray::number(address >> 16 & 255) + '.' +
            QByteArray::number(address >> 8 & 255) + '.' + QByteArray::number(address & 255);
        QCOMPARE(ops::ipv4Text(address), text);
        QCOMPARE(ops::parseIpv4(text), std::optional<quint32>(address));
        QCOMPARE(ops::isMulticast(address), text >= "224" && text < "240" && text.indexOf('.') == 3);
    }
}

void TestIpv4::blocksEndWhereTheRegistrySays_data()
{
    QTest::addColumn<QByteArray>("address");
    QTest::addColumn<QByteArray>("kinds"); // m multicast, c control, s source specific, h a host's
    const auto row = [](const char *address, const char *kinds) {
        QTest::newRow(address) << QByteArray(address) << QByteArray(kinds);
    };
    row("0.0.0.0", "");
    row("0.255.255.255", "");
    row("1.0.0.0", "h");
    row("127.0.0.1", "h");
    row("223.255.255.255", "h");
    row("224.0.0.0", "mc");
    row("224.0.0.255", "mc");
    row("224.0.1.0", "mc");
    row("224.0.1.129", "mc");
    row("224.0.1.255", "mc");
    row("224.0.2.0", "m");
    row("224.1.0.0", "m");
    row("225.0.0.1", "m");
    row("231.255.255.255", "m");
    row("232.0.0.0", "ms");
    row("232.255.255.255", "ms");
    row("233.0.0.0", "m");
    row("239.255.255.255", "m");
    row("240.0.0.0", "");
    row("255.255.255.255", "");
}

void TestIpv4::blocksEndWhereTheRegistrySays()
{
    QFETCH(QByteArray, address);
    QFETCH(QByteArray, kinds);
    const quint32 bits = *ops::parseIpv4(address);
    QByteArray found;
    found += ops::isMulticast(bits) ? "m" : "";
    found += ops::isControlBlock(bits) ? "c" : "";
    found += ops::isSourceSpecific(bits) ? "s" : "";
    found += ops::isUsableSource(bits) ? "h" : "";
    QCOMPARE(found, kinds);
}

void TestIpv4::thirtyTwoGroupsShareAnEthernetAddress()
{
    const quint32 group = *ops::parseIpv4("239.20.2.1");
    int shared = 0;
    for (quint32 high = 0; high < 512; ++high) { // 32 - 23 bits
        const quint32 other = high << 23 | (group & 0x7fffff);
        if (ops::isMulticast(other))
            shared += ops::ethernetBits(other) == ops::ethernetBits(group);
    }
    QCOMPARE(shared, 32);
    QVERIFY(ops::ethernetBits(*ops::parseIpv4("239.20.2.1")) ==
            ops::ethernetBits(*ops::parseIpv4("239.148.2.1")));
    QVERIFY(ops::ethernetBits(*ops::parseIpv4("239.20.2.1")) !=
            ops::ethernetBits(*ops::parseIpv4("239.20.2.2")));
    QVERIFY(ops::ethernetBits(*ops::parseIpv4("239.20.2.1")) !=
            ops::ethernetBits(*ops::parseIpv4("239.84.2.1")));
}

QTEST_APPLESS_MAIN(TestIpv4)
#include "test_ops_ipv4.moc"
