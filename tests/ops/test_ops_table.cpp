// SPDX-License-Identifier: MIT
#include "ops/assignment.h"
#include "ops/csv.h"
#include "ops/table.h"
#include "randomstore.h"
#include "rows.h"

Q_DECLARE_METATYPE(ops::Value)

class TestTable : public QObject {
    Q_OBJECT

private slots:
    void comesBackExactly();
    void readsWhatPeopleWrite();
    void anEmptyCellSaysNothing();
    void complaints_data();
    void complaints();
    void complaintsAreLimited();
    void nothingInItIsAFormula();
    void eachValueHasItsCell_data();
    void eachValueHasItsCell();
    void cellsThatPeopleWrite_data();
    void cellsThatPeopleWrite();
    void theHeadNamesEveryWordOnce();
    void onlyWhatIsStoredHasARow_data();
    void onlyWhatIsStoredHasARow();
    void columnsAreNamedAsInASpreadsheet_data();
    void columnsAreNamedAsInASpreadsheet();
    void channelsBeyondTheServerNeedPermission();
    void columnsMayStandInAnyOrder();
    void aWrongHeadIsAllThatIsTold();
    void everyWrongCellIsTold();
    void rowsAreThereOnce_data();
    void rowsAreThereOnce();
};

namespace {

// The only value of the configuration, by its place and word.
ops::Snapshot holding(const QByteArray &place, const QByteArray &word, const ops::Value &value)
{
    const ops::Place at = *ops::parsePlace(place);
    ops::Snapshot values;
    values.set("KWX\\Config", "MaxIntChannels", number(1));
    values.set(channel(at.channel), ops::knownByWord(at, word)->name, value);
    return values;
}

// The cell below a column of the second line.
QByteArray cellBelow(const QByteArray &column, const QByteArray &table)
{
    const auto rows = ops::readCsv(table);
    return (*rows)[1].cells.value((*rows)[0].cells.indexOf(column));
}

} // namespace

void TestTable::comesBackExactly()
{
    for (unsigned seed = 0; seed < 200; ++seed) {
        const ops::Snapshot values = RandomStore(seed).channels(3);
        const QByteArray table = ops::exportTable(values);
        ops::Draft same(values);
        const QByteArrayList complaints = ops::importTable(table, false, same);
        QVERIFY2(complaints.isEmpty(), complaints.join('\n').constData());
        QCOMPARE(told(same.changes()), QByteArray());
        ops::Snapshot empty;
        empty.set("KWX\\Config", "MaxIntChannels", number(3));
        ops::Draft fresh(empty);
        QVERIFY(ops::importTable(table, false, fresh).isEmpty());
        for (const ops::Change &change : fresh.changes())
            empty.set(change.path, change.name, *change.after);
        QCOMPARE(told(ops::difference(values, empty)), QByteArray());
    }
}

void TestTable::readsWhatPeopleWrite()
{
    const ops::Snapshot nothing;
    ops::Draft draft(nothing);
    const QByteArray table =
        "channel;element;flow;rx.dst;rx.dst-port;rx.use;format\n"
        "0;;;;;;1080p50\n0;video;;239.1.1.1;20000;dst,dst-port;\n1;audio;3;239.2.2.2;5004;all;\n";
    QVERIFY(ops::importTable(table, false, draft).isEmpty());
    QCOMPARE(int(draft.changes().size()), 7);
    QCOMPARE(draft.number(channel(1), "ReceiveAudFlags3"), 31u);
}

void TestTable::anEmptyCellSaysNothing()
{
    ops::Snapshot now;
    now.set(channel(0), "ReceiveDestinationIp", text("239.1.1.1"));
    now.set(channel(0), "ReceiveSourceIp", text("10.0.0.1"));
    ops::Draft draft(now);
    const QByteArray table = "channel,element,rx.dst,rx.src,rx.if\n0,video,,(absent),(empty)\n";
    QVERIFY(ops::importTable(table, false, draft).isEmpty());
    QCOMPARE(told(draft.changes()).replace(channel(0) + ' ', ""),
             QByteArray("ReceiveInterface - > \"\"|ReceiveSourceIp \"10.0.0.1\" > -"));
}

