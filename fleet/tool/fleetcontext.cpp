// SPDX-License-Identifier: MIT
#include "fleet/tool/fleetcontext.h"

#include "fleet/service/guard.h"

QByteArray configFile(const Context &context)
{
    const std::string &file = static_cast<const FleetContext &>(context).file;
    return file.empty() ? fleet::usualConfigFile() : bytes(file);
}

ops::Outcome<Connection> connectTo(const Context &context)
{
    const auto config = fleet::readConfig(configFile(context));
    if (!config)
        return config.failure();
    const auto options = fleet::clusterOptions(*config);
    if (!options)
        return options.failure();
    return Connection{*config, *options, fleet::etcdCluster(*options)};
}

QByteArrayList listOf(const std::vector<std::string> &words)
{
    QByteArrayList list;
    for (const std::string &word : words)
        list.append(bytes(word));
    return list;
}

QByteArray Chosen::nobody() const
{
    return site.empty() ? QByteArray("no server shares anything yet")
                        : "no server is meant by --where " + where.text();
}

QByteArrayList namesAsWhere(const std::vector<std::string> &names)
{
    return names.empty() ? QByteArrayList() : QByteArrayList{listOf(names).join(',')};
}

namespace {

// A document that is not taken is told of; the server says so of most.
ops::Outcome<ops::Done> readState(fleet::EtcdCluster &cluster, const fleet::ServerViews &servers)
{
    fleet::ServerViews doubtful;
    for (fleet::ServerView *server : servers) {
        if (!server->vouched())
            doubtful.push_back(server);
    }
    const auto last = readLast(cluster, servers);
    return last ? readDocuments(cluster, doubtful) : last;
}

ops::Outcome<ops::Done> read(Chosen &chosen, const fleet::ServerViews &servers, Look look)
{
    fleet::EtcdCluster &cluster = *chosen.connection.cluster;
    return look == Look::State ? readState(cluster, servers) : readDocuments(cluster, servers);
}

fleet::ServerViews everybody(fleet::SiteView &site)
{
    fleet::ServerViews servers;
    for (auto &server : site)
        servers.push_back(&server.second);
    return servers;
}

// As far as it takes to know who is meant.
ops::Outcome<ops::Done> readFirst(Chosen &chosen, Look look)
{
    if (look == Look::All || chosen.where.needsDocuments())
        return readDocuments(*chosen.connection.cluster, everybody(chosen.site));
    return chosen.where.needsLast() ? readLast(*chosen.connection.cluster, everybody(chosen.site))
                                    : ops::Outcome<ops::Done>(ops::Done());
}

} // namespace

ops::Outcome<Chosen> choose(const Context &context, const QByteArrayList &texts, Look look)
{
    auto where = fleet::Where::parse(texts);
    if (!where)
        return where.failure();
    auto connection = connectTo(context);
    if (!connection)
        return connection.failure();
    auto site = fleet::readSites(*connection->cluster, connection->config, where->sites());
    if (!site)
        return site.failure();
    Chosen chosen{std::move(*connection), std::move(*where), std::move(*site), {}};
    if (const auto first = readFirst(chosen, look); !first)
        return first.failure();
    fleet::ServerViews meant;
    for (auto &[name, view] : chosen.site) {
        if (!chosen.where.matches(view))
            continue;
        chosen.servers.emplace(name, &view);
        meant.push_back(&view);
    }
    const bool whole = look == Look::All || chosen.where.needsDocuments();
    const auto rest = whole ? ops::Outcome<ops::Done>(ops::Done()) : read(chosen, meant, look);
    return rest ? ops::Outcome<Chosen>(std::move(chosen)) : rest.failure();
}

Argument declareWhere(Command &command, std::vector<std::string> &where)
{
    return command
        .option(
            "--where", where,
            "lon-*, paris/*, alive, away, ptp=locked, 0/video/rx.dst=239.1.*, ...; commas for or, ! for not; "
            "each --where has to hold")
        .oneEachTime();
}
