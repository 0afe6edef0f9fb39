// SPDX-License-Identifier: MIT
//
// Takes addresses and ports out of a session description (SDP, RFC 4566), tolerantly: it understands
// what sdpwriter writes and the usual variants of other senders, passes over everything else and never
// reports an error. The result is an ordered list of values to store; whoever stores them looks at the
// locks and ticks the boxes.
#ifndef CORVEL_SDPREADER_H
#define CORVEL_SDPREADER_H

#include <QByteArray>
#include <QString>
#include <QVector>

#include <functional>

// The "use" box that a stored video value ticks. It is one of the receive boxes for both sides.
enum class SdpTick { None, RecDstAddr, RecSrcAddr, RecDstPort };

// One value to store, as it stands in the file.
struct SdpStore {
    QByteArray valueName; // name in the channel's settings, with the flow number for audio
    bool isString;        // an address (text) or a port (number, unsigned decimal text)
    QString text;         // at least two characters; a port is not checked to be a number
    QByteArray lockName;  // lock that guards it, without the channel number: always a video value's name
    SdpTick box;          // None for audio and ancillary data
};
Q_DECLARE_TYPEINFO(SdpStore, Q_MOVABLE_TYPE);

using SdpStores = QVector<SdpStore>;

// Puts the next line into its argument and returns true, or returns false at the end of the text. A line
// ends at its first NUL byte, and carriage returns and line feeds left at its end are dropped.
using SdpLineSource = std::function<bool(QByteArray &line)>;

// Reads to the end of the source and returns what to store, in the order of the text: per media block
// the receive side before the send side, and per side destination, source, port. The source may stand
// before the version line ("v=0") or behind it. Pure apart from calling the source; any thread.
SdpStores readSdp(const SdpLineSource &source);

#endif
