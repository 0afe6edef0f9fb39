// SPDX-License-Identifier: MIT
#ifndef RKPTP_REASON_H
#define RKPTP_REASON_H

// Why a client shows what it shows, as a number and in words. Pure: the time comes in as a number.

#include "announce.h"
#include "snapshot.h"

namespace rkptp {

/* What the words are made of. */
struct Circumstances {
    Snapshot seen;
    GrandmasterWish wish;
    uint32_t domain = 0; // asked for
    bool addressValid = false;
    std::vector<HeardMaster> masters;
    int64_t now = 0; // CLOCK_MONOTONIC
};

/* One of the RKPTP_STATE_ numbers. */
int stateOf(const Snapshot &seen, const GrandmasterWish &wish, int64_t mono);

/* One sentence without a full stop. */
std::string reasonFor(const Circumstances &all);

} // namespace rkptp

#endif // RKPTP_REASON_H
