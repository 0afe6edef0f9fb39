// SPDX-License-Identifier: MIT
#include "ops/draft.h"
#include "randomstore.h"
#include "rows.h"

#include <random>

class TestDraft : public QObject {
    Q_OBJECT

private slots:
    void aLaterStepSeesWhatAnEarlierOneSet();
    void onlyRealChangesAreChanges_data();
    void onlyRealChangesAreChanges();
    void pathsAreOneWithoutRegardToCase();
    void numbersOfTexts();
    void changesComeInTheStoresOrder();
    void anythingBecomesAnything();
};

namespace {

using Step = void (*)(ops::Draft &);

ops::Snapshot small()
{
    ops::Snapshot values;
    values.set("p", "a", number(1));
    values.set("p", "t", text("x"));
    return values;
}

} // namespace

Q_DECLARE_METATYPE(Step)

void TestDraft::aLaterStepSeesWhatAnEarlierOneSet()
{
    const ops::Snapshot base = small();
    ops::Draft draft(base);
    QCOMPARE(draft.number("p", "a"), 1u);
    draft.set("p", "a", number(2));
    QCOMPARE(draft.number("p", "a"), 2u);
    draft.remove("p", "a");
    QVERIFY(!draft.find("p", "a"));
    QCOMPARE(draft.number("p", "a"), 0u);
    draft.set("p", "a", number(3));
    QCOMPARE(*draft.find("p", "a"), number(3));
    QVERIFY(!draft.find("p", "b"));
    QCOMPARE(base.number("p", "a"), 1u);
}

void TestDraft::onlyRealChangesAreChanges_data()
{
    QTest::addColumn<Step>("step");
    QTest::addColumn<QByteArray>("wanted");
    const auto row = [](const char *name, Step step, const char *wanted) {
        QTest::newRow(name) << step << QByteArray(wanted);
    };
    row(
        "nothing", [](ops::Draft &) {}, "");
    row(
        "what is there", [](ops::Draft &draft) { draft.set("p", "a", number(1)); }, "");
    row(
        "another value", [](ops::Draft &draft) { draft.set("p", "a", number(2)); }, "p a 1 > 2");
    row(
        "another type", [](ops::Draft &draft) { draft.set("p", "a", text("1")); }, "p a 1 > \"1\"");
    row(
        "there and back",
        [](ops::Draft &draft) {
            draft.set("p", "a", number(2));
            draft.set("p", "a", number(1));
        },
        "");
    row(
        "taken away", [](ops::Draft &draft) { draft.remove("p", "t"); }, "p t \"x\" > -");
    row(
        "taken away and put back",
        [](ops::Draft &draft) {
            draft.remove("p", "t");
            draft.set("p", "t", text("x"));
        },
        "");
    row(
        "taken away where nothing is", [](ops::Draft &draft) { draft.remove("p", "b"); }, "");
    row(
        "made", [](ops::Draft &draft) { draft.set("p", "b", text("")); }, "p b - > \"\"");
    row(
        "made and taken away",
        [](ops::Draft &draft) {
            draft.set("p", "b", number(1));
            draft.remove("p", "b");
        },
        "");
    row(
        "set twice: the last one counts",
        [](ops::Draft &draft) {
            draft.set("p", "b", number(1));
            draft.set("p", "b", number(2));
        },
        "p b - > 2");
}

void TestDraft::onlyRealChangesAreChanges()
{
    QFETCH(Step, step);
    QFETCH(QByteArray, wanted);
    const ops::Snapshot base = small();
    ops::Draft draft(base);
    step(draft);
    QCOMPARE(told(draft.changes()), wanted);
}

void TestDraft::pathsAreOneWithoutRegardToCase()
{
    const ops::Snapshot base = small();
    ops::Draft draft(base);
    draft.set("P", "a", number(1));
    QVERIFY(draft.changes().empty());
    draft.set("P", "a", number(2));
    draft.set("p", "a", number(3));
    QCOMPARE(int(draft.changes().size()), 1);
    QCOMPARE(draft.number("P", "a"), 3u);
    draft.set("p", "A", number(4)); // names keep their case
    QCOMPARE(int(draft.changes().size()), 2);
}

void TestDraft::numbersOfTexts()
{
    const ops::Snapshot base = small();
    ops::Draft draft(base);
    QCOMPARE(draft.number("p", "t"), 0u);
    draft.set("p", "a", text("7"));
    QCOMPARE(draft.number("p", "a"), 0u);
}

void TestDraft::changesComeInTheStoresOrder()
{
    const ops::Snapshot base;
    ops::Draft draft(base);
    for (const char *path : {"b", "C", "a"}) {
        for (const char *name : {"2", "1"})
            draft.set(path, name, number(0));
    }
    QCOMPARE(told(draft.changes()),
             QByteArray("a 1 - > 0|a 2 - > 0|b 1 - > 0|b 2 - > 0|C 1 - > 0|C 2 - > 0"));
}

// The changes of a draft, made to what it began with, are what the draft shows.
void TestDraft::anythingBecomesAnything()
{
    for (unsigned seed = 0; seed < 100; ++seed) {
        const ops::Snapshot from = RandomStore(seed).anything(), to = RandomStore(seed + 1000).anything();
        ops::Draft draft(from);
        for (const ops::Change &change : ops::difference(from, to)) {
            if (change.after)
                draft.set(change.path, change.name, *change.after);
            else
                draft.remove(change.path, change.name);
        }
        ops::Snapshot made = from;
        for (const ops::Change &change : draft.changes()) {
            QVERIFY(change.before != change.after);
            if (change.after)
                made.set(change.path, change.name, *change.after);
            else
                made.remove(change.path, change.name);
        }
        QCOMPARE(told(ops::difference(made, to)), QByteArray());
    }
}

QTEST_APPLESS_MAIN(TestDraft)
#include "test_ops_draft.moc"
