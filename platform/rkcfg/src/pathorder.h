/* SPDX-License-Identifier: MIT */
/* The order of paths: SQLite's own NOCASE, found sooner where two paths begin alike. */
#ifndef RKCFG_PATHORDER_H
#define RKCFG_PATHORDER_H

#include <sqlite3.h>

namespace rkcfg {

// Takes the place of NOCASE on this connection. The order is the same for any two texts, so files stay
// readable for every other program. Returns a result code.
int hastenPathOrder(sqlite3 *db);

} // namespace rkcfg

#endif // RKCFG_PATHORDER_H
