// SPDX-License-Identifier: MIT
// Random histories on a real store against a model: a list of steps, each a map of values before and after.
// What is undone, redone, in conflict or forced is worked out by the model alone; store, plan and history
// have to agree.
#include "freshhome.h"
#include "ops/history.h"
#include "rows.h"

#include <map>
#include <random>

class TestUndoModel : public QObject {
    Q_OBJECT

private slots:
    void init() { m_home = std::make_unique<FreshHome>(); }
    void cleanup() { m_home.reset(); }

    void undoToTheStartAndRedoToTheEnd_data();
    void undoToTheStartAndRedoToTheEnd();
    void anyBatchInAnyOrder_data();
    void anyBatchInAnyOrder();
    void severalAtOnceAreOneStep_data();
    void severalAtOnceAreOneStep();
    void aForcedOneWinsOverWhatCameLater();
    void whatIsTakenBackIsMarked();

private:
    std::unique_ptr<FreshHome> m_home;
};

namespace {

using State = std::map<QByteArray, QByteArray>; // "name" and its value as told(); what is absent is not there

constexpr int kNames = 12;

QByteArray nameOf(int number)
{
    return "n" + QByteArray::number(number);
}

State stateOf(const ops::Store &store)
{
    State state;
    const auto values = store.read();
    for (const ops::Row &row : values->rows())
        state[row.name] = told(row.value);
    return state;
}

std::optional<ops::Value> valueAt(const State &state, const QByteArray &name)
{
    const auto at = state.find(name);
    if (at == state.end())
        return std::nullopt;
    const QByteArray text = at->second;
    return text.startsWith('"') ? ops::Value::ofText(text.mid(1, text.size() - 2))
                                : ops::Value::ofNumber(text.toUInt());
}

QByteArray entry(const State &state, const QByteArray &name)
{
    const auto at = state.find(name);
    return at == state.end() ? QByteArray("-") : at->second;
}

void put(State &state, const QByteArray &name, const QByteArray &value)
{
    if (value == "-")
        state.erase(name);
    else
        state[name] = value;
}

// A step changes some values, each to something else.
struct Step {
    qint64 batch = 0;
    std::map<QByteArray, std::pair<QByteArray, QByteArray>> values; // name, before and after
};

class Model {
public:
    explicit Model(unsigned seed) : m_random(seed) {}

    int below(int limit) { return static_cast<int>(m_random() % static_cast<unsigned>(limit)); }

    // One more step, stored through the store and noted here.
    void write(ops::Store &store)
    {
        State after = state;
        for (int change = 1 + below(4); change > 0; --change)
            put(after, nameOf(below(kNames)), randomValue());
        ops::Changes changes;
        for (int at = 0; at < kNames; ++at) {
            const QByteArray name = nameOf(at);
            if (entry(state, name) != entry(after, name))
                changes.push_back({"p", name, valueAt(state, name), valueAt(after, name)});
        }
        if (changes.empty())
            return;
        QVERIFY(store.apply(changes, "step"));
        note(store, after);
    }

    // What the store did last, from the present state to this one.
    void note(const ops::Store &store, const State &after)
    {
        Step step;
        step.batch = ops::readHistory(store, 1)->front().id;
        for (int at = 0; at < kNames; ++at) {
            const QByteArray name = nameOf(at);
            if (entry(state, name) != entry(after, name))
                step.values[name] = {entry(state, name), entry(after, name)};
        }
        steps.push_back(step);
        state = after;
    }

    // The state after a step was taken back, and how many values are in its way.
    State without(const Step &step, bool force, int &conflicts) const
    {
        State after = state;
        for (const auto &[name, values] : step.values) {
            const QByteArray now = entry(state, name);
            const bool conflict = now != values.second && now != values.first;
            conflicts += conflict;
            if (!conflict || force)
                put(after, name, values.first);
        }
        return after;
    }

    State state;
    std::vector<Step> steps;

private:
    QByteArray randomValue()
    {
        switch (below(4)) {
        case 0:
            return "-";
        case 1:
            return '"' + QByteArray::number(below(3)) + '"'; // few, so that old values come back by chance
        default:
            return QByteArray::number(below(3));
        }
    }

    std::mt19937 m_random;
};

const ops::Batch *find(const std::vector<ops::Batch> &history, qint64 id)
{
    for (const ops::Batch &batch : history) {
        if (batch.id == id)
            return &batch;
    }
    return nullptr;
}

void addSeeds()
{
    QTest::addColumn<unsigned>("seed");
    for (unsigned seed = 1; seed <= 6; ++seed)
        QTest::addRow("%u", seed) << seed;
}

} // namespace

void TestUndoModel::undoToTheStartAndRedoToTheEnd_data()
{
    addSeeds();
}

void TestUndoModel::undoToTheStartAndRedoToTheEnd()
{
    QFETCH(unsigned, seed);
    ops::Store store;
    Model model(seed);
    std::vector<State> states{State()};
    for (int step = 0; step < 25; ++step) {
        model.write(store);
        if (model.state != states.back())
            states.push_back(model.state);
    }
    const std::vector<State> all = states;
    while (states.size() > 1) {
        const auto history = ops::readHistory(store);
        const auto done = ops::takeBack(store, ops::lastToUndo(*history), false, "undo");
        QVERIFY(done && done->conflicts.empty());
        states.pop_back();
        QCOMPARE(stateOf(store), states.back());
    }
    QVERIFY(ops::lastToUndo(*ops::readHistory(store)).empty());
    for (std::size_t at = 1; at < all.size(); ++at) {
        const auto history = ops::readHistory(store);
        const auto done = ops::takeBack(store, ops::lastToRedo(*history), false, "redo");
        QVERIFY(done && done->conflicts.empty());
        QCOMPARE(stateOf(store), all[at]);
    }
    QVERIFY(ops::lastToRedo(*ops::readHistory(store)).empty());
}

