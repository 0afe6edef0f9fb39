// SPDX-License-Identifier: MIT
// What programs note down beside the values: with them in everything but the list and the history.
#include "changes.h"

#include <QFile>
#include <QRandomGenerator>
#include <QtTest>
#include <unistd.h>

class TestRkcfgNotes : public QObject {
    Q_OBJECT

private slots:
    void init() { m_home = std::make_unique<StoreHome>(); }
    void cleanup() { m_home.reset(); }

    void comeBackAsTheyWere_data();
    void comeBackAsTheyWere();
    void areReplacedAndRemoved();
    void ownersAreApart();
    void areWalkedInOrder();
    void walkEndsWhereTheVisitorSays();
    void visitorMayUseTheStore();
    void smallBuffer();
    void areNoValues();
    void leaveNoHistory();
    void belongToTheTransaction();
    void killAtAnyMomentKeepsThemWithTheValues();
    void goodCopiesHaveThem();
    void renamedConfigurationsHaveThem();
    void repairedStoresHaveThem();
    void strangeTableIsDamage();
    void olderProgramsOpenTheStore();
    void othersNotesAreNews();
    void refused_data();
    void refused();
    void unknownHandle();

private:
    std::unique_ptr<StoreHome> m_home;
};

namespace {

constexpr const char *owner = "tester";

int setNote(const char *key, const QByteArray &data, void *handle = store)
{
    return rkCFGSetNote(handle, owner, key, data.constData(), static_cast<uint32_t>(data.size()));
}

std::optional<QByteArray> note(const char *key, void *handle = store, const char *whose = owner)
{
    uint32_t size = 0;
    if (rkCFGNote(handle, whose, key, nullptr, &size) != 0)
        return std::nullopt;
    QByteArray data(static_cast<int>(size), '\0');
    if (rkCFGNote(handle, whose, key, data.data(), &size) != 0)
        return std::nullopt;
    return data;
}

int addLine(void *context, const char *key, const void *data, uint32_t size)
{
    static_cast<QStringList *>(context)->append(
        QString::fromUtf8(key) + QLatin1Char('=') +
        QString::fromUtf8(static_cast<const char *>(data), static_cast<int>(size)));
    return 0;
}

QStringList notes(const char *whose = owner)
{
    QStringList lines;
    if (rkCFGForEachNote(store, whose, addLine, &lines) != 0)
        lines << QStringLiteral("unreadable");
    return lines;
}

QStringList words(const char *text)
{
    return QString::fromLatin1(text).split(QLatin1Char(' '), Qt::SkipEmptyParts);
}

} // namespace

void TestRkcfgNotes::comeBackAsTheyWere_data()
{
    QTest::addColumn<QByteArray>("data");
    QTest::newRow("text") << QByteArray("some words");
    QTest::newRow("one byte") << QByteArray("x");
    QTest::newRow("a zero alone") << QByteArray(1, '\0');
    QTest::newRow("zeros inside") << QByteArray("a\0b\0", 4);
    QTest::newRow("no UTF-8") << QByteArray("\xff\xfe\x80", 3);
    QTest::newRow("as long as it may be") << noise(1 << 20, 7);
}

void TestRkcfgNotes::comeBackAsTheyWere()
{
    QFETCH(QByteArray, data);
    QCOMPARE(note("k"), std::nullopt);
    QCOMPARE(setNote("k", data), 0);
    QCOMPARE(note("k"), data);
    closeStore();
    QCOMPARE(note("k"), data);
    QCOMPARE(takeLog(), QStringList());
}

void TestRkcfgNotes::areReplacedAndRemoved()
{
    QCOMPARE(rkCFGSetNote(store, owner, "k", nullptr, 0), 0); // nothing there, not even the table
    setNote("k", "one");
    setNote("k", "two");
    QCOMPARE(notes(), words("k=two"));
    QCOMPARE(rkCFGSetNote(store, owner, "k", "rest", 0), 0);
    QCOMPARE(note("k"), std::nullopt);
    setNote("k", "three");
    QCOMPARE(rkCFGSetNote(store, owner, "k", nullptr, 5), 0);
    QCOMPARE(rkCFGSetNote(store, owner, "k", nullptr, 0), 0);
    QCOMPARE(notes(), QStringList());
    QCOMPARE(takeLog(), QStringList());
}

