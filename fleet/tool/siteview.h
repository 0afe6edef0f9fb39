// SPDX-License-Identifier: MIT
//
// The servers of a site as the cluster has them: what each shares, whether it lives, what was overruled.
// Which servers there are is known from their keys and signs of life; documents, which are much more, are
// read of those servers only that somebody wants to see. Calls block for the cluster's answers. One thread.
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
    std::map<std::string, QByteArray> foreign;       // those that are not taken, and why

    ops::Snapshot snapshot() const;
};

struct KeptConflict {
    std::string key;
    QByteArray configuration;
    QByteArray id;
    Conflict conflict;
};

struct ServerView {
    QByteArray site;
    QByteArray name;
    bool ownSite = true; // this machine's
    QByteArray inUse;    // the configuration in use there, as far as known
    std::optional<Alive> alive;
    std::map<std::string, std::int64_t> shared; // the keys of all its documents, with their revisions
    std::map<QByteArray, SharedConfiguration> configurations; // once they were read
    std::optional<Document> last;                             // likewise, when only that was asked for
    std::vector<KeptConflict> conflicts;

    // The one in use, else the only one.
    const SharedConfiguration *current(QByteArray *which = nullptr) const;
    // The document that was changed last; null without any, or when none was read.
    const Document *newest() const;
    // By its own words it has seen all of its documents and refuses none.
    bool vouched() const;
    // What it sees of PTP; no words when it is off or does not tell.
    PtpSeen ptp() const;
    // Documents that are not taken, of all configurations.
    int foreign() const;
};

// "in step", "edits wait", "behind", "off"
QByteArray stateOf(const ServerView &view);

// By how a server is shown: its name, and for those of other sites SITE/NAME.
using SiteView = std::map<QByteArray, ServerView>;

// The servers of this machine's site and of the others named, * and ? allowed; where only a server's own is
// allowed to be read, that one. No documents.
ops::Outcome<SiteView> readSites(EtcdCluster &cluster, const Config &config, const QByteArrayList &others);

using ServerViews = std::vector<ServerView *>;

// All documents of these.
ops::Outcome<ops::Done> readDocuments(EtcdCluster &cluster, const ServerViews &servers);
// Of each the document that was put last.
ops::Outcome<ops::Done> readLast(EtcdCluster &cluster, const ServerViews &servers);

} // namespace fleet

#endif
