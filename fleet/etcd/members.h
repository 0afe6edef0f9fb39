// SPDX-License-Identifier: MIT
//
// The members of the cluster and the one that is spoken to at the moment. Private to fleet/etcd. Any thread.
#ifndef CORVEL_FLEET_ETCD_MEMBERS_H
#define CORVEL_FLEET_ETCD_MEMBERS_H

#include "fleet/etcd/etcdcluster.h"

#include <grpcpp/grpcpp.h>

#include <atomic>

namespace fleet {

class Members {
public:
    explicit Members(const EtcdOptions &options);

    // The member's number and its connection, which is made when it is first used.
    std::size_t current() const { return m_current; }
    const std::shared_ptr<grpc::Channel> &channel(std::size_t member) const { return m_channels[member]; }
    bool connected(std::size_t member) const;
    // That member did not answer. Turns to the next one, unless somebody else already has.
    void failed(std::size_t member);

    // What every call carries: its time limit; wait for the connection, as a call that does not wait never
    // makes gRPC connect again; and no answers from a member that is cut off from the others.
    void prepare(grpc::ClientContext &context, int milliseconds) const;

    // A call that ran out of time says nothing about why there is no connection. This asks the connection
    // itself.
    grpc::Status explained(const grpc::Status &status, std::size_t member) const;

private:
    std::vector<std::string> m_names;
    std::vector<std::shared_ptr<grpc::Channel>> m_channels;
    std::atomic<std::size_t> m_current{0};
};

} // namespace fleet

#endif
