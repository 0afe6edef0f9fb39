// SPDX-License-Identifier: MIT
//
// The named configurations as files on disk: which there are, which is in use, choosing another.
#include "channel/configurations.h"
#include "fake/recorder.h"
#include "support/store.h"

#include <QDir>
#include <QFile>

#include <memory>

using namespace StoreTest;

class TestConfigurations : public QObject {
    Q_OBJECT

private slots:
    void init()
    {
        m_store = std::make_unique<FreshStore>();
        char folder[4096] = {};
        rkOSGetConfigDir(folder);
        m_folder = QString::fromUtf8(folder);
        Recorder::clear();
    }
    void cleanupTestCase() { m_store.reset(); }
    void oneInUseOfAFreshStore();
    void filesByName();
    void otherFilesAreNone();
    void theOneInUseWithoutAFileComesFirst();
    void choosingClosesAndNames();
    void valuesBelongToTheirConfiguration();
    void aNameThatIsRefused();

private:
    void makeFile(const char *name) const
    {
        QVERIFY(QDir().mkpath(m_folder));
        QFile file(QDir(m_folder).filePath(QString::fromUtf8(name)));
        QVERIFY(file.open(QIODevice::WriteOnly));
    }
    std::unique_ptr<FreshStore> m_store;
    QString m_folder;
};

void TestConfigurations::oneInUseOfAFreshStore()
{
    const QString inUse = configurationInUse();
    QVERIFY(!inUse.isEmpty());
    QCOMPARE(configurations(), QStringList{inUse});
}

void TestConfigurations::filesByName()
{
    useConfiguration(QStringLiteral("studio"));
    for (const char *name : {"van.rkcfg", "a b.rkcfg",
                             "\xc3\x9c"
                             "2.rkcfg"})
        makeFile(name);
    const QStringList names = configurations();
    QVERIFY(names.contains(QStringLiteral("studio")));
    QVERIFY(names.contains(QStringLiteral("a b")));
    QVERIFY(names.contains(QStringLiteral("\u00dc2")));
    QVERIFY(names.indexOf(QStringLiteral("a b")) < names.indexOf(QStringLiteral("studio")));
    QVERIFY(names.indexOf(QStringLiteral("studio")) < names.indexOf(QStringLiteral("van")));
}

void TestConfigurations::otherFilesAreNone()
{
    const QStringList before = configurations();
    for (const char *name : {"notes.txt", "van.rkcfg.bak", "van.rkcfg-wal"})
        makeFile(name);
    QVERIFY(QDir(m_folder).mkdir(QStringLiteral("folder.rkcfg")));
    QCOMPARE(configurations(), before);
}

void TestConfigurations::theOneInUseWithoutAFileComesFirst()
{
    useConfiguration(QStringLiteral("zebra"));
    rkCFGClose(RKCFG_DEFAULT_STORE, 0);
    makeFile("aardvark.rkcfg");
    QVERIFY(QFile::remove(QDir(m_folder).filePath(QStringLiteral("zebra.rkcfg"))));
    const QStringList names = configurations();
    QCOMPARE(names.first(), QStringLiteral("zebra"));
    QVERIFY(names.contains(QStringLiteral("aardvark")));
}

void TestConfigurations::choosingClosesAndNames()
{
    useConfiguration(QStringLiteral("studio"));
    QCOMPARE(Recorder::calls(), (QByteArrayList{"close 1", "name studio"}));
    QCOMPARE(configurationInUse(), QStringLiteral("studio"));
}

void TestConfigurations::valuesBelongToTheirConfiguration()
{
    const QString first = configurationInUse();
    put(0, "TransmitIp", QStringLiteral("10.0.0.1"));
    useConfiguration(QStringLiteral("studio"));
    QCOMPARE(text(0, "TransmitIp"), QString());
    useConfiguration(first);
    QCOMPARE(text(0, "TransmitIp"), QStringLiteral("10.0.0.1"));
}

void TestConfigurations::aNameThatIsRefused()
{
    const QString inUse = configurationInUse();
    for (const char *name : {"", "a/b", ".hidden"}) {
        useConfiguration(QString::fromLatin1(name));
        QCOMPARE(configurationInUse(), inUse);
    }
}

QTEST_GUILESS_MAIN(TestConfigurations)
#include "test_configurations.moc"
