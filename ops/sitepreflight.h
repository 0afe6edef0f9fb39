// SPDX-License-Identifier: MIT
//
// The preflight over many servers: what none of them can see alone. Pure; any thread.
#ifndef CORVEL_OPS_SITEPREFLIGHT_H
#define CORVEL_OPS_SITEPREFLIGHT_H

#include "ops/findings.h"
#include "ops/snapshot.h"

namespace ops {

struct ServerSettings {
    QByteArray server;
    Snapshot values;
};

// group-sent-twice: two servers send to the same group and port. group-nobody-sends: one receives what none
// of them sends; a note, because others may. ptp-domains-differ: channels that follow PTP are in several
// domains.
Findings runSitePreflight(const std::vector<ServerSettings> &servers);

} // namespace ops

#endif
