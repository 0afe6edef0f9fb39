// SPDX-License-Identifier: MIT
//
// One change for many servers, a few first. Each server is changed by itself; the first failure ends it, and
// what was done until then stays and is told.
#ifndef CORVEL_FLEET_TOOL_WAVES_H
#define CORVEL_FLEET_TOOL_WAVES_H

#include "fleet/tool/fleetcontext.h"

struct WaveOptions {
    std::vector<std::string> where;
    int canary = 0;
    bool wait = false;
    int within = 30; // seconds for a server to take it
};

// --where, --canary, --wait, --within
void declareWaves(Command &command, WaveOptions &waves);

// One server of those that are meant.
struct Target {
    const fleet::SiteView &site; // all that were looked at
    QByteArray server;           // as it is shown
    ops::Snapshot values;        // of the configuration in use
};

// What is to be changed of one server's values.
using ChangeMaker = std::function<ops::Outcome<ops::Changes>(const Target &target)>;

// Makes the changes for every chosen server first, so that a wrong word changes nothing; prints them; writes
// them.
int changeServers(Context &context, const WaveOptions &options, Look look, const ChangeMaker &make);

#endif
