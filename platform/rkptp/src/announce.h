// SPDX-License-Identifier: MIT
#ifndef RKPTP_ANNOUNCE_H
#define RKPTP_ANNOUNCE_H

// The masters that announce themselves to everybody, in whatever domain. No socket: bytes and the time come
// in.

#include "identity.h"

#include <vector>

namespace rkptp {

/* One master as its last announce had it. */
struct HeardMaster {
    uint32_t domain = 0;
    PortId source;
    ClockId grandmaster{};
    uint8_t priority1 = 0;
    uint8_t clockClass = 0;
    uint8_t clockAccuracy = 0;
    uint8_t priority2 = 0;
    uint16_t variance = 0;
    uint16_t stepsRemoved = 0;
    int8_t logInterval = 0; // seconds between announces, as a power of two
    std::string interface;
    int64_t heardAt = 0; // CLOCK_MONOTONIC
};

/* Reads an announce message; nothing when the bytes are anything else or come up short. */
std::optional<HeardMaster> parseAnnounce(const uint8_t *bytes, size_t size);

/* Reads a line of the listening launcher: the interface, a blank, and the message in hexadecimal digits. */
std::optional<HeardMaster> parseHeardLine(std::string_view line);

/* What was heard of late. */
class MasterList {
public:
    void hear(const HeardMaster &master);

    /* Drops those that have missed four of their own announces. True when there were any. */
    bool forget(int64_t now);

    /* By domain, in each the one first that the best master clock algorithm prefers. */
    std::vector<HeardMaster> sorted() const;

private:
    std::vector<HeardMaster> m_masters;
};

} // namespace rkptp

#endif // RKPTP_ANNOUNCE_H
