// SPDX-License-Identifier: MIT
//
// One value of a channel, read and written: what is absent, what is no number, what is too long.
#include "channel/channelstore.h"
#include "support/store.h"

#include <memory>

using namespace StoreTest;

class TestChannelStore : public QObject {
    Q_OBJECT

private slots:
    // Rows of one case write what they read and share a store; making one waits for the disk.
    void init()
    {
        if (!m_store || !QTest::currentDataTag())
            m_store = std::make_unique<FreshStore>();
    }
    void cleanupTestCase() { m_store.reset(); }
    void absentReadsAsNothing();
    void keyPath_data();
    void keyPath();
    void channelsDoNotMix();
    void numberParsing_data();
    void numberParsing();
    void textIsStoredWithItsZero();
    void emptyText();
    void longTextIsCut_data();
    void longTextIsCut();
    void textEndsAtTheFirstZero();
    void onlyAsciiRoundTrips();
    void wrongKindIsAbsent();
    void noChannel();
    void portFilterDoesNothing();
    void isTextEmpty_data();
    void isTextEmpty();
    void channelCount_data();
    void channelCount();
    void channelCountAbsent();
    void globalNumbers();
    void bothSpellingsAreOneKey();

private:
    std::unique_ptr<FreshStore> m_store;
};

void TestChannelStore::absentReadsAsNothing()
{
    QCOMPARE(cfgValue("ReceiveSourceIp", true, 0), QString());
    QCOMPARE(cfgValue("ReceiveSourcePort", false, 0), QStringLiteral("0"));
    QCOMPARE(cfgValue("ReceiveSourcePort", false, 0, true), QStringLiteral("0"));
    QVERIFY(!hasNumber("KWX\\Internal0\\IpConfig", "ReceiveSourcePort")); // reading creates nothing
}

void TestChannelStore::keyPath_data()
{
    QTest::addColumn<int>("channel");
    QTest::addColumn<QString>("path");
    QTest::newRow("0") << 0 << QStringLiteral("KWX\\Internal0\\IpConfig");
    QTest::newRow("9") << 9 << QStringLiteral("KWX\\Internal9\\IpConfig");
    QTest::newRow("10") << 10 << QStringLiteral("KWX\\Internal10\\IpConfig");
    QTest::newRow("65535") << 65535 << QStringLiteral("KWX\\Internal65535\\IpConfig");
}

void TestChannelStore::keyPath()
{
    QFETCH(int, channel);
    QFETCH(QString, path);
    QCOMPARE(channelIpKeyName(channel), path);
    setCfgValue("TransmitRemotePort", QStringLiteral("5004"), false, channel);
    QVERIFY(hasNumber(path.toLatin1().constData(), "TransmitRemotePort"));
}

void TestChannelStore::channelsDoNotMix()
{
    put(1, "TransmitIp", QStringLiteral("10.0.0.1"));
    put(10, "TransmitIp", QStringLiteral("10.0.0.10"));
    QCOMPARE(text(1, "TransmitIp"), QStringLiteral("10.0.0.1"));
    QCOMPARE(text(10, "TransmitIp"), QStringLiteral("10.0.0.10"));
    QCOMPARE(text(0, "TransmitIp"), QString());
}

void TestChannelStore::numberParsing_data()
{
    QTest::addColumn<QString>("input");
    QTest::addColumn<QString>("stored");
    const struct {
        const char *input;
        const char *stored;
    } rows[] = {
        {"0", "0"},
        {"5004", "5004"},
        {"007", "7"},
        {"4294967295", "4294967295"},
        {"4294967296", "0"},
        {"4294967297", "1"},
        {"18446744073709551615", "4294967295"},
        {"18446744073709551616", "0"},
        {" 42 ", "42"},
        {"\t42\n", "42"},
        {"", "0"},
        {" ", "0"},
        {"abc", "0"},
        {"12abc", "0"},
        {"0x10", "0"},
        {"1.5", "0"},
        {"1,000", "0"},
        {"-1", "0"},
        {"1e3", "0"},
    };
    for (const auto &row : rows)
        QTest::newRow(row.input) << QString::fromLatin1(row.input) << QString::fromLatin1(row.stored);
}

void TestChannelStore::numberParsing()
{
    QFETCH(QString, input);
    QFETCH(QString, stored);
    put(0, "ReceiveSourcePort", 77u);
    setCfgValue("ReceiveSourcePort", input, false, 0);
    QCOMPARE(cfgValue("ReceiveSourcePort", false, 0), stored);
}

void TestChannelStore::textIsStoredWithItsZero()
{
    put(0, "TransmitIp", QStringLiteral("10.0.0.1"));
    char bytes[32];
    memset(bytes, 'x', sizeof bytes);
    uint32_t size = sizeof bytes;
    QCOMPARE(rkCFGValueString(RKCFG_DEFAULT_STORE, "KWX\\Internal0\\IpConfig", "TransmitIp", bytes, &size, 0),
             0);
    QCOMPARE(size, 9u);
    QCOMPARE(bytes[8], '\0');
    QCOMPARE(bytes[9], 'x');
}

void TestChannelStore::emptyText()
{
    put(0, "TransmitIp", QStringLiteral("10.0.0.1"));
    put(0, "TransmitIp", QString());
    QCOMPARE(text(0, "TransmitIp"), QString());
    QVERIFY(hasText("KWX\\Internal0\\IpConfig", "TransmitIp")); // empty, not absent
}

void TestChannelStore::longTextIsCut_data()
{
    QTest::addColumn<int>("length");
    QTest::addColumn<int>("read");
    QTest::newRow("4094") << 4094 << 4094;
    QTest::newRow("4095") << 4095 << 4095;
    QTest::newRow("4096") << 4096 << 4095;
    QTest::newRow("100000") << 100000 << 4095;
}

