/* SPDX-License-Identifier: MIT */
/*
 * How long a call may wait for other processes: one second in all, whatever it waits for. After one
 * such wait in vain the next calls do not wait at all until one of them succeeds. Where what is written is
 * held and what is read is not, or now and then, as long again passes before the next one waits: a run of
 * calls is no longer than one of them.
 */
#ifndef RKCFG_PATIENCE_H
#define RKCFG_PATIENCE_H

#include "statement.h"

namespace rkcfg {

// For the call that is under way, in milliseconds of steadyMs. Calls take turns, so there is one only.
void setDeadline(int64_t deadlineMs);
// What is left of the call's time, 0: none.
int remainingMs();

// SQLite's file system with sleeps that end at the deadline: some of its own waits ask no busy handler.
const char *hurriedFileSystem();
// Lets a connection wait for locks until the deadline.
void waitForLocks(sqlite3 *db);

// Which calls still wait.
class Patience {
public:
    static constexpr int kCallMs = 1000;

    // At the beginning of a call; startMs is when it was made, before it waited for its turn.
    void begin(int64_t startMs);
    // Sets the deadline for reading or writing.
    void forReading() const { setDeadline(m_lost == Lost::All || isSpent() ? 0 : m_deadlineMs); }
    void forWriting() const { setDeadline(m_lost != Lost::Nothing || isSpent() ? 0 : m_deadlineMs); }
    // How an attempt ended. wrote: a lock for writing was had.
    void ended(bool busy, bool writing, bool wrote);

private:
    enum class Lost { Nothing, Writing, All };

    bool isSpent() const;

    Lost m_lost = Lost::Nothing;
    int64_t m_deadlineMs = 0;
    int64_t m_spentUntilMs = 0;
};

} // namespace rkcfg

#endif // RKCFG_PATIENCE_H
