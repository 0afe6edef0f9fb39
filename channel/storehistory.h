// SPDX-License-Identifier: MIT
//
// The store's history as steps that a person made and may want to take back. Needs the optional calls of
// the library; without them there are no batches. The calls block for as long as the store does.
#ifndef CORVEL_STOREHISTORY_H
#define CORVEL_STOREHISTORY_H

#include "channel/storecalls.h"

#include <QVector>

// A run of writes that belong together.
struct StoreBatch {
    StoreChange head;             // of its last change: batch, time, who, label, undoes
    bool isTakenBack = false;     // a later batch did, and was not taken back itself
    QVector<StoreChange> changes; // one for each value, from before the batch to after it
};

// Newest first; changes beyond the last `mostChanges` are not looked at.
QVector<StoreBatch> storeBatches(int mostChanges);

// The batches of this process that one "Take Back" takes back, newest first: the last one that is no
// take-back and not taken back, and those before it when they belong to the typing of the same values.
QVector<StoreBatch> lastStep(const QVector<StoreBatch> &batches);
// The take-backs of this process that one "Put Back" undoes: those of the last step taken back.
QVector<StoreBatch> lastStepTakenBack(const QVector<StoreBatch> &batches);

#endif
