// SPDX-License-Identifier: MIT
#include "ops/csv.h"

#include <QtTest>

class TestCsv : public QObject {
    Q_OBJECT

private slots:
    void isRead_data();
    void isRead();
    void wrongOnesAreRefused_data();
    void wrongOnesAreRefused();
    void rowsKnowTheirLine();
    void comesBack_data();
    void comesBack();
    void noCellIsAFormula_data();
    void noCellIsAFormula();
    void onlyWhatHasToIsQuoted_data();
    void onlyWhatHasToIsQuoted();
    void theReasonIsTold_data();
    void theReasonIsTold();
    void apostrophesOfTexts_data();
    void apostrophesOfTexts();
    void theLastLineNeedsNoEnd_data();
    void theLastLineNeedsNoEnd();
};

namespace {

QByteArray joined(const std::vector<ops::CsvRow> &rows)
{
    QByteArrayList lines;
    for (const ops::CsvRow &row : rows)
        lines.append(row.cells.join('|'));
    return lines.join('/');
}

} // namespace

void TestCsv::isRead_data()
{
    QTest::addColumn<QByteArray>("text");
    QTest::addColumn<QByteArray>("rows");
    const auto row = [](const char *name, const char *text, const char *rows) {
        QTest::newRow(name) << QByteArray(text) << QByteArray(rows);
    };
    row("empty", "", "");
    row("one cell", "a", "a");
    row("line ends", "a,b\nc,d\r\ne,f", "a|b/c|d/e|f");
    row("empty cells", ",a,\n", "|a|");
    row("blank lines", "a\n\n\r\nb\n", "a/b");
    row("quotes", "\"a,b\",\"c\"\"d\"", "a,b|c\"d");
    row("line end in quotes", "\"a\nb\",c", "a\nb|c");
    row("empty quotes", "\"\",a", "|a");
    row("semicolons", "a;b;c\nd,e;f;g", "a|b|c/d,e|f|g");
    row("tabs", "a\tb\nc\td", "a|b/c|d");
    row("byte order mark",
        "\xef\xbb\xbf"
        "a,b",
        "a|b");
    row("utf-8", "\xc3\xa4,b", "\xc3\xa4|b");
    row("carriage return alone", "a\rb,c", "a\rb|c");
}

void TestCsv::isRead()
{
    QFETCH(QByteArray, text);
    QFETCH(QByteArray, rows);
    const auto read = ops::readCsv(text);
    QVERIFY(read);
    QCOMPARE(joined(*read), rows);
}

void TestCsv::wrongOnesAreRefused_data()
{
    QTest::addColumn<QByteArray>("text");
    QTest::newRow("open quote") << QByteArray("a,\"b");
    QTest::newRow("quote inside") << QByteArray("a\"b,c");
    QTest::newRow("behind a quote") << QByteArray("\"a\"b,c");
    QTest::newRow("zero byte") << QByteArray("a\0b", 3);
    QTest::newRow("not utf-8") << QByteArray("a,\xff");
    QTest::newRow("utf-16") << QByteArray("\xff\xfe"
                                          "a\0b\0",
                                          6);
}

void TestCsv::wrongOnesAreRefused()
{
    QFETCH(QByteArray, text);
    QVERIFY(!ops::readCsv(text));
}

void TestCsv::rowsKnowTheirLine()
{
    const auto rows = ops::readCsv("a\n\n\"b\nc\"\nd\n");
    QVERIFY(rows);
    QCOMPARE(int(rows->size()), 3);
    QCOMPARE((*rows)[1].line, 3);
    QCOMPARE((*rows)[2].line, 5);
    QVERIFY(ops::readCsv("a\nb\"\n").failure().text.startsWith("row 2:"));
}

void TestCsv::comesBack_data()
{
    QTest::addColumn<QByteArray>("cell");
    for (const char *cell : {"", "a", "a,b", "a;b", "\"", "a\nb", "a\r\nb", "\t", " a ", "\xc3\xa4"})
        QTest::newRow(cell) << QByteArray(cell);
}

void TestCsv::comesBack()
{
    QFETCH(QByteArray, cell);
    const auto rows = ops::readCsv("x,y,z\r\n" + ops::csvLine({"1", cell, "2"}));
    QVERIFY(rows);
    QCOMPARE((*rows)[1].cells, QByteArrayList({"1", cell, "2"}));
}

void TestCsv::noCellIsAFormula_data()
{
    QTest::addColumn<QByteArray>("text");
    for (const char *text : {"=1+1", "+1", "-1", "@SUM(A1)", "\t=1", "\r=1", "'=1", "(empty)"})
        QTest::newRow(text) << QByteArray(text);
}

