// SPDX-License-Identifier: MIT
//
// What waits while another process holds the store: read as if it were stored, stored in order, and never
// over what somebody else changed.
#include "channel/backlog.h"
#include "channel/configurations.h"
#include "support/store.h"
#include "support/storeholder.h"

#include <memory>

using namespace StoreTest;

namespace {

const char *const kDomain = ChannelValue::ClockDomain;
const char *const kMaster = ChannelValue::ClockGrandMaster;

// What a step that finds the store held does with a value.
void keepNumber(const QByteArray &name, quint32 value, const QString &configuration = configurationInUse())
{
    const KeptStep step(configuration);
    put(0, name, value);
    QVERIFY(commitStore());
}

void keepText(const QByteArray &name, const QString &value)
{
    const KeptStep step(configurationInUse());
    put(0, name, value);
}

// The values of channel 0 that were changed, oldest first, and how often a new batch began.
QByteArrayList changed(int *batches = nullptr)
{
    QByteArrayList names;
    QSet<qint64> all;
    walkHistory(0, [&](const StoreChange &change) {
        names.append(change.name);
        all.insert(change.batch);
        return true;
    });
    if (batches)
        *batches = all.size();
    return names;
}

} // namespace

class TestBacklog : public QObject {
    Q_OBJECT

private slots:
    void init() { m_store = std::make_unique<FreshStore>(); }
    void cleanup();
    void emptyChangesNothing();
    void isReadAsIfStored();
    void isOfItsTypeOnly();
    void unchangedIsNotKept();
    void pathsCompareWithoutCase();
    void heldStoreIsTriedAgain();
    void storedInOrderStepByStep();
    void whatOthersChangedIsLeft();
    void theSameByOthersIsNoConflict();
    void removedByOthersIsAConflict();
    void waitsForItsConfiguration();
    void anEmptyStepLeavesNothing();

private:
    std::unique_ptr<FreshStore> m_store;
    QVector<StoreChange> m_left;
};

// One backlog for the process: a case that leaves something behind would disturb the next one.
void TestBacklog::cleanup()
{
    m_left.clear();
    QVERIFY(storeBacklog(&m_left));
    QCOMPARE(backlogSize(), 0);
    m_left.clear();
    m_store.reset();
}

void TestBacklog::emptyChangesNothing()
{
    QVERIFY(!writesAreKept());
    QVERIFY(!backlogWaits());
    QVERIFY(!keptValue("p", "n"));
    put(0, kDomain, 5);
    QCOMPARE(number(0, kDomain), 5u);
    QVERIFY(storeBacklog(&m_left));
    QCOMPARE(changed().size(), 1);
}

void TestBacklog::isReadAsIfStored()
{
    put(0, kDomain, 5);
    const StoreHolder holder;
    keepNumber(kDomain, 6);
    keepText(kMaster, QStringLiteral("00:11"));
    QCOMPARE(number(0, kDomain), 6u);
    QCOMPARE(text(0, kMaster), QStringLiteral("00:11"));
    QVERIFY(!isTextEmpty(channelIpKeyName(0), kMaster));
    QCOMPARE(text(1, kMaster), QString());
    QCOMPARE(backlogSize(), 2);
    QVERIFY(backlogWaits());
    keepText(kMaster, QString());
    QVERIFY(isTextEmpty(channelIpKeyName(0), kMaster));
}

void TestBacklog::isOfItsTypeOnly()
{
    put(0, kMaster, QStringLiteral("7"));
    keepNumber(kMaster, 9);
    QCOMPARE(text(0, kMaster), QString());
    QCOMPARE(number(0, kMaster), 9u);
    keepText(kMaster, QStringLiteral("x"));
    QCOMPARE(number(0, kMaster), 0u);
    QCOMPARE(globalDword("KWX\\Internal0\\IpConfig", kMaster, 3), 3u);
    QVERIFY(storeBacklog(&m_left));
    QCOMPARE(text(0, kMaster), QStringLiteral("x"));
}

void TestBacklog::unchangedIsNotKept()
{
    put(0, kDomain, 5);
    keepNumber(kDomain, 5);
    QCOMPARE(backlogSize(), 0);
    keepNumber(kDomain, 6);
    keepNumber(kDomain, 6);
    QCOMPARE(backlogSize(), 1);
}

