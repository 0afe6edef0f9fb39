// SPDX-License-Identifier: MIT
//
// Session descriptions (SDP, RFC 4566) of a channel's SMPTE ST 2110 streams, written from plain values.
//
// Two writers share their line templates and differ in order, media words and the place of the frame
// rate: one describes a single element of the selected channel, the other all three elements
// of the first channel. Each is asked twice per command, once per side, with the same input, so that
// both files of a pair carry the same session identifier.
//
// Nothing is validated and nothing fails: empty values give lines with empty values. All functions are
// pure (apart from calling SdpInput::value), never block and may be called from any thread.
#ifndef CORVEL_SDPWRITER_H
#define CORVEL_SDPWRITER_H

#include "channel/channelkeys.h"

#include <QString>

#include <functional>

// Everything a session description is made of.
struct SdpInput {
    // Returns the stored text of a value of the channel to describe; isString is false for numbers
    // (unsigned decimal text). Flow values are asked for with their number ("ReceiveAudSourceIp3").
    std::function<QString(const char *name, bool isString)> value;

    // Video format as texts: "1920", "1080", "60000/1001"; all empty when the format is unknown.
    QString width, height, rate;

    // The four "use address" boxes as shown. They govern every section of a text, whatever its element.
    bool recSrc = false, recDst = false, sndSrc = false, sndDst = false;

    // The clock controls as shown. Index 0 of the clock source is the internal clock.
    bool useGmId = false;
    int clockIndex = 0;
    QString gmAddress, gmDomain;

    // Number of audio flows to describe; 0 or less gives none.
    int flows = 0;

    // Goes into the origin line.
    quint64 sessionId = 0;
};

// The text for one element. Video is split by side; audio and ancillary data hold both directions in
// either text, so their two files are the same.
QString writeElementSdp(const SdpInput &input, Element element, Side side);

// The text for video, all audio flows and ancillary data of one side.
QString writeFileSdp(const SdpInput &input, Side side);

struct SdpFileNames {
    QString rx, tx;
};

// The two file names for the name a user chose: its last four characters, whatever they are, make room
// for ".rx.sdp" and ".tx.sdp". A full path shorter than that is cut to nothing.
SdpFileNames sdpFileNames(const QString &answer);

#endif
