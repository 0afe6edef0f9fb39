// SPDX-License-Identifier: MIT
// Whether a write-ahead log is damaged, asked of real logs of SQLite in which something is then changed.
#include "logscan.h"

#include <QTemporaryDir>
#include <QtTest>

#include <sqlite3.h>

using namespace rkcfg;

namespace {

constexpr int kPage = 512;
constexpr int kHeader = 32;
constexpr int kFrame = 24 + kPage;

// What the log of a database holds after these statements; each is one transaction.
QByteArray logAfter(const QByteArrayList &statements)
{
    const QTemporaryDir folder;
    const QString path = folder.filePath(QStringLiteral("a.db"));
    sqlite3 *database = nullptr;
    if (sqlite3_open(QFile::encodeName(path).constData(), &database) != SQLITE_OK)
        qFatal("no database");
    for (const QByteArray &statement :
         QByteArrayList{"PRAGMA page_size=512", "PRAGMA journal_mode=WAL", "PRAGMA wal_autocheckpoint=0"} +
             statements)
        if (sqlite3_exec(database, statement.constData(), nullptr, nullptr, nullptr) != SQLITE_OK)
            qFatal("%s: %s", statement.constData(), sqlite3_errmsg(database));
    QFile log(path + QStringLiteral("-wal"));
    if (!log.open(QIODevice::ReadOnly))
        qFatal("no log");
    const QByteArray bytes = log.readAll();
    sqlite3_close(database);
    return bytes;
}

QByteArrayList someWork()
{
    QByteArrayList statements{"CREATE TABLE t(a)"};
    for (int i = 0; i < 6; ++i)
        statements << "INSERT INTO t VALUES(zeroblob(700))";
    return statements;
}

int framesIn(const QByteArray &log)
{
    return (log.size() - kHeader) / kFrame;
}

} // namespace

class TestRkcfgLogScan : public QObject {
    Q_OBJECT

    QTemporaryDir m_folder;
    const QByteArray m_log = logAfter(someWork());

    bool damaged(const QByteArray &bytes)
    {
        const QString path = m_folder.filePath(QStringLiteral("log"));
        QFile::remove(path); // some file systems sync a file that is written over
        QFile file(path);
        if (!file.open(QIODevice::WriteOnly) || file.write(bytes) != bytes.size())
            qFatal("cannot write");
        file.close();
        return logDamaged(QFile::encodeName(path).toStdString());
    }
    static QByteArray changed(QByteArray bytes, int at)
    {
        bytes[at] = char(bytes[at] ^ 0x10);
        return bytes;
    }

private slots:
    void initTestCase() { QVERIFY2(framesIn(m_log) >= 8, QByteArray::number(m_log.size()).constData()); }
    void aSoundOne();
    void noneAtAll();
    void whatIsNoLog_data();
    void whatIsNoLog();
    void anyBitOfTheHeader();
    void aFrameInTheMiddle();
    void theLastFrameOfALogThatWasUsedOnce();
    void theLastFrameOfALogThatWasBegunAnew();
    void framesOfTheRunBeforeAreNoDamage();
    void cutAnywhere();
    void tooLongToBeLookedAt();
};

void TestRkcfgLogScan::aSoundOne()
{
    QVERIFY(!damaged(m_log));
    QVERIFY(!damaged(logAfter({"CREATE TABLE t(a)"})));
}

void TestRkcfgLogScan::noneAtAll()
{
    QVERIFY(!logDamaged(m_folder.filePath(QStringLiteral("missing")).toStdString()));
    QVERIFY(!logDamaged(m_folder.path().toStdString()));
    // A link may lead to somebody else's file; it is not looked at.
    QVERIFY(damaged(changed(m_log, 0)));
    const QString link = m_folder.filePath(QStringLiteral("link"));
    QVERIFY(QFile::link(m_folder.filePath(QStringLiteral("log")), link));
    QVERIFY(!logDamaged(link.toStdString()));
}

