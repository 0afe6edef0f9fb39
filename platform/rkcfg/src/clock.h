/* SPDX-License-Identifier: MIT */
/* The two clocks of the store: time of day for the history, and one that never jumps for waiting. */
#ifndef RKCFG_CLOCK_H
#define RKCFG_CLOCK_H

#include <cstdint>
#include <ctime>

namespace rkcfg {

inline int64_t microseconds(clockid_t clock)
{
    timespec now{};
    clock_gettime(clock, &now);
    return int64_t(now.tv_sec) * 1'000'000 + now.tv_nsec / 1000;
}

// Since 1970, UTC.
inline int64_t nowMicroseconds()
{
    return microseconds(CLOCK_REALTIME);
}

inline int64_t steadyMs()
{
    return microseconds(CLOCK_MONOTONIC) / 1000;
}

} // namespace rkcfg

#endif // RKCFG_CLOCK_H
