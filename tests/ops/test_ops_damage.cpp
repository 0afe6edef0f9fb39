// SPDX-License-Identifier: MIT
// Files that were damaged on the way: a dump with any byte changed, cut anywhere or put together wrongly, a
// table with cells exchanged. What is taken all the same is what was written; nothing else ever gets into a
// store.
#include "ops/dump.h"
#include "ops/table.h"
#include "ops/vocabulary.h"
#include "randomstore.h"
#include "rows.h"

class TestDamage : public QObject {
    Q_OBJECT

private slots:
    void everyByteOfADumpCounts_data();
    void everyByteOfADumpCounts();
    void aDumpCutAnywhereIsNone();
    void valuesOfADumpCannotBeMoved();
    void aTableChangesItsCellsOnly_data();
    void aTableChangesItsCellsOnly();
    void aWrongCellIsFoundWhereItIs_data();
    void aWrongCellIsFoundWhereItIs();
    void rowsMayStandInAnyOrder();
};

namespace {

ops::Dump someDump()
{
    ops::Snapshot values;
    values.set("KWX\\Config", "MaxIntChannels", number(4));
    values.set(channel(0), "ClockDomain", number(127));
    values.set(channel(0), "ReceiveDestinationIp", text("239.1.1.1"));
    values.set(channel(1), "SiteOwn", ops::Value::ofText(QByteArray("a\0\xff", 3)));
    return {{"default", values}, {"night", ops::Snapshot()}};
}

bool sameDump(const ops::Dump &left, const ops::Dump &right)
{
    const auto same = [](const ops::Configuration &one, const ops::Configuration &other) {
        return one.name == other.name &&
               ops::difference(one.values, other.values, ops::Spelling::Exact).empty();
    };
    return std::equal(left.begin(), left.end(), right.begin(), right.end(), same);
}

ops::Snapshot twoChannels()
{
    ops::Snapshot values;
    values.set("KWX\\Config", "MaxIntChannels", number(2));
    for (int at = 0; at < 2; ++at) {
        values.set(channel(at), "ClockDomain", number(127));
        values.set(channel(at), "ReceiveDestinationIp", text("239.1.1.1"));
        values.set(channel(at), "TransmitAudFlags3", number(8));
    }
    return values;
}

QList<QByteArrayList> cellsOf(const QByteArray &table)
{
    QList<QByteArrayList> rows;
    for (const QByteArray &line : table.split('\n')) {
        if (!line.isEmpty())
            rows.append(line.trimmed().split(','));
    }
    return rows;
}

QByteArray tableOf(const QList<QByteArrayList> &rows)
{
    QByteArray table;
    for (const QByteArrayList &row : rows)
        table += row.join(',') + "\r\n";
    return table;
}

// As spreadsheets call their columns.
QByteArray letters(int column)
{
    return column < 26 ? QByteArray(1, static_cast<char>('A' + column))
                       : QByteArray("A") + static_cast<char>('A' + column - 26);
}

} // namespace

void TestDamage::everyByteOfADumpCounts_data()
{
    QTest::addColumn<int>("bits");
    QTest::newRow("another letter") << 1;
    QTest::newRow("another case") << 0x20;
    QTest::newRow("no ASCII") << 0x80;
}

void TestDamage::everyByteOfADumpCounts()
{
    QFETCH(int, bits);
    const ops::Dump dump = someDump();
    const QByteArray whole = ops::writeDump(dump);
    QVERIFY(sameDump(*ops::readDump(whole), dump));
    int taken = 0;
    for (int at = 0; at < whole.size(); ++at) {
        QByteArray changed = whole;
        changed[at] = static_cast<char>(changed[at] ^ bits);
        const auto read = ops::readDump(changed);
        QVERIFY2(!read || sameDump(*read, dump), changed.mid(qMax(0, at - 20), 40).constData());
        QVERIFY(read || !read.failure().text.isEmpty());
        taken += bool(read);
    }
    QVERIFY(taken < whole.size() / 4); // blanks between the words, and little else
}

void TestDamage::aDumpCutAnywhereIsNone()
{
    const QByteArray whole = ops::writeDump(someDump()).trimmed();
    for (int size = 0; size < whole.size(); ++size) {
        QVERIFY(!ops::readDump(whole.left(size)));
        QVERIFY(!ops::readDump(whole.mid(size + 1)));
        QVERIFY(!ops::readDump(whole + whole.left(size + 1))); // something behind the end
    }
}

