// SPDX-License-Identifier: MIT
// corvel-fleet join and leave: this machine's way in and out. Nothing is moved either way: the store is
// complete before, meanwhile and afterwards.
#include "corvelctl/changes.h"
#include "fleet/service/guard.h"
#include "fleet/service/marks.h"
#include "fleet/statusfile.h"
#include "fleet/storenotes.h"
#include "fleet/tool/fleetcontext.h"
#include "ops/configurations.h"
#include "rkos.h"

#include <QFile>
#include <QThread>

#include <csignal>

#include <nlohmann/json.hpp>

namespace {

constexpr int kStopMs = 10000;
constexpr int kLookMs = 50;

struct JoinOptions {
    std::string take;
};

struct LeaveOptions {};

// A server's service takes from here on what differs, as edits made here; so people hear of it first.
int compare(Context &context, const JoinOptions &options, const ops::Snapshot &values,
            const ops::Snapshot &shared, ops::Store &store)
{
    const ops::Changes changes = ops::difference(values, shared);
    if (changes.empty())
        return context.nothing(
            "the cluster has nothing else of this server; systemctl --user enable --now corvel-fleet");
    if (options.take == "cluster")
        return applyPlan(
            context, store, [&](const ops::Snapshot &now) { return ops::difference(now, shared); },
            "fleet join", Ask::Always);
    context.out.note("what would change here if the cluster's were taken:");
    printChanges(context.out, changes);
    if (options.take == "local") {
        context.out.note("what is here will stand, the cluster's is kept as conflicts; now: "
                         "systemctl --user enable --now corvel-fleet");
        return Done;
    }
    Output::error("both sides have settings: --take cluster or --take local says which are to stand");
    return Found;
}

int joinServer(Context &context, const JoinOptions &options, const Connection &connection,
               const fleet::SiteView &site)
{
    const auto server = site.find(connection.config.name);
    const QByteArray inUse = ops::defaultConfiguration();
    fleet::SharedConfiguration shared;
    if (server != site.end() && server->second.configurations.count(inUse) > 0)
        shared = server->second.configurations.at(inUse);
    auto store = ops::Store();
    const auto values = store.read();
    if (!values)
        return context.fail(values.failure());
    const bool isShared = !shared.documents.empty();
    return compare(context, options, *values, isShared ? shared.snapshot() : *values, store);
}

int joinDesk(Context &context, const Connection &connection, const fleet::SiteView &site)
{
    const auto allowed = fleet::mayBeDesk();
    if (!allowed)
        return context.fail(allowed.failure());
    for (const auto &server : site) {
        if (!connection.config.follows(server.first))
            continue;
        context.out.line(server.first);
        if (fleet::isOwn(server.first))
            Output::error("the configuration \"" + server.first +
                          "\" is this machine's own; rename it first");
    }
    context.out.note("these would be followed; now: systemctl --user enable --now corvel-fleet");
    return Done;
}

int join(Context &context, const JoinOptions &options)
{
    return withServers(context, {}, Look::All, [&](const Chosen &chosen) {
        const Connection &connection = chosen.connection;
        return connection.config.isDesk() ? joinDesk(context, connection, chosen.site)
                                          : joinServer(context, options, connection, chosen.site);
    });
}

QByteArray folderOfConfigurations()
{
    char folder[RKOS_PATH_SIZE] = "";
    rkOSGetConfigDir(folder);
    return QByteArray(folder).chopped(1);
}

// The service's number, as its status file tells it; 0: none runs.
pid_t servicePid()
{
    QFile file(QFile::decodeName(folderOfConfigurations() + "/fleet-status"));
    if (!file.open(QIODevice::ReadOnly))
        return 0;
    const Json json = Json::parse(file.readAll().toStdString(), nullptr, false);
    const auto pid = json.is_object() ? json.find("pid") : json.end();
    const pid_t number =
        json.is_object() && pid != json.end() && pid->is_number_integer() ? pid->get<pid_t>() : 0;
    QFile comm(QStringLiteral("/proc/%1/comm").arg(number));
    return number > 1 && comm.open(QIODevice::ReadOnly) && comm.readAll().trimmed() == "corvel-fleet" ? number
                                                                                                      : 0;
}

bool stopService()
{
    const pid_t pid = servicePid();
    if (pid == 0)
        return true;
    ::kill(pid, SIGTERM);
    for (int waited = 0; waited < kStopMs; waited += kLookMs) {
        if (servicePid() == 0)
            return true;
        QThread::msleep(kLookMs);
    }
    return false;
}

int leave(Context &context, const LeaveOptions &)
{
    if (context.dryRun)
        return context.nothing("the service would be stopped, and what it remembers forgotten");
    if (!stopService()) {
        Output::error("the service does not stop");
        return StoreFailed;
    }
    for (const QByteArray &name : ops::configurationNames()) {
        if (!fleet::keptAs(name))
            continue;
        const auto store = ops::Store::open(name);
        if (!store || !fleet::StoreNotes(*store).forgetAll())
            return context.fail(
                ops::refused("what is remembered in \"" + name + "\" could not be forgotten"));
        context.out.line(name + ": left the fleet, its settings are complete");
    }
    context.out.note("so that it does not start again: systemctl --user disable corvel-fleet");
    return Done;
}

void declareJoin(Command &command, JoinOptions &options)
{
    command.option("--take", options.take, "Where both have settings: which are to stand")
        .oneOf({"cluster", "local"});
}

void declareLeave(Command &, LeaveOptions &) {}

} // namespace

void addMembershipCommands(Command &app, Context &context)
{
    addCommand<JoinOptions>(app, context, "join",
                            "Look at what joining would mean, before the service is started",
                            "corvel-fleet join --take local", declareJoin, join);
    addCommand<LeaveOptions>(app, context, "leave",
                             "Stop the service and forget the fleet; the settings stay", "corvel-fleet leave",
                             declareLeave, leave);
}
