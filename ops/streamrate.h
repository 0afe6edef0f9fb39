// SPDX-License-Identifier: MIT
//
// How much of a link a stream takes, from its format: SMPTE ST 2110-20 (4:2:2, ten bits, no blanking), -30
// (24 bits, 48 kHz) and -40, with everything that surrounds each packet on the wire. Pure; any thread.
#ifndef CORVEL_OPS_STREAMRATE_H
#define CORVEL_OPS_STREAMRATE_H

#include "channel/videoformats.h"

namespace ops {

// Bits per second on the wire.
qint64 videoBitRate(const VideoFormat &format);
qint64 audioBitRate(int channels, int packetMicroseconds);
// Ancillary data comes in bursts; this is what a well filled stream of it takes.
constexpr qint64 kAncBitRate = 2000000;

// Bytes of one packet's samples, and the most that a datagram of 1460 bytes takes.
int audioPacketBytes(int channels, int packetMicroseconds);
constexpr int kMostAudioBytes = 1440;

// The two interlaced formats have their field rate in the table; two fields make a picture.
bool isInterlaced(const VideoFormat &format);

} // namespace ops

#endif
