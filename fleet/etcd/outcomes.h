// SPDX-License-Identifier: MIT
//
// What an answer of etcd means to the fleet. Private to fleet/etcd.
#ifndef CORVEL_FLEET_ETCD_OUTCOMES_H
#define CORVEL_FLEET_ETCD_OUTCOMES_H

#include "fleet/cluster.h"

#include <grpcpp/support/status.h>

namespace fleet {

// Done for a status that is fine.
Outcome outcomeOf(const grpc::Status &status);

// One line without control characters, cut at 300 bytes, for a log.
std::string lineOf(const grpc::Status &status);

} // namespace fleet

#endif
