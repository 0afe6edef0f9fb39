// SPDX-License-Identifier: MIT
//
// The key table against a list written down independently of it, and a round trip of every row through a
// store on disk and a second process.
#include "channel/channelkeys.h"
#include "support/snapshot.h"

#include <QSet>

namespace {

struct Expected {
    Element element;
    Side side;
    Field field;
    const char *text;   // value name when it is kept as a text, else null
    const char *number; // value name when it is kept as a number, else null
    bool perFlow;
};

constexpr Element video = Element::Video;
constexpr Element audio = Element::Audio;
constexpr Element anc = Element::Anc;
constexpr Side rx = Side::Receive;
constexpr Side tx = Side::Send;

// clang-format off
const Expected kExpected[] = {
    {video, rx, Field::SourceAddress,      "ReceiveSourceIp",         nullptr,                     false},
    {video, rx, Field::SourcePort,         nullptr,                   "ReceiveSourcePort",         false},
    {video, rx, Field::DestinationAddress, "ReceiveDestinationIp",    nullptr,                     false},
    {video, rx, Field::DestinationPort,    nullptr,                   "ReceiveDestinationPort",    false},
    {video, rx, Field::Interface,          "ReceiveInterface",        nullptr,                     false},
    {video, rx, Field::Flags,              nullptr,                   "ReceiveFlags",              false},
    {video, tx, Field::SourceAddress,      "TransmitIp",              nullptr,                     false},
    {video, tx, Field::SourcePort,         nullptr,                   "TransmitSourcePort",        false},
    {video, tx, Field::DestinationAddress, "TransmitDestinationIp",   nullptr,                     false},
    {video, tx, Field::DestinationPort,    nullptr,                   "TransmitRemotePort",        false},
    {video, tx, Field::Interface,          "TransmitInterface",       nullptr,                     false},
    {video, tx, Field::Flags,              nullptr,                   "TransmitFlags",             false},
    {anc,   rx, Field::SourceAddress,      "ReceiveAncSourceIp",      nullptr,                     false},
    {anc,   rx, Field::SourcePort,         nullptr,                   "ReceiveAncSourcePort",      false},
    {anc,   rx, Field::DestinationAddress, "ReceiveAncDestinationIp", nullptr,                     false},
    {anc,   rx, Field::DestinationPort,    nullptr,                   "ReceiveAncDestinationPort", false},
    {anc,   rx, Field::Interface,          "ReceiveAncInterface",     nullptr,                     false},
    {anc,   rx, Field::Flags,              nullptr,                   "ReceiveAncFlags",           false},
    {anc,   tx, Field::SourceAddress,      "TransmitAncIp",           nullptr,                     false},
    {anc,   tx, Field::SourcePort,         nullptr,                   "TransmitAncSourcePort",     false},
    {anc,   tx, Field::DestinationAddress, "TransmitAncDestinationIp", nullptr,                    false},
    {anc,   tx, Field::DestinationPort,    nullptr,                   "TransmitAncRemotePort",     false},
    {anc,   tx, Field::Interface,          "TransmitAncInterface",    nullptr,                     false},
    {anc,   tx, Field::Flags,              nullptr,                   "TransmitAncFlags",          false},
    {audio, rx, Field::SourceAddress,      "ReceiveAudSourceIp",      nullptr,                     true},
    {audio, rx, Field::SourcePort,         nullptr,                   "ReceiveAudSourcePort",      true},
    {audio, rx, Field::DestinationAddress, "ReceiveAudDestinationIp", nullptr,                     true},
    {audio, rx, Field::DestinationPort,    nullptr,                   "ReceiveAudDestinationPort", true},
    {audio, rx, Field::Flags,              nullptr,                   "ReceiveAudFlags",           true},
    {audio, rx, Field::Interface,          "ReceiveAudInterface",     nullptr,                     false},
    {audio, rx, Field::Channels,           nullptr,                   "ReceiveAudChannels",        false},
    {audio, rx, Field::TotalChannels,      nullptr,                   "ReceiveAudTotalChannels",   false},
    {audio, rx, Field::PacketTime,         nullptr,                   "ReceiveAudPacketLength",    false},
    {audio, tx, Field::SourceAddress,      "TransmitAudIp",           nullptr,                     true},
    {audio, tx, Field::SourcePort,         nullptr,                   "TransmitAudSourcePort",     true},
    {audio, tx, Field::DestinationAddress, "TransmitAudDestinationIp", nullptr,                    true},
    {audio, tx, Field::DestinationPort,    nullptr,                   "TransmitAudRemotePort",     true},
    {audio, tx, Field::Flags,              nullptr,                   "TransmitAudFlags",          true},
    {audio, tx, Field::Interface,          "TransmitAudInterface",    nullptr,                     false},
    {audio, tx, Field::Channels,           nullptr,                   "TransmitAudChannels",       false},
    {audio, tx, Field::TotalChannels,      nullptr,                   "TransmitAudTotalChannels",  false},
    {audio, tx, Field::PacketTime,         nullptr,                   "TransmitAudPacketLength",   false},
};
// clang-format on

// A name as it stands in the store: every flow has its own.
QList<QByteArray> namesOf(const ChannelKey &key)
{
    QList<QByteArray> names;
    for (int flow = 0; flow < (key.perFlow ? kFlowCount : 1); ++flow)
        names.append(valueName(key, QByteArray::number(flow)));
    return names;
}

} // namespace

