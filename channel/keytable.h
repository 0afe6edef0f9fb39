// SPDX-License-Identifier: MIT
//
// The table behind channelkeys.h, for the two sources that check it while they are compiled. A row is
// found by its place in an index that the compiler makes; a second row of the same field, or a field
// beyond kFieldCount, does not compile.
#ifndef CORVEL_KEYTABLE_H
#define CORVEL_KEYTABLE_H

#include "channel/channelkeys.h"

#include <iterator>

namespace KeyTable {

// clang-format off
constexpr ChannelKey kKeys[] = {
    // element,      side,          field,                     value name,                   stored,         per flow
    {Element::Video, Side::Receive, Field::SourceAddress,      "ReceiveSourceIp",           Stored::Text,   false},
    {Element::Video, Side::Receive, Field::SourcePort,         "ReceiveSourcePort",         Stored::Number, false},
    {Element::Video, Side::Receive, Field::DestinationAddress, "ReceiveDestinationIp",      Stored::Text,   false},
    {Element::Video, Side::Receive, Field::DestinationPort,    "ReceiveDestinationPort",    Stored::Number, false},
    {Element::Video, Side::Receive, Field::Interface,          "ReceiveInterface",          Stored::Text,   false},
    {Element::Video, Side::Receive, Field::Flags,              "ReceiveFlags",              Stored::Number, false},
    {Element::Video, Side::Send,    Field::SourceAddress,      "TransmitIp",                Stored::Text,   false},
    {Element::Video, Side::Send,    Field::SourcePort,         "TransmitSourcePort",        Stored::Number, false},
    {Element::Video, Side::Send,    Field::DestinationAddress, "TransmitDestinationIp",     Stored::Text,   false},
    {Element::Video, Side::Send,    Field::DestinationPort,    "TransmitRemotePort",        Stored::Number, false},
    {Element::Video, Side::Send,    Field::Interface,          "TransmitInterface",         Stored::Text,   false},
    {Element::Video, Side::Send,    Field::Flags,              "TransmitFlags",             Stored::Number, false},
    {Element::Audio, Side::Receive, Field::SourceAddress,      "ReceiveAudSourceIp",        Stored::Text,   true},
    {Element::Audio, Side::Receive, Field::SourcePort,         "ReceiveAudSourcePort",      Stored::Number, true},
    {Element::Audio, Side::Receive, Field::DestinationAddress, "ReceiveAudDestinationIp",   Stored::Text,   true},
    {Element::Audio, Side::Receive, Field::DestinationPort,    "ReceiveAudDestinationPort", Stored::Number, true},
    {Element::Audio, Side::Receive, Field::Interface,          "ReceiveAudInterface",       Stored::Text,   false},
    {Element::Audio, Side::Receive, Field::Flags,              "ReceiveAudFlags",           Stored::Number, true},
    {Element::Audio, Side::Receive, Field::Channels,           "ReceiveAudChannels",        Stored::Number, false},
    {Element::Audio, Side::Receive, Field::TotalChannels,      "ReceiveAudTotalChannels",   Stored::Number, false},
    {Element::Audio, Side::Receive, Field::PacketTime,         "ReceiveAudPacketLength",    Stored::Number, false},
    {Element::Audio, Side::Send,    Field::SourceAddress,      "TransmitAudIp",             Stored::Text,   true},
    {Element::Audio, Side::Send,    Field::SourcePort,         "TransmitAudSourcePort",     Stored::Number, true},
    {Element::Audio, Side::Send,    Field::DestinationAddress, "TransmitAudDestinationIp",  Stored::Text,   true},
    {Element::Audio, Side::Send,    Field::DestinationPort,    "TransmitAudRemotePort",     Stored::Number, true},
    {Element::Audio, Side::Send,    Field::Interface,          "TransmitAudInterface",      Stored::Text,   false},
    {Element::Audio, Side::Send,    Field::Flags,              "TransmitAudFlags",          Stored::Number, true},
    {Element::Audio, Side::Send,    Field::Channels,           "TransmitAudChannels",       Stored::Number, false},
    {Element::Audio, Side::Send,    Field::TotalChannels,      "TransmitAudTotalChannels",  Stored::Number, false},
    {Element::Audio, Side::Send,    Field::PacketTime,         "TransmitAudPacketLength",   Stored::Number, false},
    {Element::Anc,   Side::Receive, Field::SourceAddress,      "ReceiveAncSourceIp",        Stored::Text,   false},
    {Element::Anc,   Side::Receive, Field::SourcePort,         "ReceiveAncSourcePort",      Stored::Number, false},
    {Element::Anc,   Side::Receive, Field::DestinationAddress, "ReceiveAncDestinationIp",   Stored::Text,   false},
    {Element::Anc,   Side::Receive, Field::DestinationPort,    "ReceiveAncDestinationPort", Stored::Number, false},
    {Element::Anc,   Side::Receive, Field::Interface,          "ReceiveAncInterface",       Stored::Text,   false},
    {Element::Anc,   Side::Receive, Field::Flags,              "ReceiveAncFlags",           Stored::Number, false},
    {Element::Anc,   Side::Send,    Field::SourceAddress,      "TransmitAncIp",             Stored::Text,   false},
    {Element::Anc,   Side::Send,    Field::SourcePort,         "TransmitAncSourcePort",     Stored::Number, false},
    {Element::Anc,   Side::Send,    Field::DestinationAddress, "TransmitAncDestinationIp",  Stored::Text,   false},
    {Element::Anc,   Side::Send,    Field::DestinationPort,    "TransmitAncRemotePort",     Stored::Number, false},
    {Element::Anc,   Side::Send,    Field::Interface,          "TransmitAncInterface",      Stored::Text,   false},
    {Element::Anc,   Side::Send,    Field::Flags,              "TransmitAncFlags",          Stored::Number, false},
};
// clang-format on

constexpr int kNoRow = -1;

// The place of a field in the index.
constexpr int placeOf(Element element, Side side, Field field)
{
    return (static_cast<int>(element) * kSideCount + static_cast<int>(side)) * kFieldCount +
           static_cast<int>(field);
}

struct Index {
    int row[kElementCount * kSideCount * kFieldCount];
    bool unique;
};

constexpr Index makeIndex()
{
    Index index{};
    index.unique = true;
    for (int &row : index.row)
        row = kNoRow;
    int number = 0;
    for (const ChannelKey &key : kKeys) {
        int &row = index.row[placeOf(key.element, key.side, key.field)];
        index.unique = index.unique && row == kNoRow && static_cast<int>(key.field) < kFieldCount;
        row = number++;
    }
    return index;
}

constexpr Index kIndex = makeIndex();
static_assert(kIndex.unique, "two rows for one field, or kFieldCount is not behind the last Field");

constexpr int rowOf(Element element, Side side, Field field)
{
    return kIndex.row[placeOf(element, side, field)];
}

constexpr bool hasRow(Element element, const FieldStep &step)
{
    return rowOf(element, step.side, step.field) != kNoRow;
}

} // namespace KeyTable

#endif
