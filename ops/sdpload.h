// SPDX-License-Identifier: MIT
//
// What loading a session description into a channel would do, before it is done: the dialog's own reader
// decides, this says what comes of each section, what one section takes from another, and why lines count
// for nothing. Locks exist in the dialog only, so none hold here. Pure; any thread.
#ifndef CORVEL_OPS_SDPLOAD_H
#define CORVEL_OPS_SDPLOAD_H

#include "ops/snapshot.h"

namespace ops {

struct SdpLoadNote {
    int line;
    bool warning; // a value is lost, or comes where few expect it
    QByteArray text;
};

struct SdpLoadPlan {
    Changes changes; // of the channel; nothing for values that are so already
    std::vector<SdpLoadNote> notes;
    int values = 0; // that the text sets, changed or not
};

SdpLoadPlan planSdpLoad(const QByteArray &text, const Snapshot &snapshot, int channel);

} // namespace ops

#endif
