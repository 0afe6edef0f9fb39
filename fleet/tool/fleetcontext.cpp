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
    return Connection{*config, fleet::etcdCluster(*options)};
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

ops::Outcome<Chosen> choose(const Context &context, const QByteArrayList &texts)
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
    for (const auto &[name, view] : chosen.site) {
        if (chosen.where.matches(view))
            chosen.servers.emplace(name, &view);
    }
    return chosen;
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
