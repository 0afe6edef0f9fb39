// SPDX-License-Identifier: MIT
// A statement in a database in memory: what goes in comes out, by its own kind; a failed bind is told by the
// step.
#include "statement.h"

#include <QtTest>

using namespace rkcfg;

namespace {

QByteArray bytes(std::string_view text)
{
    return QByteArray(text.data(), int(text.size()));
}

} // namespace

class TestRkcfgStatement : public QObject {
    Q_OBJECT

    sqlite3 *m_db = nullptr;

    void execute(const char *sql) { QCOMPARE(sqlite3_exec(m_db, sql, nullptr, nullptr, nullptr), SQLITE_OK); }

private slots:
    void init()
    {
        QCOMPARE(sqlite3_open(":memory:", &m_db), SQLITE_OK);
        sqlite3_extended_result_codes(m_db, 1);
        execute("CREATE TABLE t(key TEXT PRIMARY KEY, value)");
    }
    void cleanup() { QCOMPARE(sqlite3_close(m_db), SQLITE_OK); } // busy while a statement is left

    void textsComeBackByteForByte_data();
    void textsComeBackByteForByte();
    void numbersComeBack_data();
    void numbersComeBack();
    void valuesComeBackByTheirKind();
    void aColumnThatIsNotBoundIsNull();
    void bytesAreNoText();
    void aResetForgetsWhatWasBound();
    void aFailedBindIsToldByTheStep();
    void extendedCodes();
    void endsWithItsBlock();
    void badStatements();
};

void TestRkcfgStatement::textsComeBackByteForByte_data()
{
    QTest::addColumn<QByteArray>("text");
    QTest::newRow("empty") << QByteArray("");
    QTest::newRow("plain") << QByteArray("239.1.1.1");
    QTest::newRow("zero byte inside") << QByteArray("a\0b", 3);
    QTest::newRow("not UTF-8") << QByteArray("\xff\xfe");
    QTest::newRow("quotes") << QByteArray("'; DROP TABLE t; --\"");
    QTest::newRow("long") << QByteArray(1 << 20, 'x');
}
void TestRkcfgStatement::textsComeBackByteForByte()
{
    QFETCH(QByteArray, text);
    Statement statement;
    QCOMPARE(statement.prepare(m_db, "SELECT ?1, typeof(?1)"), SQLITE_OK);
    statement.bind(1, std::string_view(text.constData(), size_t(text.size())));
    QCOMPARE(statement.step(), SQLITE_ROW);
    QCOMPARE(bytes(statement.text(0)), text);
    QCOMPARE(bytes(statement.text(1)), QByteArray("text"));
    QVERIFY(!statement.null(0));
    QCOMPARE(statement.value(0).type, Type::Text);
    QCOMPARE(statement.step(), SQLITE_DONE);
}

void TestRkcfgStatement::numbersComeBack_data()
{
    QTest::addColumn<qint64>("number");
    for (const qint64 number : std::initializer_list<qint64>{0, 1, -1, UINT32_MAX, INT64_MAX, INT64_MIN})
        QTest::addRow("%lld", number) << number;
}
void TestRkcfgStatement::numbersComeBack()
{
    QFETCH(qint64, number);
    Statement statement;
    QCOMPARE(statement.prepare(m_db, "SELECT ?1, typeof(?1)"), SQLITE_OK);
    statement.bind(1, int64_t{number});
    QCOMPARE(statement.step(), SQLITE_ROW);
    QCOMPARE(statement.number(0), int64_t{number});
    QCOMPARE(bytes(statement.text(1)), QByteArray("integer"));
}

void TestRkcfgStatement::valuesComeBackByTheirKind()
{
    const Value values[] = {{Type::Text, "a text", 0},
                            {Type::Text, "", 0},
                            {Type::Number, {}, UINT32_MAX},
                            {Type::Number, {}, 0},
                            {Type::Absent, {}, 0}};
    Statement statement;
    QCOMPARE(statement.prepare(m_db, "SELECT ?1"), SQLITE_OK);
    for (const Value &value : values) {
        const Use use(statement);
        statement.bind(1, value);
        QCOMPARE(statement.step(), SQLITE_ROW);
        QVERIFY(statement.value(0) == value);
        QCOMPARE(statement.null(0), value.type == Type::Absent);
    }
}

void TestRkcfgStatement::aColumnThatIsNotBoundIsNull()
{
    Statement statement;
    QCOMPARE(statement.prepare(m_db, "SELECT ?1"), SQLITE_OK);
    QCOMPARE(statement.step(), SQLITE_ROW);
    QVERIFY(statement.null(0));
    QVERIFY(statement.text(0).empty());
    QCOMPARE(statement.number(0), int64_t{0});
    QCOMPARE(statement.value(0).type, Type::Absent);
    statement.reset();
    // A text without bytes is an empty text all the same.
    statement.bind(1, std::string_view());
    QCOMPARE(statement.step(), SQLITE_ROW);
    QVERIFY(!statement.null(0));
}

