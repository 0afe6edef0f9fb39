// SPDX-License-Identifier: MIT
//
// The 27 video signal formats a channel can run in, with what a session description says of each
// (SMPTE ST 2110-20: width, height, exactframerate).
#ifndef CORVEL_VIDEOFORMATS_H
#define CORVEL_VIDEOFORMATS_H

#include "channel/channelkeys.h"

struct VideoFormat {
    const char *text;   // entry of the format combo, translatable in the context "QCorvel"
    quint32 id;         // the engine's format code, opaque: stored and compared as it stands
    const char *width;  // pixels
    const char *height; // lines of a frame
    const char *rate;   // exact rate; for the interlaced formats the field rate (deliberate)
};

// In the order of the combo.
TableView<VideoFormat> videoFormats();

// The row with this code, or the null pointer.
const VideoFormat *findVideoFormat(quint32 id);

#endif
