// SPDX-License-Identifier: MIT
//
// A channel as the streams it receives and sends. Pure; any thread.
#ifndef CORVEL_OPS_LEGS_H
#define CORVEL_OPS_LEGS_H

#include "ops/place.h"
#include "ops/snapshot.h"

namespace ops {

// One direction of one element or audio flow, as it is stored. Whether a field counts says its flag.
struct Leg {
    QByteArray source;
    quint32 sourcePort = 0;
    QByteArray destination;
    quint32 destinationPort = 0;
    QByteArray interface;
    quint32 flags = 0;

    bool isEmpty() const; // nothing was ever set up
};

Leg legOf(const Snapshot &snapshot, const Place &place, Side side);

// "239.20.2.1:20000 from 10.1.0.5 on 10.1.0.9, use dst,dst-port", or "-" for an empty one.
QByteArray legText(const Leg &leg);

// Video, the channel's audio flows (all eight when it has none) and ancillary data, in that order.
std::vector<Place> elementsOf(const Snapshot &snapshot, int channel);

} // namespace ops

#endif