void TestBacklog::pathsCompareWithoutCase()
{
    {
        const KeptStep step(configurationInUse());
        QVERIFY(setGlobalDword(StorePath::AvHal, MachineValue::NmosOverride, 1));
        QVERIFY(!setGlobalDword(StorePath::AvHAL, MachineValue::NmosOverride, 1));
    }
    QCOMPARE(globalDword(StorePath::AvHAL, MachineValue::NmosOverride, 0), 1u);
}

void TestBacklog::heldStoreIsTriedAgain()
{
    StoreHolder holder;
    keepNumber(kDomain, 6);
    QVERIFY(!storeBacklog(&m_left));
    QCOMPARE(backlogSize(), 1);
    holder.release();
    QVERIFY(storeBacklog(&m_left));
    QCOMPARE(backlogSize(), 0);
    QCOMPARE(number(0, kDomain), 6u);
    QVERIFY(m_left.isEmpty());
}

void TestBacklog::storedInOrderStepByStep()
{
    put(0, kDomain, 1);
    commitStore();
    StoreHolder holder;
    keepNumber("VideoType", 1);
    keepNumber(kDomain, 6);
    keepText(kMaster, QStringLiteral("a"));
    keepNumber(kDomain, 7);
    holder.release();
    QVERIFY(storeBacklog(&m_left));
    int batches = 0;
    QCOMPARE(changed(&batches), (QByteArrayList{kDomain, "VideoType", kDomain, kMaster, kDomain}));
    QCOMPARE(batches, 5);
    QCOMPARE(number(0, kDomain), 7u);
}

void TestBacklog::whatOthersChangedIsLeft()
{
    put(0, kDomain, 1);
    commitStore();
    StoreHolder holder([] { put(0, kDomain, 50); });
    keepNumber(kDomain, 6);
    keepText(kMaster, QStringLiteral("a"));
    keepNumber(kDomain, 7); // on top of what is left is left as well
    holder.release();
    QVERIFY(storeBacklog(&m_left));
    QCOMPARE(number(0, kDomain), 50u);
    QCOMPARE(text(0, kMaster), QStringLiteral("a"));
    QCOMPARE(m_left.size(), 2);
    QCOMPARE(m_left.first().name, QByteArray(kDomain));
    QCOMPARE(m_left.first().before.number, 1u);
    QCOMPARE(m_left.first().after.number, 6u);
}

void TestBacklog::theSameByOthersIsNoConflict()
{
    StoreHolder holder([] { put(0, kDomain, 6); });
    keepNumber(kDomain, 6);
    holder.release();
    QVERIFY(storeBacklog(&m_left));
    QVERIFY(m_left.isEmpty());
    QCOMPARE(number(0, kDomain), 6u);
}

void TestBacklog::removedByOthersIsAConflict()
{
    put(0, kDomain, 1);
    commitStore();
    StoreHolder holder([] { rkCFGRemove(RKCFG_DEFAULT_STORE, "KWX\\Internal0\\IpConfig", kDomain); });
    keepNumber(kDomain, 6);
    holder.release();
    QVERIFY(storeBacklog(&m_left));
    QCOMPARE(m_left.size(), 1);
    QVERIFY(!hasNumber("KWX\\Internal0\\IpConfig", kDomain));
}

void TestBacklog::waitsForItsConfiguration()
{
    put(0, kDomain, 1);
    keepNumber(kDomain, 6);
    useConfiguration(QStringLiteral("van"));
    QCOMPARE(number(0, kDomain), 0u);
    QVERIFY(!backlogWaits());
    QVERIFY(storeBacklog(&m_left));
    QCOMPARE(backlogSize(), 1);
    QCOMPARE(changed(), QByteArrayList());
    useConfiguration(QStringLiteral("default"));
    QVERIFY(backlogWaits());
    QVERIFY(storeBacklog(&m_left));
    QCOMPARE(backlogSize(), 0);
    QCOMPARE(number(0, kDomain), 6u);
}

void TestBacklog::anEmptyStepLeavesNothing()
{
    {
        const KeptStep step(configurationInUse());
        QVERIFY(writesAreKept());
    }
    QVERIFY(!writesAreKept());
    QCOMPARE(backlogSize(), 0);
}

QTEST_GUILESS_MAIN(TestBacklog)
#include "test_backlog.moc"
