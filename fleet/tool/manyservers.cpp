// SPDX-License-Identifier: MIT
// corvel-fleet diff, set, copy: many servers at once.
#include "corvelctl/changes.h"
#include "fleet/tool/waves.h"
#include "ops/batch.h"
#include "ops/vocabulary.h"

namespace {

struct DiffOptions {
    std::string left, right;
};

struct SetOptions {
    std::string place;
    std::vector<std::string> words;
    bool force = false;
    WaveOptions waves;
};

struct CopyOptions {
    std::string from, place;
    WaveOptions waves;
};

// The settings of a server that exists and shares some; a failure names it.
ops::Outcome<ops::Snapshot> settingsOf(const fleet::SiteView &site, const QByteArray &server)
{
    const auto found = site.find(server);
    const fleet::SharedConfiguration *current = found == site.end() ? nullptr : found->second.current();
    if (!current)
        return ops::wrong("no server " + server + " shares its settings");
    return current->snapshot();
}

int diff(Context &context, const DiffOptions &options)
{
    return withServers(context, namesAsWhere({options.left, options.right}), Look::Chosen,
                       [&](const Chosen &chosen) {
                           const auto left = settingsOf(chosen.site, bytes(options.left));
                           const auto right = settingsOf(chosen.site, bytes(options.right));
                           if (!left || !right)
                               return context.fail(left ? right.failure() : left.failure());
                           const ops::Changes changes = ops::difference(*left, *right);
                           printChanges(context.out, changes);
                           return static_cast<int>(changes.empty() ? Done : Found);
                       });
}

int set(Context &context, const SetOptions &options)
{
    return changeServers(
        context, options.waves, Look::Chosen, [&](const Target &target) -> ops::Outcome<ops::Changes> {
            ops::Draft draft(target.values);
            const ops::Rules rules{options.force ? ops::Foreign::Allow : ops::Foreign::Refuse, options.force};
            const auto filled = ops::setWords(bytes(options.place), listOf(options.words), rules, draft);
            return filled ? ops::Outcome<ops::Changes>(draft.changes()) : filled.failure();
        });
}

// What exists once, by name: it lies below several key paths, with other values between.
ops::Snapshot serverPart(const ops::Snapshot &values, const ops::Place &server)
{
    ops::Snapshot part;
    for (const ops::KnownName &known : ops::knownNames()) {
        const QByteArray path = known.place == "server" ? ops::pathOf(server, known) : QByteArray();
        const ops::Value *value = path.isEmpty() ? nullptr : values.find(path, known.name);
        if (value)
            part.set(path, known.name, *value);
    }
    return part;
}

// Only the values below the place's key paths.
ops::Outcome<ops::Snapshot> partOf(const ops::Snapshot &values, const QByteArray &place)
{
    if (place.isEmpty())
        return values;
    const auto one = ops::parsePlace(place);
    if (one && one->channel < 0 && one->path.isEmpty())
        return serverPart(values, *one);
    ops::Draft without(values);
    const auto removed = ops::unsetPlace(place, without);
    if (!removed)
        return removed.failure();
    ops::Snapshot part;
    for (const ops::Change &change : without.changes())
        part.set(change.path, change.name, *change.before);
    return part;
}

int copy(Context &context, const CopyOptions &options)
{
    return changeServers(context, options.waves, Look::All,
                         [&](const Target &target) -> ops::Outcome<ops::Changes> {
                             const auto source = settingsOf(target.site, bytes(options.from));
                             const auto from = source ? partOf(*source, bytes(options.place)) : source;
                             const auto here = partOf(target.values, bytes(options.place));
                             if (!from || !here)
                                 return from ? here.failure() : from.failure();
                             return ops::difference(*here, *from);
                         });
}

void declareDiff(Command &command, DiffOptions &options)
{
    command.option("server", options.left, "A server").required();
    command.option("other", options.right, "Another one").required();
}

void declareSet(Command &command, SetOptions &options)
{
    command.option("place", options.place, "As for corvelctl set: 2/video, 0-7/audio/*, server").required();
    command.option("assignments", options.words, "WORD=VALUE").required();
    command.flag("--force", options.force, "Also names of a site's own");
    declareWaves(command, options.waves);
}

void declareCopy(Command &command, CopyOptions &options)
{
    command.option("from", options.from, "The server to copy").required();
    command.option("place", options.place, "Only this: 0-3, 2/video; everything when left out");
    declareWaves(command, options.waves);
}

} // namespace

void addManyServersCommands(Command &app, Context &context)
{
    addCommand<DiffOptions>(app, context, "diff", "What differs between two servers",
                            "corvel-fleet diff lon-1 lon-2", declareDiff, diff);
    addCommand<SetOptions>(app, context, "set", "Change values on many servers",
                           "corvel-fleet set 0/video tx.dst-port=5004 --where 'lon-*' --canary 3", declareSet,
                           set);
    addCommand<CopyOptions>(app, context, "copy", "Give servers what another one has",
                            "corvel-fleet copy lon-1 server --where 'lon-*'", declareCopy, copy);
}
