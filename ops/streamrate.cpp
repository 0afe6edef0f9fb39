// SPDX-License-Identifier: MIT
#include "ops/streamrate.h"

#include "ops/sdpstream.h"

namespace ops {

namespace {

constexpr int kSampleBytes = 3;
constexpr int kSampleRate = 48000;
constexpr double kPictureBytes = 2.5; // of a pixel
constexpr int kPayload = 1400;        // of a video packet, about what senders fill
// Ethernet with its gap and preamble 38, IP 20, UDP 8, RTP 12 bytes; video has eight more for its lines.
constexpr int kAround = 78;
constexpr int kAroundVideo = kAround + 8;

} // namespace

bool isInterlaced(const VideoFormat &format)
{
    return format.id >> 28 == 1;
}

qint64 videoBitRate(const VideoFormat &format)
{
    const auto rate = parseRate(format.rate);
    const double pictures = rate ? rate->value() / (isInterlaced(format) ? 2 : 1) : 0;
    const double bytes = QByteArray(format.width).toInt() * QByteArray(format.height).toInt() * kPictureBytes;
    return static_cast<qint64>(bytes * pictures * 8 * (kPayload + kAroundVideo) / kPayload);
}

int audioPacketBytes(int channels, int packetMicroseconds)
{
    return (kSampleRate / 1000 * packetMicroseconds + 500) / 1000 * kSampleBytes * channels;
}

qint64 audioBitRate(int channels, int packetMicroseconds)
{
    if (packetMicroseconds <= 0)
        return static_cast<qint64>(channels) * kSampleRate * kSampleBytes * 8;
    const qint64 packet = audioPacketBytes(channels, packetMicroseconds) + kAround;
    return packet * 8 * 1000000 / packetMicroseconds;
}

} // namespace ops
