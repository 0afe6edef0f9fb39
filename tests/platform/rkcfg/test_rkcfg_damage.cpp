// SPDX-License-Identifier: MIT
// Damage of every sort: the damaged file is kept byte by byte, a sound store takes its place.
#include "storehome.h"

#include <QDir>
#include <QFile>
#include <QtTest>

class TestRkcfgDamage : public QObject {
    Q_OBJECT

private slots:
    void init() { m_home = std::make_unique<StoreHome>(); }
    void cleanup() { m_home.reset(); }

    void damagedFileIsKeptAndRestored_data();
    void damagedFileIsKeptAndRestored();
    void withoutACopyItStartsAfresh();
    void everySinglePage_data();
    void everySinglePage();
    void damagedCopyIsNotUsed_data();
    void damagedCopyIsNotUsed();
    void logGoesWithItsFile();
    void quarantineOpensWithSqlite();
    void severalInOneSecond();
    void damageWhileRunning();
    void cutShortWhileRunning();
    void emptiedWhileRunning();
    void strangersDatabaseIsSetAside();
    void tableOfAnotherShapeIsSetAside();
    void otherConfigurationsAreLeftAlone();

private:
    void fill(int count = 600);
    std::unique_ptr<StoreHome> m_home;
};

namespace {

constexpr int pageSize = 4096;

QByteArray valueOf(int i)
{
    return "value " + QByteArray::number(i) + QByteArray(30, 'x');
}

int countSound(int count = 600)
{
    int sound = 0;
    for (int i = 0; i < count; ++i)
        sound += text("KWX\\Internal0", QByteArray::number(i).constData()) == valueOf(i);
    return sound;
}

} // namespace

// Saved and closed: everything lies in the file itself, and there is a good copy.
void TestRkcfgDamage::fill(int count)
{
    for (int i = 0; i < count; ++i)
        putText("KWX\\Internal0", QByteArray::number(i).constData(), valueOf(i));
    QCOMPARE(rkCFGClose(store, 1), 0);
    QCOMPARE(takeLog(), QStringList());
}

void TestRkcfgDamage::damagedFileIsKeptAndRestored_data()
{
    QTest::addColumn<int>("keep");         // bytes of the sound file to keep, -1: all
    QTest::addColumn<int>("from");         // where the noise begins
    QTest::addColumn<QByteArray>("noise"); // written over it
    QTest::newRow("empty") << 0 << 0 << QByteArray();
    QTest::newRow("one byte") << 0 << 0 << QByteArray("x");
    QTest::newRow("99 bytes") << 99 << 0 << QByteArray();
    QTest::newRow("header only") << 100 << 0 << QByteArray();
    QTest::newRow("half a page") << 2048 << 0 << QByteArray();
    QTest::newRow("one page") << pageSize << 0 << QByteArray();
    QTest::newRow("last page missing") << -2 << 0 << QByteArray();
    QTest::newRow("last byte missing") << -3 << 0 << QByteArray();
    QTest::newRow("noise") << 0 << 0 << noise(50000, 11);
    QTest::newRow("zeros") << 0 << 0 << QByteArray(50000, '\0');
    QTest::newRow("text") << 0 << 0 << QByteArray("[channel0]\nname=value\n");
    QTest::newRow("header is noise") << -1 << 0 << noise(100, 12);
    QTest::newRow("first page is noise") << -1 << 0 << noise(pageSize, 13);
    QTest::newRow("schema is noise") << -1 << 100 << noise(pageSize - 100, 14);
    QTest::newRow("root page is noise") << -1 << pageSize << noise(pageSize, 15);
    QTest::newRow("leaf page is zeros") << -1 << 3 * pageSize << QByteArray(pageSize, '\0');
    QTest::newRow("application id is another") << -1 << 68 << QByteArray("abcd");
    QTest::newRow("version is zero") << -1 << 60 << QByteArray(4, '\0');
}

