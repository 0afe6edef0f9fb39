// SPDX-License-Identifier: MIT
// How the store lies on disk: names, permissions, header, the good copy, and files that change under it.
#include "storehome.h"

#include <QDir>
#include <QFile>
#include <QtTest>
#include <sys/stat.h>
#include <sys/time.h>

class TestRkcfgFiles : public QObject {
    Q_OBJECT

private slots:
    void init() { m_home = std::make_unique<StoreHome>(); }
    void cleanup() { m_home.reset(); }

    void everythingIsPrivate_data();
    void everythingIsPrivate();
    void looseRightsAreTakenBack();
    void headerTellsWhatItIs();
    void tableIsReadableWithSqlite();
    void tableRefusesWhatIsNoValue_data();
    void tableRefusesWhatIsNoValue();
    void logIsKeptBesideWhileOpen();
    void savingTakesNoWriteLock();
    void leftoversOfACrashDoNotMatter();
    void removedWhileOpenIsMadeAnew();
    void removedFolderIsMadeAnew();
    void exchangedWhileOpenIsFollowed();
    void logOfARemovedStoreIsSetAside();
    void folderInItsPlaceIsRefused();
    void fifoInItsPlaceDoesNotHang();
    void newerVersionIsLeftAlone();
    void firstSaveTakesAGoodCopy();
    void emptyStoreIsNotCopied();
    void youngCopyStays();
    void oldCopyIsRenewed();
    void oldCopyStaysWithoutAChange();
    void goodCopyIsComplete();

private:
    std::unique_ptr<StoreHome> m_home;
};

namespace {

uint32_t mode(const QString &file)
{
    struct stat info {};
    return stat(QFile::encodeName(file).constData(), &info) == 0 ? info.st_mode & 07777 : 0;
}

// Moves a file's time of change; the store reads a good copy's age from it.
void makeOlder(const QString &file, int seconds)
{
    const timeval now{time(nullptr) - seconds, 0};
    const timeval times[2] = {now, now};
    QCOMPARE(utimes(QFile::encodeName(file).constData(), times), 0);
}

QByteArray copied(const StoreHome &home, const char *name)
{
    Direct copy(home.database() + QStringLiteral(".good"));
    return copy.ask(
        qPrintable(QStringLiteral("SELECT value FROM setting WHERE name = '%1'").arg(QLatin1String(name))));
}

} // namespace

void TestRkcfgFiles::everythingIsPrivate_data()
{
    QTest::addColumn<uint32_t>("mask");
    QTest::newRow("open mask") << 0u;
    QTest::newRow("usual mask") << 022u;
    QTest::newRow("closed mask") << 077u;
}

void TestRkcfgFiles::everythingIsPrivate()
{
    QFETCH(uint32_t, mask);
    const mode_t before = umask(mask);
    putNumber("p", "n", 1);
    save();
    rkCFGSetDefaultName("other");
    putNumber("p", "n", 1);
    save();
    umask(before);
    QCOMPARE(mode(m_home->folder()), 0700u);
    const QStringList files = m_home->files();
    QVERIFY2(files.size() >= 8, qPrintable(files.join(QLatin1Char(' '))));
    for (const QString &file : files)
        QVERIFY2(mode(m_home->path(file)) == 0600u, qPrintable(file));
}

void TestRkcfgFiles::looseRightsAreTakenBack()
{
    putNumber("p", "n", 1);
    rkCFGClose(store, 1);
    chmod(QFile::encodeName(m_home->folder()).constData(), 0755);
    chmod(QFile::encodeName(m_home->database()).constData(), 0644);
    QCOMPARE(number("p", "n"), 1u);
    QCOMPARE(mode(m_home->folder()), 0700u);
    QCOMPARE(mode(m_home->database()), 0600u);
    QCOMPARE(mode(m_home->database() + QStringLiteral("-wal")), 0600u);
}

void TestRkcfgFiles::headerTellsWhatItIs()
{
    putNumber("p", "n", 1);
    Direct direct(m_home->database());
    QCOMPARE(direct.ask("PRAGMA application_id"), QByteArray::number(0x726B6366));
    QCOMPARE(direct.ask("PRAGMA user_version"), QByteArray("1"));
    QCOMPARE(direct.ask("PRAGMA journal_mode"), QByteArray("wal"));
    QCOMPARE(direct.ask("PRAGMA integrity_check"), QByteArray("ok"));
}

void TestRkcfgFiles::tableIsReadableWithSqlite()
{
    putText("KWX\\Config", "Name", "abc");
    putNumber("KWX\\Config", "Number", 4294967295u);
    Direct direct(m_home->database());
    QCOMPARE(direct.ask("SELECT type || typeof(value) || value FROM setting WHERE path = 'kwx\\config' AND "
                        "name = 'Name'"),
             QByteArray("1textabc"));
    QCOMPARE(direct.ask("SELECT type || typeof(value) || value FROM setting WHERE name = 'Number'"),
             QByteArray("2integer4294967295"));
    QCOMPARE(direct.ask("SELECT wr FROM pragma_table_list WHERE name = 'setting'"), QByteArray("1"));
}

