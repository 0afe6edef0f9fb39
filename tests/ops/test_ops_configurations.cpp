// SPDX-License-Identifier: MIT
// Named configurations on a real store: what may be done, and what is there afterwards.
#include "freshhome.h"
#include "ops/configurations.h"
#include "ops/history.h"
#include "ops/store.h"
#include "randomstore.h"
#include "rows.h"

using ops::Doing;

class TestConfigurations : public QObject {
    Q_OBJECT

private slots:
    void init() { m_home = std::make_unique<FreshHome>(); }
    void cleanup() { m_home.reset(); }

    void doings_data();
    void doings();
    void names_data();
    void names();
    void aNewOneIsEmpty();
    void aCopyHasTheValuesAndTheHistorySoFar();
    void aRenamedOneKeepsItsHistory();
    void theServersOneStaysInUse();
    void anUnknownNameHasANearMiss();

private:
    std::unique_ptr<FreshHome> m_home;
};

namespace {

using Step = ops::Outcome<ops::Done> (*)(Doing doing);

void put(const QByteArray &configuration, quint32 value)
{
    auto store = ops::Store::open(configuration, true);
    QVERIFY(store);
    QVERIFY(store->apply({{"p", "a", {}, number(value)}}, "put"));
}

quint32 valueIn(const QByteArray &configuration)
{
    const auto store = ops::Store::open(configuration);
    return store ? store->read()->number("p", "a") : 0;
}

} // namespace

Q_DECLARE_METATYPE(Step)

void TestConfigurations::doings_data()
{
    QTest::addColumn<Step>("step");
    QTest::addColumn<QByteArray>("says"); // empty: it may be done
    QTest::addColumn<QByteArrayList>("after");
    const auto row = [](const char *name, Step step, const char *says, const QByteArrayList &after) {
        QTest::newRow(name) << step << QByteArray(says) << after;
    };
    const QByteArrayList same{"day", "default", "night"};
    row("new", [](Doing doing) { return ops::newConfiguration("late", doing); }, "",
        {"day", "default", "late", "night"});
    row(
        "new, and there", [](Doing doing) { return ops::newConfiguration("day", doing); },
        "there is a configuration \"day\" already", same);
    row(
        "new under the server's name", [](Doing doing) { return ops::newConfiguration("default", doing); },
        "there is a configuration \"default\" already", same);
    row("copy", [](Doing doing) { return ops::copyConfiguration("day", "late", doing); }, "",
        {"day", "default", "late", "night"});
    row("copy of the server's", [](Doing doing) { return ops::copyConfiguration("default", "late", doing); },
        "", {"day", "default", "late", "night"});
    row(
        "copy of none", [](Doing doing) { return ops::copyConfiguration("dya", "late", doing); },
        "there is no configuration \"dya\"; did you mean day?", same);
    row(
        "copy onto one", [](Doing doing) { return ops::copyConfiguration("day", "night", doing); },
        "there is a configuration \"night\" already", same);
    row(
        "copy onto itself", [](Doing doing) { return ops::copyConfiguration("day", "day", doing); },
        "there is a configuration \"day\" already", same);
    row("rename", [](Doing doing) { return ops::renameConfiguration("day", "late", doing); }, "",
        {"default", "late", "night"});
    row(
        "rename of none", [](Doing doing) { return ops::renameConfiguration("zebra", "late", doing); },
        "there is no configuration \"zebra\"", same);
    row(
        "rename onto one", [](Doing doing) { return ops::renameConfiguration("day", "night", doing); },
        "there is a configuration \"night\" already", same);
    row(
        "rename of the server's",
        [](Doing doing) { return ops::renameConfiguration("default", "late", doing); },
        "\"default\" is in use; choose another one first (corvelctl config use)", same);
    row("delete", [](Doing doing) { return ops::deleteConfiguration("day", doing); }, "",
        {"default", "night"});
    row(
        "delete of none", [](Doing doing) { return ops::deleteConfiguration("zebra", doing); },
        "there is no configuration \"zebra\"", same);
    row(
        "delete of the server's", [](Doing doing) { return ops::deleteConfiguration("default", doing); },
        "\"default\" is in use; choose another one first (corvelctl config use)", same);
    row(
        "use", [](Doing doing) { return ops::useConfiguration("day", doing); }, "", same);
    row(
        "use of none", [](Doing doing) { return ops::useConfiguration("zebra", doing); },
        "there is no configuration \"zebra\"", same);
}

// A check says what the doing would say, and does nothing.
void TestConfigurations::doings()
{
    QFETCH(Step, step);
    QFETCH(QByteArray, says);
    QFETCH(QByteArrayList, after);
    put("default", 1);
    put("day", 2);
    put("night", 3);
    const QByteArrayList before = ops::configurationNames();
    for (const Doing doing : {Doing::Check, Doing::Make}) {
        QCOMPARE(ops::configurationNames(), before);
        QCOMPARE(ops::defaultConfiguration(), QByteArray("default"));
        const auto done = step(doing);
        QCOMPARE(done ? QByteArray() : done.failure().text, says);
        QVERIFY(done || done.failure().kind == ops::Failure::Input);
    }
    QCOMPARE(ops::configurationNames(), after);
}

