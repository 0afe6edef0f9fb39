// SPDX-License-Identifier: MIT
#include "ops/sdpdescribe.h"

#include "channel/videoformats.h"
#include "ops/assignment.h"

namespace ops {

namespace {

quint32 flagsOf(const Snapshot &snapshot, const QByteArray &path, Element element, Side side)
{
    const ChannelKey *key = findChannelKey(element, side, Field::Flags);
    return snapshot.number(path, valueName(*key, "0"));
}

void fillFormat(const VideoFormat *format, SdpInput &input)
{
    if (!format)
        return;
    input.width = QString::fromLatin1(format->width);
    input.height = QString::fromLatin1(format->height);
    input.rate = QString::fromLatin1(format->rate);
}

// The writer only asks whether the first entry, the internal clock, is chosen.
void fillClock(const Snapshot &snapshot, const QByteArray &path, const SdpDescription &wanted,
               SdpInput &input)
{
    input.useGmId = wanted.withClock;
    input.clockIndex = snapshot.number(path, ChannelValue::ClockType) == ClockSource::Internal ? 0 : 1;
    input.gmAddress = QString::fromUtf8(snapshot.text(path, ChannelValue::ClockGrandMaster));
    input.gmDomain = QString::number(snapshot.number(path, ChannelValue::ClockDomain));
}

SdpInput inputOf(const Snapshot &snapshot, const Place &place, const SdpDescription &wanted)
{
    const QByteArray path = channelPath(place.channel);
    const Element element = place.element.value_or(Element::Video);
    const quint32 receive = flagsOf(snapshot, path, element, Side::Receive);
    const quint32 send = flagsOf(snapshot, path, element, Side::Send);
    SdpInput input;
    input.value = [&snapshot, path](const char *name, bool isString) {
        return isString ? QString::fromUtf8(snapshot.text(path, name))
                        : QString::number(snapshot.number(path, name));
    };
    input.recSrc = receive & flagBit(Field::SourceAddress);
    input.recDst = receive & flagBit(Field::DestinationAddress);
    input.sndSrc = send & flagBit(Field::SourceAddress);
    input.sndDst = send & flagBit(Field::DestinationAddress);
    fillFormat(findVideoFormat(snapshot.number(path, ChannelValue::SignalFormat)), input);
    fillClock(snapshot, path, wanted, input);
    input.flows = wanted.flows >= 0 ? wanted.flows : qMax(1, flowCount(snapshot, place.channel));
    input.sessionId = wanted.sessionId;
    return input;
}

} // namespace

SdpPair describeChannel(const Snapshot &snapshot, const Place &place, const SdpDescription &wanted)
{
    const SdpInput input = inputOf(snapshot, place, wanted);
    if (!place.element)
        return {writeFileSdp(input, Side::Receive), writeFileSdp(input, Side::Send)};
    const Element element = *place.element;
    return {writeElementSdp(input, element, Side::Receive), writeElementSdp(input, element, Side::Send)};
}

} // namespace ops