void TestUndoModel::anyBatchInAnyOrder_data()
{
    addSeeds();
}

// Steps and undos of any step, mixed: an undo is a step that can be undone as any other.
void TestUndoModel::anyBatchInAnyOrder()
{
    QFETCH(unsigned, seed);
    ops::Store store;
    Model model(seed);
    for (int turn = 0; turn < 40; ++turn) {
        if (model.steps.empty() || model.below(3) == 0) {
            model.write(store);
            continue;
        }
        const Step step = model.steps[static_cast<std::size_t>(model.below(int(model.steps.size())))];
        const bool force = model.below(3) == 0;
        int conflicts = 0;
        const State after = model.without(step, force, conflicts);
        const auto history = ops::readHistory(store);
        const std::vector<const ops::Batch *> chosen{find(*history, step.batch)};
        QVERIFY(chosen.front());

        const ops::TakeBackPlan plan = ops::planTakeBack(*store.read(), chosen, force);
        QCOMPARE(int(plan.conflicts.size()), conflicts);
        for (const ops::Change &change : plan.conflicts) {
            QCOMPARE(told(change.before), entry(model.state, change.name));
            QCOMPARE(told(change.after), step.values.at(change.name).first);
        }
        const auto done = ops::takeBack(store, chosen, force, "undo");
        QVERIFY(done);
        QCOMPARE(told(done->changes), told(plan.changes));
        QCOMPARE(stateOf(store), after);
        if (after != model.state)
            model.note(store, after);
    }
    QCOMPARE(stateOf(store), model.state);
}

void TestUndoModel::severalAtOnceAreOneStep_data()
{
    addSeeds();
}

// As "undo --since": newest first, all of them in one transaction, as if taken back one by one.
void TestUndoModel::severalAtOnceAreOneStep()
{
    QFETCH(unsigned, seed);
    ops::Store store;
    Model model(seed);
    State middle;
    for (int step = 0; step < 16; ++step) {
        if (step == 8)
            middle = model.state;
        model.write(store);
    }
    const auto history = ops::readHistory(store);
    std::vector<const ops::Batch *> young;
    for (const ops::Batch &batch : *history) {
        const bool later = std::any_of(model.steps.begin(), model.steps.end(),
                                       [&](const Step &step) { return step.batch == batch.id; });
        QVERIFY(later);
        young.push_back(&batch);
    }
    // Those after the middle: undone one after the other, the state of the middle comes back.
    State state = model.state;
    std::size_t count = 0;
    for (; state != middle && count < young.size(); ++count) {
        for (const auto &[name, values] : model.steps[model.steps.size() - 1 - count].values)
            put(state, name, values.first);
    }
    young.resize(count);
    const auto done = ops::takeBack(store, young, false, "undo");
    QVERIFY(done && done->conflicts.empty());
    QCOMPARE(stateOf(store), middle);
    for (const ops::Change &change : done->changes) { // the plan has each value once
        QCOMPARE(told(change.before), entry(model.state, change.name));
        QCOMPARE(told(change.after), entry(middle, change.name));
    }
}

void TestUndoModel::aForcedOneWinsOverWhatCameLater()
{
    ops::Store store;
    QVERIFY(store.apply({{"p", "a", {}, number(1)}, {"p", "b", {}, number(1)}}, "first"));
    QVERIFY(store.apply({{"p", "a", number(1), number(2)}}, "second"));
    const auto history = ops::readHistory(store);
    const std::vector<const ops::Batch *> first{&history->back()};
    const auto left = ops::takeBack(store, first, false, "undo");
    QCOMPARE(told(left->changes), QByteArray("p b 1 > -"));
    QCOMPARE(told(left->conflicts), QByteArray("p a 2 > -"));
    QCOMPARE(stateOf(store), (State{{"a", "2"}}));
    const auto forced = ops::takeBack(store, first, true, "undo");
    QCOMPARE(told(forced->changes), QByteArray("p a 2 > -"));
    QCOMPARE(stateOf(store), State());
}

// "." a change, "u" an undo or redo; "x" is taken back. Newest first.
void TestUndoModel::whatIsTakenBackIsMarked()
{
    ops::Store store;
    QVERIFY(store.apply({{"p", "a", {}, number(1)}}, "first"));
    const auto marks = [&store] {
        QByteArray text;
        const auto history = ops::readHistory(store);
        for (const ops::Batch &batch : *history)
            text += batch.takenBack ? 'x' : (batch.undoes ? 'u' : '.');
        return text;
    };
    const auto undo = [&store] {
        const auto history = ops::readHistory(store);
        return bool(ops::takeBack(store, ops::lastToUndo(*history), false, "undo"));
    };
    const auto redo = [&store] {
        const auto history = ops::readHistory(store);
        return bool(ops::takeBack(store, ops::lastToRedo(*history), false, "redo"));
    };
    QCOMPARE(marks(), QByteArray("."));
    QVERIFY(undo());
    QCOMPARE(marks(), QByteArray("ux"));
    QVERIFY(redo());
    QCOMPARE(marks(), QByteArray("ux."));
    QVERIFY(undo());
    QCOMPARE(marks(), QByteArray("uuxx"));
    QVERIFY(store.apply({{"p", "a", {}, number(2)}}, "second"));
    QCOMPARE(marks(), QByteArray(".uuxx"));
}

QTEST_GUILESS_MAIN(TestUndoModel)
#include "test_ops_undomodel.moc"