void TestRkcfgFiles::tableRefusesWhatIsNoValue_data()
{
    QTest::addColumn<QByteArray>("values");
    QTest::newRow("text as number") << QByteArray("'p', 'n', 2, 'x'");
    QTest::newRow("number as text") << QByteArray("'p', 'n', 1, 5");
    QTest::newRow("unknown type") << QByteArray("'p', 'n', 3, 5");
    QTest::newRow("no value") << QByteArray("'p', 'n', 1, NULL");
    QTest::newRow("no name") << QByteArray("'p', NULL, 1, 'x'");
}

void TestRkcfgFiles::tableRefusesWhatIsNoValue()
{
    QFETCH(QByteArray, values);
    putNumber("p", "other", 1);
    Direct direct(m_home->database());
    const QByteArray answer =
        direct.ask(QByteArray("INSERT INTO setting VALUES (" + values + ")").constData());
    QVERIFY2(answer.contains("constraint failed"), answer.constData());
}

void TestRkcfgFiles::logIsKeptBesideWhileOpen()
{
    putNumber("p", "n", 1);
    QVERIFY(QFileInfo(m_home->database() + QStringLiteral("-wal")).size() > 0);
    rkCFGClose(store, 1);
    QVERIFY(!QFile::exists(m_home->database() + QStringLiteral("-wal")));
    QCOMPARE(number("p", "n"), 1u);
}

void TestRkcfgFiles::savingTakesNoWriteLock()
{
    putNumber("p", "n", 1);
    Direct writer(m_home->database());
    QCOMPARE(writer.ask("BEGIN IMMEDIATE"), QByteArray());
    QCOMPARE(save(), 0);
    QCOMPARE(number("p", "n"), 1u);
    QCOMPARE(writer.ask("COMMIT"), QByteArray());
    QCOMPARE(takeLog(), QStringList());
}

void TestRkcfgFiles::leftoversOfACrashDoNotMatter()
{
    QDir().mkpath(m_home->folder());
    for (const char *suffix : {".new", ".new-wal", ".new-shm", ".new-journal", ".good.new"})
        overwrite(m_home->database() + QLatin1String(suffix), noise(5000, 5));
    putNumber("p", "n", 1);
    QCOMPARE(save(), 0);
    closeStore();
    QCOMPARE(number("p", "n"), 1u);
    QCOMPARE(m_home->files(QStringLiteral("*.new*")), QStringList());
    QCOMPARE(takeLog(), QStringList());
}

void TestRkcfgFiles::removedWhileOpenIsMadeAnew()
{
    putNumber("p", "n", 1);
    for (const QString &file : m_home->files(QStringLiteral("default*")))
        QFile::remove(m_home->path(file));
    QCOMPARE(number("p", "n"), std::nullopt);
    QVERIFY(putNumber("p", "n", 2));
    QCOMPARE(tool({QStringLiteral("get"), QStringLiteral("p"), QStringLiteral("n")}).out, QByteArray("2\n"));
    // The next removal is noticed by a write first.
    for (const QString &file : m_home->files(QStringLiteral("default*")))
        QFile::remove(m_home->path(file));
    QVERIFY(putNumber("p", "n", 2));
    QCOMPARE(tool({QStringLiteral("get"), QStringLiteral("p"), QStringLiteral("n")}).out, QByteArray("2\n"));
}

void TestRkcfgFiles::removedFolderIsMadeAnew()
{
    putNumber("p", "n", 1);
    QVERIFY(QDir(m_home->folder()).removeRecursively());
    QVERIFY(putNumber("p", "n", 1));
    QCOMPARE(save(), 0);
    QCOMPARE(mode(m_home->folder()), 0700u);
    QCOMPARE(tool({QStringLiteral("get"), QStringLiteral("p"), QStringLiteral("n")}).out, QByteArray("1\n"));
}

void TestRkcfgFiles::exchangedWhileOpenIsFollowed()
{
    putNumber("p", "n", 1);
    rkCFGClose(store, 1);
    QVERIFY(QFile::copy(m_home->database(), m_home->path(QStringLiteral("backup"))));
    putNumber("p", "n", 2);
    rkCFGClose(store, 1);
    QCOMPARE(number("p", "n"), 2u);
    for (const char *suffix : {"-wal", "-shm"})
        QFile::remove(m_home->database() + QLatin1String(suffix));
    QCOMPARE(rename(QFile::encodeName(m_home->path(QStringLiteral("backup"))).constData(),
                    QFile::encodeName(m_home->database()).constData()),
             0);
    QCOMPARE(number("p", "n"), 1u);
    QVERIFY(putNumber("p", "n", 3));
    QCOMPARE(tool({QStringLiteral("get"), QStringLiteral("p"), QStringLiteral("n")}).out, QByteArray("3\n"));
}

