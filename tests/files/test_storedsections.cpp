// SPDX-License-Identifier: MIT
//
// A channel's section out of the store: its text, and that reading it leaves the store to everybody.
#include "channel/storecalls.h"
#include "files/settingsfile.h"
#include "files/storedsections.h"
#include "support/store.h"

#include <memory>

using namespace StoreTest;

namespace {

constexpr int kFlows = 2;

QByteArray valueByValue(int channel)
{
    const auto value = [](const char *name, bool isString, int of) { return cfgValue(name, isString, of); };
    return settingsSection(value, channel, kFlows);
}

} // namespace

class TestStoredSections : public QObject {
    Q_OBJECT

private slots:
    void init() { m_store = std::make_unique<FreshStore>(); }
    void cleanup() { m_store.reset(); }

    void holdsWhatIsStored()
    {
        put(3, "TransmitIp", QStringLiteral("10.0.0.7"));
        put(3, "ReceiveAudFlags1", 9);
        const QByteArray section = StoredSections(kFlows).section(3);
        QVERIFY(section.startsWith("[channel3]\n"));
        QVERIFY(section.contains("\nTransmitIp=10.0.0.7\n"));
        QVERIFY(section.contains("\nReceiveAudFlags1=9\n"));
        QCOMPARE(section, valueByValue(3));
    }

    void leavesTheStoreToOthers()
    {
        StoredSections sections(kFlows);
        sections.section(0);
        StoreTransaction next;
        QVERIFY(next.isOpen());
        put(0, "TransmitIp", QStringLiteral("10.0.0.8"));
        QVERIFY(next.keep());
        QVERIFY(sections.section(0).contains("\nTransmitIp=10.0.0.8\n"));
    }

    // Somebody has a transaction open, so there is none to be had: what it holds is read all the same.
    void readsWithoutAMomentOfItsOwn()
    {
        StoreTransaction taken;
        put(1, "TransmitIp", QStringLiteral("10.0.0.9"));
        StoredSections sections(kFlows);
        for (int turn = 0; turn < 2; ++turn)
            QVERIFY(sections.section(1).contains("\nTransmitIp=10.0.0.9\n"));
        QVERIFY(taken.keep());
        QCOMPARE(text(1, "TransmitIp"), QStringLiteral("10.0.0.9"));
    }

private:
    std::unique_ptr<FreshStore> m_store;
};

QTEST_GUILESS_MAIN(TestStoredSections)
#include "test_storedsections.moc"
