// SPDX-License-Identifier: MIT
//
// A document that was overruled: both sides had changed the same path, and one of them stood. Nothing of it
// is lost: it is kept with both authors, first beside the values in the store, then in the cluster.
// Pure; any thread.
#ifndef CORVEL_FLEET_CONFLICT_H
#define CORVEL_FLEET_CONFLICT_H

#include "fleet/document.h"

namespace fleet {

constexpr std::size_t kMaxConflictBytes = kMaxDocumentBytes + 1024;

struct Conflict {
    Document overruled;
    Author stoodBy; // whose document stands instead, and from when
    qint64 stoodAtMs = 0;
};

// The same overruled document has the same id wherever and however often it is found: it counts once.
std::string conflictId(const Conflict &conflict);

ops::Outcome<std::string> writeConflict(const Conflict &conflict);
ops::Outcome<Conflict> readConflict(std::string_view bytes);

} // namespace fleet

#endif
