// SPDX-License-Identifier: MIT
#include "ops/legs.h"

#include "ops/assignment.h"
#include "ops/valuewords.h"

namespace ops {

namespace {

QByteArray nameOf(const Place &place, Side side, Field field)
{
    const ChannelKey *key = findChannelKey(*place.element, side, field);
    const bool numbered = place.flow >= 0 && place.flow < kFlowCount;
    return valueName(*key, numbered ? QByteArray::number(place.flow) : QByteArray());
}

QByteArray withPort(const QByteArray &address, quint32 port)
{
    return port == 0 ? address : address + ':' + QByteArray::number(port);
}

} // namespace

bool Leg::isEmpty() const
{
    return source.isEmpty() && sourcePort == 0 && destination.isEmpty() && destinationPort == 0 &&
           interface.isEmpty() && flags == 0;
}

Leg legOf(const Snapshot &snapshot, const Place &place, Side side)
{
    const QByteArray path = channelPath(place.channel);
    Leg leg;
    leg.source = snapshot.text(path, nameOf(place, side, Field::SourceAddress));
    leg.sourcePort = snapshot.number(path, nameOf(place, side, Field::SourcePort));
    leg.destination = snapshot.text(path, nameOf(place, side, Field::DestinationAddress));
    leg.destinationPort = snapshot.number(path, nameOf(place, side, Field::DestinationPort));
    leg.interface = snapshot.text(path, nameOf(place, side, Field::Interface));
    leg.flags = snapshot.number(path, nameOf(place, side, Field::Flags));
    return leg;
}

QByteArray legText(const Leg &leg)
{
    if (leg.isEmpty())
        return "-";
    QByteArray text = withPort(leg.destination, leg.destinationPort);
    if (!leg.source.isEmpty() || leg.sourcePort != 0)
        text += " from " + withPort(leg.source, leg.sourcePort);
    if (!leg.interface.isEmpty())
        text += " on " + leg.interface;
    text += text.isEmpty() ? "use " : ", use ";
    return (text + inWords(Kind::Use, Value::ofNumber(leg.flags))).trimmed();
}

std::vector<Place> elementsOf(const Snapshot &snapshot, int channel)
{
    std::vector<Place> places{{channel, Element::Video, kNoFlow, {}}};
    const int flows = flowCount(snapshot, channel);
    for (int flow = 0; flow < (flows > 0 ? flows : kFlowCount); ++flow)
        places.push_back({channel, Element::Audio, flow, {}});
    places.push_back({channel, Element::Anc, kNoFlow, {}});
    return places;
}

} // namespace ops
