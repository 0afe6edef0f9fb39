// SPDX-License-Identifier: MIT
//
// What the writers write, the readers read back to the same values, except where the formats are
// one-sided on purpose: every such place is a test of its own here.
#include "files/sdpsample.h"
#include "files/sdptext.h"
#include "files/settingstext.h"

#include <QtTest>

namespace {

enum Boxes { NoBox = 0, SendSource = 2, ReceiveSource = 8, AllBoxes = 15 };

QMap<QString, QString> readBack(const QString &sdp)
{
    QMap<QString, QString> values;
    for (const SdpStore &store : readSdpText(sdp.toLatin1()))
        values[QString::fromLatin1(store.valueName)] = store.text;
    return values;
}

// The sample's values whose names are given, flow values for flow n where a name ends in it.
QMap<QString, QString> samples(const char *names)
{
    QMap<QString, QString> values;
    for (const QString &name : QString::fromLatin1(names).split(QLatin1Char(' ')))
        values[name] = sdpsample::value(name);
    return values;
}

SdpInput sample(int flows, int boxes)
{
    return sdpsample::input(flows, boxes, sdpsample::Ptp);
}

// A store whose every value is different from every other and from an absent one.
QString fullStore(const char *name, bool isString, int channel)
{
    const QString text = QStringLiteral("%1.%2").arg(QLatin1String(name)).arg(channel);
    return isString ? text : QString::number(qHash(text, 1) | 1u);
}

bool isNumber(const QString &key)
{
    static const QRegularExpression number(QStringLiteral("(Port|Flags)\\d?$|Channels$|Length$|Type$|"
                                                          "ClockSettings|ClockDomain"));
    return number.match(key).hasMatch();
}

} // namespace

class TestRoundTrip : public QObject {
    Q_OBJECT

private slots:
    void videoElement();
    void ancElement();
    void singleAudioFlowShiftsItsSendSide();
    void audioElementShiftsItsFlows();
    void fileOfEachSide();
    void sourceComesBackOnlyWithAFilter();
    void starKeepsTheDestination();
    void oneDigitPortsDoNotComeBack();
    void unsetAddressesDoNotComeBack();
    void clockAndFormatDoNotComeBack();

    void settings_data();
    void settings();
    void settingsLoseTheInterfaces();
    void settingsBeyondTenChannelsFallOnTheSecond();
    void settingsLoseWhatFollowsAnEqualsSign();
    void settingsLoseFlowsThatWereNotShown();
    void settingsAlwaysCarryOverrideZero();
    void settingsNeverCarryWhatOnlyTheReaderAccepts();
    void settingsReadOverAnotherMachine();
};

void TestRoundTrip::videoElement()
{
    const SdpInput in = sample(0, AllBoxes);
    QCOMPARE(readBack(writeElementSdp(in, Element::Video, Side::Receive)),
             samples("ReceiveDestinationIp ReceiveSourceIp ReceiveDestinationPort"));
    QCOMPARE(readBack(writeElementSdp(in, Element::Video, Side::Send)),
             samples("TransmitDestinationIp TransmitIp TransmitRemotePort"));
}

// Announced as video, recognised by its encoding; both sides in either file.
void TestRoundTrip::ancElement()
{
    QCOMPARE(readBack(writeElementSdp(sample(0, AllBoxes), Element::Anc, Side::Send)),
             samples("ReceiveAncDestinationIp ReceiveAncSourceIp ReceiveAncDestinationPort "
                     "TransmitAncDestinationIp TransmitAncIp TransmitAncRemotePort"));
}

void TestRoundTrip::singleAudioFlowShiftsItsSendSide()
{
    const auto values = readBack(writeElementSdp(sample(1, NoBox), Element::Audio, Side::Send));
    QCOMPARE(values.value(QStringLiteral("ReceiveAudDestinationPort0")), QStringLiteral("20100"));
    QCOMPARE(values.value(QStringLiteral("TransmitAudRemotePort1")), QStringLiteral("30100"));
    QVERIFY(!values.contains(QStringLiteral("TransmitAudRemotePort0")));
}