// The sum covers where a value stands, not only which values there are.
void TestDamage::valuesOfADumpCannotBeMoved()
{
    const QByteArray whole = ops::writeDump(someDump());
    const struct {
        const char *from, *to;
    } moves[] = {{"Internal0", "Internal2"},     {"\"default\"", "\"renamed\""},
                 {"ClockDomain", "ClockType"},   {"127", "\"127\""},
                 {"\"239.1.1.1\"", "239"},       {"\"night\"", "\"day\""},
                 {"ClockDomain", "clockDomain"}, {"KWX\\\\Config", "kwx\\\\config"},
                 {"SiteOwn", "SiteOwn "}};
    for (const auto &move : moves) {
        QVERIFY2(whole.contains(move.from), move.from);
        QVERIFY2(!ops::readDump(QByteArray(whole).replace(move.from, move.to)), move.from);
    }
}

void TestDamage::aTableChangesItsCellsOnly_data()
{
    QTest::addColumn<unsigned>("seed");
    for (unsigned seed = 1; seed <= 10; ++seed)
        QTest::addRow("%u", seed) << seed;
}

// From a table of one store into another one: what the table has gets its values, what it leaves empty stays.
void TestDamage::aTableChangesItsCellsOnly()
{
    QFETCH(unsigned, seed);
    const ops::Snapshot from = RandomStore(seed).channels(3), to = RandomStore(seed + 1000).channels(3);
    ops::Draft draft(to);
    QCOMPARE(ops::importTable(ops::exportTable(from), false, draft), QByteArrayList());
    ops::Snapshot after = to;
    for (const ops::Change &change : draft.changes())
        after.set(change.path, change.name, *change.after);
    for (const ops::Row &row : from.rows()) {
        if (ops::channelOfPath(row.path) >= 0)
            QVERIFY(*after.find(row.path, row.name) == row.value);
    }
    for (const ops::Row &row : to.rows()) {
        if (!from.find(row.path, row.name) || ops::channelOfPath(row.path) < 0)
            QVERIFY(*after.find(row.path, row.name) == row.value);
    }
    QVERIFY(after.rows().size() <= from.rows().size() + to.rows().size());
}

void TestDamage::aWrongCellIsFoundWhereItIs_data()
{
    QTest::addColumn<int>("row");
    QTest::addColumn<int>("column");
    const QList<QByteArrayList> cells = cellsOf(ops::exportTable(twoChannels()));
    for (int row = 1; row < cells.size(); ++row) {
        for (int column = 3; column < cells[row].size(); column += 4)
            QTest::addRow("row %d, column %s", row + 1, letters(column).constData()) << row << column;
    }
}

// "zebra" is no value of any word, and in a row without that word there is no place for it.
void TestDamage::aWrongCellIsFoundWhereItIs()
{
    QFETCH(int, row);
    QFETCH(int, column);
    const ops::Snapshot values = twoChannels();
    QList<QByteArrayList> cells = cellsOf(ops::exportTable(values));
    cells[row][column] = "zebra";
    ops::Draft draft(values);
    const QByteArrayList complaints = ops::importTable(tableOf(cells), false, draft);
    QCOMPARE(complaints.size(), 1);
    const QByteArray where = "row " + QByteArray::number(row + 1) + ", column " + letters(column) + " (" +
                             cells[0][column] + "): ";
    QVERIFY2(complaints.first().startsWith(where), complaints.first().constData());
}

void TestDamage::rowsMayStandInAnyOrder()
{
    const ops::Snapshot values = twoChannels(), nothing;
    QList<QByteArrayList> cells = cellsOf(ops::exportTable(values));
    ops::Draft straight(nothing), turned(nothing);
    QCOMPARE(ops::importTable(tableOf(cells), false, straight), QByteArrayList());
    std::reverse(cells.begin() + 1, cells.end());
    for (QByteArrayList &row : cells)
        std::swap(row[0], row[5]); // and the columns, too
    QCOMPARE(ops::importTable(tableOf(cells), false, turned), QByteArrayList());
    QCOMPARE(told(turned.changes()), told(straight.changes()));
    QCOMPARE(int(straight.changes().size()), 6);
}

QTEST_GUILESS_MAIN(TestDamage)
#include "test_ops_damage.moc"
