// SPDX-License-Identifier: MIT
#include "fleet/tool/waves.h"

#include "corvelctl/changes.h"
#include "fleet/tool/siteedit.h"

#include <QThread>

namespace {

constexpr int kTakenMs = 30000;
constexpr int kLookMs = 200;

using Edits = std::vector<fleet::SiteEdit>;

ops::Outcome<Edits> plan(const Connection &connection, const fleet::SiteView &site,
                         const WaveOptions &options, const ChangeMaker &make)
{
    Edits edits;
    for (const auto &[server, view] : site) {
        QByteArray name;
        const fleet::SharedConfiguration *current = view.current(&name);
        if (!current || !fleet::matches(server, listOf(options.where)))
            continue;
        const auto changes = make(site, current->snapshot());
        if (!changes)
            return ops::Failure{changes.failure().kind, server + ": " + changes.failure().text};
        if (!changes->empty())
            edits.push_back(fleet::siteEdit({connection.config.site, server, name}, *current, *changes,
                                            connection.config.name));
    }
    return edits;
}

// Until the server's sign of life says that it has it. A server that is off has not.
ops::Outcome<ops::Done> waitFor(fleet::EtcdCluster &cluster, const fleet::SiteEdit &edit,
                                std::int64_t revision)
{
    for (int waited = 0; waited < kTakenMs; waited += kLookMs) {
        const auto taken = fleet::takenBy(cluster, edit, revision);
        if (taken && *taken == fleet::Taken::Yes)
            return ops::Done();
        if (taken && *taken == fleet::Taken::Overruled)
            return ops::refused("an edit made on the server stands instead");
        QThread::msleep(kLookMs);
    }
    return ops::refused("the server has not taken it within 30 s");
}

int write(Context &context, const Connection &connection, const Edits &edits, const WaveOptions &options)
{
    int done = 0;
    for (const fleet::SiteEdit &edit : edits) {
        const auto written = fleet::writeEdit(*connection.cluster, edit, connection.config.name);
        const bool wait = options.wait || done < options.canary;
        const auto taken = !written ? ops::Outcome<ops::Done>(written.failure())
                           : wait   ? waitFor(*connection.cluster, edit, *written)
                                    : ops::Outcome<ops::Done>(ops::Done());
        if (!taken) {
            Output::error(edit.place.server + ": " + taken.failure().text + "; " + QByteArray::number(done) +
                          " of " + QByteArray::number(static_cast<qulonglong>(edits.size())) +
                          " servers were changed before");
            return Partly;
        }
        context.out.note(edit.place.server + (wait ? ": taken" : ": written"));
        ++done;
    }
    return Done;
}

} // namespace

int changeServers(Context &context, const WaveOptions &options, const ChangeMaker &make)
{
    return withSite(context, {}, [&](const Connection &connection, const fleet::SiteView &site) {
        const auto edits = plan(connection, site, options, make);
        if (!edits)
            return context.fail(edits.failure());
        for (const fleet::SiteEdit &edit : *edits) {
            if (context.out.isText())
                context.out.line(edit.place.server + ':');
            printChanges(context.out, edit.changes);
        }
        if (edits->empty())
            return context.nothing("nothing to change");
        const QByteArray servers = counted(edits->size(), "server");
        if (context.dryRun)
            return context.nothing(servers + " would change");
        if (!agreed(context, "Change " + servers + '?'))
            return static_cast<int>(Usage);
        return write(context, connection, *edits, options);
    });
}