void TestRkcfgDamage::damagedFileIsKeptAndRestored()
{
    QFETCH(int, keep);
    QFETCH(int, from);
    QFETCH(QByteArray, noise);
    fill();
    QByteArray damaged = content(m_home->database());
    QVERIFY(damaged.size() > 8 * pageSize);
    if (keep == -2)
        damaged.chop(pageSize);
    else if (keep == -3)
        damaged.chop(1);
    else if (keep >= 0)
        damaged.truncate(keep);
    damaged.replace(from, noise.size(), noise);
    overwrite(m_home->database(), damaged);

    QCOMPARE(countSound(), 600);
    const QStringList quarantined = m_home->quarantined();
    QCOMPARE(quarantined.size(), 1);
    QCOMPARE(content(m_home->path(quarantined.first())), damaged);
    const QStringList log = takeLog();
    QCOMPARE(log.size(), 1);
    QVERIFY2(log.first().contains(quarantined.first()) &&
                 log.first().contains(QLatin1String("last good copy")),
             qPrintable(log.first()));
    QVERIFY(putNumber("p", "n", 1));
    QCOMPARE(rkCFGClose(store, 1), 0);
    QCOMPARE(Direct(m_home->database()).ask("PRAGMA integrity_check"), QByteArray("ok"));
    QCOMPARE(number("p", "n"), 1u);
    QCOMPARE(takeLog(), QStringList());
}

void TestRkcfgDamage::withoutACopyItStartsAfresh()
{
    fill();
    QFile::remove(m_home->database() + QStringLiteral(".good"));
    overwrite(m_home->database(), noise(20000, 21));
    QCOMPARE(countSound(), 0);
    QCOMPARE(m_home->quarantined().size(), 1);
    const QStringList log = takeLog();
    QCOMPARE(log.size(), 1);
    QVERIFY2(log.first().contains(QLatin1String("empty store")), qPrintable(log.first()));
    QVERIFY(putNumber("p", "n", 1));
    QCOMPARE(save(), 0);
}

void TestRkcfgDamage::everySinglePage_data()
{
    QTest::addColumn<int>("page");
    for (int page = 0; page < 8; ++page)
        QTest::addRow("page %d", page) << page;
}

void TestRkcfgDamage::everySinglePage()
{
    QFETCH(int, page);
    fill();
    scribble(m_home->database(), qint64(page) * pageSize, noise(pageSize, quint32(page) + 31));
    QCOMPARE(countSound(), 600);
    QCOMPARE(m_home->quarantined().size(), 1);
}

void TestRkcfgDamage::damagedCopyIsNotUsed_data()
{
    QTest::addColumn<QByteArray>("copy");
    QTest::newRow("empty") << QByteArray();
    QTest::newRow("noise") << noise(20000, 41);
    QTest::newRow("text") << QByteArray("hello");
}

void TestRkcfgDamage::damagedCopyIsNotUsed()
{
    QFETCH(QByteArray, copy);
    fill();
    overwrite(m_home->database() + QStringLiteral(".good"), copy);
    overwrite(m_home->database(), noise(20000, 42));
    QCOMPARE(countSound(), 0);
    QVERIFY(putNumber("p", "n", 1));
    QCOMPARE(rkCFGClose(store, 1), 0);
    QCOMPARE(number("p", "n"), 1u);
    QCOMPARE(m_home->quarantined().size(), 1);
}

void TestRkcfgDamage::logGoesWithItsFile()
{
    fill();
    Worker worker;
    QCOMPARE(worker.ask("setn p n 5"), QByteArray("1"));
    worker.kill();
    const QByteArray log = content(m_home->database() + QStringLiteral("-wal"));
    QVERIFY(!log.isEmpty());
    overwrite(m_home->database(), noise(20000, 51));
    // The log's change must not end up in the file that takes the place.
    QCOMPARE(countSound(), 600);
    QCOMPARE(number("p", "n"), std::nullopt);
    const QString quarantined = m_home->path(m_home->quarantined().value(0));
    QCOMPARE(content(quarantined + QStringLiteral("-wal")), log);
}

void TestRkcfgDamage::quarantineOpensWithSqlite()
{
    fill();
    Worker worker;
    worker.ask("setn p n 5");
    worker.kill();
    // Only the application id is wrong: all values can still be had from what was set aside.
    scribble(m_home->database(), 68, "abcd");
    QCOMPARE(countSound(), 600);
    Direct kept(m_home->path(m_home->quarantined().value(0)));
    QCOMPARE(kept.ask("SELECT count(*) FROM setting"), QByteArray("601"));
}

