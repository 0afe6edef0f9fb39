// SPDX-License-Identifier: MIT
//
// The rows that the preflight walks, and what they look at. Private to ops/.
#ifndef CORVEL_OPS_PREFLIGHTRULES_H
#define CORVEL_OPS_PREFLIGHTRULES_H

#include "channel/videoformats.h"
#include "ops/legs.h"
#include "ops/preflight.h"
#include "ops/rulereport.h"

namespace ops {

// One direction of one element or flow, its addresses as numbers.
struct CheckedStream {
    Place place;
    Side side;
    Leg leg;
    std::optional<quint32> source, destination, interface; // absent: no address stands there
    qint64 bitRate;                                        // 0 when the format is not known

    bool uses(Field field) const { return leg.flags & flagBit(field); }
    // The destination and its port are in use and can be sent to or received from.
    bool runs() const;
    quint64 target() const { return static_cast<quint64>(*destination) << 16 | leg.destinationPort; }
    QByteArray name() const;                 // "2/audio/3 rx"
    QByteArray name(const char *word) const; // "2/audio/3 rx.dst"
    QByteArray targetText() const;           // "239.1.1.1:20000"
};

struct CheckedChannel {
    int number;
    bool empty; // nothing was ever set up
    quint32 clock, domain, format;
    QByteArray grandMaster;
    int audioChannels[2], packetTimes[2]; // by side
    bool runsVideo, runsAudio[2];

    QByteArray name(const char *word) const; // "2 clock"
};

struct PreflightData {
    const Snapshot &values;
    const NetPicture &machine;
    std::vector<CheckedChannel> channels;
    std::vector<CheckedStream> streams;
    QByteArray nmosAddress;
    bool nmosOverridden;
};

using PreflightReport = RuleReport;

// A rule looks at everything at once, or at each stream.
struct PreflightRule {
    const char *name;
    Severity severity;
    const char *clause;
    void (*whole)(const PreflightData &, PreflightReport &);
    void (*stream)(const CheckedStream &, const PreflightData &, PreflightReport &);
};

TableView<PreflightRule> preflightStreamRules();  // streams against each other, addresses, ports
TableView<PreflightRule> preflightMachineRules(); // interfaces, routes, links
TableView<PreflightRule> preflightChannelRules(); // clocks, formats, NMOS

PreflightData preflightData(const Snapshot &snapshot, const NetPicture &machine, Preflight which);

} // namespace ops

#endif
