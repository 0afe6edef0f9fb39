// SPDX-License-Identifier: MIT
//
// Why a store cannot be used. What needs a disk of its own is in test_storedisk.
#include "channel/storehealth.h"
#include "support/store.h"

#include <QFile>
#include <QtTest>

#include <memory>
#include <unistd.h>

class TestStoreHealth : public QObject {
    Q_OBJECT

private slots:
    void init() { m_store = std::make_unique<FreshStore>(); }
    void cleanup() { m_store.reset(); }
    void thePathOfTheOneInUse();
    void allIsWell();
    void aStoreYetToBeMade();
    void noFolder();
    void noPath();
    void aFolderOfSomebodyElse();

private:
    std::unique_ptr<FreshStore> m_store;
};

void TestStoreHealth::thePathOfTheOneInUse()
{
    QCOMPARE(storePath(), m_store->folder() + QStringLiteral("/corvel/default.rkcfg"));
    rkCFGSetDefaultName("van");
    QCOMPARE(storePath(), m_store->folder() + QStringLiteral("/corvel/van.rkcfg"));
}

void TestStoreHealth::allIsWell()
{
    StoreTest::put(0, "TransmitIp", QStringLiteral("1.2.3.4"));
    QVERIFY(QFile::exists(storePath()));
    QCOMPARE(storeObstacle(storePath()), QString());
}

void TestStoreHealth::aStoreYetToBeMade()
{
    QCOMPARE(storeObstacle(m_store->folder() + QStringLiteral("/new.rkcfg")), QString());
}

void TestStoreHealth::noFolder()
{
    QCOMPARE(storeObstacle(m_store->folder() + QStringLiteral("/gone/default.rkcfg")),
             QStringLiteral("No such file or directory"));
}

void TestStoreHealth::noPath()
{
    QCOMPARE(storeObstacle(QString()), QStringLiteral("No such file or directory"));
}

// Nobody may write there, root included.
void TestStoreHealth::aFolderOfSomebodyElse()
{
    const QString obstacle = storeObstacle(QStringLiteral("/proc/1/default.rkcfg"));
    QVERIFY2(!obstacle.isEmpty(), "the store could be in /proc/1");
}

QTEST_GUILESS_MAIN(TestStoreHealth)
#include "test_storehealth.moc"