class TestChannelKeys : public QObject {
    Q_OBJECT

private slots:
    void tableIsAsListed();
    void namesAreUnique();
    void fieldsOfOneElementOnly();
    void flowNumberOnlyOnPerFlowNames();
    void everyRowRoundTrips();
    void namesOfFlows();
    void ordersWalkEachKeyOnce();
    void networkFieldsOfEveryElement();
    void loadOrders();
    void lockOrders();
    void saveOrderOfPlainElements();
    void saveOrderOfAudio();
    void flagBits_data();
    void flagBits();
    void elementCodes();
};

void TestChannelKeys::tableIsAsListed()
{
    QCOMPARE(channelKeys().size(), sizeof kExpected / sizeof *kExpected);
    for (const Expected &row : kExpected) {
        const char *name = row.text ? row.text : row.number;
        const ChannelKey *key = findChannelKey(row.element, row.side, row.field);
        QVERIFY2(key, name);
        QCOMPARE(key->name, name);
        QVERIFY2((key->stored == Stored::Text) == (row.text != nullptr), name);
        QVERIFY2(key->perFlow == row.perFlow, name);
    }
}

void TestChannelKeys::namesAreUnique()
{
    QSet<QByteArray> names;
    for (const ChannelKey &key : channelKeys()) {
        for (const QByteArray &name : namesOf(key)) {
            QVERIFY2(!names.contains(name), name.constData());
            names.insert(name);
        }
    }
    QCOMPARE(names.size(), 12 + 12 + 10 * kFlowCount + 8);
}

void TestChannelKeys::fieldsOfOneElementOnly()
{
    for (const Element element : {Element::Video, Element::Anc}) {
        for (const Field field : {Field::Channels, Field::TotalChannels, Field::PacketTime})
            QVERIFY(!findChannelKey(element, Side::Receive, field) &&
                    !findChannelKey(element, Side::Send, field));
    }
}

void TestChannelKeys::flowNumberOnlyOnPerFlowNames()
{
    const ChannelKey *address = findChannelKey(audio, rx, Field::DestinationAddress);
    QCOMPARE(valueName(*address, "0"), QByteArray("ReceiveAudDestinationIp0"));
    QCOMPARE(valueName(*address, "7"), QByteArray("ReceiveAudDestinationIp7"));
    QCOMPARE(valueName(*address, QByteArray()), QByteArray("ReceiveAudDestinationIp"));
    QCOMPARE(valueName(*findChannelKey(audio, rx, Field::Interface), "3"), QByteArray("ReceiveAudInterface"));
    QCOMPARE(valueName(*findChannelKey(video, rx, Field::SourcePort), "3"), QByteArray("ReceiveSourcePort"));
}

