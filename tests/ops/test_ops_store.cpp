// SPDX-License-Identifier: MIT
// On a real store: reading, writing as one step, the history of it, configurations, and the two sides of a
// comparison.
#include "ops/configurations.h"
#include "ops/dump.h"
#include "ops/history.h"
#include "ops/inputfile.h"
#include "ops/operand.h"
#include "ops/settings.h"
#include "randomstore.h"
#include "rkcfg.h"
#include "rows.h"

#include <QTemporaryDir>

class TestStore : public QObject {
    Q_OBJECT

private slots:
    void init();
    void cleanup();

    void readsWhatWasWritten();
    void anythingComesBack();
    void aFailingChangeLeavesNothing();
    void nothingToDoIsNoBatch();
    void everyApplyIsOneBatchWithItsLabel();
    void takingBackAndPuttingBack();
    void randomBatchesGoBackToTheStart();
    void followingTheHistory();
    void configurations();
    void wrongNames_data();
    void wrongNames();
    void aCopyIsExact();
    void operands();
    void operandsThatAreNone_data();
    void operandsThatAreNone();

private:
    ops::Snapshot now() { return *ops::Store().read(); }
    bool apply(const ops::Changes &changes, const QByteArray &label = QByteArray())
    {
        return bool(ops::Store().apply(changes, label));
    }
    QByteArray file(const char *name, const QByteArray &content)
    {
        const QByteArray path = m_home->filePath(QLatin1String(name)).toUtf8();
        [&] { QVERIFY(ops::writeOutput(path, content)); }();
        return path;
    }

    std::unique_ptr<QTemporaryDir> m_home;
};

void TestStore::init()
{
    m_home = std::make_unique<QTemporaryDir>();
    qputenv("XDG_CONFIG_HOME", m_home->path().toUtf8());
    rkCFGClose(ops::Store().handle(), 0);
}

void TestStore::cleanup()
{
    rkCFGClose(ops::Store().handle(), 0);
    m_home.reset();
}

void TestStore::readsWhatWasWritten()
{
    QVERIFY(apply({{"p", "text", {}, text("x\xff")},
                   {"p", "number", {}, number(4294967295u)},
                   {"q", "empty", {}, text("")}}));
    QCOMPARE(told(ops::difference({}, now())),
             QByteArray("p number - > 4294967295|p text - > \"x\xff\"|q empty - > \"\""));
    QCOMPARE(int(ops::Store().read("q")->rows().size()), 1);
    QVERIFY(apply({{"p", "text", text("x"), {}}, {"p", "number", {}, text("7")}}));
    QCOMPARE(told(ops::difference({}, now())), QByteArray("p number - > \"7\"|q empty - > \"\""));
}

void TestStore::anythingComesBack()
{
    for (unsigned seed = 0; seed < 50; ++seed) {
        const ops::Snapshot wanted = RandomStore(seed).anything();
        QVERIFY(apply(ops::difference(now(), wanted, ops::Spelling::Exact)));
        QVERIFY(ops::difference(now(), wanted, ops::Spelling::Exact).empty());
    }
}

// A value that is to be deleted and is not there any more: somebody was quicker, and nothing of it is done.
void TestStore::aFailingChangeLeavesNothing()
{
    const auto done = ops::Store().apply({{"p", "a", {}, number(1)}, {"p", "gone", number(1), {}}}, "try");
    QVERIFY(!done);
    QCOMPARE(done.failure().kind, ops::Failure::Store);
    QVERIFY(now().empty());
    QVERIFY(apply({{"p", "a", {}, number(2)}}));
    QCOMPARE(int(ops::readHistory(ops::Store())->size()), 1);
}

void TestStore::nothingToDoIsNoBatch()
{
    QVERIFY(apply({}, "nothing"));
    QVERIFY(ops::readHistory(ops::Store())->empty());
}

