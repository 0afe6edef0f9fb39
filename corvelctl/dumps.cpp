// SPDX-License-Identifier: MIT
// Whole configurations in a file: dump, restore and diff.
#include "corvelctl/changes.h"
#include "corvelctl/families.h"
#include "ops/configurations.h"
#include "ops/dump.h"
#include "ops/inputfile.h"
#include "ops/operand.h"

#include <algorithm>

namespace {

struct DumpOptions {
    std::string file = "-";
    bool all = false;
};

QByteArray currentName(const Context &context)
{
    return context.configuration.empty() ? ops::defaultConfiguration() : bytes(context.configuration);
}

ops::Outcome<ops::Configuration> readConfiguration(const QByteArray &name)
{
    if (!ops::hasConfiguration(name))
        return ops::noSuchConfiguration(name);
    const auto store =
        name == ops::defaultConfiguration() ? ops::Outcome<ops::Store>(ops::Store()) : ops::Store::open(name);
    if (!store)
        return store.failure();
    auto values = store->read();
    if (!values)
        return values.failure();
    return ops::Configuration{name, std::move(*values)};
}

int dump(Context &context, const DumpOptions &options)
{
    ops::Dump all;
    for (const QByteArray &name :
         options.all ? ops::configurationNames() : QByteArrayList{currentName(context)}) {
        auto configuration = readConfiguration(name);
        if (!configuration)
            return context.fail(configuration.failure());
        all.push_back(std::move(*configuration));
    }
    return context.writeFile(bytes(options.file), ops::writeDump(all));
}

void declareDump(Command &command, DumpOptions &options)
{
    command.option("file", options.file, "Where to; standard output when left out");
    command.flag("--all", options.all, "All configurations instead of one");
}

struct RestoreOptions {
    std::string file;
    std::string from;
    bool all = false;
};

// Exactly the dump: what is not in it goes.
ops::Plan becoming(const ops::Snapshot &wanted)
{
    return [&wanted](const ops::Snapshot &now) -> ops::Outcome<ops::Changes> {
        return ops::difference(now, wanted, ops::Spelling::Exact);
    };
}

int restoreOne(Context &context, const ops::Configuration &from, const QByteArray &label)
{
    auto store = context.open();
    return store ? applyPlan(context, *store, becoming(from.values), label, Ask::Always)
                 : context.fail(store.failure());
}

// With several configurations an item says which one it is of.
void printChangesOf(const ops::Configuration &configuration, const ops::Changes &changes, Context &context)
{
    context.out.note("configuration \"" + configuration.name + "\": " + counted(changes.size(), "value"));
    for (const ops::Change &change : changes) {
        context.out.item([&] {
            Json item = changeItem(change);
            item["configuration"] = jsonText(configuration.name);
            return item;
        });
        context.out.line(changeText(context.out, change));
    }
}

// Prints what would become of each configuration and counts the values. A name that cannot be one is found
// out before anything is done.
ops::Outcome<std::size_t> showAll(Context &context, const ops::Dump &dump)
{
    std::size_t values = 0;
    for (const ops::Configuration &configuration : dump) {
        const bool known = ops::hasConfiguration(configuration.name);
        const auto possible = known ? ops::Outcome<ops::Done>(ops::Done())
                                    : ops::newConfiguration(configuration.name, ops::Doing::Check);
        if (!possible)
            return possible.failure();
        const auto now = known ? readConfiguration(configuration.name)
                               : ops::Outcome<ops::Configuration>(ops::Configuration());
        if (!now)
            return now.failure();
        const ops::Changes changes = ops::difference(now->values, configuration.values, ops::Spelling::Exact);
        printChangesOf(configuration, changes, context);
        values += changes.size();
    }
    Output::flush();
    return values;
}

// Each configuration is one transaction; what came before a failure stays.
int restoreEach(Context &context, const ops::Dump &dump, const QByteArray &label)
{
    bool some = false;
    for (const ops::Configuration &configuration : dump) {
        auto store = ops::Store::open(configuration.name, true);
        const auto done = store ? store->change(becoming(configuration.values), label)
                                : ops::Outcome<ops::Changes>(store.failure());
        const int code = done ? Done : context.fail(done.failure());
        if (code != Done)
            return some ? Partly : code;
        some = true;
    }
    return Done;
}

int restoreAll(Context &context, const ops::Dump &dump, const QByteArray &label)
{
    const auto values = showAll(context, dump);
    if (!values)
        return context.fail(values.failure());
    const auto exists = [](const ops::Configuration &one) { return ops::hasConfiguration(one.name); };
    if (*values == 0 && std::all_of(dump.begin(), dump.end(), exists))
        return context.nothing("nothing to change");
    const QByteArray what = counted(*values, "value") + " of " + counted(dump.size(), "configuration");
    if (context.dryRun) {
        context.out.note(what + " would change");
        return Done;
    }
    if (!agreed(context, "Change " + what + '?')) {
        Output::error("nothing was changed");
        return Usage;
    }
    const int code = restoreEach(context, dump, label);
    if (code == Done)
        context.out.note(what + " changed");
    return code;
}

int restore(Context &context, const RestoreOptions &options)
{
    const QByteArray file = bytes(options.file);
    const auto dump = ops::readDumpFile(file);
    if (!dump)
        return context.fail(dump.failure());
    const QByteArray label = fileLabel("restore", file);
    if (options.all)
        return restoreAll(context, *dump, label);
    if (dump->size() == 1 && options.from.empty())
        return restoreOne(context, dump->front(), label);
    QByteArrayList names;
    for (const ops::Configuration &configuration : *dump) {
        if (configuration.name == bytes(options.from))
            return restoreOne(context, configuration, label);
        names.append(configuration.name);
    }
    return context.usage(file + " holds the configurations " + names.join(", ") +
                         "; choose one with --from, or --all");
}

void declareRestore(Command &command, RestoreOptions &options)
{
    command.option("file", options.file, "A dump, or - for standard input").required();
    command.option("--from", options.from, "This configuration of a dump that holds several").notEmpty();
    command.flag("--all", options.all, "Every configuration of the dump, each to its own name");
}

struct DiffOptions {
    std::string left, right;
};

int diffFrom(Context &context, const ops::Store &store, const DiffOptions &options)
{
    const auto left = ops::readOperand(bytes(options.left), store);
    if (!left)
        return context.fail(left.failure());
    const auto right = ops::readOperand(bytes(options.right), store);
    if (!right)
        return context.fail(right.failure());
    const ops::Changes changes = ops::compare(*left, *right);
    printChanges(context.out, changes);
    return changes.empty() ? Done : Found;
}

int diff(Context &context, const DiffOptions &options)
{
    if (readsInputTwice({options.left, options.right}))
        return context.usage(kInputOnce);
    const auto store = context.open();
    return store ? diffFrom(context, *store, options) : context.fail(store.failure());
}

constexpr char kOperand[] = "store, a channel, a configuration (or config:NAME), a dump or a settings file";

void declareDiff(Command &command, DiffOptions &options)
{
    command.option("from", options.left, kOperand).required();
    command.option("to", options.right, kOperand).required();
}

} // namespace

void addDumpCommands(Command &app, Context &context)
{
    addCommand<DumpOptions>(app, context, "dump", "Write everything of a configuration into one file",
                            "corvelctl dump before.json", declareDump, dump);
    addCommand<RestoreOptions>(app, context, "restore", "Make a configuration exactly what a dump holds",
                               "corvelctl restore before.json --dry-run", declareRestore, restore);
    addCommand<DiffOptions>(app, context, "diff",
                            "Print what turns one into the other; exit status 1 when they differ",
                            "corvelctl diff before.json store", declareDiff, diff);
}