// Every row of every flow goes to disk with a value of its own, under its own name, and comes back; a
// second process finds exactly these.
void TestChannelKeys::everyRowRoundTrips()
{
    const FreshStore store;
    StoreTest::Snapshot values;
    quint32 number = 4023456789u;
    for (const ChannelKey &key : channelKeys()) {
        for (const QByteArray &name : namesOf(key)) {
            const bool isText = key.stored == Stored::Text;
            const QString value =
                isText ? QStringLiteral("239.12.34.%1").arg(values.size()) : QString::number(++number);
            setCfgValue(name.constData(), value, isText, 2);
            QCOMPARE(cfgValue(name.constData(), isText, 2), value);
            QCOMPARE(cfgValue(name.constData(), isText, 1), isText ? QString() : QStringLiteral("0"));
            values[StoreTest::channelEntry(2, name)] = isText ? StoreTest::quoted(value) : value;
        }
    }
    QCOMPARE(StoreTest::snapshot(), values);
}

// Flows beyond the last one have names too: a session description may hold any number of them.
void TestChannelKeys::namesOfFlows()
{
    for (const ChannelKey &key : channelKeys()) {
        for (const int flow : {0, 1, 7, 8, 12})
            QCOMPARE(flowValueName(key, flow), valueName(key, QByteArray::number(flow)));
    }
    const ChannelKey copy = channelKey(audio, tx, Field::DestinationPort);
    QCOMPARE(flowValueName(copy, 7), QByteArray("TransmitAudRemotePort7"));
    QCOMPARE(flowValueName(copy, 10), QByteArray("TransmitAudRemotePort10"));
}

void TestChannelKeys::ordersWalkEachKeyOnce()
{
    for (const auto &order : {loadOrder, saveOrder}) {
        QSet<QByteArray> names;
        int steps = 0;
        for (const Element element : elementOrder()) {
            for (const FieldStep &step : order(element)) {
                names.insert(channelKey(element, step.side, step.field).name);
                ++steps;
            }
        }
        QCOMPARE(names.size(), steps);
        QCOMPARE(std::size_t(steps), channelKeys().size() - 2); // all but the two totals
    }
}

void TestChannelKeys::networkFieldsOfEveryElement()
{
    QCOMPARE(networkFieldOrder().size(), std::size_t(10));
    QCOMPARE(lockAllOrder().size(), std::size_t(10));
    for (const FieldStep &step : networkFieldOrder()) {
        QVERIFY(::flagBit(step.field) != 0);
        for (const Element element : elementOrder())
            QVERIFY(findChannelKey(element, step.side, step.field));
    }
}

void TestChannelKeys::loadOrders()
{
    const auto names = [](Element element) {
        QByteArrayList found;
        for (const FieldStep &step : loadOrder(element))
            found.append(QByteArray(channelKey(element, step.side, step.field).name));
        return found;
    };
    const QByteArrayList plain = {
        "ReceiveSourceIp",    "ReceiveSourcePort", "ReceiveDestinationIp", "ReceiveDestinationPort",
        "ReceiveInterface",   "TransmitIp",        "TransmitSourcePort",   "TransmitDestinationIp",
        "TransmitRemotePort", "TransmitInterface", "ReceiveFlags",         "TransmitFlags",
    };
    QCOMPARE(names(video), plain);
    QCOMPARE(names(anc).join(' ').replace("Anc", ""), plain.join(' '));
    QCOMPARE(names(audio).size(), 16);
}