void TestTable::complaints_data()
{
    QTest::addColumn<QByteArray>("table");
    QTest::addColumn<QByteArray>("says");
    const auto row = [](const char *table, const char *says) {
        QTest::newRow(says) << QByteArray(table) << QByteArray(says);
    };
    row("", "the table is empty");
    row("element,flow\nvideo,\n",
        "row 1: the first row has to name the columns, and one of them is \"channel\"");
    row("channel,rx.dts\n", "row 1, column B (rx.dts): no such column; did you mean rx.dst?");
    row("channel,rx.dst,rx.dst\n", "row 1, column C (rx.dst): the column is there twice");
    row("channel,element,rx.dst\n0,video,239.1.1\n", "row 2, column C (rx.dst): \"239.1.1\" is no IPv4 "
                                                     "address: four numbers from 0 to 255 with dots between");
    row("channel,element,rx.dst\n0,vidoe,239.1.1.1\n",
        "row 2, column A (channel): no element \"vidoe\": video, audio or anc; did you mean video?");
    row("channel,domain\n4,1\n", "row 2, column A (channel): the server has no channel 4");
    row("channel,domain\nserver,1\n", "row 2, column A (channel): a channel is needed");
    row("channel,element,domain\n0,video,1\n", "row 2, column C (domain): this row has no such value");
    row("channel,domain\n0,1,2\n", "row 2, column C: there is no such column");
    row("channel,domain\n0,1\n0,1\n", "row 3: 0 is there twice");
    row("channel,domain\n0,128\n",
        "row 2, column B (domain): \"128\": a PTP domain is a number from 0 to 127");
    row("channel,domain\n0,\"1\n", "row 2: a quote inside a cell, or one that is not closed");
}

void TestTable::complaints()
{
    QFETCH(QByteArray, table);
    QFETCH(QByteArray, says);
    const ops::Snapshot nothing;
    ops::Draft draft(nothing);
    QCOMPARE(ops::importTable(table, false, draft).join('|'), says);
}

void TestTable::complaintsAreLimited()
{
    QByteArray table = "channel,element,rx.dst\n";
    for (int row = 0; row < 1000; ++row)
        table += "x,y,z\n";
    const ops::Snapshot nothing;
    ops::Draft draft(nothing);
    QCOMPARE(ops::importTable(table, false, draft).size(), 20);
}

void TestTable::nothingInItIsAFormula()
{
    ops::Snapshot values;
    values.set(channel(0), "ClockGrandMaster", text("=cmd|' /C calc'!A0"));
    const QByteArray table = ops::exportTable(values);
    QVERIFY(!table.contains(",=") && !table.contains("\"="));
}

