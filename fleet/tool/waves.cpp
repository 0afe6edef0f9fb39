// SPDX-License-Identifier: MIT
#include "fleet/tool/waves.h"

#include "corvelctl/changes.h"
#include "fleet/tool/sidebyside.h"
#include "fleet/tool/siteedit.h"

#include <QThread>

#include <nlohmann/json.hpp>

#include <algorithm>
#include <array>

namespace {

constexpr int kSecond = 1000;
constexpr int kLookMs = 200;
constexpr std::size_t kWave = 50;  // that are written before they are waited for
constexpr std::size_t kLanes = 16; // that are written at the same time

struct Planned {
    QByteArray server; // as it is shown
    fleet::SiteEdit edit;
};
using Plan = std::vector<Planned>;

// One that has nothing yet has the configuration in use, empty.
std::optional<fleet::SharedConfiguration> configurationOf(const fleet::ServerView &view, QByteArray *name)
{
    if (const fleet::SharedConfiguration *current = view.current(name))
        return *current;
    *name = view.inUse;
    return name->isEmpty() ? std::nullopt
                           : std::optional<fleet::SharedConfiguration>(fleet::SharedConfiguration());
}

ops::Failure of(const QByteArray &server, const ops::Failure &failure)
{
    return {failure.kind, server + ": " + failure.text};
}

ops::Outcome<Plan> plan(const Context &context, const Chosen &chosen, const ChangeMaker &make)
{
    Plan plan;
    for (const auto &[server, view] : chosen.servers) {
        QByteArray name;
        const auto configuration = configurationOf(*view, &name);
        if (!configuration) {
            context.out.note(server + ": shares nothing, and is left out");
            continue;
        }
        const auto changes = make({chosen.site, server, configuration->snapshot()});
        if (!changes)
            return of(server, changes.failure());
        if (changes->empty())
            continue;
        auto edit = fleet::siteEdit({view->site, view->name, name}, *configuration, *changes,
                                    chosen.connection.config.name);
        if (!edit)
            return of(server, edit.failure());
        plan.push_back({server, std::move(*edit)});
    }
    return plan;
}

void print(Output &out, const Planned &planned)
{
    if (out.isText()) {
        out.line(planned.server + ':');
        return printChanges(out, planned.edit.changes);
    }
    for (const ops::Change &change : planned.edit.changes) {
        out.item([&] {
            Json item = changeItem(change);
            item["server"] = jsonText(planned.server);
            return item;
        });
    }
}

// Until the server's sign of life says that it has it. A server that is off has not.
ops::Outcome<ops::Done> waitFor(fleet::EtcdCluster &cluster, const fleet::SiteEdit &edit,
                                std::int64_t revision, int seconds)
{
    for (int waited = 0; waited < seconds * kSecond; waited += kLookMs) {
        const auto taken = fleet::takenBy(cluster, edit, revision);
        if (taken && *taken == fleet::Taken::Yes)
            return ops::Done();
        if (taken && *taken == fleet::Taken::Overruled)
            return ops::refused("an edit made on the server stands instead");
        QThread::msleep(kLookMs);
    }
    return ops::refused("the server has not taken it within " + QByteArray::number(seconds) + " s");
}

// Writes to the servers of the plan, wave by wave.
class Writer {
public:
    Writer(Context &context, const Connection &connection, const Plan &plan, const WaveOptions &options)
        : m_context(context), m_connection(connection), m_plan(plan), m_options(options)
    {
    }

    int run();

private:
    // What became of each that was tried.
    using Results = std::vector<std::optional<ops::Outcome<std::int64_t>>>;

    Results write(std::size_t first, std::size_t end, std::size_t lanes);
    bool wave(std::size_t first, std::size_t end, std::size_t lanes, bool wait);
    fleet::EtcdCluster &cluster(std::size_t lane);
    bool failed(const QByteArray &server, const ops::Failure &failure) const;

