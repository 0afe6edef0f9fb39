// SPDX-License-Identifier: MIT
//
// What the commands for people share: the configuration file, the cluster, and who is asking.
#ifndef CORVEL_FLEET_TOOL_FLEETCONTEXT_H
#define CORVEL_FLEET_TOOL_FLEETCONTEXT_H

#include "corvelctl/context.h"
#include "fleet/tool/where.h"

struct FleetContext : Context {
    std::string file; // empty: the usual one
};

// The machine's file and a connection as this machine.
struct Connection {
    fleet::Config config;
    fleet::EtcdOptions options;
    std::unique_ptr<fleet::EtcdCluster> cluster;
};

QByteArray configFile(const Context &context);
ops::Outcome<Connection> connectTo(const Context &context);

// The servers that the command is for, and those that it may look at besides.
struct Chosen {
    Connection connection;
    fleet::Where where;
    fleet::SiteView site;                                    // all that were read
    std::map<QByteArray, const fleet::ServerView *> servers; // those of them that are meant

    QByteArray nobody() const; // what to say when none is
};

// Whose documents a command looks at. Whoever has been read in part only has none.
enum class Look {
    State,  // nobody's, but who changed something last, and what is not taken
    Chosen, // those of the servers that are meant
    All,
};

// Reads the servers.
ops::Outcome<Chosen> choose(const Context &context, const QByteArrayList &where, Look look);

// Reads the servers and lets work(chosen) do the rest.
template<class Work>
int withServers(const Context &context, const QByteArrayList &where, Look look, const Work &work)
{
    auto chosen = choose(context, where, look);
    return chosen ? work(*chosen) : context.fail(chosen.failure());
}

// Names behind a command without --where, as one text of it; nothing for none.
QByteArrayList namesAsWhere(const std::vector<std::string> &names);
QByteArrayList listOf(const std::vector<std::string> &words);

// --where, which may be given several times.
Argument declareWhere(Command &command, std::vector<std::string> &where);

// Each one file.
void addStatusCommand(Command &app, Context &context);       // status
void addConflictCommands(Command &app, Context &context);    // conflicts list, show, take
void addMembershipCommands(Command &app, Context &context);  // join, leave
void addManyServersCommands(Command &app, Context &context); // diff, set, copy
void addRestoreCommand(Command &app, Context &context);      // restore
void addCheckCommand(Command &app, Context &context);        // check

#endif
