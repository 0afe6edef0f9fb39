// SPDX-License-Identifier: MIT
//
// What ST 2110-30 (with AES67) wants of PCM audio, and ST 2110-40 (with RFC 8331) of ancillary data.
#include "ops/sdprules.h"

#include <cmath>

namespace ops {

namespace {

constexpr int kMostPayload = 1440; // bytes: a UDP datagram of 1460 without its and RTP's header
constexpr double kClose = 0.006;   // ms: "0.12" and "0.33" are written for 0.125 and a third

// clang-format off
const PacketTime kTimes[] = {
    // in SDP   ms         
    {"0.125",   0.125},
    {"0.25",    0.25},
    {"0.333",   1.0 / 3},
    {"1",       1},
    {"4",       4},
};

const struct {
    const char *encoding;
    int bytes; // of a sample
} kEncodings[] = {
    {"L16", 2}, {"L24", 3}, {"AM824", 4},
};

// The widest of the receivers' levels (A, C, AX, CX) at each rate and packet time.
const struct {
    int clockRate;
    double milliseconds;
    int channels;
} kLevels[] = {
    {48000, 1, 8}, {48000, 0.125, 64}, {96000, 1, 4}, {96000, 0.125, 32},
};
// clang-format on

constexpr int kBasicChannels = 8; // what levels A and B take

struct Audio {
    int bytes = 0; // of a sample; 0 for an unknown encoding
    int clockRate = 0;
    int channels = 0;
    double milliseconds = 0; // 0 when missing or senseless
};

double packetTimeOf(const SdpStream &stream)
{
    const SdpLine *line = stream.section->attribute("ptime");
    const auto time = line ? parseRate(line->trimmedValue()) : std::nullopt;
    return time ? time->value() : 0;
}

std::optional<Audio> audioOf(const SdpStream &stream, const SdpFacts &facts)
{
    if (stream.kind != SdpKind::Audio || !stream.map)
        return std::nullopt;
    Audio audio;
    for (const auto &row : kEncodings) {
        if (stream.map->encoding == row.encoding)
            audio.bytes = row.bytes;
    }
    audio.clockRate = stream.map->clockRate;
    audio.channels = facts.channels > 0 ? facts.channels : qMax(1, stream.map->channels);
    audio.milliseconds = packetTimeOf(stream);
    return audio;
}

void encoding(const SdpStream &stream, SdpReport &report)
{
    const auto audio = audioOf(stream, report.facts());
    if (audio && audio->bytes == 0)
        report.add(*stream.text, stream.mapLine->number,
                   stream.map->encoding + " is no encoding of ST 2110 audio",
                   "PCM is L16 or L24, AES3 is AM824");
}

void sampleRate(const SdpStream &stream, SdpReport &report)
{
    const auto audio = audioOf(stream, report.facts());
    if (audio && audio->clockRate != 48000 && audio->clockRate != 96000)
        report.add(*stream.text, stream.mapLine->number,
                   "a sampling rate of " + QByteArray::number(audio->clockRate) + " Hz",
                   "48000 is what every receiver takes, 96000 some");
}

void timeMissing(const SdpStream &stream, SdpReport &report)
{
    if (stream.kind == SdpKind::Audio && !stream.section->attribute("ptime"))
        report.add(*stream.text, stream.line(), "no packet time",
                   "add \"a=ptime:1\" or \"a=ptime:0.125\", as the sender sends");
}

void timeUnit(const SdpStream &stream, SdpReport &report)
{
    const SdpLine *line = stream.kind == SdpKind::Audio ? stream.section->attribute("ptime") : nullptr;
    const PacketTime *meant = line ? packetTimeInMicroseconds(line->trimmedValue()) : nullptr;
    if (meant)
        report.add(*stream.text, line->number,
                   "ptime " + line->trimmedValue() + " means " + line->trimmedValue() +
                       " ms; ST 2110-30 wants " + meant->text,
                   QByteArray("write \"a=ptime:") + meant->text + "\"");
}

const PacketTime *knownTime(double milliseconds)
{
    for (const PacketTime &row : kTimes) {
        if (std::abs(row.milliseconds - milliseconds) < kClose)
            return &row;
    }
    return nullptr;
}

void timeValue(const SdpStream &stream, SdpReport &report)
{
    const SdpLine *line = stream.kind == SdpKind::Audio ? stream.section->attribute("ptime") : nullptr;
    if (line && !packetTimeInMicroseconds(line->trimmedValue()) && !knownTime(packetTimeOf(stream)))
        report.add(*stream.text, line->number,
                   "a packet time of \"" + line->trimmedValue() + "\" ms is none of AES67's",
                   "receivers take 1 and 0.125, some also 0.25, 0.333 and 4");
}

void packetSize(const SdpStream &stream, SdpReport &report)
{
    const auto audio = audioOf(stream, report.facts());
    if (!audio || !knownTime(audio->milliseconds))
        return;
    const double samples = std::round(audio->clockRate * knownTime(audio->milliseconds)->milliseconds / 1000);
    const int bytes = static_cast<int>(samples) * audio->bytes * audio->channels;
    if (bytes > kMostPayload)
        report.add(*stream.text, stream.mapLine->number,
                   QByteArray::number(audio->channels) + " channels make packets of " +
                       QByteArray::number(bytes) + " bytes; 1440 fit into a datagram of 1460",
                   "fewer channels in a flow, or a shorter packet time");
}

void level(const SdpStream &stream, SdpReport &report)
{
    const auto audio = audioOf(stream, report.facts());
    for (const auto &row : kLevels) {
        if (audio && audio->clockRate == row.clockRate &&
            std::abs(audio->milliseconds - row.milliseconds) < kClose && audio->channels > row.channels)
            report.add(*stream.text, stream.mapLine->number,
                       QByteArray::number(audio->channels) +
                           " channels; no level of receivers takes more than " +
                           QByteArray::number(row.channels) + " at this packet time",
                       "split the channels over flows");
    }
}

void levelC(const SdpStream &stream, SdpReport &report)
{
    const auto audio = audioOf(stream, report.facts());
    if (audio && audio->channels > kBasicChannels && std::abs(audio->milliseconds - 0.125) < kClose)
        report.add(*stream.text, stream.mapLine->number,
                   QByteArray::number(audio->channels) + " channels: receivers of level C only",
                   "8 channels in a flow are what every receiver of 0.125 ms takes");
}

void channelsDiffer(const SdpStream &stream, SdpReport &report)
{
    const int known = report.facts().channels;
    if (known > 0 && stream.kind == SdpKind::Audio && stream.map && qMax(1, stream.map->channels) != known)
        report.add(*stream.text, stream.mapLine->number,
                   "the text says " + QByteArray::number(qMax(1, stream.map->channels)) +
                       " channels, the flow has " + QByteArray::number(known),
                   "write the number of channels in the rtpmap");
}

void ancWord(const SdpStream &stream, SdpReport &report)
{
    if (stream.kind == SdpKind::Anc && stream.media && stream.media->word != "video")
        report.add(*stream.text, stream.line(), "ancillary data announced as m=" + stream.media->word,
                   "write m=video: that is where smpte291 is registered");
}

void ancParameters(const SdpStream &stream, SdpReport &report)
{
    QByteArray missing;
    for (const char *name : {"SSN", "exactframerate"}) {
        if (stream.kind == SdpKind::Anc && !stream.fmtp.find(name))
            missing += QByteArray(missing.isEmpty() ? "" : " and ") + name;
    }
    if (!missing.isEmpty())
        report.add(*stream.text, stream.line(), "the ancillary data's format parameters lack " + missing,
                   "receivers of the first edition of ST 2110-40 do without; later ones may refuse");
}

// clang-format off
const SdpRule kRules[] = {
    // name               severity           clause               text     stream
    {"audio-encoding",    Severity::Error,   "ST 2110-30",        nullptr, encoding},
    {"audio-rate",        Severity::Error,   "ST 2110-30 6.1",    nullptr, sampleRate},
    {"ptime-missing",     Severity::Error,   "ST 2110-30 6.2.1",  nullptr, timeMissing},
    {"ptime-unit",        Severity::Error,   "RFC 4566 6",        nullptr, timeUnit},
    {"ptime-value",       Severity::Warning, "ST 2110-30 6.2.1",  nullptr, timeValue},
    {"audio-packet-size", Severity::Error,   "ST 2110-10",        nullptr, packetSize},
    {"audio-level",       Severity::Warning, "ST 2110-30",        nullptr, level},
    {"audio-level-c",     Severity::Note,    "ST 2110-30",        nullptr, levelC},
    {"audio-channels",    Severity::Error,   "RFC 4566 6",        nullptr, channelsDiffer},
    {"anc-word",          Severity::Error,   "RFC 8331",          nullptr, ancWord},
    {"anc-parameters",    Severity::Note,    "ST 2110-40:2023 7", nullptr, ancParameters},
};
// clang-format on

} // namespace

TableView<PacketTime> packetTimes()
{
    return {kTimes, sizeof kTimes / sizeof *kTimes};
}

const PacketTime *packetTimeInMicroseconds(const QByteArray &value)
{
    const auto number = parseNumber(value, 100000);
    for (const PacketTime &row : kTimes) {
        if (number && *number >= 100 && std::abs(*number - row.milliseconds * 1000) < 1)
            return &row;
    }
    return nullptr;
}

TableView<SdpRule> sdpAudioRules()
{
    return {kRules, sizeof kRules / sizeof *kRules};
}

} // namespace ops