void TestRkcfgNotes::ownersAreApart()
{
    setNote("k", "mine");
    QCOMPARE(rkCFGSetNote(store, "Tester", "k", "other", 5), 0);
    QCOMPARE(note("k"), QByteArray("mine"));
    QCOMPARE(note("k", store, "Tester"), QByteArray("other"));
    QCOMPARE(note("K"), std::nullopt);
    QCOMPARE(notes("Tester"), words("k=other"));
    QCOMPARE(notes("nobody"), QStringList());
}

void TestRkcfgNotes::areWalkedInOrder()
{
    for (const char *key : {"b", "a/2", "a/10", "B", "\xc3\xa4"})
        setNote(key, key);
    QStringList expected = words("B=B a/10=a/10 a/2=a/2 b=b");
    expected << QString::fromUtf8("\xc3\xa4=\xc3\xa4");
    QCOMPARE(notes(), expected);
}

void TestRkcfgNotes::walkEndsWhereTheVisitorSays()
{
    setNote("a", "1");
    setNote("b", "2");
    int seen = 0;
    const auto one = [](void *context, const char *, const void *, uint32_t) {
        return ++*static_cast<int *>(context);
    };
    QCOMPARE(rkCFGForEachNote(store, owner, one, &seen), 0);
    QCOMPARE(seen, 1);
}

void TestRkcfgNotes::visitorMayUseTheStore()
{
    setNote("a", "1");
    setNote("b", "2");
    const auto remove = [](void *, const char *key, const void *, uint32_t) {
        return rkCFGSetNote(store, owner, key, nullptr, 0);
    };
    QCOMPARE(rkCFGForEachNote(store, owner, remove, nullptr), 0);
    QCOMPARE(notes(), QStringList());
}

void TestRkcfgNotes::smallBuffer()
{
    setNote("k", "abcdef");
    char buffer[8] = "-------";
    uint32_t size = 3;
    QCOMPARE(rkCFGNote(store, owner, "k", buffer, &size), 0);
    QCOMPARE(size, 6u);
    QCOMPARE(QByteArray(buffer), QByteArray("abc----"));
    size = 3;
    QVERIFY(rkCFGNote(store, owner, "absent", buffer, &size) != 0);
    QCOMPARE(size, 3u);
}

void TestRkcfgNotes::areNoValues()
{
    putNumber("p", "a", 1);
    setNote("p", "x");
    QCOMPARE(values(), words("p|a|1"));
    rkCFGRemove(store, "p", "a");
    QCOMPARE(values(), QStringList());
    QCOMPARE(note("p"), QByteArray("x"));
}

void TestRkcfgNotes::leaveNoHistory()
{
    putNumber("p", "a", 1);
    setNote("k", "x");
    putNumber("p", "a", 2);
    rkCFGSetNote(store, owner, "k", nullptr, 0);
    QCOMPARE(changes(), words("p|a|->1 p|a|1>2"));
    // And a note does not end the batch that is under way.
    QCOMPARE(newestBatch(), 1);
}

void TestRkcfgNotes::belongToTheTransaction()
{
    setNote("before", "x");
    rkCFGBegin(store);
    putNumber("p", "a", 1);
    QCOMPARE(setNote("k", "x"), 0);
    QCOMPARE(rkCFGSetNote(store, owner, "before", nullptr, 0), 0);
    QCOMPARE(notes(), words("k=x"));
    QCOMPARE(Direct(m_home->database()).ask("SELECT group_concat(key) FROM note"), QByteArray("before"));
    QCOMPARE(rkCFGEnd(store, 0), 0);
    QCOMPARE(notes(), words("before=x"));
    QCOMPARE(values(), QStringList());
    rkCFGBegin(store);
    putNumber("p", "a", 1);
    setNote("k", "x");
    QCOMPARE(rkCFGEnd(store, 1), 0);
    QCOMPARE(notes(), words("before=x k=x"));
}