void TestTable::eachValueHasItsCell_data()
{
    QTest::addColumn<QByteArray>("place");
    QTest::addColumn<QByteArray>("word");
    QTest::addColumn<ops::Value>("value");
    QTest::addColumn<QByteArray>("cell");
    const auto row = [](const char *name, const char *place, const char *word, const ops::Value &value,
                        const QByteArray &cell) {
        QTest::newRow(name) << QByteArray(place) << QByteArray(word) << value << cell;
    };
    row("an address", "0/video", "rx.dst", text("239.1.1.1"), "239.1.1.1");
    row("no address", "0/video", "rx.dst", text("zebra"), "(text)zebra");
    row("an empty text", "0/video", "rx.dst", text(""), "(empty)");
    row("a number for a text", "0/video", "rx.dst", number(7), "(number)7");
    row("a port", "0/video", "rx.dst-port", number(65535), "65535");
    row("a port out of range", "0/video", "rx.dst-port", number(65536), "(number)65536");
    row("a text for a number", "0/video", "rx.dst-port", text("20000"), "(text)20000");
    row("an empty text for a number", "0/video", "rx.dst-port", text(""), "(text)");
    row("flags", "0/video", "rx.use", number(10), "dst,dst-port");
    row("unknown flags", "0/video", "rx.use", number(0x28), "dst,0x20");
    row("a format", "0", "format", number(595636786), "1080P 50fps (1920)");
    row("an unknown format", "0", "format", number(5), "5");
    row("a clock", "0", "clock", number(65536), "sw-ptp");
    row("a domain too high", "0", "domain", number(128), "(number)128");
    row("a master", "0", "gm", text("00-1D-C1-12-34-56"), "00-1D-C1-12-34-56");
    row("a formula", "0", "gm", text("=1+1"), "(text)=1+1");
    row("marked already", "0", "gm", text("(text)x"), "(text)(text)x");
    row("said to be absent", "0", "gm", text("(absent)"), "(text)(absent)");
    row("blanks around", "0", "gm", text(" x "), "(text) x ");
    row("a line end", "0", "gm", text("a\nb"), "(text)a\nb");
    row("a return", "0", "gm", text("a\rb"), "(base64)YQ1i");
    row("a zero byte", "0", "gm", ops::Value::ofText(QByteArray("a\0b", 3)), "(base64)YQBi");
    row("no UTF-8", "0", "gm", text("\xff\xfe"), "(base64)//4=");
    row("another alphabet", "0", "gm", text("\xd0\x96"), "(text)\xd0\x96");
    row("of a flow", "0/audio/7", "tx.dst", text("239.1.1.7"), "239.1.1.7");
    row("of a single flow", "0/audio/single", "tx.dst", text("239.1.1.8"), "239.1.1.8");
    row("a channel type", "0", "type", number(1), "SMPTE-2110");
    row("a flow mode", "0", "flow-mode", number(0), "single");
    row("a switch", "0", "file-settings", number(1), "on");
    row("a switch that is none", "0", "file-settings", number(2), "(number)2");
}

// And the cell gives the value back, exactly.
void TestTable::eachValueHasItsCell()
{
    QFETCH(QByteArray, place);
    QFETCH(QByteArray, word);
    QFETCH(ops::Value, value);
    QFETCH(QByteArray, cell);
    const ops::Snapshot values = holding(place, word, value);
    const QByteArray table = ops::exportTable(values);
    QCOMPARE(cellBelow(word, table), cell);
    const ops::Snapshot nothing;
    ops::Draft draft(nothing);
    QCOMPARE(ops::importTable(table, false, draft), QByteArrayList());
    const ops::Place at = *ops::parsePlace(place);
    QCOMPARE(told(draft.changes()),
             channel(0) + ' ' + ops::knownByWord(at, word)->name + " - > " + told(value));
}

void TestTable::cellsThatPeopleWrite_data()
{
    QTest::addColumn<QByteArray>("cell");
    QTest::addColumn<QByteArray>("after"); // of a grandmaster that is "old"
    QTest::newRow("nothing") << QByteArray("") << QByteArray("\"old\"");
    QTest::newRow("blanks") << QByteArray("  ") << QByteArray("\"old\"");
    QTest::newRow("absent") << QByteArray("(absent)") << QByteArray("-");
    QTest::newRow("absent, with blanks") << QByteArray(" (absent) ") << QByteArray("-");
    QTest::newRow("empty") << QByteArray("(empty)") << QByteArray("\"\"");
    QTest::newRow("blanks around a word")
        << QByteArray("  00-1D-C1-12-34-56 ") << QByteArray("\"00-1D-C1-12-34-56\"");
    QTest::newRow("an apostrophe") << QByteArray("'00-1D-C1-12-34-56") << QByteArray();
    QTest::newRow("a number") << QByteArray("(number)5") << QByteArray("5");
    QTest::newRow("no number") << QByteArray("(number)x") << QByteArray();
    QTest::newRow("a negative number") << QByteArray("(number)-1") << QByteArray();
    QTest::newRow("no text at all") << QByteArray("(text)") << QByteArray("\"\"");
    QTest::newRow("text with a blank") << QByteArray("(text) ") << QByteArray("\" \"");
    QTest::newRow("base64") << QByteArray("(base64)eA==") << QByteArray("\"x\"");
}

