// SPDX-License-Identifier: MIT
//
// Which configurations of this machine are kept equal with which places of the cluster. A server keeps the
// one that is in use and those that its file names. A desk keeps one for each configuration of each server
// that it follows. Used from one thread; a desk's blocks for calls of the cluster.
#ifndef CORVEL_FLEET_SERVICE_ROSTER_H
#define CORVEL_FLEET_SERVICE_ROSTER_H

#include "fleet/etcd/etcdcluster.h"
#include "fleet/keypath.h"
#include "fleet/service/config.h"

#include <map>
#include <set>

namespace fleet {

struct Assignment {
    QByteArray configuration; // on this machine
    Place place;
    bool create = false; // a desk makes its copies, a server the one in use when it is not made yet
};

bool operator==(const Assignment &left, const Assignment &right);

using Assignments = std::vector<Assignment>;

Assignments serverAssignments(const Config &config);

// Whether a name from the cluster may be a configuration here, where it becomes a file's name.
bool isConfigurationName(const QByteArray &name);

// The key that tells which of a server's configurations is in use there, also while it is off.
std::string inUseKey(const QByteArray &site, const QByteArray &server);

// The literal beginnings of the patterns: keys that do not begin with one of them need not be looked at.
std::set<std::string> followedPrefixes(const Config &config);

class DeskRoster {
public:
    explicit DeskRoster(const Config &config) : m_config(config) {}

    // Looks into the cluster. False when that failed; what was known stays.
    bool look(EtcdCluster &cluster);
    // A server's configuration in use has the server's name here, any other is "CONFIGURATION@SERVER". One
    // that has the server's name keeps it when the server uses another one later: an edit must never meet
    // what belongs elsewhere.
    Assignments assignments();

private:
    bool lookAt(EtcdCluster &cluster, const QByteArray &server);

    const Config &m_config;
    std::map<QByteArray, std::set<QByteArray>> m_found; // configurations by server
    std::map<QByteArray, QByteArray> m_inUse;           // by server
    std::map<QByteArray, QByteArray> m_kept;            // which of them has the server's name, by server
};

} // namespace fleet

#endif
