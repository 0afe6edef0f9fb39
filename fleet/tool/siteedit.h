// SPDX-License-Identifier: MIT
//
// Changes to servers' settings, written into the cluster from where their services take them: whole
// documents, and only where they still are what was read. Calls block for the cluster's answers. One thread.
#ifndef CORVEL_FLEET_TOOL_SITEEDIT_H
#define CORVEL_FLEET_TOOL_SITEEDIT_H

#include "fleet/keypath.h"
#include "fleet/tool/siteview.h"

namespace fleet {

struct SiteEdit {
    Place place;
    ops::Changes changes;
    Documents documents;                           // as they are to be, by key
    std::map<std::string, std::int64_t> revisions; // that they were read at
};

// The documents that the changes make of what the configuration has. A failure when one of them is not to be
// written over: of a newer version, or nobody knows what.
ops::Outcome<SiteEdit> siteEdit(const Place &place, const SharedConfiguration &configuration,
                                const ops::Changes &changes, const QByteArray &who);

// All of it or nothing, up to so many key paths as one transaction of the cluster holds; more are written in
// several. Gives the cluster's revision of the last.
ops::Outcome<std::int64_t> writeEdit(EtcdCluster &cluster, const SiteEdit &edit, const QByteArray &who);

enum class Taken { Yes, Overruled, NotYet };

// Whether the server has it: it has heard of that revision, and nothing of it was overruled.
ops::Outcome<Taken> takenBy(EtcdCluster &cluster, const SiteEdit &edit, std::int64_t revision);

// Who writes: this machine's name, the user, this program.
Author ownAuthor(const QByteArray &who);

} // namespace fleet

#endif
