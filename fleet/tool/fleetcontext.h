// SPDX-License-Identifier: MIT
//
// What the commands for people share: the configuration file, the cluster, and who is asking.
#ifndef CORVEL_FLEET_TOOL_FLEETCONTEXT_H
#define CORVEL_FLEET_TOOL_FLEETCONTEXT_H

#include "corvelctl/context.h"
#include "fleet/tool/siteview.h"

struct FleetContext : Context {
    std::string file; // empty: the usual one
};

// The machine's file and a connection as this machine.
struct Connection {
    fleet::Config config;
    std::unique_ptr<fleet::EtcdCluster> cluster;
};

QByteArray configFile(const Context &context);
ops::Outcome<Connection> connectTo(const Context &context);

// Reads the servers and lets work(connection, site) do the rest.
template<class Work>
int withSite(const Context &context, const QByteArrayList &patterns, const Work &work)
{
    const auto connection = connectTo(context);
    if (!connection)
        return context.fail(connection.failure());
    const auto site = fleet::readSite(*connection->cluster, connection->config, patterns);
    return site ? work(*connection, *site) : context.fail(site.failure());
}

QByteArrayList listOf(const std::vector<std::string> &words);

// Each one file.
void addStatusCommand(CLI::App &app, Context &context);       // status
void addConflictCommands(CLI::App &app, Context &context);    // conflicts list, show, take
void addMembershipCommands(CLI::App &app, Context &context);  // join, leave
void addManyServersCommands(CLI::App &app, Context &context); // diff, set, copy, check

#endif
