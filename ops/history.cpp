// SPDX-License-Identifier: MIT
#include "ops/history.h"

#include "channel/librarycalls.h"
#include "channel/storecalls.h"
#include "ops/draft.h"
#include "rkos.h"

#include <algorithm>
#include <map>

namespace ops {

namespace {

constexpr int kText = 1; // StoreRecord: 0 absent, 1 text, 2 number

std::optional<Value> valueOf(int type, const char *text, uint32_t size, uint32_t number)
{
    if (type == 0)
        return std::nullopt;
    if (type == kText)
        return Value::ofText(QByteArray(text, size > 0 ? static_cast<int>(size) - 1 : 0));
    return Value::ofNumber(number);
}

Change changeOf(const StoreRecord &change)
{
    return {change.keyPath, change.valueName,
            valueOf(change.oldType, change.oldText, change.oldSize, change.oldNumber),
            valueOf(change.newType, change.newText, change.newSize, change.newNumber)};
}

Batch headOf(const StoreRecord &change)
{
    Batch batch;
    batch.id = change.batch;
    batch.timeUs = change.timeUs;
    batch.program = change.program;
    batch.pid = change.pid;
    batch.user = change.user;
    batch.label = change.label;
    batch.undoes = change.undoes;
    return batch;
}

// Batches of several processes may lie between each other, so a batch is complete only when an older id comes
// than the one it began with.
struct Collector {
    std::vector<Batch> batches;
    std::map<qint64, std::size_t> places;
    std::size_t most;
};

int collect(void *context, const StoreRecord *change)
{
    auto &all = *static_cast<Collector *>(context);
    auto at = all.places.find(change->batch);
    if (at == all.places.end()) {
        if (all.batches.size() == all.most)
            return change->id < all.places.begin()->first ? 1 : 0;
        at = all.places.emplace(change->batch, all.batches.size()).first;
        all.batches.push_back(headOf(*change));
    }
    Batch &batch = all.batches[at->second];
    batch.timeUs = change->timeUs;
    batch.changes.push_back(changeOf(*change));
    return 0;
}

// From the newest on: what an active batch undid is not active.
void markTakenBack(std::vector<Batch> &batches)
{
    std::map<qint64, bool> undone;
    for (Batch &batch : batches) {
        batch.takenBack = undone.count(batch.id) > 0;
        if (batch.undoes != 0 && !batch.takenBack)
            undone[batch.undoes] = true;
    }
}

struct Follower {
    const std::function<void(const Batch &)> &visit;
    qint64 newest;
};

int follow(void *context, const StoreRecord *change)
{
    auto &follower = *static_cast<Follower *>(context);
    Batch batch = headOf(*change);
    batch.changes.push_back(changeOf(*change));
    follower.newest = change->id;
    follower.visit(batch);
    return 0;
}

int noteId(void *context, const StoreRecord *change)
{
    *static_cast<qint64 *>(context) = change->id;
    return 1;
}

Failure noHistory()
{
    return refused("this configuration library keeps no history");
}

const Batch *findBatch(const std::vector<Batch> &history, qint64 id)
{
    for (const Batch &batch : history) {
        if (batch.id == id)
            return &batch;
    }
    return nullptr;
}

QByteArray takeBackLabel(const Batch &batch, const char *verb)
{
    QByteArray what = batch.label.isEmpty() ? "change #" + QByteArray::number(batch.id) : batch.label;
    if (batch.undoes != 0 && what.startsWith("undo "))
        what.remove(0, 5); // "redo copy 0 1-7", not "redo undo copy 0 1-7"
    const QByteArray label = verb + (' ' + what);
    return label.size() <= 200 ? label : verb + (" change #" + QByteArray::number(batch.id));
}

struct Unit {
    char letter;
    qint64 seconds;
};
constexpr qint64 kLongestSeconds = 36500LL * 86400; // a hundred years
constexpr Unit kUnits[] = {{'s', 1}, {'m', 60}, {'h', 3600}, {'d', 86400}};

qint64 secondsOf(char letter)
{
    for (const Unit &unit : kUnits) {
        if (unit.letter == letter)
            return unit.seconds;
    }
    return 0;
}

} // namespace

Outcome<std::vector<Batch>> readHistory(const Store &store, std::size_t most)
{
    if (!libraryCalls().history)
        return noHistory();
    Collector all{{}, {}, most};
    if (libraryCalls().history(store.handle(), -1, collect, &all) != 0)
        return refused("the history cannot be read");
    for (Batch &batch : all.batches)
        std::reverse(batch.changes.begin(), batch.changes.end());
    markTakenBack(all.batches);
    return std::move(all.batches);
}

Outcome<qint64> followHistory(const Store &store, qint64 after,
                              const std::function<void(const Batch &)> &visit)
{
    if (!libraryCalls().history)
        return noHistory();
    Follower follower{visit, after};
    if (libraryCalls().history(store.handle(), after, follow, &follower) != 0)
        return refused("the history cannot be read");
    return follower.newest;
}

Outcome<qint64> newestChange(const Store &store)
{
    if (!libraryCalls().history)
        return noHistory();
    qint64 newest = 0;
    if (libraryCalls().history(store.handle(), -1, noteId, &newest) != 0)
        return refused("the history cannot be read");
    return newest;
}

Changes effectOf(const Batch &batch)
{
    Changes effect;
    std::map<std::pair<QByteArray, QByteArray>, std::size_t> places;
    for (const Change &change : batch.changes) {
        const auto [at, first] =
            places.emplace(std::make_pair(change.path.toLower(), change.name), effect.size());
        if (first)
            effect.push_back(change);
        else
            effect[at->second].after = change.after;
    }
    return effect;
}

std::vector<const Batch *> lastToUndo(const std::vector<Batch> &history)
{
    for (const Batch &batch : history) {
        if (batch.undoes == 0 && !batch.takenBack)
            return {&batch};
    }
    return {};
}

std::vector<const Batch *> lastToRedo(const std::vector<Batch> &history)
{
    for (const Batch &batch : history) {
        const Batch *undone =
            batch.undoes != 0 && !batch.takenBack ? findBatch(history, batch.undoes) : nullptr;
        if (undone && undone->undoes == 0)
            return {&batch};
    }
    return {};
}

std::vector<const Batch *> since(const std::vector<Batch> &history, qint64 timeUs)
{
    std::vector<const Batch *> found;
    for (const Batch &batch : history) {
        if (batch.timeUs >= timeUs && batch.undoes == 0 && !batch.takenBack)
            found.push_back(&batch);
    }
    return found;
}

TakeBackPlan planTakeBack(const Snapshot &now, const std::vector<const Batch *> &batches, bool force)
{
    Draft draft(now);
    TakeBackPlan plan;
    for (const Batch *batch : batches) {
        for (const Change &change : effectOf(*batch)) {
            const std::optional<Value> present = draft.find(change.path, change.name);
            const bool conflict = present != change.after && present != change.before;
            if (conflict)
                plan.conflicts.push_back({change.path, change.name, present, change.before});
            if (conflict && !force)
                continue;
            if (change.before)
                draft.set(change.path, change.name, *change.before);
            else
                draft.remove(change.path, change.name);
        }
    }
    plan.changes = draft.changes();
    return plan;
}

Outcome<TakeBackPlan> takeBack(Store &store, const std::vector<const Batch *> &batches, bool force,
                               const char *verb)
{
    const LibraryCalls &calls = libraryCalls();
    if (!calls.takeBack || !calls.begin)
        return noHistory();
    StoreTransaction transaction(store.handle());
    if (!transaction.isOpen())
        return storeBusy();
    const Outcome<Snapshot> now = store.read();
    if (!now)
        return now.failure();
    TakeBackPlan plan = planTakeBack(*now, batches, force);
    for (const Batch *batch : batches) {
        calls.label(store.handle(), takeBackLabel(*batch, verb).constData());
        if (calls.takeBack(store.handle(), batch->id, force ? 1 : 0, 0, nullptr, nullptr, nullptr) < 0)
            return refused('#' + QByteArray::number(batch->id) +
                           " cannot be taken back; nothing was changed");
    }
    if (!transaction.keep())
        return refused("the store did not take the change; nothing was changed");
    const Outcome<Done> saved = store.save();
    return saved ? Outcome<TakeBackPlan>(std::move(plan)) : saved.failure();
}

Outcome<qint64> parseDuration(const QByteArray &text)
{
    const Failure none = wrong('"' + text.left(40) + "\" is no time such as 90s, 10m, 2h or 1d");
    qint64 seconds = 0, number = 0;
    bool digits = false;
    for (const char c : text) {
        const bool digit = c >= '0' && c <= '9' && number < 1000000;
        if (!digit && (!digits || secondsOf(c) == 0))
            return none;
        if (digit) {
            number = number * 10 + (c - '0');
        } else {
            seconds += number * secondsOf(c);
            number = 0;
        }
        if (seconds > kLongestSeconds)
            return none;
        digits = digit;
    }
    if (text.isEmpty() || digits)
        return none;
    return seconds * 1000000;
}

QByteArray isoTime(qint64 timeUs)
{
    char date[64] = "", time[64] = "";
    const auto seconds = static_cast<uint64_t>(timeUs / 1000000);
    const auto nano = static_cast<uint32_t>(timeUs % 1000000 * 1000);
    rkOSGetEpochDateTimeString(seconds, date, time, nano, RKOS_TIME_FORMAT_PTP);
    return QByteArray(date) + 'T' + QByteArray(time).chopped(3) + 'Z';
}

} // namespace ops
