// SPDX-License-Identifier: MIT
// corvel-fleet check: the preflight over all servers of the plant.
#include "corvelctl/changes.h"
#include "corvelctl/findingsout.h"
#include "fleet/tool/fleetcontext.h"
#include "ops/sitepreflight.h"

namespace {

struct CheckOptions {
    std::vector<std::string> where;
};

ops::ServerSettings settingsOf(const QByteArray &name, const fleet::ServerView &view)
{
    const fleet::SharedConfiguration *current = view.current();
    const fleet::PtpSeen ptp = view.ptp();
    ops::ServerSettings settings{view.site, name, {}, {}, ptp.state, ptp.grandmaster, ptp.domain};
    if (current)
        settings.values = current->snapshot();
    for (const fleet::AliveInterface &interface :
         view.alive ? view.alive->interfaces : std::vector<fleet::AliveInterface>())
        settings.networks.insert(settings.networks.end(), interface.networks.begin(),
                                 interface.networks.end());
    return settings;
}

int check(Context &context, const CheckOptions &options)
{
    return withServers(context, listOf(options.where), Look::Chosen, [&](const Chosen &chosen) {
        if (chosen.servers.empty())
            return context.nothing(chosen.nobody());
        std::vector<ops::ServerSettings> servers;
        for (const auto &[name, view] : chosen.servers)
            servers.push_back(settingsOf(name, *view));
        const ops::Findings findings = ops::runSitePreflight(servers);
        if (findings.empty())
            context.out.note("nothing is wrong between " + counted(chosen.servers.size(), "server"));
        return showFindings(context, findings);
    });
}

void declareCheck(Command &command, CheckOptions &options)
{
    declareWhere(command, options.where);
}

} // namespace

void addCheckCommand(Command &app, Context &context)
{
    addCommand<CheckOptions>(app, context, "check", "Look at the whole plant before it goes on air",
                             "corvel-fleet check --where 'lon-*'", declareCheck, check);
}
