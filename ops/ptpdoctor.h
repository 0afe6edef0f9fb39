// SPDX-License-Identifier: MIT
//
// What is wrong with a machine's PTP, from what was seen of it, and what to do. Pure; any thread.
#ifndef CORVEL_OPS_PTPDOCTOR_H
#define CORVEL_OPS_PTPDOCTOR_H

#include "channel/clockstate.h"
#include "ops/findings.h"

#include <QByteArray>

#include <optional>
#include <vector>

namespace ops {

// A master that announced itself.
struct PtpMaster {
    quint32 domain = 0;
    QByteArray grandmaster;
    QByteArray interface;
    int priority1 = 128, priority2 = 128, clockClass = 248, clockAccuracy = 0xfe;
    int stepsRemoved = 0;
    quint32 ageMs = 0;
};

struct PtpSight {
    QByteArray interface; // the address asked for; empty or 0.0.0.0: all interfaces
    quint32 domain = 0;
    QByteArray wanted; // grandmaster asked for; empty: any
    ClockState state = ClockState::NotRunning;
    QByteArray reason; // the library's own sentence, may be empty
    bool addressIsHere = true;
    std::optional<bool>
        joined; // whether the interface is in the PTP group 224.0.1.129; unknown without a client
    std::vector<PtpMaster> masters;
};

Findings examinePtp(const PtpSight &sight);

} // namespace ops

#endif
