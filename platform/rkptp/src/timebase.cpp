// SPDX-License-Identifier: MIT
#include "timebase.h"

#include <cstdlib>
#include <ctime>

namespace rkptp {

namespace {

// Larger jumps of realtime against monotonic than this are a step of the system clock, not the time between
// two reads.
constexpr int64_t kStepThreshold = 200000;
constexpr int64_t kGoodReadingSpan = 20000;
constexpr int kReadingTries = 5;

int64_t readClock(clockid_t clock)
{
    timespec now{};
    clock_gettime(clock, &now);
    return now.tv_sec * kNanosPerSecond + now.tv_nsec;
}

} // namespace

int64_t monotonicNow()
{
    return readClock(CLOCK_MONOTONIC);
}

ClockReading readClocks()
{
    ClockReading best;
    int64_t bestSpan = INT64_MAX;
    for (int i = 0; i < kReadingTries && bestSpan > kGoodReadingSpan; ++i) {
        const int64_t before = monotonicNow();
        const int64_t realtime = readClock(CLOCK_REALTIME);
        const int64_t span = monotonicNow() - before;
        if (span < bestSpan) {
            bestSpan = span;
            best = {realtime, before + span / 2};
        }
    }
    return best;
}

bool Timebase::basisChanged(const SyncSample &sample, const ClockReading &now)
{
    const int64_t difference = now.realtime - now.monotonic;
    const bool stepped = std::llabs(difference - m_clockDifference) > kStepThreshold;
    const bool changed = !m_started || stepped || !(sample.basis == m_basis);
    m_started = true;
    m_clockDifference = difference;
    m_basis = sample.basis;
    return changed;
}

bool Timebase::feed(const SyncSample &sample, const ClockReading &now)
{
    if (basisChanged(sample, now)) {
        m_usableAfter = now.realtime;
        m_lastIngress = sample.ingressTime;
        return false;
    }
    const bool newSync = sample.ingressTime != 0 && sample.ingressTime != m_lastIngress;
    if (!newSync || !sample.basis.delayKnown || sample.ingressTime <= m_usableAfter ||
        sample.ingressTime > now.realtime)
        return false;
    m_lastIngress = sample.ingressTime;
    const int64_t utc = sample.basis.ptpTimescale ? sample.basis.appliedUtcOffset * kNanosPerSecond : 0;
    m_carried.valid = true;
    m_carried.offset = sample.masterOffset;
    m_carried.ptpMinusMono = now.realtime - sample.masterOffset + utc - now.monotonic;
    m_carried.lastSync = now.monotonic - (now.realtime - sample.ingressTime);
    return true;
}

} // namespace rkptp