void TestCsv::noCellIsAFormula()
{
    QFETCH(QByteArray, text);
    QCOMPARE(ops::safeCell(text), '\'' + text);
    QCOMPARE(ops::plainCell(ops::safeCell(text)), text);
    QCOMPARE(ops::plainCell("'plain"), QByteArray("'plain"));
    QCOMPARE(ops::safeCell("239.1.1.1"), QByteArray("239.1.1.1"));
}

void TestCsv::onlyWhatHasToIsQuoted_data()
{
    QTest::addColumn<QByteArray>("cell");
    QTest::addColumn<QByteArray>("written");
    const auto row = [](const char *name, const char *cell, const char *written) {
        QTest::newRow(name) << QByteArray(cell) << QByteArray(written);
    };
    row("word", "a b", "a b");
    row("empty", "", "");
    row("comma", "a,b", "\"a,b\"");
    row("semicolon", "a;b", "\"a;b\"");
    row("tab", "a\tb", "\"a\tb\"");
    row("quote", "a\"b", "\"a\"\"b\"");
    row("two quotes", "\"\"", "\"\"\"\"\"\"");
    row("line feed", "a\nb", "\"a\nb\"");
    row("return", "a\rb", "\"a\rb\"");
    row("apostrophe", "'a'", "'a'");
}

void TestCsv::onlyWhatHasToIsQuoted()
{
    QFETCH(QByteArray, cell);
    QFETCH(QByteArray, written);
    QCOMPARE(ops::csvLine({cell}), written + "\r\n");
    QCOMPARE(ops::csvLine({"x", cell, "y"}), "x," + written + ",y\r\n");
}

void TestCsv::theReasonIsTold_data()
{
    QTest::addColumn<QByteArray>("text");
    QTest::addColumn<QByteArray>("reason");
    QTest::newRow("utf-16") << QByteArray("\xff\xfe"
                                          "a")
                            << QByteArray("not UTF-8; save it as \"CSV UTF-8\"");
    QTest::newRow("latin-1") << QByteArray("a,\xe4") << QByteArray("not UTF-8; save it as \"CSV UTF-8\"");
    QTest::newRow("zero byte") << QByteArray("a\0", 2) << QByteArray("a zero byte: no text");
    QTest::newRow("open quote") << QByteArray("a\n\"b\n")
                                << QByteArray("row 2: a quote inside a cell, or one that is not closed");
    QTest::newRow("behind one of several lines")
        << QByteArray("\"a\nb\"\nc\"\n")
        << QByteArray("row 3: a quote inside a cell, or one that is not closed");
}

void TestCsv::theReasonIsTold()
{
    QFETCH(QByteArray, text);
    QFETCH(QByteArray, reason);
    const auto rows = ops::readCsv(text);
    QVERIFY(!rows);
    QCOMPARE(rows.failure().text, reason);
}

// An apostrophe in front of anything else is the text's own.
void TestCsv::apostrophesOfTexts_data()
{
    QTest::addColumn<QByteArray>("cell");
    QTest::addColumn<QByteArray>("text");
    const auto row = [](const char *cell, const char *text) {
        QTest::newRow(*cell ? cell : "empty") << QByteArray(cell) << QByteArray(text);
    };
    row("", "");
    row("'", "'");
    row("''", "'");
    row("'=", "=");
    row("'=1", "=1");
    row("'a", "'a");
    row("a=", "a=");
    row("x=1", "x=1");
    row("''=1", "'=1");
    row("'(absent)", "(absent)");
}

void TestCsv::apostrophesOfTexts()
{
    QFETCH(QByteArray, cell);
    QFETCH(QByteArray, text);
    QCOMPARE(ops::plainCell(cell), text);
    QCOMPARE(ops::plainCell(ops::safeCell(text)), text);
}

void TestCsv::theLastLineNeedsNoEnd_data()
{
    QTest::addColumn<QByteArray>("text");
    for (const char *text :
         {"a,b\nc,d", "a,b\nc,d\n", "a,b\r\nc,d\r\n", "a,b\r\nc,d", "\n\na,b\n\n\nc,d\n\n"})
        QTest::newRow(QByteArray(text).replace('\n', '/').replace('\r', '!').constData()) << QByteArray(text);
}

void TestCsv::theLastLineNeedsNoEnd()
{
    QFETCH(QByteArray, text);
    const auto rows = ops::readCsv(text);
    QVERIFY(rows);
    QCOMPARE(int(rows->size()), 2);
    QCOMPARE((*rows)[0].cells, QByteArrayList({"a", "b"}));
    QCOMPARE((*rows)[1].cells, QByteArrayList({"c", "d"}));
}

QTEST_APPLESS_MAIN(TestCsv)
#include "test_ops_csv.moc"