// The first note of a store makes its table: that must not stay behind, nor be missed later.
void TestRkcfgNotes::killAtAnyMomentKeepsThemWithTheValues()
{
    for (int round = 0; round < 20; ++round) {
        Worker worker({QStringLiteral("notes")});
        worker.readLine();
        usleep(static_cast<useconds_t>(QRandomGenerator::global()->bounded(20000)));
        worker.kill();
        const QByteArray noted = note("n", store, "worker").value_or("0");
        QCOMPARE(noted, QByteArray::number(number("Noted", "n").value_or(0)));
        QCOMPARE(note("m", store, "worker").value_or("0"), noted);
        closeStore();
    }
    QCOMPARE(m_home->quarantined(), QStringList());
    QCOMPARE(takeLog(), QStringList());
}

void TestRkcfgNotes::goodCopiesHaveThem()
{
    putNumber("p", "a", 1);
    setNote("k", "kept");
    QCOMPARE(save(), 0);
    QFile::remove(m_home->database() + QStringLiteral(".good"));
    putNumber("p", "a", 2);
    QCOMPARE(rkCFGClose(store, 1), 0);
    QVERIFY(QFile::exists(m_home->database() + QStringLiteral(".good")));
    overwrite(m_home->database(), "rubbish");
    QCOMPARE(note("k"), QByteArray("kept"));
    QCOMPARE(number("p", "a"), 2u);
    QCOMPARE(m_home->quarantined().size(), 1);
}

void TestRkcfgNotes::renamedConfigurationsHaveThem()
{
    void *const night = rkCFGOpen("night", 1);
    QVERIFY(night);
    uint32_t value = 1;
    rkCFGValueDword(night, "p", "a", &value, 1);
    QCOMPARE(setNote("k", "kept", night), 0);
    rkCFGClose(night, 1);
    QCOMPARE(rkCFGRename("night", "day"), 0);
    void *const day = rkCFGOpen("day", 0);
    QCOMPARE(note("k", day), QByteArray("kept"));
    rkCFGClose(day, 0);
    QCOMPARE(note("k"), std::nullopt);
}

// The history is unreadable, the notes before it are not: they stay with the settings.
void TestRkcfgNotes::repairedStoresHaveThem()
{
    putNumber("p", "a", 1);
    setNote("k", "kept");
    QCOMPARE(rkCFGClose(store, 1), 0);
    QFile::remove(m_home->database() + QStringLiteral(".good"));
    Direct(m_home->database()).ask("ALTER TABLE history RENAME COLUMN batch TO something");
    QVERIFY(putNumber("p", "a", 2));
    QCOMPARE(m_home->quarantined().size(), 1);
    QCOMPARE(notes(), words("k=kept"));
    QCOMPARE(setNote("k", "again"), 0);
    QCOMPARE(notes(), words("k=again"));
}

void TestRkcfgNotes::strangeTableIsDamage()
{
    putNumber("p", "a", 1);
    setNote("k", "lost");
    QCOMPARE(rkCFGClose(store, 1), 0);
    QFile::remove(m_home->database() + QStringLiteral(".good"));
    Direct(m_home->database()).ask("ALTER TABLE note RENAME COLUMN data TO something");
    QCOMPARE(setNote("k", "new"), 0);
    QCOMPARE(notes(), words("k=new"));
    QCOMPARE(number("p", "a"), 1u);
    QCOMPARE(m_home->quarantined().size(), 1);
}

