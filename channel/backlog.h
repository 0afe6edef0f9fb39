// SPDX-License-Identifier: MIT
//
// What could not be stored because another program held the store: kept in order, step by step, until it is
// free, and in a file beside the store (keptjournal.h), so that it outlives the process. The functions of
// channelstore.h write into it while a KeptStep lives, and read what waits in it as if it were stored. One
// for the whole process, as the default store is. User interface thread.
#ifndef CORVEL_BACKLOG_H
#define CORVEL_BACKLOG_H

#include "channel/storecalls.h"

#include <QVector>

// While it lives nothing is written to the store: all writes are one step that waits for the configuration.
class KeptStep {
public:
    explicit KeptStep(const QString &configuration);
    ~KeptStep();
    KeptStep(const KeptStep &) = delete;
    KeptStep &operator=(const KeptStep &) = delete;
};

// True while a KeptStep lives.
bool writesAreKept();

// Keeps a write. True when the value is another one than before.
bool keepWrite(const char *path, const char *name, const StoreChange::Value &value);

// What waits for the value in the configuration in use; null when nothing does.
const StoreChange::Value *keptValue(const char *path, const char *name);

// How many writes wait, for any configuration, and whether some do for the one in use.
int backlogSize();
bool backlogWaits();

// Takes up what processes left that ended while the store was held. Returns how many writes that are.
int adoptBacklog();

// Stores what waits for the configuration in use, each step as one transaction. What somebody else changed
// meanwhile stays as it is and is appended to `left`: before is what was there when it was kept, after what
// was to be stored. False while the store is held still; then the rest waits on.
bool storeBacklog(QVector<StoreChange> *left);

#endif
