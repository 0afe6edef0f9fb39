// SPDX-License-Identifier: MIT
//
// The cluster of fleet/cluster.h as etcd 3.4 or later, over gRPC with certificates on both sides. Each call
// has one second, goes to one member, and after a failure the next call goes to the next member: nothing here
// waits for a dead address. The certificate's common name is the etcd user; its role decides what is allowed.
#ifndef CORVEL_FLEET_ETCD_ETCDCLUSTER_H
#define CORVEL_FLEET_ETCD_ETCDCLUSTER_H

#include "fleet/cluster.h"

#include <string>
#include <vector>

namespace fleet {

// The contents of PEM files, not their names.
struct TlsIdentity {
    std::string authority;
    std::string certificate;
    std::string key;
};

struct EtcdOptions {
    std::vector<std::string> endpoints; // "host:port", at least one
    TlsIdentity tls;
    int callMs = 1000;            // each call
    int watchCreatedMs = 3000;    // until a new watch stands
    int watchSilenceMs = 15000;   // without a sign of life a watch is given up; asked for after a third of it
    int largestAnswer = 64 << 20; // bytes; less is asked for at a time when it is not enough
};

class EtcdCluster : public Cluster {
public:
    // The names of all keys with this prefix, without their values. On failure *keys stays as it is.
    virtual Outcome keys(const std::string &prefix, std::vector<std::string> *keys) = 0;
    // The same with their revisions, as entries without values.
    virtual Outcome names(const std::string &prefix, Range *range) = 0;
    // Those of the keys that there are, many at a time. On failure *range stays as it is.
    virtual Outcome getAll(const std::vector<std::string> &keys, Range *range) = 0;
};

// Does not connect yet. May be made and used in any one thread. What gRPC itself has to say goes nowhere:
// reason() tells.
std::unique_ptr<EtcdCluster> etcdCluster(const EtcdOptions &options);

// The first key behind all keys with this prefix, as a range's end.
std::string prefixEnd(std::string prefix);

} // namespace fleet

#endif
