// SPDX-License-Identifier: MIT
// corvel-fleet conflicts: what was overruled, and taking it after all.
#include "corvelctl/changes.h"
#include "fleet/tool/fleetcontext.h"
#include "fleet/tool/siteedit.h"

namespace {

struct ListOptions {
    std::vector<std::string> servers;
};

struct OneOptions {
    std::string id;
};

Json item(const fleet::KeptConflict &kept)
{
    return {{"id", jsonText(kept.id)},
            {"server", jsonText(kept.server)},
            {"configuration", jsonText(kept.configuration)},
            {"path", jsonText(kept.conflict.overruled.path)},
            {"overruled", jsonText(kept.conflict.overruled.by.who)},
            {"overruledAt", jsonText(fleet::timeText(kept.conflict.overruled.atMs))},
            {"stood", jsonText(kept.conflict.stoodBy.who)},
            {"stoodAt", jsonText(fleet::timeText(kept.conflict.stoodAtMs))}};
}

QByteArrayList row(const fleet::KeptConflict &kept)
{
    return {kept.id,
            kept.server,
            kept.configuration,
            kept.conflict.overruled.path,
            kept.conflict.overruled.by.who,
            kept.conflict.stoodBy.who};
}

int list(Context &context, const ListOptions &options)
{
    return withSite(context, listOf(options.servers), [&](const Connection &, const fleet::SiteView &site) {
        std::vector<QByteArrayList> rows{{"ID", "SERVER", "CONFIGURATION", "PATH", "OVERRULED", "STANDS"}};
        for (const auto &server : site) {
            for (const fleet::KeptConflict &kept : server.second.conflicts) {
                context.out.item([&] { return item(kept); });
                rows.push_back(row(kept));
            }
        }
        if (rows.size() == 1)
            return context.nothing("nothing was overruled");
        for (const QByteArray &line : aligned(rows))
            context.out.line(line);
        return static_cast<int>(Found);
    });
}

// The one conflict whose id begins so, and what its path holds now.
template<class Work>
int withConflict(Context &context, const std::string &id, const Work &work)
{
    return withSite(context, {}, [&](const Connection &connection, const fleet::SiteView &site) {
        const fleet::KeptConflict *found = nullptr;
        int count = 0;
        for (const auto &server : site) {
            for (const fleet::KeptConflict &kept : server.second.conflicts) {
                count += kept.id.startsWith(bytes(id)) ? 1 : 0;
                found = kept.id.startsWith(bytes(id)) ? &kept : found;
            }
        }
        if (count != 1)
            return context.usage((count == 0 ? "no conflict " : "more than one conflict begins with ") +
                                 bytes(id));
        const auto &configurations = site.at(found->server).configurations;
        const auto configuration = configurations.find(found->configuration);
        return work(connection, *found,
                    configuration == configurations.end() ? fleet::SharedConfiguration()
                                                          : configuration->second);
    });
}

// From what is there now to what was overruled.
ops::Changes toOverruled(const fleet::KeptConflict &kept, const fleet::SharedConfiguration &now)
{
    fleet::SharedConfiguration then;
    const std::string key = fleet::keyOfPath(kept.conflict.overruled.path);
    then.documents[key].document = kept.conflict.overruled;
    fleet::SharedConfiguration here;
    if (now.documents.count(key) > 0)
        here.documents[key] = now.documents.at(key);
    return ops::difference(here.snapshot(), then.snapshot());
}

int show(Context &context, const OneOptions &options)
{
    return withConflict(
        context, options.id,
        [&](const Connection &, const fleet::KeptConflict &kept, const fleet::SharedConfiguration &now) {
            const fleet::Document &overruled = kept.conflict.overruled;
            context.out.line(kept.server + ", " + overruled.path + ": " + overruled.by.who + " at " +
                             fleet::timeText(overruled.atMs) + " was overruled by " +
                             kept.conflict.stoodBy.who + ". Taking it would change:");
            printChanges(context.out, toOverruled(kept, now));
            return static_cast<int>(Done);
        });
}

int take(Context &context, const OneOptions &options)
{
    return withConflict(context, options.id,
                        [&](const Connection &connection, const fleet::KeptConflict &kept,
                            const fleet::SharedConfiguration &now) {
                            const ops::Changes changes = toOverruled(kept, now);
                            printChanges(context.out, changes);
                            if (context.dryRun)
                                return static_cast<int>(Done);
                            const fleet::Place place{connection.config.site, kept.server, kept.configuration};
                            const QByteArray &who = connection.config.name;
                            if (!changes.empty()) {
                                const auto written = fleet::writeEdit(
                                    *connection.cluster, fleet::siteEdit(place, now, changes, who), who);
                                if (!written)
                                    return context.fail(written.failure());
                            }
                            fleet::Put settled;
                            settled.key = kept.key;
                            settled.remove = true;
                            return connection.cluster->commit({settled}, nullptr) == fleet::Outcome::Done
                                       ? static_cast<int>(Done)
                                       : static_cast<int>(Partly);
                        });
}

void declareList(CLI::App &command, ListOptions &options)
{
    command.add_option("servers", options.servers, "Names with * and ?; all of them when left out");
}

void declareOne(CLI::App &command, OneOptions &options)
{
    command.add_option("id", options.id, "As listed; its beginning is enough")->required();
}

} // namespace

void addConflictCommands(CLI::App &app, Context &context)
{
    CLI::App *conflicts =
        app.add_subcommand("conflicts", "What was overruled when two sides changed the same");
    conflicts->require_subcommand(1);
    addCommand<ListOptions>(*conflicts, context, "list", "List them", "corvel-fleet conflicts list",
                            declareList, list);
    addCommand<OneOptions>(*conflicts, context, "show", "Show one, and what taking it would change",
                           "corvel-fleet conflicts show 3f2a", declareOne, show);
    addCommand<OneOptions>(*conflicts, context, "take", "Let it stand after all",
                           "corvel-fleet conflicts take 3f2a", declareOne, take);
}
