// SPDX-License-Identifier: MIT
//
// An element's values without a window: what is read and written, in which order and of which flow.
#include "channel/elementvalues.h"
#include "fake/recorder.h"
#include "support/store.h"

#include <memory>

using namespace StoreTest;

namespace {

// A name for a step, as short as a test can read it: "rx3" is the receive side's field 3.
QString stepName(Side side, Field field)
{
    return (side == Side::Receive ? QStringLiteral("rx%1") : QStringLiteral("tx%1")).arg(int(field));
}

// Notes what it is shown; gives back a number that tells its step.
class Page : public ElementValues {
public:
    void show(Side side, Field field, const QString &text) override { m_shown[stepName(side, field)] = text; }
    QString value(Side side, Field field) const override
    {
        return QString::number(side == Side::Receive ? 100 + int(field) : 200 + int(field));
    }
    QMap<QString, QString> m_shown;
};

QByteArrayList withElement(QByteArrayList names, const char *element)
{
    for (QByteArray &name : names)
        name.replace("Receive", QByteArray("Receive") + element)
            .replace("Transmit", QByteArray("Transmit") + element);
    return names;
}

const QByteArrayList kPlainReads = {
    "ReceiveSourceIp",    "ReceiveSourcePort", "ReceiveDestinationIp", "ReceiveDestinationPort",
    "ReceiveInterface",   "TransmitIp",        "TransmitSourcePort",   "TransmitDestinationIp",
    "TransmitRemotePort", "TransmitInterface", "ReceiveFlags",         "TransmitFlags",
};

const QByteArrayList kPlainWrites = {
    "ReceiveSourceIp=100",    "ReceiveDestinationIp=102",
    "ReceiveSourcePort=101",  "ReceiveDestinationPort=103",
    "ReceiveInterface=104",   "ReceiveFlags=105",
    "TransmitIp=200",         "TransmitDestinationIp=202",
    "TransmitSourcePort=201", "TransmitRemotePort=203",
    "TransmitInterface=204",  "TransmitFlags=205",
};

} // namespace

class TestElementValues : public QObject {
    Q_OBJECT

private slots:
    void init()
    {
        m_store = std::make_unique<FreshStore>();
        Recorder::clear();
    }
    void cleanupTestCase() { m_store.reset(); }
    void loadOfPlainElements();
    void loadOfAudio();
    void flagsComeFromFlowZero();
    void loadShowsWhatIsStored();
    void saveOfPlainElements();
    void saveOfAudio();
    void saveWithoutAFlow();
    void nothingIsCommitted();
    void copyReachesEveryElementAndFlow();
    void copyOfAnInterfaceHasNoFlows();
    void oneValue();
    void storedFlowCount_data();
    void storedFlowCount();

private:
    std::unique_ptr<FreshStore> m_store;
};

void TestElementValues::loadOfPlainElements()
{
    Page page;
    loadElementValues(page, Element::Video, 3, "5"); // no flow of video
    QCOMPARE(Recorder::reads(), kPlainReads);
    Recorder::clear();
    loadElementValues(page, Element::Anc, 3, QByteArray());
    QCOMPARE(Recorder::reads(), withElement(kPlainReads, "Anc"));
    QCOMPARE(Recorder::calls(), QByteArrayList());
}

void TestElementValues::loadOfAudio()
{
    Page page;
    loadElementValues(page, Element::Audio, 0, "5");
    const QByteArrayList reads = {
        "ReceiveAudSourceIp5",        "ReceiveAudSourcePort5",     "ReceiveAudDestinationIp5",
        "ReceiveAudDestinationPort5", "ReceiveAudChannels",        "ReceiveAudInterface",
        "ReceiveAudFlags0",           "ReceiveAudPacketLength",    "TransmitAudIp5",
        "TransmitAudSourcePort5",     "TransmitAudDestinationIp5", "TransmitAudRemotePort5",
        "TransmitAudChannels",        "TransmitAudInterface",      "TransmitAudFlags0",
        "TransmitAudPacketLength",
    };
    QCOMPARE(Recorder::reads(), reads);
    QCOMPARE(page.m_shown.size(), 16);
}

void TestElementValues::flagsComeFromFlowZero()
{
    put(0, "ReceiveAudFlags0", 3);
    put(0, "ReceiveAudFlags6", 7);
    Page page;
    for (const QByteArray &flow : {QByteArray("6"), QByteArray()}) {
        loadElementValues(page, Element::Audio, 0, flow);
        QCOMPARE(page.m_shown[stepName(Side::Receive, Field::Flags)], QStringLiteral("3"));
    }
}

void TestElementValues::loadShowsWhatIsStored()
{
    put(2, "TransmitAncIp", QStringLiteral("10.0.0.1"));
    put(2, "ReceiveAncDestinationPort", 5004);
    Page page;
    loadElementValues(page, Element::Anc, 2, QByteArray());
    QCOMPARE(page.m_shown[stepName(Side::Send, Field::SourceAddress)], QStringLiteral("10.0.0.1"));
    QCOMPARE(page.m_shown[stepName(Side::Receive, Field::DestinationPort)], QStringLiteral("5004"));
    QCOMPARE(page.m_shown[stepName(Side::Receive, Field::SourceAddress)], QString());
    QCOMPARE(page.m_shown[stepName(Side::Send, Field::SourcePort)], QStringLiteral("0"));
}