// Every block is a flow of its own to the reader, so flow n comes back as 2n (receive) and 2n+1 (send).
void TestRoundTrip::audioElementShiftsItsFlows()
{
    const auto values = readBack(writeElementSdp(sample(8, AllBoxes), Element::Audio, Side::Receive));
    QCOMPARE(values.size(), 8 * 6);
    for (int n = 0; n < 8; ++n) {
        const QString rx = QString::number(2 * n), tx = QString::number(2 * n + 1);
        QCOMPARE(values.value(QStringLiteral("ReceiveAudSourceIp") + rx),
                 QStringLiteral("192.168.21.10%1").arg(n));
        QCOMPARE(values.value(QStringLiteral("ReceiveAudDestinationPort") + rx),
                 QStringLiteral("2010%1").arg(n));
        QCOMPARE(values.value(QStringLiteral("TransmitAudIp") + tx),
                 QStringLiteral("192.168.11.10%1").arg(n));
        QCOMPARE(values.value(QStringLiteral("TransmitAudDestinationIp") + tx),
                 QStringLiteral("239.2.2.10%1").arg(n));
    }
}

// The file writer keeps the sides apart, so here flow n stays flow n.
void TestRoundTrip::fileOfEachSide()
{
    auto rx = samples("ReceiveDestinationIp ReceiveSourceIp ReceiveDestinationPort "
                      "ReceiveAncDestinationIp ReceiveAncSourceIp ReceiveAncDestinationPort");
    auto tx = samples("TransmitDestinationIp TransmitIp TransmitRemotePort "
                      "TransmitAncDestinationIp TransmitAncIp TransmitAncRemotePort");
    for (auto flow = sdpsample::flowValues().begin(); flow != sdpsample::flowValues().end(); ++flow) {
        for (int n = 0; n < 8; ++n)
            (flow.key().startsWith(QLatin1Char('R')) ? rx : tx)[flow.key() + QString::number(n)] =
                flow.value().arg(n);
    }
    QCOMPARE(readBack(writeFileSdp(sample(8, AllBoxes), Side::Receive)), rx);
    QCOMPARE(readBack(writeFileSdp(sample(8, AllBoxes), Side::Send)), tx);
}

void TestRoundTrip::sourceComesBackOnlyWithAFilter()
{
    QCOMPARE(readBack(writeElementSdp(sample(0, NoBox), Element::Video, Side::Receive)),
             samples("ReceiveDestinationIp ReceiveDestinationPort"));
}

void TestRoundTrip::starKeepsTheDestination()
{
    QCOMPARE(readBack(writeElementSdp(sample(0, ReceiveSource), Element::Video, Side::Receive)),
             samples("ReceiveDestinationIp ReceiveSourceIp ReceiveDestinationPort"));
    QCOMPARE(readBack(writeElementSdp(sample(0, SendSource), Element::Video, Side::Send)),
             samples("TransmitDestinationIp TransmitIp TransmitRemotePort"));
}

void TestRoundTrip::oneDigitPortsDoNotComeBack()
{
    SdpInput in = sample(0, NoBox);
    in.value = [](const char *, bool isString) {
        return isString ? QStringLiteral("239.1.1.1") : QStringLiteral("7");
    };
    QCOMPARE(readBack(writeElementSdp(in, Element::Video, Side::Receive)).keys(),
             QStringList(QStringLiteral("ReceiveDestinationIp")));
}

void TestRoundTrip::unsetAddressesDoNotComeBack()
{
    SdpInput in = sample(8, AllBoxes);
    in.value = [](const char *, bool isString) { return isString ? QString() : QStringLiteral("0"); };
    QVERIFY(readBack(writeFileSdp(in, Side::Receive)).isEmpty());
}

void TestRoundTrip::clockAndFormatDoNotComeBack()
{
    for (const SdpStore &store : readSdpText(writeFileSdp(sample(8, AllBoxes), Side::Send).toLatin1()))
        QVERIFY2(store.valueName.contains("Ip") || store.valueName.contains("Port"),
                 store.valueName.constData());
}

