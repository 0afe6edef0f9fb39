// SPDX-License-Identifier: MIT
// The history as the store keeps it: what each batch tells of itself, which are read and followed, how what
// is taken back is called, and what stays where something is in the way.
#include "freshhome.h"
#include "ops/history.h"
#include "rows.h"

#include <unistd.h>

class TestTakeBack : public QObject {
    Q_OBJECT

private slots:
    void init() { m_home = std::make_unique<FreshHome>(); }
    void cleanup() { m_home.reset(); }

    void anEmptyStoreHasNoHistory();
    void aBatchTellsWhoDidWhat();
    void valuesComeBackAsTheyWere_data();
    void valuesComeBackAsTheyWere();
    void changesStandInTheOrderOfTheirWrites();
    void theNewestComeFirst_data();
    void theNewestComeFirst();
    void onlyNewChangesAreFollowed();
    void labels_data();
    void labels();
    void aRedoIsCalledWhatItPutsBack();
    void whatIsInTheWayStays_data();
    void whatIsInTheWayStays();
    void anUnknownBatchChangesNothing();
    void marksFollowUndoAndRedo();
    void severalAtOnceArePutBackOneByOne();

private:
    void write(const char *name, std::optional<ops::Value> before, std::optional<ops::Value> after,
               const QByteArray &label = QByteArray("set"));
    std::vector<ops::Batch> history(std::size_t most = 1000) const
    {
        return *ops::readHistory(*m_store, most);
    }
    QByteArray taken() const;

    std::unique_ptr<FreshHome> m_home;
    std::optional<ops::Store> m_store = ops::Store();
};

void TestTakeBack::write(const char *name, std::optional<ops::Value> before, std::optional<ops::Value> after,
                         const QByteArray &label)
{
    QVERIFY(m_store->apply({{"p", name, std::move(before), std::move(after)}}, label));
}

// "label", with a star when it is taken back, newest first.
QByteArray TestTakeBack::taken() const
{
    QByteArrayList labels;
    for (const ops::Batch &batch : history())
        labels.append(batch.label + (batch.takenBack ? "*" : ""));
    return labels.join('|');
}

void TestTakeBack::anEmptyStoreHasNoHistory()
{
    QVERIFY(history().empty());
    QCOMPARE(*ops::newestChange(*m_store), qint64(0));
    QCOMPARE(*ops::followHistory(*m_store, 0, [](const ops::Batch &) { QFAIL("nothing was changed"); }),
             qint64(0));
    QCOMPARE(*ops::followHistory(*m_store, 7, [](const ops::Batch &) { QFAIL("nothing was changed"); }),
             qint64(7));
    QVERIFY(ops::lastToUndo(history()).empty());
    QVERIFY(ops::lastToRedo(history()).empty());
    const auto plan = ops::takeBack(*m_store, {}, false, "undo");
    QVERIFY(plan);
    QVERIFY(plan->changes.empty() && plan->conflicts.empty());
}

void TestTakeBack::aBatchTellsWhoDidWhat()
{
    const qint64 before = QDateTime::currentMSecsSinceEpoch() * 1000 - 1000;
    write("a", {}, number(1), "first words");
    const qint64 after = QDateTime::currentMSecsSinceEpoch() * 1000 + 1000;
    const auto batches = history();
    QCOMPARE(int(batches.size()), 1);
    const ops::Batch &batch = batches.front();
    QVERIFY(batch.id > 0);
    QVERIFY(batch.timeUs >= before && batch.timeUs <= after);
    QCOMPARE(batch.program, QByteArray("test_ops_takeback").left(batch.program.size()));
    QVERIFY(batch.program.size() >= 15); // as much as the system keeps of a name
    QCOMPARE(batch.pid, quint32(getpid()));
    QVERIFY(!batch.user.isEmpty());
    QCOMPARE(batch.label, QByteArray("first words"));
    QCOMPARE(batch.undoes, qint64(0));
    QVERIFY(!batch.takenBack);
}

void TestTakeBack::valuesComeBackAsTheyWere_data()
{
    QTest::addColumn<QByteArray>("bytes");
    QTest::newRow("empty") << QByteArray("");
    QTest::newRow("one byte") << QByteArray("x");
    QTest::newRow("line ends") << QByteArray("a\r\nb\n");
    QTest::newRow("no UTF-8") << QByteArray("\xff\xfe\x80");
    QTest::newRow("zeros") << QByteArray("\0a\0", 3);
    QTest::newRow("long") << QByteArray(70000, 'z');
}