void TestElementValues::saveOfPlainElements()
{
    saveElementValues(Page(), Element::Video, 1, "5");
    QCOMPARE(Recorder::calls(), kPlainWrites);
    QCOMPARE(Recorder::lastChannel(), 1);
    Recorder::clear();
    saveElementValues(Page(), Element::Anc, 1, QByteArray());
    QCOMPARE(Recorder::calls(), withElement(kPlainWrites, "Anc"));
}

// The flags are those of the flow, unlike in loading.
void TestElementValues::saveOfAudio()
{
    saveElementValues(Page(), Element::Audio, 0, "5");
    const QByteArrayList writes = {
        "ReceiveAudPacketLength=108",     "ReceiveAudFlags5=105",         "ReceiveAudInterface=104",
        "TransmitAudInterface=204",       "TransmitAudFlags5=205",        "TransmitAudPacketLength=208",
        "ReceiveAudSourceIp5=100",        "ReceiveAudDestinationIp5=102", "ReceiveAudSourcePort5=101",
        "ReceiveAudDestinationPort5=103", "ReceiveAudChannels=106",       "TransmitAudIp5=200",
        "TransmitAudDestinationIp5=202",  "TransmitAudSourcePort5=201",   "TransmitAudRemotePort5=203",
        "TransmitAudChannels=206",
    };
    QCOMPARE(Recorder::calls(), writes);
}

void TestElementValues::saveWithoutAFlow()
{
    saveElementValues(Page(), Element::Audio, 0, QByteArray());
    QVERIFY(Recorder::calls().contains("ReceiveAudSourceIp=100"));
    QVERIFY(Recorder::calls().contains("TransmitAudFlags=205"));
}

void TestElementValues::nothingIsCommitted()
{
    saveElementValues(Page(), Element::Audio, 0, "0");
    copyToAllElements(Side::Send, Field::SourceAddress, QStringLiteral("10.0.0.1"), 0);
    QVERIFY(!Recorder::calls().contains("save"));
}

void TestElementValues::copyReachesEveryElementAndFlow()
{
    copyToAllElements(Side::Send, Field::DestinationPort, QStringLiteral("5004"), 3);
    QByteArrayList writes = {"TransmitAudRemotePort0=5004"};
    for (int flow = 0; flow < kFlowCount; ++flow)
        writes.append("TransmitAudRemotePort" + QByteArray::number(flow) + "=5004");
    writes << "TransmitAncRemotePort=5004"
           << "TransmitRemotePort=5004";
    QCOMPARE(Recorder::calls(), writes);
    QCOMPARE(Recorder::lastChannel(), 3);
}

void TestElementValues::copyOfAnInterfaceHasNoFlows()
{
    copyToAllElements(Side::Receive, Field::Interface, QStringLiteral("10.0.0.1"), 0);
    QCOMPARE(Recorder::callsOf("ReceiveAudInterface=10.0.0.1").size(), 1 + kFlowCount);
    QCOMPARE(Recorder::calls().last(), QByteArray("ReceiveInterface=10.0.0.1"));
}

void TestElementValues::oneValue()
{
    setElementValue(Element::Audio, Side::Receive, Field::TotalChannels, QStringLiteral("16"), 4);
    setElementValue(Element::Audio, Side::Send, Field::SourceAddress, QStringLiteral("10.0.0.1"), 4, "7");
    QCOMPARE(Recorder::calls(), (QByteArrayList{"ReceiveAudTotalChannels=16", "TransmitAudIp7=10.0.0.1"}));
    QCOMPARE(elementValue(Element::Audio, Side::Receive, Field::TotalChannels, 4), QStringLiteral("16"));
    QCOMPARE(elementValue(Element::Audio, Side::Send, Field::SourceAddress, 4, "7"),
             QStringLiteral("10.0.0.1"));
    QCOMPARE(elementValue(Element::Audio, Side::Send, Field::SourceAddress, 4, "6"), QString());
}

void TestElementValues::storedFlowCount_data()
{
    QTest::addColumn<quint32>("total");
    QTest::addColumn<quint32>("channels");
    QTest::addColumn<quint32>("flows");
    QTest::newRow("nothing stored") << 0u << 0u << 0u;
    QTest::newRow("eight flows of two") << 16u << 2u << 8u;
    QTest::newRow("channels per flow missing") << 6u << 0u << 3u;
    QTest::newRow("not a whole number") << 7u << 2u << 3u;
    QTest::newRow("fewer than one flow") << 2u << 16u << 0u;
}

void TestElementValues::storedFlowCount()
{
    QFETCH(quint32, total);
    QFETCH(quint32, channels);
    put(0, "ReceiveAudTotalChannels", total);
    put(0, "ReceiveAudChannels", channels);
    QTEST(::storedFlowCount(0), "flows");
}

QTEST_GUILESS_MAIN(TestElementValues)
#include "test_elementvalues.moc"
