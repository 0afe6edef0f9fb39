// SPDX-License-Identifier: MIT
#include "ops/table.h"
#include "randomstore.h"
#include "rows.h"

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
};

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

QTEST_APPLESS_MAIN(TestTable)
#include "test_ops_table.moc"
