// SPDX-License-Identifier: MIT
//
// What must hold before the service starts: the certificates can be read and the key is private, and a desk
// is not a machine with an engine. Blocks for as long as the disk takes.
#ifndef CORVEL_FLEET_SERVICE_GUARD_H
#define CORVEL_FLEET_SERVICE_GUARD_H

#include "fleet/etcd/etcdcluster.h"
#include "fleet/service/config.h"

namespace fleet {

// The cluster's address and the contents of the certificate files.
ops::Outcome<EtcdOptions> clusterOptions(const Config &config);

// Refused where a desk's copies of servers would be what an engine reads. The signs of an engine are
//  - the number of its channels ("MaxIntChannels" below "KWX\Config") in the configuration in use: an
//  engine's
//    set-up writes it, the dialog never does. A copy that the fleet itself keeps does not count;
//  - a configuration in use that was shared as a server's: this machine was one;
//  - a living NMOS service, which belongs to an engine: it has the event of channel 0.
ops::Outcome<ops::Done> mayBeDesk();

} // namespace fleet

#endif