void TestTable::cellsThatPeopleWrite()
{
    QFETCH(QByteArray, cell);
    QFETCH(QByteArray, after);
    const ops::Snapshot values = holding("0", "gm", text("old"));
    ops::Draft draft(values);
    const QByteArrayList complaints = ops::importTable("channel,gm\n0," + cell + '\n', false, draft);
    QCOMPARE(complaints.isEmpty(), !after.isEmpty());
    if (!after.isEmpty())
        QCOMPARE(told(draft.find(channel(0), "ClockGrandMaster")), after);
    else
        QVERIFY2(complaints.first().startsWith("row 2, column B (gm): "), complaints.first().constData());
}

void TestTable::theHeadNamesEveryWordOnce()
{
    ops::Snapshot values;
    values.set("KWX\\Config", "MaxIntChannels", number(0));
    QCOMPARE(
        ops::exportTable(values),
        QByteArray(
            "channel,element,flow,type,format,clock,domain,gm,flow-mode,file-settings,rx.src,rx.src-port,"
            "rx.dst,rx.dst-port,rx.if,rx.use,tx.src,tx.src-port,tx.dst,tx.dst-port,tx.if,tx.use,"
            "rx.channels,rx.total,rx.ptime,tx.channels,tx.total,tx.ptime\r\n"));
}

void TestTable::onlyWhatIsStoredHasARow_data()
{
    QTest::addColumn<QByteArray>("place");
    QTest::addColumn<QByteArray>("word");
    QTest::addColumn<QByteArray>("start");
    QTest::newRow("channel") << QByteArray("0") << QByteArray("domain") << QByteArray("0,,,");
    QTest::newRow("video") << QByteArray("0/video") << QByteArray("rx.use") << QByteArray("0,video,,");
    QTest::newRow("audio") << QByteArray("0/audio") << QByteArray("rx.ptime") << QByteArray("0,audio,,");
    QTest::newRow("flow") << QByteArray("0/audio/3") << QByteArray("rx.use") << QByteArray("0,audio,3,");
    QTest::newRow("single") << QByteArray("0/audio/single") << QByteArray("rx.use")
                            << QByteArray("0,audio,single,");
    QTest::newRow("anc") << QByteArray("0/anc") << QByteArray("rx.use") << QByteArray("0,anc,,");
}

void TestTable::onlyWhatIsStoredHasARow()
{
    QFETCH(QByteArray, place);
    QFETCH(QByteArray, word);
    QFETCH(QByteArray, start);
    ops::Snapshot values = holding(place, word, number(1));
    values.set(channel(1), "ClockDomain", number(1)); // not offered
    const QByteArrayList lines = ops::exportTable(values).split('\n');
    QCOMPARE(lines.size(), 3); // head, row, nothing
    QVERIFY2(lines[1].startsWith(start), lines[1].constData());
    QCOMPARE(lines[2], QByteArray());
}

void TestTable::columnsAreNamedAsInASpreadsheet_data()
{
    QTest::addColumn<int>("column");
    QTest::addColumn<QByteArray>("letters");
    const struct {
        int column;
        const char *letters;
    } rows[] = {{1, "B"},   {24, "Y"},  {25, "Z"},   {26, "AA"},   {27, "AB"},  {51, "AZ"},
                {52, "BA"}, {77, "BZ"}, {701, "ZZ"}, {702, "AAA"}, {703, "AAB"}};
    for (const auto &row : rows)
        QTest::newRow(row.letters) << row.column << QByteArray(row.letters);
}

void TestTable::columnsAreNamedAsInASpreadsheet()
{
    QFETCH(int, column);
    QFETCH(QByteArray, letters);
    const ops::Snapshot nothing;
    ops::Draft draft(nothing);
    const QByteArray table = "channel\n0" + QByteArray(column, ',') + "x\n";
    QCOMPARE(ops::importTable(table, false, draft).join('|'),
             "row 2, column " + letters + ": there is no such column");
}

