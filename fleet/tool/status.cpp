// SPDX-License-Identifier: MIT
// corvel-fleet status: every server in a line.
#include "channel/clockstate.h"
#include "corvelctl/changes.h"
#include "fleet/tool/fleetcontext.h"

#include <nlohmann/json.hpp>

namespace {

struct StatusOptions {
    std::vector<std::string> servers, where;
};

QByteArray orDash(const QByteArray &text)
{
    return text.isEmpty() ? QByteArray("-") : text;
}

// "locked 127", since a lock in another domain is no good news.
QByteArray ptpText(const fleet::PtpSeen &ptp)
{
    if (ptp.state.isEmpty() || ptp.state == clockStateWord(ClockState::NoPtp))
        return "-";
    return ptp.state + ' ' + QByteArray::number(ptp.domain);
}

QByteArrayList row(const QByteArray &name, const fleet::ServerView &view)
{
    const fleet::Document *newest = view.newest();
    return {name,
            fleet::stateOf(view),
            newest ? fleet::timeText(newest->atMs).left(19).replace('T', ' ') : QByteArray("-"),
            newest ? newest->by.who : QByteArray("-"),
            view.alive ? view.alive->version : QByteArray("-"),
            orDash(view.inUse),
            ptpText(view.ptp()),
            QByteArray::number(static_cast<qulonglong>(view.conflicts.size()))};
}

// Null where the server is off or its version does not tell.
Json ptpItem(const fleet::ServerView &view)
{
    const fleet::PtpSeen ptp = view.ptp();
    if (ptp.state.isEmpty())
        return nullptr;
    return {{"state", jsonText(ptp.state)},
            {"domain", ptp.domain},
            {"grandmaster", ptp.grandmaster.isEmpty() ? Json() : jsonText(ptp.grandmaster)}};
}

Json item(const QByteArray &name, const fleet::ServerView &view)
{
    const fleet::Document *newest = view.newest();
    return {{"server", jsonText(name)},
            {"site", jsonText(view.site)},
            {"alive", view.alive.has_value()},
            {"state", jsonText(fleet::stateOf(view))},
            {"changed", newest ? jsonText(fleet::timeText(newest->atMs)) : Json()},
            {"changedBy", newest ? jsonText(newest->by.who) : Json()},
            {"version", view.alive ? jsonText(view.alive->version) : Json()},
            {"configuration", jsonText(view.inUse)},
            {"ptp", ptpItem(view)},
            {"waiting", view.alive ? view.alive->waiting : 0},
            {"refused", view.alive ? view.alive->refused : 0},
            {"foreign", view.foreign()},
            {"conflicts", view.conflicts.size()}};
}

// Of a newer version of this program, or written by somebody else.
void tellForeign(const Context &context, const QByteArray &name, const fleet::ServerView &view)
{
    for (const auto &[configuration, shared] : view.configurations) {
        if (!shared.foreign.empty())
            context.out.note(name + ": " + counted(shared.foreign.size(), "document") + " of " +
                             configuration + " not taken: " + shared.foreign.begin()->second);
    }
}

int status(Context &context, const StatusOptions &options)
{
    QByteArrayList where = listOf(options.where);
    where.append(namesAsWhere(options.servers));
    return withServers(context, where, Look::State, [&](const Chosen &chosen) {
        std::vector<QByteArrayList> rows{
            {"SERVER", "STATE", "LAST CHANGE (UTC)", "BY", "VERSION", "IN USE", "PTP", "CONFLICTS"}};
        for (const auto &[name, view] : chosen.servers) {
            context.out.item([&name = name, view = view] { return item(name, *view); });
            rows.push_back(row(name, *view));
        }
        if (chosen.servers.empty())
            return context.nothing(chosen.nobody());
        for (const QByteArray &line : aligned(rows))
            context.out.line(line);
        for (const auto &[name, view] : chosen.servers)
            tellForeign(context, name, *view);
        return static_cast<int>(Done);
    });
}

void declareStatus(Command &command, StatusOptions &options)
{
    command.option("servers", options.servers, "Names with * and ?; all of them when left out");
    declareWhere(command, options.where);
}

} // namespace

void addStatusCommand(Command &app, Context &context)
{
    addCommand<StatusOptions>(app, context, "status",
                              "Every server: alive, last change, by whom, PTP, conflicts",
                              "corvel-fleet status 'lon-*'", declareStatus, status);
}
