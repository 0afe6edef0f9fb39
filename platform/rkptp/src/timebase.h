// SPDX-License-Identifier: MIT
#ifndef RKPTP_TIMEBASE_H
#define RKPTP_TIMEBASE_H

// The master's time, carried between syncs on the monotonic clock. Pure: clock readings come in as numbers.

#include "identity.h"

namespace rkptp {

constexpr int64_t kNanosPerSecond = 1000000000;
constexpr int64_t kNanosPerMilli = 1000000;

/* No sync for longer than this: not locked any more. */
constexpr int64_t kSyncFreshness = 3 * kNanosPerSecond;

/* The system's two clocks, read together. Nanoseconds. */
struct ClockReading {
    int64_t realtime = 0;
    int64_t monotonic = 0;
};

/* Reads both clocks as close together as the machine allows. */
ClockReading readClocks();

/* CLOCK_MONOTONIC in nanoseconds. */
int64_t monotonicNow();

/* What an offset depends on besides the sync itself. When one of these changes, the offset ptp4l reports may
   still be that of before the change, until a later sync has come in. */
struct OffsetBasis {
    int16_t appliedUtcOffset = 0;
    bool ptpTimescale = false;
    bool delayKnown = false;
    ClockId grandmaster{};
};

inline bool operator==(const OffsetBasis &a, const OffsetBasis &b)
{
    return a.appliedUtcOffset == b.appliedUtcOffset && a.ptpTimescale == b.ptpTimescale &&
           a.delayKnown == b.delayKnown && a.grandmaster == b.grandmaster;
}

/* One look at ptp4l. `basis` must have been read after offset and ingress time. */
struct SyncSample {
    int64_t masterOffset = 0;
    int64_t ingressTime = 0;
    OffsetBasis basis;
};

/* The outcome, small enough to be copied into every snapshot. */
struct CarriedTime {
    bool valid = false;       // there was a usable sync
    int64_t ptpMinusMono = 0; // add CLOCK_MONOTONIC for the PTP time
    int64_t offset = 0;       // own clock minus master at the last sync, nanoseconds
    int64_t lastSync = 0;     // CLOCK_MONOTONIC of the last usable sync

    bool freshAt(int64_t mono) const { return valid && mono - lastSync <= kSyncFreshness; }
};

class Timebase {
public:
    /* `carried`: where to go on from until the first sync of our own. */
    explicit Timebase(const CarriedTime &carried = CarriedTime()) : m_carried(carried) {}

    /* Takes one look in, with the clocks read after it. True when it held a new usable sync. */
    bool feed(const SyncSample &sample, const ClockReading &now);

    const CarriedTime &carried() const { return m_carried; }

private:
    bool basisChanged(const SyncSample &sample, const ClockReading &now);

    CarriedTime m_carried;
    bool m_started = false;
    OffsetBasis m_basis;
    int64_t m_clockDifference =
        0;                     // realtime minus monotonic at the last look; jumps when the clock is stepped
    int64_t m_usableAfter = 0; // realtime; syncs up to here may belong to an earlier basis
    int64_t m_lastIngress = 0;
};

} // namespace rkptp

#endif // RKPTP_TIMEBASE_H