void TestConfigurations::names_data()
{
    QTest::addColumn<QByteArray>("name");
    QTest::addColumn<bool>("good");
    const auto row = [](const char *what, const QByteArray &name, bool good) {
        QTest::newRow(what) << name << good;
    };
    row("a letter", "a", true);
    row("64 bytes", QByteArray(64, 'x'), true);
    row("65 bytes", QByteArray(65, 'x'), false);
    row("blanks inside", "late night", true);
    row("letters beyond ASCII",
        "N\xc3\xa4"
        "chte",
        true);
    row("a dot inside", "a.b", true);
    row("a backslash", "a\\b", true);
    row("empty", QByteArray(), false);
    row("a dot in front", ".hidden", false);
    row("the folder above", "..", false);
    row("a slash", "a/b", false);
    row("a line end", "a\nb", false);
    row("an escape", "\x1b[1m", false);
    row("delete", "\x7f", false);
    row("a zero byte", QByteArray("a\0b", 3), false);
    row("latin-1",
        "N\xe4"
        "chte",
        false);
}

void TestConfigurations::names()
{
    QFETCH(QByteArray, name);
    QFETCH(bool, good);
    for (const Doing doing : {Doing::Check, Doing::Make})
        QCOMPARE(bool(ops::newConfiguration(name, doing)), good);
    QCOMPARE(ops::configurationNames().contains(name), good);
    QCOMPARE(ops::hasConfiguration(name), good);
    if (good) {
        QVERIFY(ops::useConfiguration(name));
        QCOMPARE(ops::defaultConfiguration(), name);
    }
}

void TestConfigurations::aNewOneIsEmpty()
{
    put("default", 1);
    QVERIFY(ops::newConfiguration("day"));
    QVERIFY(ops::Store::open("day")->read()->empty());
    QVERIFY(ops::readHistory(*ops::Store::open("day"))->empty());
    QCOMPARE(valueIn("default"), 1u);
}

void TestConfigurations::aCopyHasTheValuesAndTheHistorySoFar()
{
    const ops::Snapshot values = RandomStore(3).anything();
    QVERIFY(ops::Store().apply(ops::difference({}, values), "first"));
    QVERIFY(ops::copyConfiguration("default", "day"));
    auto day = ops::Store::open("day");
    QVERIFY(day);
    QVERIFY(ops::difference(*day->read(), values, ops::Spelling::Exact).empty());
    const auto history = ops::readHistory(*day);
    QCOMPARE(int(history->size()), 1);
    QCOMPARE(history->front().label, QByteArray("first"));
    QVERIFY(day->apply({{"only", "day", {}, number(1)}}, "later"));
    QVERIFY(!ops::Store().read()->find("only", "day"));
    QCOMPARE(int(ops::readHistory(ops::Store())->size()), 1);
}

void TestConfigurations::aRenamedOneKeepsItsHistory()
{
    put("default", 1);
    put("day", 2);
    QVERIFY(ops::renameConfiguration("day", "late"));
    QCOMPARE(valueIn("late"), 2u);
    QVERIFY(!ops::Store::open("day"));
    QCOMPARE(ops::readHistory(*ops::Store::open("late"))->front().label, QByteArray("put"));
}

void TestConfigurations::theServersOneStaysInUse()
{
    put("default", 1);
    put("day", 2);
    QCOMPARE(ops::Store().read()->number("p", "a"), 1u);
    QVERIFY(ops::useConfiguration("day"));
    QCOMPARE(ops::defaultConfiguration(), QByteArray("day"));
    QCOMPARE(ops::Store().read()->number("p", "a"), 2u);
    QVERIFY(!ops::deleteConfiguration("day"));
    QVERIFY(ops::deleteConfiguration("default"));
    QCOMPARE(ops::configurationNames(), QByteArrayList{"day"});
}

void TestConfigurations::anUnknownNameHasANearMiss()
{
    put("default", 1);
    put("night", 2);
    QCOMPARE(ops::noSuchConfiguration("nihgt").text,
             QByteArray("there is no configuration \"nihgt\"; did you mean night?"));
    QCOMPARE(ops::noSuchConfiguration("zebra").text, QByteArray("there is no configuration \"zebra\""));
    QVERIFY(!ops::Store::open("zebra"));
    QVERIFY(!ops::hasConfiguration("zebra")); // and looking does not make one
}

QTEST_GUILESS_MAIN(TestConfigurations)
#include "test_ops_configurations.moc"
