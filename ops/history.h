// SPDX-License-Identifier: MIT
//
// What was changed, when and by whom, and taking it back. The store keeps the record; here it is put together
// in batches, each a run of writes that belong together. Blocks for as long as the disk takes.
#ifndef CORVEL_OPS_HISTORY_H
#define CORVEL_OPS_HISTORY_H

#include "ops/store.h"

#include <functional>
#include <limits>

namespace ops {

struct Batch {
    qint64 id = 0;
    qint64 timeUs = 0; // of its first change; microseconds since 1970, UTC
    QByteArray program;
    quint32 pid = 0;
    QByteArray user;
    QByteArray label;
    qint64 undoes = 0;      // the batch that this one took back, or 0
    bool takenBack = false; // another batch undid it, and was not undone itself
    Changes changes;        // in the order of the writes; a key may occur more than once
};

// Newest first, complete batches. `most` stops early.
Outcome<std::vector<Batch>> readHistory(const Store &store,
                                        std::size_t most = std::numeric_limits<std::size_t>::max());

// Changes with a greater id than `after`, oldest first, each as a batch of one change. Returns the greatest
// id.
Outcome<qint64> followHistory(const Store &store, qint64 after,
                              const std::function<void(const Batch &)> &visit);
Outcome<qint64> newestChange(const Store &store);

// What a batch did: one change per key, from the value before it to the value after it.
Changes effectOf(const Batch &batch);

// The batches that a command means, newest first. Undo and redo batches are not undone themselves.
std::vector<const Batch *> lastToUndo(const std::vector<Batch> &history);
std::vector<const Batch *> lastToRedo(const std::vector<Batch> &history);
std::vector<const Batch *> since(const std::vector<Batch> &history, qint64 timeUs);

struct TakeBackPlan {
    Changes changes;   // what would be done
    Changes conflicts; // before: what is there now; after: what would have been set
};

// What taking back these batches, in this order, would do to the store as it is.
TakeBackPlan planTakeBack(const Snapshot &now, const std::vector<const Batch *> &batches, bool force);

// Does it as one transaction, a batch for each, and returns what that was.
Outcome<TakeBackPlan> takeBack(Store &store, const std::vector<const Batch *> &batches, bool force,
                               const char *verb);

// "10m", "2h", "1d", "90s", "1h30m" in microseconds, up to a hundred years.
Outcome<qint64> parseDuration(const QByteArray &text);

// "2026-11-21T16:40:12.123456Z"
QByteArray isoTime(qint64 timeUs);

} // namespace ops

#endif