void TestStore::everyApplyIsOneBatchWithItsLabel()
{
    QVERIFY(apply({{"p", "a", {}, number(1)}, {"p", "b", {}, number(2)}}, "first"));
    QVERIFY(apply({{"p", "a", {}, number(3)}}, "second"));
    QVERIFY(apply({{"p", "a", {}, number(4)}}));
    const auto history = ops::readHistory(ops::Store());
    QCOMPARE(int(history->size()), 3);
    QCOMPARE((*history)[2].label, QByteArray("first"));
    QCOMPARE((*history)[1].label, QByteArray("second"));
    QCOMPARE((*history)[0].label, QByteArray());
    QCOMPARE(told((*history)[2].changes), QByteArray("p a - > 1|p b - > 2"));
    QCOMPARE(told((*history)[1].changes), QByteArray("p a 1 > 3"));
    QCOMPARE((*history)[0].pid, quint32(QCoreApplication::applicationPid()));
    QVERIFY((*history)[0].timeUs >= (*history)[1].timeUs);
    QCOMPARE(int(ops::readHistory(ops::Store(), 2)->size()), 2);
}

void TestStore::takingBackAndPuttingBack()
{
    QVERIFY(apply({{"p", "a", {}, number(1)}}, "first"));
    QVERIFY(apply({{"p", "a", {}, number(2)}}, "second"));
    ops::Store store;
    auto history = *ops::readHistory(store);
    QVERIFY(ops::takeBack(store, ops::lastToUndo(history), false, "undo"));
    QCOMPARE(now().number("p", "a"), 1u);
    history = *ops::readHistory(store);
    QCOMPARE(history[0].label, QByteArray("undo second"));
    QCOMPARE(history[0].undoes, history[1].id);
    QVERIFY(history[1].takenBack);
    QVERIFY(ops::takeBack(store, ops::lastToRedo(history), false, "redo"));
    QCOMPARE(now().number("p", "a"), 2u);
    history = *ops::readHistory(store);
    QCOMPARE(history[0].label, QByteArray("redo second"));
    QVERIFY(!history[2].takenBack);
    QVERIFY(ops::lastToRedo(history).empty());
}

// A thousand batches of any kind, each taken back in turn: the plan says beforehand what comes out.
void TestStore::randomBatchesGoBackToTheStart()
{
    ops::Store store;
    std::mt19937 random(3);
    const ops::Snapshot start = now();
    for (int batch = 0; batch < 1000; ++batch) {
        const ops::Snapshot before = now();
        ops::Draft draft(before);
        for (unsigned change = random() % 4 + 1; change > 0; --change) {
            const QByteArray name = QByteArray::number(random() % 8);
            if (random() % 3)
                draft.set("p", name, number(random() % 5));
            else
                draft.remove("p", name);
        }
        QVERIFY(store.apply(draft.changes(), QByteArray()));
    }
    const auto history = *ops::readHistory(store);
    std::vector<const ops::Batch *> all = ops::since(history, 0);
    const ops::TakeBackPlan plan = ops::planTakeBack(now(), all, false);
    QVERIFY(plan.conflicts.empty());
    QCOMPARE(told(plan.changes), told(ops::difference(now(), start)));
    QVERIFY(ops::takeBack(store, all, false, "undo"));
    QVERIFY(ops::difference(now(), start).empty());
}

void TestStore::followingTheHistory()
{
    ops::Store store;
    QCOMPARE(*ops::newestChange(store), 0);
    QVERIFY(apply({{"p", "a", {}, number(1)}}));
    const qint64 newest = *ops::newestChange(store);
    QVERIFY(newest > 0);
    QVERIFY(apply({{"p", "a", {}, number(2)}, {"p", "b", {}, number(3)}}));
    QByteArrayList seen;
    const auto last =
        ops::followHistory(store, newest, [&](const ops::Batch &one) { seen.append(told(one.changes)); });
    QCOMPARE(seen.join(' '), QByteArray("p a 1 > 2 p b - > 3"));
    QCOMPARE(*last, *ops::newestChange(store));
}