void TestRkcfgFiles::logOfARemovedStoreIsSetAside()
{
    Worker worker;
    worker.ask("setn p n 1");
    worker.kill();
    const QByteArray log = content(m_home->database() + QStringLiteral("-wal"));
    QVERIFY(log.size() > 100);
    QFile::remove(m_home->database());
    QCOMPARE(number("p", "n"), std::nullopt);
    const QStringList kept = m_home->files(QStringLiteral("*.corrupt-*-wal"));
    QCOMPARE(kept.size(), 1);
    QCOMPARE(content(m_home->path(kept.first())), log);
}

void TestRkcfgFiles::folderInItsPlaceIsRefused()
{
    QVERIFY(QDir().mkpath(m_home->database()));
    QVERIFY(!putNumber("p", "n", 1));
    QCOMPARE(number("p", "n"), std::nullopt);
    QVERIFY(save() != 0);
    QVERIFY(QFileInfo(m_home->database()).isDir());
    QCOMPARE(m_home->quarantined(), QStringList());
    QCOMPARE(takeLog().size(), 1);
}

void TestRkcfgFiles::fifoInItsPlaceDoesNotHang()
{
    QDir().mkpath(m_home->folder());
    QCOMPARE(mkfifo(QFile::encodeName(m_home->database()).constData(), 0600), 0);
    QVERIFY(!putNumber("p", "n", 1));
    QVERIFY(save() != 0);
    QCOMPARE(m_home->quarantined(), QStringList());
}

void TestRkcfgFiles::newerVersionIsLeftAlone()
{
    putNumber("p", "n", 1);
    rkCFGClose(store, 1);
    Direct(m_home->database()).ask("PRAGMA user_version = 2");
    const QByteArray before = content(m_home->database());
    QVERIFY(!putNumber("p", "n", 2));
    QCOMPARE(number("p", "n"), std::nullopt);
    QVERIFY(save() != 0);
    QCOMPARE(content(m_home->database()), before);
    QCOMPARE(m_home->quarantined(), QStringList());
    QCOMPARE(takeLog().size(), 1);
}

void TestRkcfgFiles::firstSaveTakesAGoodCopy()
{
    putNumber("p", "n", 1);
    QVERIFY(!QFile::exists(m_home->database() + QStringLiteral(".good")));
    save();
    QCOMPARE(copied(*m_home, "n"), QByteArray("1"));
}

void TestRkcfgFiles::emptyStoreIsNotCopied()
{
    QCOMPARE(number("p", "n"), std::nullopt);
    save();
    rkCFGClose(store, 1);
    QVERIFY(!QFile::exists(m_home->database() + QStringLiteral(".good")));
}

void TestRkcfgFiles::youngCopyStays()
{
    putNumber("p", "n", 1);
    save();
    putNumber("p", "n", 2);
    save();
    closeStore();
    QCOMPARE(number("p", "n"), 2u);
    QCOMPARE(copied(*m_home, "n"), QByteArray("1"));
}

void TestRkcfgFiles::oldCopyIsRenewed()
{
    const QString copy = m_home->database() + QStringLiteral(".good");
    putNumber("p", "n", 1);
    save();
    makeOlder(copy, 601);
    putNumber("p", "n", 2);
    save();
    QCOMPARE(copied(*m_home, "n"), QByteArray("2"));
    // At open as well, for what another process wrote.
    putNumber("p", "n", 3);
    closeStore();
    makeOlder(copy, 601);
    QCOMPARE(number("p", "n"), 3u);
    QCOMPARE(copied(*m_home, "n"), QByteArray("3"));
}

void TestRkcfgFiles::oldCopyStaysWithoutAChange()
{
    const QString copy = m_home->database() + QStringLiteral(".good");
    putNumber("p", "n", 1);
    save();
    closeStore();
    makeOlder(m_home->database(), 2000);
    makeOlder(copy, 1000);
    const auto before = QFileInfo(copy).lastModified();
    QCOMPARE(number("p", "n"), 1u);
    QCOMPARE(QFileInfo(copy).lastModified(), before);
}

void TestRkcfgFiles::goodCopyIsComplete()
{
    for (int i = 0; i < 600; ++i)
        putText("p", QByteArray::number(i).constData(), noise(40, quint32(i)));
    save();
    Direct copy(m_home->database() + QStringLiteral(".good"));
    QCOMPARE(copy.ask("SELECT count(*) FROM setting"), QByteArray("600"));
    QCOMPARE(copy.ask("PRAGMA application_id"), QByteArray::number(0x726B6366));
    QCOMPARE(copy.ask("PRAGMA user_version"), QByteArray("1"));
    QCOMPARE(copy.ask("PRAGMA integrity_check"), QByteArray("ok"));
    QCOMPARE(m_home->files(QStringLiteral("*.good.*")), QStringList());
}

QTEST_GUILESS_MAIN(TestRkcfgFiles)
#include "test_rkcfg_files.moc"
