// SPDX-License-Identifier: MIT
// corvel-fleet conflicts: what was overruled, and taking it after all.
#include "corvelctl/changes.h"
#include "fleet/tool/fleetcontext.h"
#include "fleet/tool/siteedit.h"

#include <nlohmann/json.hpp>

namespace {

struct ListOptions {
    std::vector<std::string> servers;
};

struct OneOptions {
    std::string id;
};

Json item(const QByteArray &server, const fleet::KeptConflict &kept)
{
    return {{"id", jsonText(kept.id)},
            {"server", jsonText(server)},
            {"configuration", jsonText(kept.configuration)},
            {"path", jsonText(kept.conflict.overruled.path)},
            {"overruled", jsonText(kept.conflict.overruled.by.who)},
            {"overruledAt", jsonText(fleet::timeText(kept.conflict.overruled.atMs))},
            {"stood", jsonText(kept.conflict.stoodBy.who)},
            {"stoodAt", jsonText(fleet::timeText(kept.conflict.stoodAtMs))}};
}

QByteArrayList row(const QByteArray &server, const fleet::KeptConflict &kept)
{
    return {kept.id,
            server,
            kept.configuration,
            kept.conflict.overruled.path,
            kept.conflict.overruled.by.who,
            kept.conflict.stoodBy.who};
}

int list(Context &context, const ListOptions &options)
{
    return withServers(context, namesAsWhere(options.servers), Look::State, [&](const Chosen &chosen) {
        std::vector<QByteArrayList> rows{{"ID", "SERVER", "CONFIGURATION", "PATH", "OVERRULED", "STANDS"}};
        for (const auto &[name, view] : chosen.servers) {
            for (const fleet::KeptConflict &kept : view->conflicts) {
                context.out.item([&name = name, &kept] { return item(name, kept); });
                rows.push_back(row(name, kept));
            }
        }
        if (rows.size() == 1)
            return context.nothing("nothing was overruled");
        for (const QByteArray &line : aligned(rows))
            context.out.line(line);
        return static_cast<int>(Found);
    });
}

struct OneConflict {
    const Connection &connection;
    const fleet::ServerView &server;
    const fleet::KeptConflict &kept;
    fleet::SharedConfiguration now; // the configuration that it is of
};

// The one conflict whose id begins so, and what its path holds now.
template<class Work>
int withConflict(Context &context, const std::string &id, const Work &work)
{
    return withServers(context, {}, Look::All, [&](const Chosen &chosen) {
        std::vector<std::pair<const fleet::ServerView *, const fleet::KeptConflict *>> found;
        for (const auto &server : chosen.servers) {
            for (const fleet::KeptConflict &kept : server.second->conflicts) {
                if (kept.id.startsWith(bytes(id)))
                    found.emplace_back(server.second, &kept);
            }
        }
        if (found.size() != 1)
            return context.usage((found.empty() ? "no conflict " : "more than one conflict begins with ") +
                                 bytes(id));
        const auto [server, kept] = found.front();
        const auto configuration = server->configurations.find(kept->configuration);
        const bool known = configuration != server->configurations.end();
        return work(OneConflict{chosen.connection, *server, *kept,
                                known ? configuration->second : fleet::SharedConfiguration()});
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
    return withConflict(context, options.id, [&](const OneConflict &one) {
        const fleet::Document &overruled = one.kept.conflict.overruled;
        context.out.line(one.server.name + ", " + overruled.path + ": " + overruled.by.who + " at " +
                         fleet::timeText(overruled.atMs) + " was overruled by " +
                         one.kept.conflict.stoodBy.who + ". Taking it would change:");
        printChanges(context.out, toOverruled(one.kept, one.now));
        return static_cast<int>(Done);
    });
}

ops::Outcome<ops::Done> write(const OneConflict &one, const ops::Changes &changes)
{
    const QByteArray &who = one.connection.config.name;
    const auto edit =
        fleet::siteEdit({one.server.site, one.server.name, one.kept.configuration}, one.now, changes, who);
    if (!edit)
        return edit.failure();
    const auto written = fleet::writeEdit(*one.connection.cluster, *edit, who);
    return written ? ops::Outcome<ops::Done>(ops::Done()) : written.failure();
}

int take(Context &context, const OneOptions &options)
{
    return withConflict(context, options.id, [&](const OneConflict &one) {
        const ops::Changes changes = toOverruled(one.kept, one.now);
        printChanges(context.out, changes);
        if (context.dryRun)
            return static_cast<int>(Done);
        const auto written = changes.empty() ? ops::Outcome<ops::Done>(ops::Done()) : write(one, changes);
        if (!written)
            return context.fail(written.failure());
        fleet::Put settled;
        settled.key = one.kept.key;
        settled.remove = true;
        return one.connection.cluster->commit({settled}, nullptr) == fleet::Outcome::Done
                   ? static_cast<int>(Done)
                   : static_cast<int>(Partly);
    });
}

void declareList(Command &command, ListOptions &options)
{
    command.option("servers", options.servers, "Names with * and ?; all of them when left out");
}

void declareOne(Command &command, OneOptions &options)
{
    command.option("id", options.id, "As listed; its beginning is enough").required();
}

} // namespace

void addConflictCommands(Command &app, Context &context)
{
    Command conflicts = app.addGroup("conflicts", "What was overruled when two sides changed the same");
    addCommand<ListOptions>(conflicts, context, "list", "List them", "corvel-fleet conflicts list",
                            declareList, list);
    addCommand<OneOptions>(conflicts, context, "show", "Show one, and what taking it would change",
                           "corvel-fleet conflicts show 3f2a", declareOne, show);
    addCommand<OneOptions>(conflicts, context, "take", "Let it stand after all",
                           "corvel-fleet conflicts take 3f2a", declareOne, take);
}
