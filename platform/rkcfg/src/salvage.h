/* SPDX-License-Identifier: MIT */
/* Gets out of a database what can be had when its settings are sound and something else is not. */
#ifndef RKCFG_SALVAGE_H
#define RKCFG_SALVAGE_H

#include "connection.h"

namespace rkcfg {

// Fills a new file with all values and what can be read of the history. The source stays as it is, and
// so does its log. Damage as the result: the settings are not sound after all.
Result salvage(const std::string &path, const std::string &fresh, const Manner &manner);

// Whether the last recorded change of one database came after that of another one; without a history
// in either, whether it has more values. False when it cannot be read.
bool younger(const std::string &one, const std::string &other);

// Whether one database has more values than another one. False when it cannot be read.
bool holdsMore(const std::string &one, const std::string &other);

} // namespace rkcfg

#endif // RKCFG_SALVAGE_H
