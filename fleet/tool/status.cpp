// SPDX-License-Identifier: MIT
// corvel-fleet status: every server in a line.
#include "fleet/tool/fleetcontext.h"

namespace {

struct StatusOptions {
    std::vector<std::string> servers;
};

QByteArray state(const fleet::ServerView &view)
{
    if (!view.alive)
        return "off";
    return view.alive->inStep ? "in step" : view.alive->waiting > 0 ? "edits wait" : "behind";
}

QByteArrayList row(const QByteArray &name, const fleet::ServerView &view)
{
    const fleet::Document *newest = view.newest();
    return {name,
            state(view),
            newest ? fleet::timeText(newest->atMs).left(19).replace('T', ' ') : QByteArray("-"),
            newest ? newest->by.who : QByteArray("-"),
            view.alive ? view.alive->version : QByteArray("-"),
            view.inUse.isEmpty() ? QByteArray("-") : view.inUse,
            QByteArray::number(static_cast<qulonglong>(view.conflicts.size()))};
}

Json item(const QByteArray &name, const fleet::ServerView &view)
{
    const fleet::Document *newest = view.newest();
    return {{"server", jsonText(name)},
            {"alive", view.alive.has_value()},
            {"state", jsonText(state(view))},
            {"changed", newest ? jsonText(fleet::timeText(newest->atMs)) : Json()},
            {"changedBy", newest ? jsonText(newest->by.who) : Json()},
            {"version", view.alive ? jsonText(view.alive->version) : Json()},
            {"configuration", jsonText(view.inUse)},
            {"waiting", view.alive ? view.alive->waiting : 0},
            {"refused", view.alive ? view.alive->refused : 0},
            {"conflicts", view.conflicts.size()}};
}

int status(Context &context, const StatusOptions &options)
{
    return withSite(context, listOf(options.servers), [&](const Connection &, const fleet::SiteView &site) {
        std::vector<QByteArrayList> rows{
            {"SERVER", "STATE", "LAST CHANGE (UTC)", "BY", "VERSION", "IN USE", "CONFLICTS"}};
        for (const auto &[name, view] : site) {
            context.out.item([&name = name, &view = view] { return item(name, view); });
            rows.push_back(row(name, view));
        }
        if (site.empty())
            return context.nothing("no server shares anything yet");
        for (const QByteArray &line : aligned(rows))
            context.out.line(line);
        return static_cast<int>(Done);
    });
}

void declareStatus(CLI::App &command, StatusOptions &options)
{
    command.add_option("servers", options.servers, "Names with * and ?; all of them when left out");
}

} // namespace

void addStatusCommand(CLI::App &app, Context &context)
{
    addCommand<StatusOptions>(app, context, "status", "Every server: alive, last change, by whom, conflicts",
                              "corvel-fleet status 'lon-*'", declareStatus, status);
}