void TestRoundTrip::settings_data()
{
    QTest::addColumn<int>("channels");
    QTest::addColumn<int>("flows");
    QTest::newRow("one") << 1 << 1;
    QTest::newRow("four, eight flows") << 4 << 8;
    QTest::newRow("ten, as many as the format carries") << 10 << 8;
}

void TestRoundTrip::settings()
{
    QFETCH(int, channels);
    QFETCH(int, flows);
    const auto read = readSettingsText(writeSettingsFile(fullStore, channels, flows));
    QCOMPARE(read.values.size(), channels * (41 - 6 + 10 * flows)); // without the six interfaces
    for (auto it = read.values.begin(); it != read.values.end(); ++it) {
        const int channel = it.key().section(QLatin1Char('/'), 0, 0).toInt();
        const QByteArray name = it.key().section(QLatin1Char('/'), 1).toLatin1();
        QCOMPARE(it.value(), fullStore(name.constData(), !isNumber(QString::fromLatin1(name)), channel));
    }
}

void TestRoundTrip::settingsLoseTheInterfaces()
{
    const QByteArray text = writeSettingsFile(fullStore, 1, 1);
    QCOMPARE(text.count("Interface="), 6);
    for (const QString &key : readSettingsText(text).order)
        QVERIFY2(!key.contains(QLatin1String("Interface")), qPrintable(key));
}

// The reader takes one digit, so sections 10 and 11 overwrite what section 1 brought.
void TestRoundTrip::settingsBeyondTenChannelsFallOnTheSecond()
{
    const auto read = readSettingsText(writeSettingsFile(fullStore, 12, 1));
    QCOMPARE(read.values.value(QStringLiteral("1/TransmitIp")), QStringLiteral("TransmitIp.11"));
    QCOMPARE(read.values.value(QStringLiteral("9/TransmitIp")), QStringLiteral("TransmitIp.9"));
    QVERIFY(!read.values.contains(QStringLiteral("10/TransmitIp")));
    QVERIFY(!read.stopped);
}

void TestRoundTrip::settingsLoseWhatFollowsAnEqualsSign()
{
    const auto store = [](const char *, bool isString, int) {
        return isString ? QStringLiteral("a=b") : QStringLiteral("0");
    };
    const auto read = readSettingsText(writeSettingsFile(store, 1, 1));
    QCOMPARE(read.values.value(QStringLiteral("0/ClockGrandMaster")), QStringLiteral("a"));
}

// The flow count shown when saving counts for every channel.
void TestRoundTrip::settingsLoseFlowsThatWereNotShown()
{
    const auto read = readSettingsText(writeSettingsFile(fullStore, 2, 2));
    QVERIFY(read.values.contains(QStringLiteral("1/TransmitAudIp1")));
    QVERIFY(!read.values.contains(QStringLiteral("1/TransmitAudIp2")));
}

void TestRoundTrip::settingsAlwaysCarryOverrideZero()
{
    const auto ones = [](const char *, bool, int) { return QStringLiteral("1"); };
    const auto read = readSettingsText(writeSettingsFile(ones, 3, 1));
    QCOMPARE(read.order.count(QStringLiteral("nmosoverride")), 3);
    QCOMPARE(read.global, 0u);
}

void TestRoundTrip::settingsNeverCarryWhatOnlyTheReaderAccepts()
{
    const QByteArray text = writeSettingsFile(fullStore, 1, 8).toLower();
    QVERIFY(!text.contains("j2k"));
    QVERIFY(!text.contains("signalformat"));
}

// Every value of the file replaces what was there, empty texts and zeros included.
void TestRoundTrip::settingsReadOverAnotherMachine()
{
    const auto empty = [](const char *, bool isString, int) {
        return isString ? QString() : QStringLiteral("0");
    };
    const auto read = readSettingsText(writeSettingsFile(empty, 1, 1));
    QCOMPARE(read.values.value(QStringLiteral("0/TransmitIp"), QStringLiteral("kept")), QString());
    QCOMPARE(read.values.value(QStringLiteral("0/TransmitFlags"), QStringLiteral("kept")),
             QStringLiteral("0"));
}

QTEST_APPLESS_MAIN(TestRoundTrip)
#include "test_roundtrip.moc"
