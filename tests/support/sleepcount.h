// SPDX-License-Identifier: MIT
//
// Adds up how long this program sleeps: all sleeps of the libraries it uses go through here. So a test can
// say how long a call may wait without measuring time. For one source of a program.
#ifndef CORVEL_TEST_SLEEPCOUNT_H
#define CORVEL_TEST_SLEEPCOUNT_H

#include <atomic>
#include <cstdint>
#include <ctime>
#include <sys/syscall.h>
#include <unistd.h>
#include <utility>

namespace SleepCount {

constexpr int64_t mostMs = 1100; // that one call may wait for another process

inline std::atomic<int64_t> sleptUs{0};
inline void (*whenWaiting)() = nullptr; // called once, before the next sleep

inline void sleep(int64_t microseconds)
{
    sleptUs += microseconds;
    if (void (*const call)() = std::exchange(whenWaiting, nullptr))
        call();
    const timespec pause{time_t(microseconds / 1000000), long(microseconds % 1000000) * 1000};
    syscall(SYS_nanosleep, &pause, nullptr);
}

// Milliseconds since it was last asked.
inline int64_t slept()
{
    return sleptUs.exchange(0) / 1000;
}

} // namespace SleepCount

extern "C" __attribute__((visibility("default"))) int usleep(useconds_t microseconds)
{
    SleepCount::sleep(microseconds);
    return 0;
}

extern "C" __attribute__((visibility("default"))) int nanosleep(const timespec *pause, timespec *)
{
    SleepCount::sleep(int64_t(pause->tv_sec) * 1000000 + pause->tv_nsec / 1000);
    return 0;
}

#endif
