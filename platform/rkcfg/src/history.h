/* SPDX-License-Identifier: MIT */
/*
 * The record of changes inside one database: writes it in the transaction of the change itself, reads
 * it page by page, keeps it within its bounds. All results are SQLite's extended result codes.
 */
#ifndef RKCFG_HISTORY_H
#define RKCFG_HISTORY_H

#include "statement.h"

#include <vector>

namespace rkcfg {

// The run of writes that is under way. id 0: the next write starts one.
struct Batch {
    int64_t id = 0;
    int64_t writer = 0; // row of this process' program and user, 0: not known yet
    int64_t pid = 0;    // found with the writer
    int64_t undoes = 0; // what the next batch takes back
    std::string label;  // of the next batch

    // Label and undoes are for a batch that has not begun.
    void begin(int64_t first)
    {
        id = first;
        undoes = 0;
        label.clear();
    }
    void end() { begin(0); }
};

struct Change {
    int64_t id = 0;
    int64_t batch = 0;
    int64_t time_us = 0;
    uint32_t pid = 0;
    int64_t undoes = 0;
    std::string program;
    std::string user;
    bool labelled = false;
    std::string label;
    std::string path;
    std::string name;
    Kept before;
    Kept after;
};

// Where a walk stands. It ends where the history ended when it began.
struct Walk {
    bool newestFirst = false;
    int64_t position = 0; // the last id that was visited
    int64_t end = -1;     // the last id to visit, -1: not known yet
};

class History {
public:
    void attach(sqlite3 *db) { m_db = db; }
    // Needed after a transaction that was taken back: it may have made the tables.
    void forget();

    // Inside the change's transaction, while the value's row is there. Makes the tables when missing.
    int record(const Key &key, const Value &before, const Value &after, Batch &batch);

    // The next changes of a walk, none at its end.
    int read(Walk &walk, std::vector<Change> &changes);
    // All changes of one batch in their order, none when its beginning is not there.
    int readBatch(int64_t batch, std::vector<Change> &changes);

    // Whether there is more than the bounds allow, and enough of it to be worth a step. Looks only when
    // enough changes were recorded since the last look.
    bool surplus();
    // Removes the oldest of it, in a transaction of the caller's or of its own.
    int prune();

private:
    struct Extent {
        int64_t first = 0;
        int64_t last = 0; // 0: there is no history
        int64_t oldest_us = 0;
    };

    int make();
    int findWriter(Batch &batch);
    int nextId(int64_t &id);
    void bind(const Key &key, const Value &before, const Value &after, const Batch &batch);
    int rows(Statement &statement, std::vector<Change> &changes);
    void begin(Walk &walk);
    Extent extent();
    int64_t surplusEnd();
    bool present();

    sqlite3 *m_db = nullptr;
    Statement m_insert;
    Statement m_next;
    int64_t m_untilLook = 0; // changes to come before the bounds are looked at again
};

} // namespace rkcfg

#endif // RKCFG_HISTORY_H
