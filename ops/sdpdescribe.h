// SPDX-License-Identifier: MIT
//
// A stored channel as session descriptions, with the dialog's own writer. What the dialog takes from its
// controls comes from the store: the "use" flags of the element (of flow 0 for audio, of video for a whole
// channel), clock, domain and grandmaster, the format, and the number of flows. Pure; any thread.
#ifndef CORVEL_OPS_SDPDESCRIBE_H
#define CORVEL_OPS_SDPDESCRIBE_H

#include "files/sdpwriter.h"
#include "ops/place.h"
#include "ops/snapshot.h"

namespace ops {

struct SdpDescription {
    bool withClock = true; // the dialog's box beside the grandmaster, which is not stored
    int flows = -1;        // audio flows; below 0: as many as the channel has, one at least
    quint64 sessionId = 0;
};

// Both texts of the channel's element, or of all its elements when the place names none.
struct SdpPair {
    QString rx, tx;
};
SdpPair describeChannel(const Snapshot &snapshot, const Place &place, const SdpDescription &wanted);

} // namespace ops

#endif
