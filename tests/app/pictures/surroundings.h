// SPDX-License-Identifier: MIT
//
// The network that the pictures show: one media interface and a PTP client that says what it is told to.
// Linked into a test program it stands before the platform libraries.
#ifndef CORVEL_TEST_SURROUNDINGS_H
#define CORVEL_TEST_SURROUNDINGS_H

#include "rkptp.h"

#include <QByteArray>

namespace Surroundings {

// The address of the machine's media interface.
constexpr char kInterface[] = "10.20.1.5";
constexpr char kGrandmaster[] = "00-1D-C1-FF-FE-12-34-56";

struct Clock {
    int status = RKPTP_LOCKED;
    int state = RKPTP_STATE_LOCKED;
    QByteArray reason;
    bool hasMaster = true;
    int64_t offset_ns = -1412;
    uint32_t age_ms = 120;
};

Clock &shownClock();

} // namespace Surroundings

#endif
