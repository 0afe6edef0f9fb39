// SPDX-License-Identifier: MIT
//
// A corrected copy of a session description: what a strict receiver would refuse and what has only one right
// form is put right; what only the sender can know is taken from the options or left alone, and the check
// still names it. Fixing a fixed text changes nothing. Pure; any thread; takes any bytes.
#ifndef CORVEL_OPS_SDPFIX_H
#define CORVEL_OPS_SDPFIX_H

#include "ops/sdpcheck.h"

namespace ops {

struct SdpFixOptions {
    int timeToLive = 64;   // for groups that have none
    QByteArray ptp;        // "IDENTITY", "IDENTITY:DOMAIN" or "traceable", for streams without a clock
    QByteArray localMac;   // the sender's Ethernet address, likewise
    QByteArray packetTime; // milliseconds, for audio without one
    QByteArray senderType; // "2110TPN", "2110TPNL" or "2110TPW", for video without one
    SdpFacts facts;
};

struct SdpChange {
    int line;                 // of the given text; of an added line, the one before it
    QByteArray before, after; // empty: added, removed
};

struct SdpFixed {
    SdpText text;
    std::vector<SdpChange> changes;
    bool lineEnds = false; // every line now ends in CR LF
};

SdpFixed fixSdp(const SdpText &text, const SdpFixOptions &options = {});

// "FILE:9: a=ptime:125 -> a=ptime:0.125", one line per change.
QByteArray sdpChangesText(const SdpFixed &fixed);

// The right form of a reference clock ("ptp=IEEE1588-2008:AC-DE-48-FF-FE-23-45-67:127"); the value itself
// when there is no telling. Joins pairs by "-" and makes clocks of Ethernet addresses and back.
QByteArray fixedClock(const QByteArray &value);

} // namespace ops

#endif
