// SPDX-License-Identifier: MIT
//
// The servers of a site as the cluster has them, read at one moment: what each shares, whether it lives, what
// was overruled. Calls block for the cluster's answers. One thread.
#ifndef CORVEL_FLEET_TOOL_SITEVIEW_H
#define CORVEL_FLEET_TOOL_SITEVIEW_H

#include "fleet/conflict.h"
#include "fleet/etcd/etcdcluster.h"
#include "fleet/replica.h"
#include "fleet/service/alive.h"
#include "fleet/service/config.h"
#include "ops/snapshot.h"

namespace fleet {

struct SharedDocument {
    Document document;
    std::int64_t revision = 0;
};

struct SharedConfiguration {
    std::map<std::string, SharedDocument> documents; // by the key of their path
    int foreign = 0;                                 // documents that are not taken

    ops::Snapshot snapshot() const;
};

struct KeptConflict {
    std::string key;
    QByteArray server;
    QByteArray configuration;
    QByteArray id;
    Conflict conflict;
};

struct ServerView {
    QByteArray inUse; // the configuration in use there, as far as known
    std::optional<Alive> alive;
    std::map<QByteArray, SharedConfiguration> configurations;
    std::vector<KeptConflict> conflicts;

    // The one in use, else the only one.
    const SharedConfiguration *current(QByteArray *name = nullptr) const;
    // The document that was changed last; null without any.
    const Document *newest() const;
};

using SiteView = std::map<QByteArray, ServerView>;

// The servers whose names match a pattern of the list, all of them for an empty list. Where only a server's
// own is allowed to be read, that one.
ops::Outcome<SiteView> readSite(EtcdCluster &cluster, const Config &config, const QByteArrayList &patterns);

bool matches(const QByteArray &name, const QByteArrayList &patterns);

} // namespace fleet

#endif
