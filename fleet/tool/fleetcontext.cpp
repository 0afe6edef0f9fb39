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