void TestRkcfgLogScan::whatIsNoLog_data()
{
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<bool>("expected");
    // Too short for one frame: nothing was ever committed in it.
    QTest::newRow("empty") << QByteArray() << false;
    QTest::newRow("a few bytes") << QByteArray("SQLite") << false;
    QTest::newRow("header only") << m_log.left(kHeader) << false;
    QTest::newRow("header and most of a frame") << m_log.left(kHeader + kFrame - 1) << false;
    QTest::newRow("zeros") << QByteArray(4096, '\0') << true;
    QTest::newRow("text") << QByteArray(4096, 'x') << true;
}
void TestRkcfgLogScan::whatIsNoLog()
{
    QFETCH(QByteArray, bytes);
    QTEST(damaged(bytes), "expected");
}

void TestRkcfgLogScan::anyBitOfTheHeader()
{
    for (int at = 0; at < kHeader; ++at)
        for (int bit = 0; bit < 8; ++bit) {
            QByteArray bytes = m_log;
            bytes[at] = char(bytes[at] ^ 1 << bit);
            QVERIFY2(damaged(bytes), qPrintable(QStringLiteral("byte %1, bit %2").arg(at).arg(bit)));
        }
}

// Each byte of its header, and here and there in its page.
void TestRkcfgLogScan::aFrameInTheMiddle()
{
    const int frame = kHeader + 3 * kFrame;
    for (int at = frame; at < frame + kFrame; at += at < frame + 24 ? 1 : 9)
        QVERIFY2(damaged(changed(m_log, at)), QByteArray::number(at - frame).constData());
}

void TestRkcfgLogScan::theLastFrameOfALogThatWasUsedOnce()
{
    QVERIFY(damaged(changed(m_log, m_log.size() - 1)));
    QVERIFY(damaged(changed(m_log, m_log.size() - kFrame)));
}

// Behind the end of a log that was begun anew lies what was there before, so an unsound frame at its end says
// nothing.
void TestRkcfgLogScan::theLastFrameOfALogThatWasBegunAnew()
{
    QByteArrayList statements = someWork();
    statements << "PRAGMA wal_checkpoint(RESTART)" << someWork().mid(1);
    const QByteArray log = logAfter(statements);
    QVERIFY(!damaged(log));
    QVERIFY(!damaged(changed(log, log.size() - 1)));
    QVERIFY(damaged(changed(log, kHeader + 3 * kFrame)));
}

void TestRkcfgLogScan::framesOfTheRunBeforeAreNoDamage()
{
    QByteArrayList statements = someWork();
    statements << "PRAGMA wal_checkpoint(RESTART)"
               << "INSERT INTO t VALUES(1)";
    const QByteArray log = logAfter(statements);
    QVERIFY(framesIn(log) >= 8); // the old ones are still there
    QVERIFY(!damaged(log));
    // What is changed in them is nobody's.
    QVERIFY(!damaged(changed(log, log.size() - kFrame - 100)));
}

// As a crash leaves it: whatever its length, what is there is sound.
void TestRkcfgLogScan::cutAnywhere()
{
    for (int length = 0; length <= m_log.size(); length += 23)
        QVERIFY2(!damaged(m_log.left(length)), QByteArray::number(length).constData());
    for (int frame = 0; frame <= framesIn(m_log); ++frame)
        QVERIFY(!damaged(m_log.left(kHeader + frame * kFrame)));
    // Half a frame at the end, that was never written whole.
    QVERIFY(!damaged(m_log + QByteArray(kFrame / 2, 'x')));
}

void TestRkcfgLogScan::tooLongToBeLookedAt()
{
    const QString path = m_folder.filePath(QStringLiteral("long"));
    QFile file(path);
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.write(QByteArray(4096, 'x'));
    QVERIFY(file.resize((64 << 20) + 1)); // a hole, no disk is filled
    QVERIFY(!logDamaged(path.toStdString()));
    QVERIFY(file.resize(64 << 20));
    QVERIFY(logDamaged(path.toStdString()));
}

QTEST_GUILESS_MAIN(TestRkcfgLogScan)
#include "test_rkcfg_logscan.moc"