// They look for the identity, the version and the settings' table, and take any other table along.
void TestRkcfgNotes::olderProgramsOpenTheStore()
{
    putNumber("p", "a", 1);
    setNote("k", "x");
    QCOMPARE(rkCFGClose(store, 1), 0);
    {
        Direct database(m_home->database());
        QCOMPARE(database.ask("PRAGMA application_id"), QByteArray::number(0x726B6366));
        QCOMPARE(database.ask("PRAGMA user_version"), QByteArray("1"));
        QCOMPARE(database.ask("SELECT group_concat(name) FROM (SELECT name FROM sqlite_schema"
                              " WHERE type = 'table' ORDER BY name)"),
                 QByteArray("history,note,setting,writer"));
        // To the library this table is what the notes are to an older one.
        database.ask("CREATE TABLE later (id INTEGER PRIMARY KEY, any BLOB)");
        database.ask("INSERT INTO later VALUES (1, x'00ff')");
    }
    QVERIFY(putNumber("p", "a", 2));
    QFile::remove(m_home->database() + QStringLiteral(".good"));
    QCOMPARE(rkCFGClose(store, 1), 0);
    QVERIFY(putNumber("p", "a", 3));
    QCOMPARE(rkCFGClose(store, 1), 0);
    QCOMPARE(Direct(m_home->database() + QStringLiteral(".good")).ask("SELECT hex(any) FROM later"),
             QByteArray("00FF"));
    QCOMPARE(m_home->quarantined(), QStringList());
    QCOMPARE(takeLog(), QStringList());
}

void TestRkcfgNotes::othersNotesAreNews()
{
    putNumber("p", "a", 1);
    setNote("k", "x");
    uint64_t mark = 0;
    QCOMPARE(rkCFGChanged(store, &mark), 1);
    setNote("k", "y");
    QCOMPARE(rkCFGChanged(store, &mark), 0);
    Direct(m_home->database()).ask("UPDATE note SET data = x'00'");
    QCOMPARE(rkCFGChanged(store, &mark), 1);
}

void TestRkcfgNotes::refused_data()
{
    QTest::addColumn<QByteArray>("whose");
    QTest::addColumn<QByteArray>("key");
    QTest::addColumn<int>("bytes");
    QTest::newRow("no owner") << QByteArray() << QByteArray("k") << 1;
    QTest::newRow("long owner") << QByteArray(65, 'o') << QByteArray("k") << 1;
    QTest::newRow("owner is no UTF-8") << QByteArray("\xff") << QByteArray("k") << 1;
    QTest::newRow("no key") << QByteArray("o") << QByteArray() << 1;
    QTest::newRow("long key") << QByteArray("o") << QByteArray(1025, 'k') << 1;
    QTest::newRow("key is no UTF-8") << QByteArray("o") << QByteArray("\xc3") << 1;
    QTest::newRow("too much") << QByteArray("o") << QByteArray("k") << (1 << 20) + 1;
}

void TestRkcfgNotes::refused()
{
    QFETCH(QByteArray, whose);
    QFETCH(QByteArray, key);
    QFETCH(int, bytes);
    const QByteArray data(bytes, 'x');
    QVERIFY(rkCFGSetNote(store, whose.constData(), key.constData(), data.constData(),
                         static_cast<uint32_t>(data.size())) != 0);
    QCOMPARE(takeLog().size(), 1);
    QCOMPARE(rkCFGSetNote(store, "o", "k", data.constData(), 1), 0);
    QCOMPARE(rkCFGSetNote(store, QByteArray(64, 'o').constData(), QByteArray(1024, 'k').constData(),
                          data.constData(), 1),
             0);
}

void TestRkcfgNotes::unknownHandle()
{
    uint32_t size = 0;
    QVERIFY(rkCFGSetNote(nullptr, owner, "k", "x", 1) != 0);
    QVERIFY(rkCFGNote(nullptr, owner, "k", nullptr, &size) != 0);
    QVERIFY(rkCFGForEachNote(nullptr, owner, addLine, nullptr) != 0);
    QVERIFY(rkCFGNote(store, owner, "k", nullptr, nullptr) != 0);
    QVERIFY(rkCFGSetNote(store, nullptr, "k", "x", 1) != 0);
    QVERIFY(rkCFGSetNote(store, owner, nullptr, "x", 1) != 0);
    QVERIFY(rkCFGForEachNote(store, nullptr, addLine, nullptr) != 0);
    QVERIFY(rkCFGForEachNote(store, owner, nullptr, nullptr) != 0);
    takeLog();
}

QTEST_GUILESS_MAIN(TestRkcfgNotes)
#include "test_rkcfg_notes.moc"
