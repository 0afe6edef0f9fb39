// SPDX-License-Identifier: MIT
// The history: history, undo, redo, blame.
#include "corvelctl/batchtext.h"
#include "corvelctl/changes.h"
#include "corvelctl/families.h"
#include "ops/assignment.h"
#include "ops/history.h"
#include "rkos.h"

#include <algorithm>
#include <limits>

namespace {

constexpr std::size_t kAll = std::numeric_limits<std::size_t>::max();

struct HistoryOptions {
    std::string place;
    int most = 20;
    bool values = false;
    bool all = false;
};

// True when a change belongs to what the user named.
bool concerns(const ops::Change &change, const QByteArray &place)
{
    const QByteArray key = ops::keyInWords(change.path, change.name);
    const bool whole =
        key.startsWith(place) && (key.size() == place.size() || QByteArray(" /").contains(key[place.size()]));
    return whole || ops::comparePaths(change.path, place) == 0;
}

void onlyConcerned(std::vector<ops::Batch> &batches, const QByteArray &place)
{
    for (ops::Batch &batch : batches) {
        const auto other = [&place](const ops::Change &change) { return !concerns(change, place); };
        batch.changes.erase(std::remove_if(batch.changes.begin(), batch.changes.end(), other),
                            batch.changes.end());
    }
    const auto empty = [](const ops::Batch &batch) { return batch.changes.empty(); };
    batches.erase(std::remove_if(batches.begin(), batches.end(), empty), batches.end());
}

// Opens the configuration, reads its history and lets work(store, batches) do the rest.
template<class Work>
int withHistory(const Context &context, std::size_t most, const Work &work)
{
    auto store = context.open();
    if (!store)
        return context.fail(store.failure());
    auto batches = ops::readHistory(*store, most);
    return batches ? work(*store, *batches) : context.fail(batches.failure());
}

int history(Context &context, const HistoryOptions &options)
{
    const auto place = options.place.empty() ? ops::Place() : ops::parsePlace(bytes(options.place));
    if (!place)
        return context.fail(place.failure());
    const std::size_t most = options.all ? kAll : static_cast<std::size_t>(options.most);
    return withHistory(context, options.place.empty() ? most : kAll,
                       [&](const ops::Store &, std::vector<ops::Batch> &batches) -> int {
                           if (!options.place.empty())
                               onlyConcerned(batches, ops::placeText(*place));
                           if (batches.empty())
                               return context.nothing("no changes are recorded");
                           for (std::size_t at = 0; at < std::min(most, batches.size()); ++at)
                               printBatch(context.out, batches[at], options.values);
                           return Done;
                       });
}

void declareHistory(Command &command, HistoryOptions &options)
{
    command.option("place", options.place, "Only changes of this channel, element, flow or key path");
    const Argument most =
        command.option("--most", options.most, "So many batches, 20 when left out").positive();
    command.flag("--all", options.all, "All that is recorded").notTogetherWith(most);
    command.flag("--values", options.values, "Every change of every batch");
}

struct UndoOptions {
    qint64 batch = 0;
    std::string since;
    bool force = false;
};

using Chosen = std::vector<const ops::Batch *>;

ops::Outcome<Chosen> chosenBatches(const UndoOptions &options, const std::vector<ops::Batch> &history)
{
    if (!options.since.empty()) {
        const auto duration = ops::parseDuration(bytes(options.since));
        if (!duration)
            return duration.failure();
        return ops::since(history, static_cast<qint64>(rkOSGetMicro()) - *duration);
    }
    if (options.batch == 0)
        return ops::lastToUndo(history);
    const auto named = [&options](const ops::Batch &batch) { return batch.id == options.batch; };
    const auto at = std::find_if(history.begin(), history.end(), named);
    if (at == history.end())
        return ops::wrong("there is no batch #" + QByteArray::number(options.batch) +
                          "; see corvelctl history");
    return Chosen{&*at};
}

void tellConflicts(const ops::TakeBackPlan &plan, bool force)
{
    for (const ops::Change &change : plan.conflicts) {
        const QByteArray now = ops::valueInWords(change.path, change.name, change.before);
        Output::error(ops::keyInWords(change.path, change.name) + " was changed again since, to " + now +
                      (force ? "" : ", and is left alone; --force sets it"));
    }
}

ops::Outcome<ops::TakeBackPlan> planned(const ops::Store &store, const Chosen &batches, bool force)
{
    const auto now = store.read();
    if (!now)
        return now.failure();
    return ops::planTakeBack(*now, batches, force);
}

// The verb, and what it did.
struct Deed {
    const char *verb, *done;
};

int takeBack(Context &context, ops::Store &store, const Chosen &batches, bool force, const Deed &deed)
{
    const auto plan =
        context.dryRun ? planned(store, batches, force) : ops::takeBack(store, batches, force, deed.verb);
    if (!plan)
        return context.fail(plan.failure());
    printChanges(context.out, plan->changes);
    tellConflicts(*plan, force);
    const int code = plan->conflicts.empty() || force ? Done : Partly;
    if (plan->changes.empty())
        return code == Done ? context.nothing(QByteArray("nothing to ") + deed.verb) : code;
    context.out.note(counted(plan->changes.size(), "value") + (context.dryRun ? " would be " : " ") +
                     deed.done);
    return code;
}

template<class Choose>
int run(Context &context, const UndoOptions &options, const Deed &deed, const Choose &choose)
{
    return withHistory(context, kAll, [&](ops::Store &store, const std::vector<ops::Batch> &batches) -> int {
        const ops::Outcome<Chosen> chosen = choose(batches);
        if (!chosen)
            return context.fail(chosen.failure());
        if (chosen->empty())
            return context.nothing(QByteArray("nothing to ") + deed.verb);
        for (const ops::Batch *batch : *chosen)
            context.out.note(deed.verb + (' ' + batchTitle(*batch)));
        return takeBack(context, store, *chosen, options.force, deed);
    });
}

int undo(Context &context, const UndoOptions &options)
{
    const auto choose = [&options](const std::vector<ops::Batch> &history) {
        return chosenBatches(options, history);
    };
    return run(context, options, {"undo", "taken back"}, choose);
}

int redo(Context &context, const UndoOptions &options)
{
    const auto choose = [](const std::vector<ops::Batch> &history) -> ops::Outcome<Chosen> {
        return ops::lastToRedo(history);
    };
    return run(context, options, {"redo", "put back"}, choose);
}

void declareRedo(Command &command, UndoOptions &options)
{
    command.flag("--force", options.force, "Also values that were changed again since");
}

void declareUndo(Command &command, UndoOptions &options)
{
    declareRedo(command, options);
    const Argument batch =
        command.option("--batch", options.batch, "This batch, a number of corvelctl history").positive();
    command.option("--since", options.since, "Every batch of the last 90s, 10m, 2h or 1d")
        .notEmpty()
        .notTogetherWith(batch);
}

struct BlameOptions {
    std::string place, word;
};

// "2/video/rx.dst" and "2/video rx.dst" are the same.
BlameOptions split(BlameOptions options)
{
    const std::size_t slash = options.place.rfind('/');
    if (options.word.empty() && slash != std::string::npos) {
        options.word = options.place.substr(slash + 1);
        options.place.resize(slash);
    }
    return options;
}

bool isOf(const ops::Change &change, const std::vector<ops::Key> &keys)
{
    const auto same = [&change](const ops::Key &key) {
        return ops::compareKeys(key.path, key.name, change.path, change.name) == 0;
    };
    return std::any_of(keys.begin(), keys.end(), same);
}

// Nothing may be recorded of a word that there is; of any other one it is a slip.
int blameNobody(const Context &context, const ops::Place &place, const QByteArray &word)
{
    const auto known = ops::select(place, word, ops::Foreign::Refuse);
    if (!known && place.path.isEmpty())
        return context.fail(known.failure());
    context.out.note("no change of it is recorded");
    return Found;
}

// What remains of the batches are the changes of these keys.
bool printBlamed(Context &context, std::vector<ops::Batch> &batches, const std::vector<ops::Key> &keys)
{
    bool found = false;
    for (ops::Batch &batch : batches) {
        const auto other = [&keys](const ops::Change &change) { return !isOf(change, keys); };
        batch.changes.erase(std::remove_if(batch.changes.begin(), batch.changes.end(), other),
                            batch.changes.end());
        if (batch.changes.empty())
            continue;
        found = true;
        printBatch(context.out, batch, true);
    }
    return found;
}

int blame(Context &context, const BlameOptions &given)
{
    const BlameOptions options = split(given);
    const auto place = ops::parsePlace(bytes(options.place));
    if (!place)
        return context.fail(place.failure());
    const auto keys = ops::select(*place, bytes(options.word), ops::Foreign::Allow);
    if (!keys)
        return context.fail(keys.failure());
    return withHistory(context, kAll, [&](const ops::Store &, std::vector<ops::Batch> &batches) -> int {
        if (printBlamed(context, batches, *keys))
            return Done;
        return blameNobody(context, *place, bytes(options.word));
    });
}

void declareBlame(Command &command, BlameOptions &options)
{
    command.option("place", options.place, "CHANNEL[/ELEMENT[/FLOW]]/WORD").required();
    command.option("word", options.word, "The word, when it is not behind the place");
}

} // namespace

void addTimeCommands(Command &app, Context &context)
{
    addCommand<HistoryOptions>(app, context, "history",
                               "Print what was changed, when and by whom, newest first",
                               "corvelctl history 2/video --most 5", declareHistory, history);
    addCommand<UndoOptions>(app, context, "undo", "Take the last batch of changes back",
                            "corvelctl undo --since 10m", declareUndo, undo);
    addCommand<UndoOptions>(app, context, "redo", "Put back what the last undo took", "corvelctl redo",
                            declareRedo, redo);
    addCommand<BlameOptions>(app, context, "blame", "Print who changed a value, newest first",
                             "corvelctl blame 2/video/rx.dst", declareBlame, blame);
}
