/* SPDX-License-Identifier: MIT */
/* Works out what taking a batch back means, value by value, and does it inside an open transaction. */
#ifndef RKCFG_TAKEBACK_H
#define RKCFG_TAKEBACK_H

#include "connection.h"

#include <vector>

namespace rkcfg {

struct TakeBackOrder {
    int64_t batch = 0;
    bool force = false;
    bool dryRun = false;
};

struct TakeBackResult {
    bool known = false;            // whether the batch is in the history, from its beginning on
    int64_t newBatch = 0;          // the batch that was made
    std::vector<Change> conflicts; // before: what would be set, after: what is there now
};

// An SQLite code. Nothing but the caller's transaction tells whether it lasts.
int takeBack(Connection &connection, const TakeBackOrder &order, Batch &batch, TakeBackResult &result);

} // namespace rkcfg

#endif // RKCFG_TAKEBACK_H
