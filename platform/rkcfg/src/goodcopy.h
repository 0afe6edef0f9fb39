/* SPDX-License-Identifier: MIT */
/* The last good copies of a configuration, in two generations. */
#ifndef RKCFG_GOODCOPY_H
#define RKCFG_GOODCOPY_H

#include "connection.h"
#include "names.h"

namespace rkcfg {

// Whether a copy should be taken now: there is none, or it is older than ten minutes and than the
// last change.
bool goodCopyDue(const Paths &paths);

// Takes a copy of the present content. The one before becomes the older generation, unless it holds
// fewer values than that. Never waits for another process and leaves the earlier copies alone when the
// store is empty or anything fails. What SQLite said about reading the store.
int keepGoodCopy(const Paths &paths, FolderLock &lock, const FileState &identity, Connection &connection);

} // namespace rkcfg

#endif // RKCFG_GOODCOPY_H
