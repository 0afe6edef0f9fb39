// SPDX-License-Identifier: MIT
//
// When to look into the store. One edit of a person is a burst of single values, so a look waits until it is
// over; and the files of a store are touched a moment before what was written can be seen, so one look may
// be too early. Times are a steady clock's milliseconds. Not for more than one thread.
#ifndef CORVEL_FLEET_GATHER_H
#define CORVEL_FLEET_GATHER_H

#include <QtGlobal>

namespace fleet {

class Gather {
public:
    static constexpr qint64 kQuietMs = 4;    // a burst is over
    static constexpr qint64 kMostMs = 40;    // the longest that a burst may put a look off
    static constexpr qint64 kAgainMs = 3;    // after a look that saw nothing
    static constexpr int kLooks = 3;         // such looks after a touch
    static constexpr qint64 kSweepMs = 5000; // without any touch: signs can get lost

    // The files were touched.
    void touch(qint64 nowMs);
    // When to look: 0 at first.
    qint64 dueMs() const { return m_dueMs; }
    // A look was taken, and somebody else had written or not.
    void looked(qint64 nowMs, bool news);

private:
    qint64 m_burstMs = -1; // when it began
    qint64 m_dueMs = 0;
    int m_looks = 0;
};

} // namespace fleet

#endif
