// SPDX-License-Identifier: MIT
// Tables of random cells between us and Python's csv module, which reads and writes what spreadsheets do.
#include "ops/csv.h"

#include <QProcess>
#include <QtTest>

#include <random>

class TestCsvPython : public QObject {
    Q_OBJECT

private slots:
    void pythonReadsWhatWeWrite_data();
    void pythonReadsWhatWeWrite();
    void weReadWhatPythonWrites_data();
    void weReadWhatPythonWrites();
    void guardedCellsSurviveBoth();
};

namespace {

using Table = QList<QByteArrayList>;

// Of bytes that matter to somebody: separators, quotes, line ends, what formulas begin with, and letters of
// two bytes.
QByteArray randomCell(std::mt19937 &random)
{
    static const char *const pieces[] = {",", ";", "\t", "\"",       "\"\"", "\n",       "\r\n",
                                         "=", "+", "-",  "@",        "'",    "(",        ")",
                                         " ", "a", "0",  "\xc3\xa4", "x",    "239.1.1.1"};
    QByteArray cell;
    for (auto length = random() % 5; length > 0; --length)
        cell += pieces[random() % std::size(pieces)];
    return cell;
}

// The first row decides on the separator, so it is plain; no row is blank.
Table randomTable(unsigned seed)
{
    std::mt19937 random(seed);
    const int columns = 2 + static_cast<int>(random() % 4);
    Table table;
    QByteArrayList head;
    for (int column = 0; column < columns; ++column)
        head.append("c" + QByteArray::number(column));
    table.append(head);
    for (auto rows = 1 + random() % 12; rows > 0; --rows) {
        QByteArrayList row;
        for (int column = 0; column < columns; ++column)
            row.append(randomCell(random));
        table.append(row);
    }
    return table;
}

// Cells as hexadecimal digits, so that nothing in them means anything on the way.
QByteArray inHex(const Table &table)
{
    QByteArray text;
    for (const QByteArrayList &row : table) {
        QByteArrayList cells;
        for (const QByteArray &cell : row)
            cells.append('.' + cell.toHex());
        text += cells.join(' ') + '\n';
    }
    return text;
}

QByteArray python(const char *script, const QByteArray &input, const QStringList &arguments = {})
{
    QProcess process;
    process.start(QStringLiteral("python3"),
                  QStringList{QStringLiteral("-c"), QString::fromLatin1(script)} + arguments);
    process.write(input);
    process.closeWriteChannel();
    process.waitForFinished(60000);
    return process.exitCode() == 0 ? process.readAllStandardOutput() : process.readAllStandardError();
}

constexpr char kRead[] = "import csv, io, sys\n"
                         "text = sys.stdin.buffer.read().decode()\n"
                         "for row in csv.reader(io.StringIO(text, newline='')):\n"
                         "    print(' '.join('.' + cell.encode().hex() for cell in row))\n";

constexpr char kWrite[] =
    "import csv, io, sys\n"
    "separator, end, quoting = sys.argv[1:]\n"
    "out = io.StringIO(newline='')\n"
    "end = {'lf': '\\n', 'crlf': '\\r\\n'}[end]\n"
    "writer = csv.writer(out, delimiter=separator, lineterminator=end, quoting=int(quoting))\n"
    "for line in sys.stdin:\n"
    "    writer.writerow([bytes.fromhex(cell[1:]).decode() for cell in line.split()])\n"
    "sys.stdout.buffer.write(out.getvalue().encode())\n";

QByteArray written(const Table &table)
{
    QByteArray text;
    for (const QByteArrayList &row : table)
        text += ops::csvLine(row);
    return text;
}

QByteArray readAgain(const QByteArray &text)
{
    const auto rows = ops::readCsv(text);
    if (!rows)
        return rows.failure().text;
    Table table;
    for (const ops::CsvRow &row : *rows)
        table.append(row.cells);
    return inHex(table);
}

} // namespace

void TestCsvPython::pythonReadsWhatWeWrite_data()
{
    QTest::addColumn<unsigned>("seed");
    for (unsigned seed = 1; seed <= 5; ++seed)
        QTest::addRow("%u", seed) << seed;
}

void TestCsvPython::pythonReadsWhatWeWrite()
{
    QFETCH(unsigned, seed);
    const Table table = randomTable(seed);
    QCOMPARE(python(kRead, written(table)), inHex(table));
    QCOMPARE(readAgain(written(table)), inHex(table));
}

void TestCsvPython::weReadWhatPythonWrites_data()
{
    QTest::addColumn<unsigned>("seed");
    QTest::addColumn<QString>("separator");
    QTest::addColumn<QString>("lineEnd");
    QTest::addColumn<QString>("quoting");
    unsigned seed = 100;
    for (const char *separator : {",", ";", "\t"}) {
        for (const char *lineEnd : {"lf", "crlf"}) {
            for (const char *quoting : {"0", "1"}) // where needed, or everywhere
                QTest::addRow("'%s' %s %s", separator, lineEnd, quoting)
                    << ++seed << QString::fromLatin1(separator) << QString::fromLatin1(lineEnd)
                    << QString::fromLatin1(quoting);
        }
    }
}

void TestCsvPython::weReadWhatPythonWrites()
{
    QFETCH(unsigned, seed);
    QFETCH(QString, separator);
    QFETCH(QString, lineEnd);
    QFETCH(QString, quoting);
    const Table table = randomTable(seed);
    const QByteArray text = python(kWrite, inHex(table), {separator, lineEnd, quoting});
    QVERIFY(text.contains("c0"));
    QCOMPARE(readAgain(text), inHex(table));
    QCOMPARE(readAgain("\xef\xbb\xbf" + text), inHex(table)); // as a spreadsheet saves "CSV UTF-8"
}

// A cell of ours is no formula to anybody, and comes back as it was.
void TestCsvPython::guardedCellsSurviveBoth()
{
    std::mt19937 random(5);
    Table plain, guarded;
    for (int row = 0; row < 200; ++row) {
        plain.append({"x", randomCell(random)});
        guarded.append({"x", ops::safeCell(plain.last()[1])});
        const QByteArray cell = guarded.last()[1];
        QVERIFY2(cell.isEmpty() || !QByteArray("=+-@\t\r").contains(cell[0]), cell.constData());
    }
    guarded.prepend({"a", "b"});
    QCOMPARE(python(kRead, written(guarded)), inHex(guarded));
    const auto rows = ops::readCsv(written(guarded));
    QVERIFY(rows);
    QCOMPARE(int(rows->size()), guarded.size());
    for (int row = 0; row < plain.size(); ++row)
        QCOMPARE(ops::plainCell((*rows)[static_cast<std::size_t>(row) + 1].cells[1]), plain[row][1]);
}

QTEST_GUILESS_MAIN(TestCsvPython)
#include "test_ops_csvpython.moc"
