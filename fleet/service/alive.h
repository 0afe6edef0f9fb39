// SPDX-License-Identifier: MIT
//
// A server's sign of life: what it tells about itself while it lives, as JSON. Read by desks and by people's
// commands, so the reader trusts nobody. Pure; any thread.
#ifndef CORVEL_FLEET_SERVICE_ALIVE_H
#define CORVEL_FLEET_SERVICE_ALIVE_H

#include "fleet/statusfile.h"
#include "ops/netpicture.h"

#include <optional>
#include <string>
#include <string_view>

namespace fleet {

struct AliveInterface {
    QByteArray name;
    std::vector<quint32> addresses;      // IPv4, host order
    std::vector<ops::NetRoute> networks; // of those addresses
};

struct Alive {
    QByteArray version;         // of corvel
    QByteArray configuration;   // in use there
    qint64 startedMs = 0;       // UTC
    bool inStep = false;        // it has all that the cluster has
    std::int64_t revision = 0;  // of the cluster, as far as the configuration in use has it
    int waiting = 0;            // paths whose edits the cluster does not have yet
    int refused = 0;            // paths that it does not take, or cannot share
    std::optional<PtpSeen> ptp; // nothing: that machine cannot tell
    std::vector<AliveInterface> interfaces;
};

std::string aliveText(const Alive &alive);
std::optional<Alive> readAlive(std::string_view text);

std::vector<AliveInterface> aliveInterfaces(const ops::NetPicture &machine);

} // namespace fleet

#endif