void TestTable::channelsBeyondTheServerNeedPermission()
{
    const ops::Snapshot nothing; // four channels
    for (const char *number : {"3", "4", "65535"}) {
        ops::Draft draft(nothing);
        const QByteArray table = QByteArray("channel,domain\n") + number + ",5\n";
        const bool offered = qstrcmp(number, "3") == 0;
        QCOMPARE(ops::importTable(table, false, draft).isEmpty(), offered);
        QCOMPARE(draft.changes().empty(), !offered);
        QVERIFY(ops::importTable(table, true, draft).isEmpty());
        QCOMPARE(told(draft.changes()), channel(QByteArray(number).toInt()) + " ClockDomain - > 5");
    }
    ops::Draft draft(nothing);
    QVERIFY(!ops::importTable("channel,domain\n65536,5\n", true, draft).isEmpty());
}

void TestTable::columnsMayStandInAnyOrder()
{
    const ops::Snapshot nothing;
    ops::Draft draft(nothing);
    const QByteArray table = " flow , rx.dst ,element,channel\n3,239.1.1.1, audio , 1 \n";
    QCOMPARE(ops::importTable(table, false, draft), QByteArrayList());
    QCOMPARE(told(draft.changes()), channel(1) + " ReceiveAudDestinationIp3 - > \"239.1.1.1\"");
}

// What stands below a column that nobody knows cannot be judged.
void TestTable::aWrongHeadIsAllThatIsTold()
{
    const ops::Snapshot nothing;
    ops::Draft draft(nothing);
    QCOMPARE(ops::importTable("channel,domian,zebra\n0,999,\nx,y,z\n", false, draft).join('|'),
             QByteArray("row 1, column B (domian): no such column; did you mean domain?|"
                        "row 1, column C (zebra): no such column"));
    QVERIFY(draft.changes().empty());
}

void TestTable::everyWrongCellIsTold()
{
    const ops::Snapshot nothing;
    ops::Draft draft(nothing);
    QCOMPARE(
        ops::importTable("channel,domain,clock\n0,128,swptp\n1,5,zebra\n9,1,\n", false, draft).join('|'),
        QByteArray("row 2, column B (domain): \"128\": a PTP domain is a number from 0 to 127|"
                   "row 2, column C (clock): \"swptp\": a clock is internal, hw-ptp, sw-ptp, free-run or "
                   "a number; did you mean sw-ptp?|"
                   "row 3, column C (clock): \"zebra\": a clock is internal, hw-ptp, sw-ptp, free-run or "
                   "a number|"
                   "row 4, column A (channel): the server has no channel 9"));
}

void TestTable::rowsAreThereOnce_data()
{
    QTest::addColumn<QByteArray>("rows");
    QTest::addColumn<QByteArray>("says");
    QTest::newRow("channel") << QByteArray("0,,,\n1,,,\n0,,,\n") << QByteArray("row 4: 0 is there twice");
    QTest::newRow("element") << QByteArray("0,video,,\n0,anc,,\n0,video,,\n")
                             << QByteArray("row 4: 0/video is there twice");
    QTest::newRow("flow") << QByteArray("0,audio,1,\n0,audio,2,\n0,audio,1,\n")
                          << QByteArray("row 4: 0/audio/1 is there twice");
    QTest::newRow("of other channels") << QByteArray("0,video,,\n1,video,,\n") << QByteArray();
}

void TestTable::rowsAreThereOnce()
{
    QFETCH(QByteArray, rows);
    QFETCH(QByteArray, says);
    const ops::Snapshot nothing;
    ops::Draft draft(nothing);
    QCOMPARE(ops::importTable("channel,element,flow,rx.dst\n" + rows, false, draft).join('|'), says);
}

QTEST_APPLESS_MAIN(TestTable)
#include "test_ops_table.moc"
