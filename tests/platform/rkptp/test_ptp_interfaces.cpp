// SPDX-License-Identifier: MIT
// From the text in an address field to the interfaces a client listens on; in a network of this test's own.
#include "interfaces.h"
#include "ptpnet.h"

#include <QtTest>

#include <net/if.h>

using namespace rkptp;

namespace {

void ip(const QByteArray &arguments)
{
    runCommand(QStringLiteral("ip"), QString::fromLatin1(arguments).split(QLatin1Char(' ')));
}

QStringList namesOf(const std::vector<Interface> &interfaces)
{
    QStringList names;
    for (const Interface &one : interfaces)
        names << QString::fromStdString(one.name);
    return names;
}

} // namespace

class TestPtpInterfaces : public QObject {
    Q_OBJECT
private slots:
    void initTestCase();
    void addressAsText_data();
    void addressAsText();
    void whatIsNoAddress_data();
    void whatIsNoAddress();
    void theOneThatHasTheAddress();
    void allThatCanHearAMaster();
    void noMoreThanOnePtp4lTakes();
};

// Three cables, of which one is down, one has no address and one has two.
void TestPtpInterfaces::initTestCase()
{
    ip("link add two type veth peer name twofar");
    ip("link add one type veth peer name onefar");
    ip("link add dark type veth peer name darkfar");
    ip("link add bare type veth peer name barefar");
    for (const char *up : {"link set one up", "link set onefar up", "link set two up", "link set twofar up",
                           "link set bare up", "link set barefar up"})
        ip(up);
    ip("addr add 10.1.0.1/24 dev one");
    ip("addr add 10.2.0.1/24 dev two");
    ip("addr add 10.2.0.9/24 dev two label two:second");
    ip("addr add 10.3.0.1/24 dev dark");
}

void TestPtpInterfaces::addressAsText_data()
{
    QTest::addColumn<QByteArray>("text");
    QTest::addColumn<quint32>("expected");
    QTest::addColumn<QByteArray>("again");
    QTest::newRow("usual") << QByteArray("10.9.0.1") << 0x0a090001U << QByteArray("10.9.0.1");
    QTest::newRow("lowest") << QByteArray("0.0.0.0") << 0U << QByteArray("0.0.0.0");
    QTest::newRow("highest") << QByteArray("255.255.255.255") << 0xffffffffU << QByteArray("255.255.255.255");
    QTest::newRow("leading zeros are decimal")
        << QByteArray("010.009.000.001") << 0x0a090001U << QByteArray("10.9.0.1");
    QTest::newRow("empty") << QByteArray("") << 0U << QByteArray("0.0.0.0");
}

void TestPtpInterfaces::addressAsText()
{
    QFETCH(QByteArray, text);
    QFETCH(quint32, expected);
    const std::optional<uint32_t> address = parseAddress(text.constData());
    QVERIFY(address.has_value());
    QCOMPARE(*address, expected);
    QTEST(QByteArray::fromStdString(formatAddress(*address)), "again");
}

void TestPtpInterfaces::whatIsNoAddress_data()
{
    QTest::addColumn<QByteArray>("text");
    for (const char *text : {" ",
                             "10",
                             "10.9.0",
                             "10.9.0.",
                             "10.9.0.1.",
                             "10.9.0.1 ",
                             " 10.9.0.1",
                             "10.9.0.256",
                             "10.9.0.0001",
                             "10..0.1",
                             ".9.0.1",
                             "10,9,0,1",
                             "10.9.0.x",
                             "-1.9.0.1",
                             "+1.9.0.1",
                             "10.9.0.1/24",
                             "4294967296.0.0.0",
                             "99999999999999999999.0.0.0",
                             "0x0a.9.0.1",
                             "eth0"})
        QTest::newRow(text) << QByteArray(text);
}

void TestPtpInterfaces::whatIsNoAddress()
{
    QFETCH(QByteArray, text);
    QVERIFY(!parseAddress(text.constData()).has_value());
}

void TestPtpInterfaces::theOneThatHasTheAddress()
{
    QVERIFY(parseAddress(nullptr) == std::optional<uint32_t>(0));
    const std::vector<Interface> one = findInterfaces(*parseAddress("10.1.0.1"));
    QCOMPARE(namesOf(one), QStringList{QStringLiteral("one")});
    QCOMPARE(one[0].address, std::string("10.1.0.1"));
    QCOMPARE(one[0].index, if_nametoindex("one"));
    // A second address goes by a label; the interface is the same.
    const std::vector<Interface> second = findInterfaces(*parseAddress("10.2.0.9"));
    QCOMPARE(namesOf(second), QStringList{QStringLiteral("two")});
    QCOMPARE(second[0].address, std::string("10.2.0.9"));
    QCOMPARE(second[0].index, if_nametoindex("two"));
    // Asked for by its address, the loopback will do.
    QCOMPARE(namesOf(findInterfaces(*parseAddress("127.0.0.1"))), QStringList{QStringLiteral("lo")});
    QVERIFY(findInterfaces(*parseAddress("10.1.0.2")).empty());
    QVERIFY(findInterfaces(*parseAddress("10.2.0.0")).empty());
}

// In the order of their numbers, each once, with its first address.
void TestPtpInterfaces::allThatCanHearAMaster()
{
    const std::vector<Interface> all = findInterfaces(0);
    QCOMPARE(namesOf(all), (QStringList{QStringLiteral("two"), QStringLiteral("one")}));
    QVERIFY(all[0].index < all[1].index);
    QCOMPARE(all[0].address, std::string("10.2.0.1"));
    ip("link set dark up");
    QCOMPARE(namesOf(findInterfaces(0)).size(), 3);
    ip("link set dark down");
    QCOMPARE(findInterfaces(0), all);
}

void TestPtpInterfaces::noMoreThanOnePtp4lTakes()
{
    for (int i = 0; i < 8; ++i) {
        const QByteArray name = "more" + QByteArray::number(i);
        ip("link add " + name + " type veth peer name far" + name);
        ip("link set " + name + " up");
        ip("addr add 10.4." + QByteArray::number(i) + ".1/24 dev " + name);
    }
    const QStringList names = namesOf(findInterfaces(0));
    QCOMPARE(names.size(), int(kMaxInterfaces));
    QCOMPARE(names.first(), QStringLiteral("two"));
    QCOMPARE(names.last(), QStringLiteral("more5"));
    // The ones that are left out are found by their address all the same.
    QCOMPARE(namesOf(findInterfaces(*parseAddress("10.4.7.1"))), QStringList{QStringLiteral("more7")});
}

QTEST_GUILESS_MAIN(TestPtpInterfaces)
#include "test_ptp_interfaces.moc"
