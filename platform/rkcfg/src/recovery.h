/* SPDX-License-Identifier: MIT */
/*
 * Gets a sound database under a configuration's name: opens what is there, makes a missing one, and
 * sets a damaged one aside. Nothing is ever deleted or moved for any other reason than its content.
 */
#ifndef RKCFG_RECOVERY_H
#define RKCFG_RECOVERY_H

#include "connection.h"
#include "names.h"

namespace rkcfg {

// Opens the configuration's database, made or repaired when needed. identity: the file that was
// opened. Null and the reason when that is impossible; then everything lies where it lay.
std::unique_ptr<Connection> openConfiguration(const Paths &paths, FolderLock &lock, const Manner &manner,
                                              FileState &identity, Result &result);

// Removes a configuration: its database first, then all that belongs to it. For whoever holds the
// directory's lock exclusively, as the next.
Result removeStore(const Paths &paths);

// A copy under the new name, without the notes. It gets its name when it is complete and synced.
Result copyStore(const Paths &paths, const Paths &target);

// A complete copy under the new name first, then the old one is removed: after a crash there is at
// least one of them.
Result renameStore(const Paths &paths, const Paths &target);

} // namespace rkcfg

#endif // RKCFG_RECOVERY_H