// Text, number and absence, each as what was there and as what came.
void TestTakeBack::valuesComeBackAsTheyWere()
{
    QFETCH(QByteArray, bytes);
    const ops::Value value = ops::Value::ofText(bytes);
    write("a", {}, value);
    write("a", value, number(0));
    write("a", number(0), number(0xffffffff));
    write("a", number(0xffffffff), value);
    write("a", value, {});
    const auto batches = history();
    QCOMPARE(int(batches.size()), 5);
    const QByteArray shown = '"' + bytes + '"';
    QCOMPARE(told(batches[4].changes), "p a - > " + shown);
    QCOMPARE(told(batches[3].changes), "p a " + shown + " > 0");
    QCOMPARE(told(batches[2].changes), QByteArray("p a 0 > 4294967295"));
    QCOMPARE(told(batches[1].changes), "p a 4294967295 > " + shown);
    QCOMPARE(told(batches[0].changes), "p a " + shown + " > -");
}

void TestTakeBack::changesStandInTheOrderOfTheirWrites()
{
    ops::Changes changes;
    for (const char *name : {"z", "a", "m"})
        changes.push_back({"p", name, {}, number(1)});
    QVERIFY(m_store->apply(changes, "set"));
    QCOMPARE(told(history().front().changes), QByteArray("p z - > 1|p a - > 1|p m - > 1"));
}

void TestTakeBack::theNewestComeFirst_data()
{
    QTest::addColumn<int>("most");
    QTest::addColumn<QByteArray>("labels");
    QTest::newRow("none") << 0 << QByteArray("");
    QTest::newRow("one") << 1 << QByteArray("d");
    QTest::newRow("two") << 2 << QByteArray("d|c");
    QTest::newRow("all") << 4 << QByteArray("d|c|b|a");
    QTest::newRow("more than there are") << 9 << QByteArray("d|c|b|a");
}

// Those that are read are whole.
void TestTakeBack::theNewestComeFirst()
{
    QFETCH(int, most);
    QFETCH(QByteArray, labels);
    for (const char *label : {"a", "b", "c", "d"}) {
        const ops::Changes changes{{"p", QByteArray(label) + '1', {}, number(1)},
                                   {"p", QByteArray(label) + '2', {}, number(2)}};
        QVERIFY(m_store->apply(changes, label));
    }
    QByteArrayList found;
    for (const ops::Batch &batch : history(std::size_t(most))) {
        found.append(batch.label);
        QCOMPARE(told(batch.changes), "p " + batch.label + "1 - > 1|p " + batch.label + "2 - > 2");
    }
    QCOMPARE(found.join('|'), labels);
}

void TestTakeBack::onlyNewChangesAreFollowed()
{
    write("a", {}, number(1), "one");
    const qint64 seen = *ops::newestChange(*m_store);
    write("a", number(1), number(2), "two");
    write("b", {}, text("x"), "three");
    QByteArrayList found;
    const auto newest = ops::followHistory(*m_store, seen, [&](const ops::Batch &batch) {
        found.append(batch.label + ": " + told(batch.changes));
    });
    QCOMPARE(found.join('|'), QByteArray("two: p a 1 > 2|three: p b - > \"x\""));
    QCOMPARE(*newest, *ops::newestChange(*m_store));
    QVERIFY(*newest > seen);
}

void TestTakeBack::labels_data()
{
    QTest::addColumn<QByteArray>("label");
    QTest::addColumn<QByteArray>("undo"); // %1: the number of the batch
    const QByteArray longest(195, 'x');
    QTest::newRow("words") << QByteArray("copy 0 1-7") << QByteArray("undo copy 0 1-7");
    QTest::newRow("none") << QByteArray() << QByteArray("undo change #%1");
    QTest::newRow("like an undo") << QByteArray("undo things") << QByteArray("undo undo things");
    QTest::newRow("as long as a label may be") << longest << "undo " + longest;
    QTest::newRow("longer") << longest + 'x' << QByteArray("undo change #%1");
}