void TestChannelKeys::lockOrders()
{
    const auto names = [](TableView<FieldStep> order) {
        QByteArrayList found;
        for (const FieldStep &step : order)
            found.append(QByteArray(channelKey(video, step.side, step.field).name));
        return found;
    };
    QCOMPARE(names(lockedCopyOrder()),
             (QByteArrayList{"ReceiveDestinationIp", "ReceiveSourceIp", "TransmitDestinationIp", "TransmitIp",
                             "ReceiveDestinationPort", "ReceiveSourcePort", "TransmitRemotePort",
                             "TransmitSourcePort"}));
    QCOMPARE(names(lockedInterfaceOrder()), (QByteArrayList{"ReceiveInterface", "TransmitInterface"}));
    QCOMPARE(names(lockAllOrder()),
             (QByteArrayList{"ReceiveSourceIp", "ReceiveSourcePort", "ReceiveDestinationPort",
                             "ReceiveDestinationIp", "ReceiveInterface", "TransmitIp", "TransmitSourcePort",
                             "TransmitDestinationIp", "TransmitRemotePort", "TransmitInterface"}));
}

void TestChannelKeys::saveOrderOfPlainElements()
{
    const QByteArrayList names = {
        "ReceiveSourceIp",    "ReceiveDestinationIp", "ReceiveSourcePort", "ReceiveDestinationPort",
        "ReceiveInterface",   "ReceiveFlags",         "TransmitIp",        "TransmitDestinationIp",
        "TransmitSourcePort", "TransmitRemotePort",   "TransmitInterface", "TransmitFlags",
    };
    for (const Element element : {Element::Video, Element::Anc}) {
        QByteArrayList found;
        for (const FieldStep &step : saveOrder(element))
            found.append(QByteArray(findChannelKey(element, step.side, step.field)->name).replace("Anc", ""));
        QCOMPARE(found, names);
    }
}

void TestChannelKeys::saveOrderOfAudio()
{
    const QByteArrayList names = {
        "ReceiveAudPacketLength",     "ReceiveAudFlags3",         "ReceiveAudInterface",
        "TransmitAudInterface",       "TransmitAudFlags3",        "TransmitAudPacketLength",
        "ReceiveAudSourceIp3",        "ReceiveAudDestinationIp3", "ReceiveAudSourcePort3",
        "ReceiveAudDestinationPort3", "ReceiveAudChannels",       "TransmitAudIp3",
        "TransmitAudDestinationIp3",  "TransmitAudSourcePort3",   "TransmitAudRemotePort3",
        "TransmitAudChannels",
    };
    QByteArrayList found;
    for (const FieldStep &step : saveOrder(audio))
        found.append(valueName(*findChannelKey(audio, step.side, step.field), "3"));
    QCOMPARE(found, names);
}

void TestChannelKeys::flagBits_data()
{
    QTest::addColumn<int>("field");
    QTest::addColumn<quint32>("bit");
    QTest::newRow("source port") << int(Field::SourcePort) << 1u;
    QTest::newRow("destination port") << int(Field::DestinationPort) << 2u;
    QTest::newRow("source address") << int(Field::SourceAddress) << 4u;
    QTest::newRow("destination address") << int(Field::DestinationAddress) << 8u;
    QTest::newRow("interface") << int(Field::Interface) << 16u;
    QTest::newRow("no network field") << int(Field::PacketTime) << 0u;
    QTest::newRow("flags themselves") << int(Field::Flags) << 0u;
}

void TestChannelKeys::flagBits()
{
    QFETCH(int, field);
    QFETCH(quint32, bit);
    QCOMPARE(flagBit(static_cast<Field>(field)), bit);
    QCOMPARE(::flagBits().size(), std::size_t(5));
}

void TestChannelKeys::elementCodes()
{
    QCOMPARE(elementCode(video, rx), 4096u);
    QCOMPARE(elementCode(audio, rx), 8192u);
    QCOMPARE(elementCode(anc, rx), 16384u);
    QCOMPARE(elementCode(video, tx), 65536u);
    QCOMPARE(elementCode(audio, tx), 131072u);
    QCOMPARE(elementCode(anc, tx), 262144u);
}

QTEST_GUILESS_MAIN(TestChannelKeys)
#include "test_channelkeys.moc"