void TestRkcfgStatement::bytesAreNoText()
{
    Statement statement;
    QCOMPARE(statement.prepare(m_db, "SELECT typeof(?1), length(?1), ?1"), SQLITE_OK);
    statement.bindBytes(1, std::string_view("a\0b", 3));
    QCOMPARE(statement.step(), SQLITE_ROW);
    QCOMPARE(bytes(statement.text(0)), QByteArray("blob"));
    QCOMPARE(statement.number(1), int64_t{3});
    QCOMPARE(bytes(statement.text(2)), QByteArray("a\0b", 3));
}

void TestRkcfgStatement::aResetForgetsWhatWasBound()
{
    Statement statement;
    QCOMPARE(statement.prepare(m_db, "INSERT INTO t VALUES(?1, ?2)"), SQLITE_OK);
    statement.bind(1, "one");
    statement.bind(2, int64_t{1});
    QCOMPARE(statement.run(), SQLITE_OK);
    statement.bind(1, "two");
    QCOMPARE(statement.run(), SQLITE_OK);
    Statement look;
    QCOMPARE(look.prepare(m_db, "SELECT value FROM t ORDER BY key"), SQLITE_OK);
    QCOMPARE(look.step(), SQLITE_ROW);
    QCOMPARE(look.number(0), int64_t{1});
    QCOMPARE(look.step(), SQLITE_ROW);
    QVERIFY(look.null(0));
}

void TestRkcfgStatement::aFailedBindIsToldByTheStep()
{
    Statement statement;
    QCOMPARE(statement.prepare(m_db, "INSERT INTO t VALUES(?1, 1)"), SQLITE_OK);
    statement.bind(2, int64_t{1}); // there is no such column
    statement.bind(1, "one");      // a later success does not hide it
    QCOMPARE(statement.run() & 0xff, SQLITE_RANGE);
    // And the next use is a new one.
    statement.bind(1, "one");
    QCOMPARE(statement.run(), SQLITE_OK);
    statement.bind(7, "x");
    statement.bindBytes(8, "x");
    QCOMPARE(statement.step() & 0xff, SQLITE_RANGE);
    statement.reset();
    Statement look;
    QCOMPARE(look.prepare(m_db, "SELECT count(*) FROM t"), SQLITE_OK);
    QCOMPARE(look.step(), SQLITE_ROW);
    QCOMPARE(look.number(0), int64_t{1});
}

void TestRkcfgStatement::extendedCodes()
{
    Statement statement;
    QCOMPARE(statement.prepare(m_db, "INSERT INTO t VALUES('same', 1)"), SQLITE_OK);
    QCOMPARE(statement.run(), SQLITE_OK);
    QCOMPARE(statement.run(), SQLITE_CONSTRAINT_PRIMARYKEY);
    QCOMPARE(finished(SQLITE_DONE), SQLITE_OK);
    QCOMPARE(finished(SQLITE_ROW), SQLITE_ROW);
    QCOMPARE(finished(SQLITE_BUSY), SQLITE_BUSY);
}

// Whoever is left standing on a row keeps a read transaction open.
void TestRkcfgStatement::endsWithItsBlock()
{
    execute("INSERT INTO t VALUES('a', 1), ('b', 2)");
    Statement statement;
    QCOMPARE(statement.prepare(m_db, "SELECT key FROM t"), SQLITE_OK);
    {
        const Use use(statement);
        QCOMPARE(statement.step(), SQLITE_ROW);
        QCOMPARE(sqlite3_txn_state(m_db, nullptr), SQLITE_TXN_READ);
    }
    QCOMPARE(sqlite3_txn_state(m_db, nullptr), SQLITE_TXN_NONE);
    // Prepared anew it is another statement.
    QCOMPARE(statement.prepare(m_db, "SELECT 7"), SQLITE_OK);
    QCOMPARE(statement.step(), SQLITE_ROW);
    QCOMPARE(statement.number(0), int64_t{7});
}

void TestRkcfgStatement::badStatements()
{
    Statement statement;
    QVERIFY(!statement.prepared());
    QCOMPARE(statement.prepare(m_db, "SELECT FROM nothing"), SQLITE_ERROR);
    QVERIFY(!statement.prepared());
    QVERIFY(statement.step() != SQLITE_ROW);
    statement.reset();
    statement.finalize();
    QCOMPARE(statement.prepare(m_db, "SELECT 1"), SQLITE_OK);
    QVERIFY(statement.prepared());
}

QTEST_GUILESS_MAIN(TestRkcfgStatement)
#include "test_rkcfg_statement.moc"
