// SPDX-License-Identifier: MIT
#ifndef RKPTP_SPAWNLIMIT_H
#define RKPTP_SPAWNLIMIT_H

// How often a client may be started. Pure: the time comes in as a number (CLOCK_MONOTONIC, nanoseconds).

#include <cstdint>
#include <deque>
#include <map>
#include <string>

namespace rkptp {

class SpawnLimit {
public:
    /* When a client for `key` may be started next: `now` when at once, later while it is held back. */
    int64_t allowedAt(const std::string &key, int64_t now) const;

    /* True while `key` is held back because it failed, not because of the general rate. */
    bool failing(const std::string &key, int64_t now) const;

    void started(int64_t now);

    /* A client ended by itself or could not be started: one second of rest; from the third time in ten
       seconds on five seconds, doubling with each further failure to one minute. A quiet minute forgets. */
    void failed(const std::string &key, int64_t now);

private:
    struct Failures {
        std::deque<int64_t> recent;
        int64_t rest = 0;
        int64_t blockedUntil = 0;
    };
    std::map<std::string, Failures> m_failures;
    std::deque<int64_t> m_starts;
};

/* One line a minute for each kind of message. */
class LogLimit {
public:
    bool allowed(int kind, int64_t now);

private:
    std::map<int, int64_t> m_last;
};

} // namespace rkptp

#endif // RKPTP_SPAWNLIMIT_H