    Context &m_context;
    const Connection &m_connection;
    const Plan &m_plan;
    const WaveOptions &m_options;
    std::size_t m_written = 0;
    std::array<std::unique_ptr<fleet::EtcdCluster>, kLanes> m_clusters; // a connection is one thread's
};

bool Writer::failed(const QByteArray &server, const ops::Failure &failure) const
{
    const auto number = [](std::size_t count) { return QByteArray::number(static_cast<qulonglong>(count)); };
    Output::error(server + ": " + failure.text + "; " + number(m_written) + " of " + number(m_plan.size()) +
                  " servers were written to");
    return false;
}

// Called by one thread for each lane.
fleet::EtcdCluster &Writer::cluster(std::size_t lane)
{
    if (lane == 0)
        return *m_connection.cluster;
    if (!m_clusters[lane])
        m_clusters[lane] = fleet::etcdCluster(m_connection.options);
    return *m_clusters[lane];
}

Writer::Results Writer::write(std::size_t first, std::size_t end, std::size_t lanes)
{
    Results results(end - first);
    fleet::sideBySide(end - first, lanes, [&](std::size_t at, std::size_t lane) {
        results[at] = fleet::writeEdit(cluster(lane), m_plan[first + at].edit, m_connection.config.name);
        return bool(*results[at]);
    });
    const auto written = [](const auto &result) { return result && *result; };
    m_written += static_cast<std::size_t>(std::count_if(results.begin(), results.end(), written));
    return results;
}

// All of the wave are written before the first is waited for, so they take it side by side. What is told
// comes in the plan's order.
bool Writer::wave(std::size_t first, std::size_t end, std::size_t lanes, bool wait)
{
    const Results results = write(first, end, lanes);
    const auto isFailure = [](const auto &result) { return result && !*result; };
    const auto failure = std::find_if(results.begin(), results.end(), isFailure);
    for (std::size_t at = first; !wait && at < end; ++at) {
        if (results[at - first] && *results[at - first])
            m_context.out.note(m_plan[at].server + ": written");
    }
    if (failure != results.end()) {
        const auto at = first + static_cast<std::size_t>(failure - results.begin());
        return failed(m_plan[at].server, (*failure)->failure());
    }
    for (std::size_t at = first; wait && at < end; ++at) {
        const auto taken =
            waitFor(*m_connection.cluster, m_plan[at].edit, **results[at - first], m_options.within);
        if (!taken)
            return failed(m_plan[at].server, taken.failure());
        m_context.out.note(m_plan[at].server + ": taken");
    }
    return true;
}

// The few first ones one by one: no more of them are written than have to be.
int Writer::run()
{
    const std::size_t canary = std::min(static_cast<std::size_t>(m_options.canary), m_plan.size());
    bool fine = wave(0, canary, 1, true);
    for (std::size_t first = canary; fine && first < m_plan.size(); first += kWave)
        fine = wave(first, std::min(first + kWave, m_plan.size()), kLanes, m_options.wait);
    return fine ? Done : m_written > 0 ? Partly : StoreFailed;
}

} // namespace

void declareWaves(Command &command, WaveOptions &waves)
{
    declareWhere(command, waves.where).required();
    command.option("--canary", waves.canary, "So many first and waited for; the rest only when all took it")
        .within(0, 100000);
    command.option("--within", waves.within, "Seconds that a server has to take it, 30 when left out")
        .within(1, 3600);
    command.flag("--wait", waves.wait, "Wait until every server took it, in waves of 50");
}

int changeServers(Context &context, const WaveOptions &options, Look look, const ChangeMaker &make)
{
    return withServers(context, listOf(options.where), look, [&](const Chosen &chosen) {
        if (chosen.servers.empty()) // a slip, where something was to be done
            return context.usage(chosen.nobody());
        const auto planned = plan(context, chosen, make);
        if (!planned)
            return context.fail(planned.failure());
        for (const Planned &one : *planned)
            print(context.out, one);
        if (planned->empty())
            return context.nothing("nothing to change");
        const QByteArray servers = counted(planned->size(), "server");
        if (context.dryRun)
            return context.nothing(servers + " would change");
        if (!agreed(context, "Change " + servers + '?'))
            return static_cast<int>(Usage);
        return Writer(context, chosen.connection, *planned, options).run();
    });
}
