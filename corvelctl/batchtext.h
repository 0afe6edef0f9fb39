// SPDX-License-Identifier: MIT
//
// A batch of the history in words and as JSON.
#ifndef CORVELCTL_BATCHTEXT_H
#define CORVELCTL_BATCHTEXT_H

#include "corvelctl/output.h"
#include "ops/history.h"

// "#812 2026-11-21 16:40:12 corvelctl (root): set 2/video rx.dst=239.20.9.1"
QByteArray batchTitle(const ops::Batch &batch);

// The title and below it the changes: at most eight of them unless all are wanted.
void printBatch(Output &out, const ops::Batch &batch, bool allChanges);

// Who and when, in JSON.
Json batchItem(const ops::Batch &batch);

#endif