void TestStore::configurations()
{
    QVERIFY(apply({{"p", "a", {}, number(1)}}));
    QCOMPARE(ops::configurationNames(), QByteArrayList{"default"});
    QVERIFY(ops::newConfiguration("day"));
    QVERIFY(!ops::newConfiguration("day"));
    QVERIFY(ops::renameConfiguration("day", "night"));
    QVERIFY(!ops::renameConfiguration("day", "late"));
    QVERIFY(!ops::renameConfiguration("default", "late"));
    QVERIFY(!ops::deleteConfiguration("default"));
    QCOMPARE(ops::configurationNames(), QByteArrayList({"default", "night"}));
    QVERIFY(ops::useConfiguration("night"));
    QVERIFY(now().empty());
    QVERIFY(!ops::useConfiguration("nowhere"));
    QCOMPARE(ops::defaultConfiguration(), QByteArray("night"));
    QVERIFY(ops::deleteConfiguration("default"));
    QCOMPARE(ops::configurationNames(), QByteArrayList{"night"});
    QVERIFY(!ops::Store::open("nowhere"));
}

void TestStore::wrongNames_data()
{
    QTest::addColumn<QByteArray>("name");
    for (const char *name : {"", ".hidden", "a/b", "../a", "a\nb", "\x7f"})
        QTest::newRow(*name ? name : "empty") << QByteArray(name);
    QTest::newRow("65 bytes") << QByteArray(65, 'x');
}

void TestStore::wrongNames()
{
    QFETCH(QByteArray, name);
    QVERIFY(!ops::newConfiguration(name));
    QVERIFY(!ops::copyConfiguration("default", name));
    QCOMPARE(ops::configurationNames(), QByteArrayList{"default"});
}

void TestStore::aCopyIsExact()
{
    QVERIFY(apply(ops::difference({}, RandomStore(5).anything())));
    QVERIFY(ops::copyConfiguration("default", "copy"));
    QVERIFY(ops::difference(now(), *ops::Store::open("copy")->read(), ops::Spelling::Exact).empty());
    QVERIFY(!ops::copyConfiguration("nowhere", "other"));
    QVERIFY(!ops::copyConfiguration("default", "copy"));
}

void TestStore::operands()
{
    QVERIFY(apply({{channel(0), "ClockDomain", {}, number(1)}, {channel(1), "ClockDomain", {}, number(2)}}));
    QVERIFY(ops::copyConfiguration("default", "night"));
    const QByteArray dump = file("a.json", ops::writeDump({{"default", now()}}));
    const QByteArray two = file("b.json", ops::writeDump({{"one", now()}, {"two", ops::Snapshot()}}));
    const QByteArray settings = file("c.ipp", ops::exportSettings(now()));
    const ops::Store store;
    const auto differs = [&store](const QByteArray &left, const QByteArray &right) {
        return told(ops::compare(*ops::readOperand(left, store), *ops::readOperand(right, store)));
    };
    for (const QByteArray &same :
         {QByteArray("store"), QByteArray("night"), QByteArray("config:night"), dump, two + "#one", settings})
        QCOMPARE(differs("store", same), QByteArray());
    QCOMPARE(differs("0", "1"), channel(0) + " ClockDomain 1 > 2");
    QCOMPARE(differs("1", two + "#two"), channel(1) + " ClockDomain 2 > -");
    QCOMPARE(differs(settings, "0"), QByteArray());
}

void TestStore::operandsThatAreNone_data()
{
    QTest::addColumn<QByteArray>("text");
    for (const char *text : {"", "nowhere", "config:nowhere", "/dev/null", "/", "2/video", "no.json"})
        QTest::newRow(*text ? text : "empty") << QByteArray(text);
}

void TestStore::operandsThatAreNone()
{
    QFETCH(QByteArray, text);
    const auto operand = ops::readOperand(text, ops::Store());
    QVERIFY(!operand);
    QCOMPARE(operand.failure().kind, ops::Failure::Input);
}

QTEST_GUILESS_MAIN(TestStore)
#include "test_ops_store.moc"
