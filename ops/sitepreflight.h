// SPDX-License-Identifier: MIT
//
// The preflight over many servers: what none of them can see alone. Pure; any thread.
#ifndef CORVEL_OPS_SITEPREFLIGHT_H
#define CORVEL_OPS_SITEPREFLIGHT_H

#include "ops/findings.h"
#include "ops/netpicture.h"
#include "ops/snapshot.h"

namespace ops {

struct ServerSettings {
    QByteArray site;
    QByteArray server; // as it is to be shown
    Snapshot values;
    std::vector<NetRoute> networks; // of its interfaces; a server that is off tells none
    QByteArray ptpState;            // in the words of clockStateWord(); empty: not known
    QByteArray grandmaster;         // that it follows; empty: not known
    quint32 ptpDomain = 0;          // of that grandmaster
};

// Each site by itself, as groups and clocks of two sites have nothing to do with each other. Within a site a
// stream belongs to the network of its interface: the smallest that a server of the site has told of, else
// the 256 addresses around the interface's. Whether two networks are separate or one routes into the other is
// stored nowhere, so what concerns two networks is never an error:
//   group-sent-twice            two servers send to the same group and port in one network, or a stream has
//                               no interface
//   group-sent-in-two-networks  the same in two networks; a warning
//   group-nobody-sends          one receives what none of the site sends; a note, because others may
//   group-sent-elsewhere        one receives what is sent in another network only; a note
//   ptp-domains-differ          a channel that follows PTP is in another domain than most; a note when its
//                               whole network is
//   ptp-masters-differ          two servers of one domain follow different grandmasters
//   ptp-trouble                 a server that is on has no PTP as it is set up
Findings runSitePreflight(const std::vector<ServerSettings> &servers);

} // namespace ops

#endif
