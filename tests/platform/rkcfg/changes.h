/* SPDX-License-Identifier: MIT */
/* The history as lines that a test can compare. */
#ifndef CHANGES_H
#define CHANGES_H

#include "storehome.h"

// "path|name|old>new": a text in quotes, a number plain, "-" where there was nothing.
QString line(const RKCFG_CHANGE &change);

// Lines of all changes, oldest first, from one on.
QStringList changes(void *handle = store, int64_t after = 0);

// The newest batch's id, 0: none.
int64_t newestBatch(void *handle = store);

// All values, one line each, path and name in their own case.
QStringList values(void *handle = store);

struct TakenBack {
    int conflicts;
    int64_t batch;
    QStringList lines; // of the conflicts
};
TakenBack takeBack(int64_t batch, bool force = false, bool dryRun = false);

#endif // CHANGES_H
