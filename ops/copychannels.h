// SPDX-License-Identifier: MIT
//
// One channel's settings for many: copies with steps, and audio flows in a row. Pure; any thread.
#ifndef CORVEL_OPS_COPYCHANNELS_H
#define CORVEL_OPS_COPYCHANNELS_H

#include "ops/draft.h"
#include "ops/outcome.h"

#include <QByteArrayList>

namespace ops {

struct CopyOrder {
    int from = 0;
    std::vector<int> to;
    // What is copied: words ("rx.dst", "format"), words without a side ("dst", "port"), sides ("rx", "tx")
    // and elements ("video", "audio", "anc"). Empty: everything.
    QByteArrayList fields;
    // "dst=0.0.1.0", "port=2": what is added for the first target, twice for the second, and so on.
    QByteArrayList steps;
};

// The targets become what the source is, absent values included. Fails without having changed the draft's
// meaning for the caller when a step leaves the address class (or the multicast range) or the ports.
Outcome<Done> copyChannels(const CopyOrder &order, Draft &draft);

struct FlowOrder {
    QByteArray from;      // "239.30.0.1:20000", the first flow's destination
    int count = 8;        // flows, 1 to 8
    QByteArray step;      // added to the address from flow to flow; empty: 0.0.0.1
    int portStep = 0;     // added to the port from flow to flow
    bool receive = false; // which sides
    bool send = true;
};

// Sets destination, port and their use flags of the flows and the number of flows.
Outcome<Done> setFlows(int channel, const FlowOrder &order, Draft &draft);

// The address `times` steps further on.
Outcome<quint32> steppedAddress(quint32 address, qint64 step, int times);

} // namespace ops

#endif
