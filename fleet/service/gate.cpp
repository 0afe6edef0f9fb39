// SPDX-License-Identifier: MIT
#include "fleet/service/gate.h"

namespace fleet {

Gate::Gate(EtcdCluster &cluster, std::function<std::int64_t()> steadyMs)
    : m_cluster(cluster), m_steadyMs(std::move(steadyMs))
{
}

template<class Call>
Outcome Gate::pass(const Call &call)
{
    if (m_steadyMs() < m_openMs)
        return Outcome::Unreachable;
    const Outcome outcome = call();
    if (outcome == Outcome::Unreachable)
        m_openMs = m_steadyMs() + kClosedMs;
    return outcome;
}

Outcome Gate::range(const std::string &prefix, Range *range)
{
    return pass([&] { return m_cluster.range(prefix, range); });
}

Outcome Gate::get(const std::string &key, Range *range)
{
    return pass([&] { return m_cluster.get(key, range); });
}

Outcome Gate::keys(const std::string &prefix, std::vector<std::string> *keys)
{
    return pass([&] { return m_cluster.keys(prefix, keys); });
}

Outcome Gate::names(const std::string &prefix, Range *range)
{
    return pass([&] { return m_cluster.names(prefix, range); });
}

Outcome Gate::getAll(const std::vector<std::string> &keys, Range *range)
{
    return pass([&] { return m_cluster.getAll(keys, range); });
}

Outcome Gate::commit(const std::vector<Put> &puts, std::int64_t *revision)
{
    return pass([&] { return m_cluster.commit(puts, revision); });
}

std::unique_ptr<Watch> Gate::watch(const std::string &prefix, std::int64_t fromRevision, WatchSink *sink)
{
    return m_cluster.watch(prefix, fromRevision, sink);
}

Outcome Gate::keepAlive(const std::string &key, const std::string &value, int seconds)
{
    return pass([&] { return m_cluster.keepAlive(key, value, seconds); });
}

Outcome Gate::endLease()
{
    return pass([&] { return m_cluster.endLease(); });
}

} // namespace fleet
