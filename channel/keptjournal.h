// SPDX-License-Identifier: MIT
//
// Where what waits for a held store outlives the process: a file beside the store, one for each process that
// has something waiting. The process holds a lock on its file, so one whose lock is free was left behind by a
// process that ended first. User interface thread; each call takes as long as the disk does.
#ifndef CORVEL_KEPTJOURNAL_H
#define CORVEL_KEPTJOURNAL_H

#include "channel/storecalls.h"

#include <QFile>
#include <QVector>

#include <memory>

// The writes of one action of the user, for one configuration.
struct KeptWrites {
    QString configuration;
    QVector<StoreChange> writes; // path, name, before and after
};

class KeptJournal {
public:
    // Puts all that waits now in place of what stood in the file; nothing: the file goes. False when the disk
    // does not take it (one log line); then the file is as it was.
    bool save(const QVector<KeptWrites> &steps);

    // Appends what processes left behind that are gone, and makes it this one's: their files go once it
    // stands in ours. Returns how many writes that are. A file that cannot be understood is left alone.
    int adopt(QVector<KeptWrites> *steps);

private:
    void remove();

    QString m_path; // empty while there is no file
    std::unique_ptr<QFile> m_file;
};

#endif