void TestRkcfgDamage::severalInOneSecond()
{
    for (int round = 1; round <= 5; ++round) {
        putNumber("p", "n", 1);
        closeStore();
        overwrite(m_home->database(), "damage " + QByteArray::number(round));
        number("p", "n");
        QCOMPARE(m_home->quarantined().size(), round);
    }
    QList<QByteArray> kept;
    for (const QString &file : m_home->quarantined())
        kept << content(m_home->path(file));
    std::sort(kept.begin(), kept.end());
    QCOMPARE(kept, (QList<QByteArray>{"damage 1", "damage 2", "damage 3", "damage 4", "damage 5"}));
}

void TestRkcfgDamage::damageWhileRunning()
{
    fill();
    QCOMPARE(countSound(), 600);
    QByteArray damaged = content(m_home->database());
    damaged.replace(pageSize, damaged.size() - pageSize, noise(damaged.size() - pageSize, 61));
    scribble(m_home->database(), 0, damaged);
    // Another process' write makes this one read the file again.
    Direct other(m_home->database());
    other.ask("PRAGMA user_version = 1");
    QCOMPARE(countSound(), 600);
    QVERIFY(putNumber("p", "n", 1));
    QCOMPARE(save(), 0);
    QCOMPARE(m_home->quarantined().size(), 1);
    QCOMPARE(tool({QStringLiteral("get"), QStringLiteral("p"), QStringLiteral("n")}).out, QByteArray("1\n"));
}

void TestRkcfgDamage::cutShortWhileRunning()
{
    fill();
    QCOMPARE(countSound(), 600);
    QVERIFY(QFile::resize(m_home->database(), 3 * pageSize));
    QCOMPARE(countSound(), 600);
    QCOMPARE(m_home->quarantined().size(), 1);
    QCOMPARE(QFileInfo(m_home->path(m_home->quarantined().first())).size(), qint64(3 * pageSize));
}

void TestRkcfgDamage::emptiedWhileRunning()
{
    fill();
    QCOMPARE(countSound(), 600);
    // With something in the log SQLite itself would not look at the file's length.
    QVERIFY(putNumber("p", "logged", 1));
    overwrite(m_home->database(), {});
    QVERIFY(putNumber("p", "n", 1));
    QCOMPARE(countSound(), 600);
    QCOMPARE(m_home->quarantined().size(), 1);
}

void TestRkcfgDamage::strangersDatabaseIsSetAside()
{
    fill();
    QFile::remove(m_home->database());
    overwrite(m_home->path(QStringLiteral("strange")), {});
    Direct(m_home->path(QStringLiteral("strange"))).ask("CREATE TABLE setting (a)");
    const QByteArray strange = content(m_home->path(QStringLiteral("strange")));
    QVERIFY(QFile::rename(m_home->path(QStringLiteral("strange")), m_home->database()));
    QCOMPARE(countSound(), 600);
    QCOMPARE(content(m_home->path(m_home->quarantined().value(0))), strange);
}

void TestRkcfgDamage::tableOfAnotherShapeIsSetAside()
{
    fill();
    Direct(m_home->database()).ask("ALTER TABLE setting RENAME COLUMN name TO title");
    QCOMPARE(countSound(), 600);
    QCOMPARE(m_home->quarantined().size(), 1);
}

void TestRkcfgDamage::otherConfigurationsAreLeftAlone()
{
    fill();
    rkCFGSetDefaultName("other");
    putNumber("p", "n", 1);
    rkCFGClose(store, 1);
    const QByteArray before = content(m_home->database());
    overwrite(m_home->database(QStringLiteral("other")), "damage");
    QCOMPARE(number("p", "n"), 1u);
    QCOMPARE(content(m_home->database()), before);
    QVERIFY(m_home->quarantined().value(0).startsWith(QLatin1String("other.rkcfg.corrupt-")));
}

QTEST_GUILESS_MAIN(TestRkcfgDamage)
#include "test_rkcfg_damage.moc"
