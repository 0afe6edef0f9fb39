// SPDX-License-Identifier: MIT
//
// One change for many servers, a few first. Each server is one transaction; the first failure ends it, and
// what was done until then stays and is told.
#ifndef CORVEL_FLEET_TOOL_WAVES_H
#define CORVEL_FLEET_TOOL_WAVES_H

#include "fleet/tool/fleetcontext.h"

struct WaveOptions {
    std::vector<std::string> where;
    int canary = 0;
    bool wait = false;
};

// What is to be changed of one server's values.
using ChangeMaker =
    std::function<ops::Outcome<ops::Changes>(const fleet::SiteView &site, const ops::Snapshot &values)>;

// Makes the changes for every chosen server first, so that a wrong word changes nothing; prints them; writes
// them.
int changeServers(Context &context, const WaveOptions &options, const ChangeMaker &make);

#endif