// What is too long for the reader is whole in the store all the same.
void TestChannelStore::longTextIsCut()
{
    QFETCH(int, length);
    QFETCH(int, read);
    QString value(length, QLatin1Char('a'));
    for (int i = 0; i < length; i += 7)
        value[i] = QLatin1Char('b');
    put(0, "ClockGrandMaster", value);
    QCOMPARE(text(0, "ClockGrandMaster"), value.left(read));
    uint32_t size = 0;
    QCOMPARE(rkCFGValueString(RKCFG_DEFAULT_STORE, "KWX\\Internal0\\IpConfig", "ClockGrandMaster", nullptr,
                              &size, 0),
             0);
    QCOMPARE(size, uint32_t(length) + 1);
}

void TestChannelStore::textEndsAtTheFirstZero()
{
    char bytes[] = "10.0\0.1";
    uint32_t size = sizeof bytes;
    rkCFGValueString(RKCFG_DEFAULT_STORE, "KWX\\Internal0\\IpConfig", "TransmitIp", bytes, &size, 1);
    QCOMPARE(text(0, "TransmitIp"), QStringLiteral("10.0"));
}

// Written as UTF-8, read byte by byte as Latin-1: see docs/deliberate.md.
void TestChannelStore::onlyAsciiRoundTrips()
{
    put(0, "ClockGrandMaster", QStringLiteral("\u00e9"));
    QCOMPARE(text(0, "ClockGrandMaster"), QStringLiteral("\u00c3\u00a9"));
}

void TestChannelStore::wrongKindIsAbsent()
{
    put(0, "ReceiveSourcePort", QStringLiteral("5004"));
    QCOMPARE(cfgValue("ReceiveSourcePort", false, 0), QStringLiteral("0"));
    put(0, "TransmitIp", 7u);
    QCOMPARE(cfgValue("TransmitIp", true, 0), QString());
}

void TestChannelStore::noChannel()
{
    setCfgValue("TransmitIp", QStringLiteral("10.0.0.1"), true, -1);
    setCfgValue("TransmitRemotePort", QStringLiteral("5004"), false, -1);
    QCOMPARE(cfgValue("TransmitIp", true, -1), QString());
    QCOMPARE(cfgValue("TransmitRemotePort", false, -1), QStringLiteral("0"));
    QCOMPARE(dump(), QByteArray());
}

void TestChannelStore::portFilterDoesNothing()
{
    QCOMPARE(windowsSetUdpPortFilter(5004, true), 0);
    QCOMPARE(windowsSetUdpPortFilter(0, false), 0);
    put(0, "ReceiveSourcePort", 5004u);
    QCOMPARE(cfgValue("ReceiveSourcePort", false, 0, true), QStringLiteral("5004"));
}

void TestChannelStore::isTextEmpty_data()
{
    QTest::addColumn<QString>("value");
    QTest::addColumn<bool>("stored");
    QTest::addColumn<bool>("empty");
    QTest::newRow("absent") << QString() << false << true;
    QTest::newRow("empty") << QString() << true << true;
    QTest::newRow("one character") << QStringLiteral("1") << true << false;
    QTest::newRow("an address") << QStringLiteral("10.0.0.1") << true << false;
}

void TestChannelStore::isTextEmpty()
{
    QFETCH(QString, value);
    QFETCH(bool, stored);
    QFETCH(bool, empty);
    if (stored)
        put(0, "nmosip", value);
    QCOMPARE(::isTextEmpty(channelIpKeyName(0), "nmosip"), empty);
}

void TestChannelStore::channelCount_data()
{
    QTest::addColumn<quint32>("stored");
    QTest::addColumn<int>("offered");
    QTest::newRow("none") << 0u << 0;
    QTest::newRow("one") << 1u << 1;
    QTest::newRow("twelve") << 12u << 12;
    QTest::newRow("limit") << 65536u << 65536;
    QTest::newRow("damaged, too many") << 65537u << 65536;
    QTest::newRow("damaged, all bits") << 4294967295u << 0;
    QTest::newRow("damaged, sign bit") << 2147483648u << 0;
}

// A stored 0 is not the same as nothing stored.
void TestChannelStore::channelCount()
{
    QFETCH(quint32, stored);
    QFETCH(int, offered);
    setGlobalDword(StorePath::Config, "MaxIntChannels", stored);
    QCOMPARE(::channelCount(), offered);
}

void TestChannelStore::channelCountAbsent()
{
    QCOMPARE(::channelCount(), 4);
}

void TestChannelStore::globalNumbers()
{
    QCOMPARE(globalDword(StorePath::Debug, "NMOSUseLog", 9), 9u);
    QVERIFY(setGlobalDword(StorePath::Debug, "NMOSUseLog", 0)); // created
    QVERIFY(!setGlobalDword(StorePath::Debug, "NMOSUseLog", 0));
    QVERIFY(setGlobalDword(StorePath::Debug, "NMOSUseLog", 1)); // changed
    QCOMPARE(globalDword(StorePath::Debug, "NMOSUseLog", 9), 1u);
}

// Written under one spelling and read under the other: paths compare without case.
void TestChannelStore::bothSpellingsAreOneKey()
{
    setGlobalDword(StorePath::AvHal, "nmosoverride", 1);
    QCOMPARE(globalDword(StorePath::AvHAL, "nmosoverride", 0), 1u);
}

QTEST_GUILESS_MAIN(TestChannelStore)
#include "test_channelstore.moc"