void TestTakeBack::labels()
{
    QFETCH(QByteArray, label);
    QFETCH(QByteArray, undo);
    write("a", {}, number(1), label);
    const auto batches = history();
    QVERIFY(ops::takeBack(*m_store, ops::lastToUndo(batches), false, "undo"));
    const auto after = history();
    QCOMPARE(int(after.size()), 2);
    QCOMPARE(after.front().label, undo.replace("%1", QByteArray::number(batches.front().id)));
    QCOMPARE(after.front().undoes, batches.front().id);
    QVERIFY(!m_store->read()->find("p", "a"));
}

void TestTakeBack::aRedoIsCalledWhatItPutsBack()
{
    write("a", {}, number(1), "copy 0 1-7");
    auto batches = history();
    QVERIFY(ops::takeBack(*m_store, ops::lastToUndo(batches), false, "undo"));
    batches = history();
    const auto plan = ops::takeBack(*m_store, ops::lastToRedo(batches), false, "redo");
    QVERIFY(plan);
    QCOMPARE(told(plan->changes), QByteArray("p a - > 1"));
    QCOMPARE(history().front().label, QByteArray("redo copy 0 1-7"));
}

void TestTakeBack::whatIsInTheWayStays_data()
{
    QTest::addColumn<bool>("force");
    QTest::addColumn<quint32>("after");
    QTest::newRow("left alone") << false << 9u;
    QTest::newRow("forced") << true << 1u;
}

void TestTakeBack::whatIsInTheWayStays()
{
    QFETCH(bool, force);
    QFETCH(quint32, after);
    write("a", {}, number(1));
    QVERIFY(m_store->apply({{"p", "a", number(1), number(2)}, {"p", "b", {}, number(5)}}, "both"));
    write("a", number(2), number(9));
    const auto batches = history();
    const auto plan = ops::takeBack(*m_store, {&batches[1]}, force, "undo");
    QVERIFY(plan);
    QCOMPARE(told(plan->conflicts), QByteArray("p a 9 > 1"));
    const auto values = m_store->read();
    QCOMPARE(values->number("p", "a"), after);
    QVERIFY(!values->find("p", "b"));
}

void TestTakeBack::anUnknownBatchChangesNothing()
{
    write("a", {}, number(1));
    auto batches = history();
    ops::Batch strange = batches.front();
    strange.id = 12345;
    const auto plan = ops::takeBack(*m_store, {&batches.front(), &strange}, false, "undo");
    QVERIFY(!plan);
    QCOMPARE(plan.failure().text, QByteArray("#12345 cannot be taken back; nothing was changed"));
    QCOMPARE(plan.failure().kind, ops::Failure::Store);
    QCOMPARE(m_store->read()->number("p", "a"), 1u);
    QCOMPARE(int(history().size()), 1);
}

void TestTakeBack::marksFollowUndoAndRedo()
{
    write("a", {}, number(1), "one");
    const auto step = [this](const char *verb) {
        const auto batches = history();
        const bool undo = qstrcmp(verb, "undo") == 0;
        return ops::takeBack(*m_store, undo ? ops::lastToUndo(batches) : ops::lastToRedo(batches), false,
                             verb);
    };
    QCOMPARE(taken(), QByteArray("one"));
    QVERIFY(step("undo"));
    QCOMPARE(taken(), QByteArray("undo one|one*"));
    QVERIFY(ops::lastToUndo(history()).empty());
    QVERIFY(step("redo"));
    QCOMPARE(taken(), QByteArray("redo one|undo one*|one"));
    QVERIFY(ops::lastToRedo(history()).empty());
    QVERIFY(step("undo"));
    QCOMPARE(taken(), QByteArray("undo one|redo one|undo one*|one*"));
}

void TestTakeBack::severalAtOnceArePutBackOneByOne()
{
    write("a", {}, number(1), "one");
    write("a", number(1), number(2), "two");
    auto batches = history();
    const auto plan = ops::takeBack(*m_store, ops::since(batches, 0), false, "undo");
    QVERIFY(plan);
    QCOMPARE(told(plan->changes), QByteArray("p a 2 > -"));
    for (const quint32 value : {1u, 2u}) {
        batches = history();
        QVERIFY(ops::takeBack(*m_store, ops::lastToRedo(batches), false, "redo"));
        QCOMPARE(m_store->read()->number("p", "a"), value);
    }
    QVERIFY(ops::lastToRedo(history()).empty());
}

QTEST_GUILESS_MAIN(TestTakeBack)
#include "test_ops_takeback.moc"
