// SPDX-License-Identifier: MIT
//
// Files into the store without a window: settings value by value, session descriptions past the locks.
#include "channel/elementvalues.h"
#include "fake/recorder.h"
#include "files/fileload.h"
#include "support/store.h"

#include <memory>

using namespace StoreTest;

namespace {

FileLines linesOf(const QByteArrayList &text)
{
    return [text, next = 0](QByteArray &line) mutable {
        if (next == text.size())
            return false;
        line = text[next++];
        return true;
    };
}

const QByteArrayList kTwoSections = {"[channel0]", "nmosoverride=-1",     "TransmitIp=10.0.0.1",    "no key",
                                     "[channel1]", "TransmitIp=10.0.1.1", "TransmitSourcePort=5004"};

SdpStores description(const QByteArray &text)
{
    return readSdp(linesOf(text.split('\n')));
}

constexpr char kVideo[] = "v=0\nm=video 5004 RTP/AVP 96\nc=IN IP4 239.1.1.1\na=source-filter: incl IN IP4 "
                          "239.1.1.1 10.0.0.9\na=recvonly";

} // namespace

class TestFileLoad : public QObject {
    Q_OBJECT

private slots:
    void init()
    {
        m_store = std::make_unique<FreshStore>();
        Recorder::clear();
    }
    void cleanupTestCase() { m_store.reset(); }
    void settingsValueByValue();
    void nothingIsCommitted();
    void sectionBelowTheFirstEndsIt();
    void hookBetweenSections();
    void hookStopsIt();
    void ownStore();
    void emptyFile();
    void descriptionIsStored();
    void lockedValuesStayAndTickNothing();
    void ticksAreAddedToTheFlags();
    void otherElementsTickNothing();
    void ticks();

private:
    std::unique_ptr<FreshStore> m_store;
};

void TestFileLoad::settingsValueByValue()
{
    const SettingsLoadResult result = loadSettingsFile(linesOf(kTwoSections));
    QCOMPARE(result.end, SettingsLoadEnd::EndOfFile);
    QCOMPARE(result.values, 4);
    QCOMPARE(Recorder::calls(),
             (QByteArrayList{"KWX\\Advanced\\AvHal\\nmosoverride=4294967295", "TransmitIp=10.0.0.1",
                             "TransmitIp=10.0.1.1", "TransmitSourcePort=5004"}));
    QCOMPARE(text(1, "TransmitIp"), QStringLiteral("10.0.1.1"));
}

void TestFileLoad::nothingIsCommitted()
{
    loadSettingsFile(linesOf(kTwoSections));
    storeSessionDescription(description(kVideo), LockBook(), 0);
    QVERIFY(!Recorder::calls().contains("save"));
}

void TestFileLoad::sectionBelowTheFirstEndsIt()
{
    const SettingsLoadResult result =
        loadSettingsFile(linesOf({"[channel1]", "TransmitIp=10.0.1.1", "[channel0]", "TransmitIp=10.0.0.1"}));
    QCOMPARE(result.end, SettingsLoadEnd::SectionBelowTheFirst);
    QCOMPARE(Recorder::calls(), QByteArrayList{"TransmitIp=10.0.1.1"}); // of the first channel
    QCOMPARE(Recorder::lastChannel(), 0);
}

void TestFileLoad::hookBetweenSections()
{
    QList<QPair<int, int>> seen; // channel, writes so far
    SettingsLoad load;
    load.betweenSections = [&seen](int channel) {
        seen.append({channel, Recorder::calls().size()});
        return true;
    };
    QCOMPARE(loadSettingsFile(linesOf(kTwoSections), load).values, 4);
    QCOMPARE(seen, (QList<QPair<int, int>>{{0, 0}, {1, 2}}));
}

void TestFileLoad::hookStopsIt()
{
    SettingsLoad load;
    load.betweenSections = [](int channel) { return channel == 0; };
    const SettingsLoadResult result = loadSettingsFile(linesOf(kTwoSections), load);
    QCOMPARE(result.end, SettingsLoadEnd::Stopped);
    QCOMPARE(result.values, 2);
    QCOMPARE(text(1, "TransmitIp"), QString());
}

void TestFileLoad::ownStore()
{
    QByteArrayList names;
    SettingsLoad load;
    load.store = [&names](const SettingsValue &value) { names.append(value.key); };
    loadSettingsFile(linesOf(kTwoSections), load);
    QCOMPARE(names, (QByteArrayList{"nmosoverride", "TransmitIp", "TransmitIp", "TransmitSourcePort"}));
    QCOMPARE(Recorder::calls(), QByteArrayList());
}

void TestFileLoad::emptyFile()
{
    const SettingsLoadResult result = loadSettingsFile(linesOf({}));
    QCOMPARE(result.end, SettingsLoadEnd::EndOfFile);
    QCOMPARE(result.values, 0);
}

void TestFileLoad::descriptionIsStored()
{
    QCOMPARE(storeSessionDescription(description(kVideo), LockBook(), 2).ticked, 8u | 4u | 2u);
    QCOMPARE(Recorder::calls(), (QByteArrayList{"ReceiveDestinationIp=239.1.1.1", "ReceiveSourceIp=10.0.0.9",
                                                "ReceiveDestinationPort=5004", "ReceiveFlags=14"}));
    QCOMPARE(Recorder::lastChannel(), 2);
}

void TestFileLoad::lockedValuesStayAndTickNothing()
{
    LockBook book;
    setLocked(book, Side::Receive, Field::SourceAddress, 2, true);
    setLocked(book, Side::Receive, Field::DestinationAddress, 1, true); // another channel's
    QCOMPARE(storeSessionDescription(description(kVideo), book, 2).ticked, 8u | 2u);
    QVERIFY(Recorder::callsOf("ReceiveSourceIp").isEmpty());
    QCOMPARE(number(2, "ReceiveFlags"), 10u);
}

void TestFileLoad::ticksAreAddedToTheFlags()
{
    put(0, "ReceiveFlags", 16 + 2);
    storeSessionDescription(description(kVideo), LockBook(), 0);
    QCOMPARE(number(0, "ReceiveFlags"), 30u);
}

void TestFileLoad::otherElementsTickNothing()
{
    const QByteArray audio = QByteArray(kVideo).replace("m=video", "m=audio");
    QCOMPARE(storeSessionDescription(description(audio), LockBook(), 0).ticked, 0u);
    QVERIFY(Recorder::callsOf("ReceiveFlags").isEmpty());
    QCOMPARE(text(0, "ReceiveAudSourceIp0"), QStringLiteral("10.0.0.9"));
}

void TestFileLoad::ticks()
{
    Field field = Field::Flags;
    QVERIFY(!tickedField(SdpTick::None, &field));
    QCOMPARE(field, Field::Flags);
    QVERIFY(tickedField(SdpTick::RecDstAddr, &field));
    QCOMPARE(field, Field::DestinationAddress);
    QVERIFY(tickedField(SdpTick::RecSrcAddr, &field));
    QCOMPARE(field, Field::SourceAddress);
    QVERIFY(tickedField(SdpTick::RecDstPort, &field));
    QCOMPARE(field, Field::DestinationPort);
}

QTEST_GUILESS_MAIN(TestFileLoad)
#include "test_fileload.moc"
