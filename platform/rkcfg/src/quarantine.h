/* SPDX-License-Identifier: MIT */
/*
 * Moves databases and what SQLite keeps beside them. For whoever holds the directory's lock
 * exclusively. Nothing is deleted but what was made here under a temporary name.
 */
#ifndef RKCFG_QUARANTINE_H
#define RKCFG_QUARANTINE_H

#include "connection.h"
#include "names.h"

namespace rkcfg {

// What errno says, as a result.
Result diskRefused(const std::string &what);

// Puts fresh in the database's place. kept: the name under which the damaged one lies now, with its log.
// After a failure everything lies where it lay.
Result setAside(const Paths &paths, const std::string &fresh, std::string &kept);

// Gives fresh the database's name where there is none. A log that lies there alone is set aside.
Result putInPlace(const Paths &paths, const std::string &fresh);

void removeWithSidecars(const std::string &path);

} // namespace rkcfg

#endif // RKCFG_QUARANTINE_H
