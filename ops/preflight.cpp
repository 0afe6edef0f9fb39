// SPDX-License-Identifier: MIT
#include "ops/preflight.h"

#include "ops/assignment.h"
#include "ops/ipv4.h"
#include "ops/preflightrules.h"
#include "ops/streamrate.h"
#include "ops/vocabulary.h"

namespace ops {

namespace {

using Table = TableView<PreflightRule> (*)();
const Table kTables[] = {preflightStreamRules, preflightMachineRules, preflightChannelRules};

quint32 audioNumber(const Snapshot &snapshot, int channel, int side, Field field)
{
    const ChannelKey *key = findChannelKey(Element::Audio, static_cast<Side>(side), field);
    return snapshot.number(channelPath(channel), key->name);
}

CheckedChannel readChannel(const Snapshot &snapshot, int number)
{
    const QByteArray path = channelPath(number);
    CheckedChannel channel{};
    channel.number = number;
    channel.empty = snapshot.rowsOf(path).empty();
    channel.clock = snapshot.number(path, ChannelValue::ClockType);
    channel.domain = snapshot.number(path, ChannelValue::ClockDomain);
    channel.format = snapshot.number(path, ChannelValue::SignalFormat);
    channel.grandMaster = snapshot.text(path, ChannelValue::ClockGrandMaster);
    for (int side = 0; side < 2; ++side) {
        channel.audioChannels[side] =
            static_cast<int>(audioNumber(snapshot, number, side, Field::Channels) & 0xffff);
        channel.packetTimes[side] =
            static_cast<int>(audioNumber(snapshot, number, side, Field::PacketTime) & 0xffff);
    }
    return channel;
}

qint64 bitRateOf(const CheckedChannel &channel, const CheckedStream &stream)
{
    const int side = static_cast<int>(stream.side);
    const VideoFormat *format = findVideoFormat(channel.format);
    switch (*stream.place.element) {
    case Element::Video:
        return format ? videoBitRate(*format) : 0;
    case Element::Audio:
        return audioBitRate(channel.audioChannels[side], channel.packetTimes[side]);
    case Element::Anc:
        break;
    }
    return kAncBitRate;
}

void addStream(const Snapshot &snapshot, const Place &place, Side side, CheckedChannel &channel,
               PreflightData &data)
{
    CheckedStream stream{place, side, legOf(snapshot, place, side), {}, {}, {}, 0};
    if (stream.leg.isEmpty())
        return;
    stream.source = parseIpv4(stream.leg.source);
    stream.destination = parseIpv4(stream.leg.destination);
    stream.interface = parseIpv4(stream.leg.interface);
    stream.bitRate = bitRateOf(channel, stream);
    channel.runsVideo = channel.runsVideo || (*place.element == Element::Video && stream.runs());
    channel.runsAudio[static_cast<int>(side)] =
        channel.runsAudio[static_cast<int>(side)] || (*place.element == Element::Audio && stream.runs());
    data.streams.push_back(stream);
}

QByteArray serverText(const Snapshot &snapshot, const char *word)
{
    const auto server = parsePlace("server");
    const KnownName *known = knownByWord(*server, word);
    return known ? snapshot.text(pathOf(*server, *known), known->name) : QByteArray();
}

bool serverSwitch(const Snapshot &snapshot, const char *word)
{
    const auto server = parsePlace("server");
    const KnownName *known = knownByWord(*server, word);
    return known && snapshot.number(pathOf(*server, *known), known->name) != 0;
}

void runRule(const PreflightRule &rule, const PreflightData &data, PreflightReport &report)
{
    report.startRule(rule);
    if (rule.whole)
        rule.whole(data, report);
    if (!rule.stream)
        return;
    for (const CheckedStream &stream : data.streams)
        rule.stream(stream, data, report);
}

} // namespace

bool CheckedStream::runs() const
{
    const bool used = uses(Field::DestinationAddress) && uses(Field::DestinationPort);
    return used && destination && *destination != 0 && leg.destinationPort > 0 &&
           leg.destinationPort <= 65535;
}

QByteArray CheckedStream::name() const
{
    return placeText(place) + (side == Side::Receive ? " rx" : " tx");
}

QByteArray CheckedStream::name(const char *word) const
{
    return name() + '.' + word;
}

QByteArray CheckedStream::targetText() const
{
    return leg.destination + ':' + QByteArray::number(leg.destinationPort);
}

QByteArray CheckedChannel::name(const char *word) const
{
    return QByteArray::number(number) + ' ' + word;
}

PreflightData preflightData(const Snapshot &snapshot, const NetPicture &machine, Preflight which)
{
    PreflightData data{
        snapshot, machine, {}, {}, serverText(snapshot, "nmos.ip"), serverSwitch(snapshot, "nmos.override")};
    const int count = channelCount(snapshot);
    for (int number = 0; number < count; ++number) {
        CheckedChannel channel = readChannel(snapshot, number);
        if (channel.empty && which == Preflight::Used)
            continue;
        for (const Place &place : elementsOf(snapshot, number)) {
            addStream(snapshot, place, Side::Receive, channel, data);
            addStream(snapshot, place, Side::Send, channel, data);
        }
        data.channels.push_back(channel);
    }
    return data;
}

Findings runPreflight(const Snapshot &snapshot, const NetPicture &machine, Preflight which)
{
    Findings findings;
    PreflightReport report(findings);
    const PreflightData data = preflightData(snapshot, machine, which);
    for (const Table &table : kTables) {
        for (const PreflightRule &rule : table())
            runRule(rule, data, report);
    }
    return findings;
}

std::vector<const char *> preflightRuleNames()
{
    return ruleNames(kTables);
}

} // namespace ops
