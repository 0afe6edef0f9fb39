// SPDX-License-Identifier: MIT
// corvel-fleet restore: a dump's settings back on servers, through the cluster.
#include "corvelctl/changes.h"
#include "fleet/tool/waves.h"
#include "ops/dump.h"

#include <algorithm>

namespace {

struct RestoreOptions {
    std::string file, from;
    bool each = false;
    WaveOptions waves;
};

const ops::Configuration *named(const ops::Dump &dump, const QByteArray &name)
{
    const auto found = std::find_if(dump.begin(), dump.end(),
                                    [&](const ops::Configuration &one) { return one.name == name; });
    return found == dump.end() ? nullptr : &*found;
}

QByteArray namesIn(const ops::Dump &dump)
{
    QByteArrayList names;
    for (const ops::Configuration &one : dump)
        names.append(one.name);
    return names.join(", ");
}

// What the dump has for a server; a failure says how to choose.
ops::Outcome<ops::Snapshot> settingsFor(const ops::Dump &dump, const RestoreOptions &options,
                                        const QByteArray &server)
{
    const QByteArray name = options.each ? server : bytes(options.from);
    if (name.isEmpty() && dump.size() == 1)
        return dump.front().values;
    if (const ops::Configuration *found = named(dump, name))
        return found->values;
    if (name.isEmpty())
        return ops::wrong("the dump holds the configurations " + namesIn(dump) +
                          "; choose one with --from, or --each for the one with each server's name");
    return ops::wrong("the dump holds no configuration " + name + ", but " + namesIn(dump));
}

// Exactly the dump: what is not in it goes. Not so without a value: an empty dump would empty a server.
int restoreFrom(Context &context, const ops::Dump &dump, const RestoreOptions &options)
{
    return changeServers(context, options.waves, Look::Chosen,
                         [&](const Target &target) -> ops::Outcome<ops::Changes> {
                             const auto wanted = settingsFor(dump, options, target.server);
                             if (!wanted)
                                 return wanted.failure();
                             if (wanted->empty())
                                 return ops::wrong("the dump has no values, which would empty the server");
                             return ops::difference(target.values, *wanted);
                         });
}

int restore(Context &context, const RestoreOptions &options)
{
    const auto dump = ops::readDumpFile(bytes(options.file));
    return dump ? restoreFrom(context, *dump, options) : context.fail(dump.failure());
}

void declareRestore(Command &command, RestoreOptions &options)
{
    command.option("file", options.file, "A dump of corvelctl, or - for standard input").required();
    const Argument from =
        command.option("--from", options.from, "This configuration of a dump that holds several");
    command
        .flag("--each", options.each,
              "For each server the configuration that has its name: a desk's dump --all")
        .notTogetherWith(from);
    declareWaves(command, options.waves);
}

} // namespace

void addRestoreCommand(Command &app, Context &context)
{
    addCommand<RestoreOptions>(app, context, "restore", "Give servers back what a dump holds",
                               "corvel-fleet restore plant.json --each --where 'lon-*' --dry-run",
                               declareRestore, restore);
}
