// SPDX-License-Identifier: MIT
// Whole configurations in a file: dump, restore and diff.
#include "corvelctl/changes.h"
#include "corvelctl/families.h"
#include "ops/configurations.h"
#include "ops/dump.h"
#include "ops/inputfile.h"
#include "ops/operand.h"

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
    context.out.begin(""); // the file itself is JSON
    const auto written = ops::writeOutput(bytes(options.file), ops::writeDump(all));
    return written ? Done : context.fail(written.failure());
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

// Makes one configuration exactly the dump's.
int restoreInto(Context &context, ops::Store &store, const ops::Snapshot &wanted, const QByteArray &label)
{
    const auto now = store.read();
    if (!now)
        return context.fail(now.failure());
    const ops::Changes changes = ops::difference(*now, wanted, ops::Spelling::Exact);
    return applyChanges(context, store, changes, label, Ask::Always);
}

// Each configuration is one transaction; what came before a failure stays.
int restoreAll(Context &context, const ops::Dump &dump, const QByteArray &label)
{
    bool some = false;
    for (const ops::Configuration &configuration : dump) {
        auto store = ops::Store::open(configuration.name, !context.dryRun);
        const int code =
            store ? restoreInto(context, *store, configuration.values, label) : context.fail(store.failure());
        if (code != Done && code != Nothing)
            return some ? Partly : code;
        some = true;
    }
    return Done;
}

int restoreOne(Context &context, const ops::Configuration &from, const QByteArray &label)
{
    auto store = context.open();
    return store ? restoreInto(context, *store, from.values, label) : context.fail(store.failure());
}

int restore(Context &context, const RestoreOptions &options)
{
    const QByteArray file = bytes(options.file);
    const auto text = ops::readInput(file);
    if (!text)
        return context.fail(text.failure());
    const auto dump = ops::readDump(*text);
    if (!dump)
        return context.usage(file + ": " + dump.failure().text);
    const QByteArray label = "restore " + file.mid(file.lastIndexOf('/') + 1);
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
    command.option("--from", options.from, "This configuration of a dump that holds several");
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
