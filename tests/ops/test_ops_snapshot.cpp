// SPDX-License-Identifier: MIT
#include "ops/draft.h"
#include "ops/legs.h"
#include "randomstore.h"
#include "rows.h"

class TestSnapshot : public QObject {
    Q_OBJECT

private slots:
    void keepsTheOrderOfTheStore();
    void pathsHaveNoCaseAndNamesHave();
    void laterRowsCount();
    void differences_data();
    void differences();
    void aRespelledPathIsAChangeWhenAsked();
    void aDifferenceTurnsOneIntoTheOther();
    void aDraftLiesOverItsBase();
    void legs();
};

void TestSnapshot::keepsTheOrderOfTheStore()
{
    ops::Snapshot values;
    for (const char *path : {"b", "A", "C", "a\\x"})
        values.set(path, "n", number(1));
    values.set("a", "m", number(1));
    QByteArrayList order;
    for (const ops::Row &row : values.rows())
        order.append(row.path + ' ' + row.name);
    QCOMPARE(order.join('|'), QByteArray("a m|A n|a\\x n|b n|C n"));
}

void TestSnapshot::pathsHaveNoCaseAndNamesHave()
{
    ops::Snapshot values;
    values.set("KWX\\A", "n", number(1));
    values.set("kwx\\a", "n", number(2));
    values.set("kwx\\a", "N", text("x"));
    QCOMPARE(int(values.rows().size()), 2);
    QCOMPARE(values.number("KWX\\a", "n"), 2u);
    QCOMPARE(values.text("KWX\\a", "N"), QByteArray("x"));
    QCOMPARE(values.text("KWX\\a", "n"), QByteArray());
    QCOMPARE(values.rows().back().path, QByteArray("KWX\\A"));
}

void TestSnapshot::laterRowsCount()
{
    const auto values =
        ops::Snapshot::fromRows({{"p", "n", number(1)}, {"a", "n", number(3)}, {"P", "n", number(2)}});
    QCOMPARE(int(values.rows().size()), 2);
    QCOMPARE(values.number("p", "n"), 2u);
}

void TestSnapshot::differences_data()
{
    QTest::addColumn<QByteArray>("before");
    QTest::addColumn<QByteArray>("after");
    QTest::addColumn<QByteArray>("changes");
    QTest::newRow("nothing") << QByteArray() << QByteArray() << QByteArray();
    QTest::newRow("same") << QByteArray("a1") << QByteArray("a1") << QByteArray();
    QTest::newRow("made") << QByteArray() << QByteArray("a1") << QByteArray("p a - > 1");
    QTest::newRow("deleted") << QByteArray("a1") << QByteArray() << QByteArray("p a 1 > -");
    QTest::newRow("changed") << QByteArray("a1b2") << QByteArray("a3b2") << QByteArray("p a 1 > 3");
    QTest::newRow("all three") << QByteArray("a1b2") << QByteArray("b3c4")
                               << QByteArray("p a 1 > -|p b 2 > 3|p c - > 4");
}

void TestSnapshot::differences()
{
    QFETCH(QByteArray, before);
    QFETCH(QByteArray, after);
    QFETCH(QByteArray, changes);
    ops::Snapshot from, to;
    for (int at = 0; at < before.size(); at += 2)
        from.set("p", before.mid(at, 1), number(quint32(before[at + 1] - '0')));
    for (int at = 0; at < after.size(); at += 2)
        to.set("p", after.mid(at, 1), number(quint32(after[at + 1] - '0')));
    QCOMPARE(told(ops::difference(from, to)), changes);
}

void TestSnapshot::aRespelledPathIsAChangeWhenAsked()
{
    ops::Snapshot from, to;
    from.set("Path", "n", number(1));
    to.set("PATH", "n", number(1));
    QVERIFY(ops::difference(from, to).empty());
    QCOMPARE(told(ops::difference(from, to, ops::Spelling::Exact)), QByteArray("Path n 1 > -|PATH n - > 1"));
}

void TestSnapshot::aDifferenceTurnsOneIntoTheOther()
{
    for (unsigned seed = 0; seed < 200; ++seed) {
        RandomStore random(seed);
        ops::Snapshot from = random.anything();
        const ops::Snapshot to = random.anything();
        for (const ops::Change &change : ops::difference(from, to, ops::Spelling::Exact)) {
            if (change.after)
                from.set(change.path, change.name, *change.after);
            else
                from.remove(change.path, change.name);
        }
        QVERIFY(ops::difference(from, to, ops::Spelling::Exact).empty());
    }
}

void TestSnapshot::aDraftLiesOverItsBase()
{
    ops::Snapshot base;
    base.set("p", "a", number(1));
    base.set("p", "b", number(2));
    ops::Draft draft(base);
    draft.set("P", "a", number(5));
    draft.remove("p", "b");
    draft.remove("p", "c");
    draft.set("p", "d", text(""));
    QCOMPARE(draft.number("p", "a"), 5u);
    QVERIFY(!draft.find("p", "b"));
    QCOMPARE(told(draft.changes()), QByteArray("P a 1 > 5|p b 2 > -|p d - > \"\""));
    draft.set("p", "a", number(1));
    QCOMPARE(told(draft.changes()), QByteArray("p b 2 > -|p d - > \"\""));
}

void TestSnapshot::legs()
{
    ops::Snapshot values;
    const ops::Place flow = *ops::parsePlace("1/audio/2");
    QVERIFY(ops::legOf(values, flow, Side::Send).isEmpty());
    QCOMPARE(ops::legText(ops::legOf(values, flow, Side::Send)), QByteArray("-"));
    values.set(channel(1), "TransmitAudDestinationIp2", text("239.1.1.1"));
    values.set(channel(1), "TransmitAudRemotePort2", number(5004));
    values.set(channel(1), "TransmitAudIp2", text("10.0.0.1"));
    values.set(channel(1), "TransmitAudInterface", text("10.0.0.1"));
    values.set(channel(1), "TransmitAudFlags2", number(10));
    QCOMPARE(ops::legText(ops::legOf(values, flow, Side::Send)),
             QByteArray("239.1.1.1:5004 from 10.0.0.1 on 10.0.0.1, use dst,dst-port"));
    QCOMPARE(int(ops::elementsOf(values, 1).size()), 10);
    values.set(channel(1), "ReceiveAudTotalChannels", number(6));
    QCOMPARE(int(ops::elementsOf(values, 1).size()), 5);
}

QTEST_APPLESS_MAIN(TestSnapshot)
#include "test_ops_snapshot.moc"
