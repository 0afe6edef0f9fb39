// SPDX-License-Identifier: MIT
//
// A lease: granted, renewed, given back. Private to fleet/etcd.
#ifndef CORVEL_FLEET_ETCD_LEASE_H
#define CORVEL_FLEET_ETCD_LEASE_H

#include "fleet/etcd/members.h"

#include <cstdint>

namespace fleet {

class Lease {
public:
    Lease(Members &members, int callMs) : m_members(members), m_callMs(callMs) {}

    std::int64_t id() const { return m_id; } // 0: none
    // The cluster does not know it any more.
    void forget() { m_id = 0; }

    // Granted when there is none or it has run out. *anew is set then: what was bound to it is gone.
    grpc::Status hold(std::size_t member, int seconds, bool *anew);
    grpc::Status end(std::size_t member);

private:
    grpc::Status renew(std::size_t member);
    grpc::Status grant(std::size_t member, int seconds);

    Members &m_members;
    int m_callMs;
    std::int64_t m_id = 0;
};

} // namespace fleet

#endif
