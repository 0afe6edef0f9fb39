// SPDX-License-Identifier: MIT
//
// A cluster in front of the real one that answers "unreachable" by itself for a moment after that happened:
// many keepers share one thread, and each would spend its own second on what the last one has just found.
// Used from one thread.
#ifndef CORVEL_FLEET_SERVICE_GATE_H
#define CORVEL_FLEET_SERVICE_GATE_H

#include "fleet/etcd/etcdcluster.h"

#include <functional>

namespace fleet {

class Gate : public EtcdCluster {
public:
    static constexpr std::int64_t kClosedMs = 500;

    Gate(EtcdCluster &cluster, std::function<std::int64_t()> steadyMs);

    bool cutOff() const override { return m_cluster.cutOff(); }
    std::string reason() const override { return m_cluster.reason(); }
    // Does not block, so it always passes.
    std::unique_ptr<Watch> watch(const std::string &prefix, std::int64_t fromRevision,
                                 WatchSink *sink) override;

    Outcome keys(const std::string &prefix, std::vector<std::string> *keys) override;
    Outcome names(const std::string &prefix, Range *range) override;
    Outcome getAll(const std::vector<std::string> &keys, Range *range) override;
    Outcome range(const std::string &prefix, Range *range) override;
    Outcome get(const std::string &key, Range *range) override;
    Outcome keepAlive(const std::string &key, const std::string &value, int seconds) override;
    Outcome endLease() override;
    Outcome commit(const std::vector<Put> &puts, std::int64_t *revision) override;

private:
    template<class Call>
    Outcome pass(const Call &call);

    EtcdCluster &m_cluster;
    const std::function<std::int64_t()> m_steadyMs;
    std::int64_t m_openMs = 0;
};

} // namespace fleet

#endif
