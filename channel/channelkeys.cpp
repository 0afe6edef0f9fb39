// SPDX-License-Identifier: MIT
#include "channel/channelkeys.h"

#include <algorithm>
#include <iterator>

namespace {

// clang-format off
const ChannelKey kKeys[] = {
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

// Video and ancillary data are loaded in one order, audio side by side with what its flows share.
const FieldStep kPlainLoadOrder[] = {
    {Side::Receive, Field::SourceAddress},
    {Side::Receive, Field::SourcePort},
    {Side::Receive, Field::DestinationAddress},
    {Side::Receive, Field::DestinationPort},
    {Side::Receive, Field::Interface},
    {Side::Send,    Field::SourceAddress},
    {Side::Send,    Field::SourcePort},
    {Side::Send,    Field::DestinationAddress},
    {Side::Send,    Field::DestinationPort},
    {Side::Send,    Field::Interface},
    {Side::Receive, Field::Flags},
    {Side::Send,    Field::Flags},
};

const FieldStep kAudioLoadOrder[] = {
    {Side::Receive, Field::SourceAddress},
    {Side::Receive, Field::SourcePort},
    {Side::Receive, Field::DestinationAddress},
    {Side::Receive, Field::DestinationPort},
    {Side::Receive, Field::Channels},
    {Side::Receive, Field::Interface},
    {Side::Receive, Field::Flags},
    {Side::Receive, Field::PacketTime},
    {Side::Send,    Field::SourceAddress},
    {Side::Send,    Field::SourcePort},
    {Side::Send,    Field::DestinationAddress},
    {Side::Send,    Field::DestinationPort},
    {Side::Send,    Field::Channels},
    {Side::Send,    Field::Interface},
    {Side::Send,    Field::Flags},
    {Side::Send,    Field::PacketTime},
};

// Video and ancillary data are saved in one order, audio in one of its own: what the flows share comes
// before and after each side's addresses.
const FieldStep kPlainOrder[] = {
    {Side::Receive, Field::SourceAddress},
    {Side::Receive, Field::DestinationAddress},
    {Side::Receive, Field::SourcePort},
    {Side::Receive, Field::DestinationPort},
    {Side::Receive, Field::Interface},
    {Side::Receive, Field::Flags},
    {Side::Send,    Field::SourceAddress},
    {Side::Send,    Field::DestinationAddress},
    {Side::Send,    Field::SourcePort},
    {Side::Send,    Field::DestinationPort},
    {Side::Send,    Field::Interface},
    {Side::Send,    Field::Flags},
};

const FieldStep kAudioOrder[] = {
    {Side::Receive, Field::PacketTime},
    {Side::Receive, Field::Flags},
    {Side::Receive, Field::Interface},
    {Side::Send,    Field::Interface},
    {Side::Send,    Field::Flags},
    {Side::Send,    Field::PacketTime},
    {Side::Receive, Field::SourceAddress},
    {Side::Receive, Field::DestinationAddress},
    {Side::Receive, Field::SourcePort},
    {Side::Receive, Field::DestinationPort},
    {Side::Receive, Field::Channels},
    {Side::Send,    Field::SourceAddress},
    {Side::Send,    Field::DestinationAddress},
    {Side::Send,    Field::SourcePort},
    {Side::Send,    Field::DestinationPort},
    {Side::Send,    Field::Channels},
};

const FlagBit kFlagBits[] = {
    {Field::SourcePort,         1},
    {Field::DestinationPort,    2},
    {Field::SourceAddress,      4},
    {Field::DestinationAddress, 8},
    {Field::Interface,          16},
};
// clang-format on

template<class T, std::size_t N>
TableView<T> view(const T (&table)[N])
{
    return {table, N};
}

} // namespace

TableView<ChannelKey> channelKeys()
{
    return view(kKeys);
}

const ChannelKey *findChannelKey(Element element, Side side, Field field)
{
    const auto match = [=](const ChannelKey &key) {
        return key.element == element && key.side == side && key.field == field;
    };
    const auto found = std::find_if(std::begin(kKeys), std::end(kKeys), match);
    return found == std::end(kKeys) ? nullptr : found;
}

QByteArray valueName(const ChannelKey &key, const QByteArray &flowSuffix)
{
    const QByteArray name = QByteArray::fromRawData(key.name, static_cast<int>(qstrlen(key.name)));
    return key.perFlow ? name + flowSuffix : name;
}

TableView<FieldStep> loadOrder(Element element)
{
    return element == Element::Audio ? view(kAudioLoadOrder) : view(kPlainLoadOrder);
}

TableView<FieldStep> saveOrder(Element element)
{
    return element == Element::Audio ? view(kAudioOrder) : view(kPlainOrder);
}

TableView<FlagBit> flagBits()
{
    return view(kFlagBits);
}

quint32 flagBit(Field field)
{
    for (const FlagBit &row : kFlagBits) {
        if (row.field == field)
            return row.bit;
    }
    return 0;
}

quint32 elementCode(Element element, Side side)
{
    const quint32 receive = 0x1000u << static_cast<int>(element); // 0x1000, 0x2000, 0x4000
    return side == Side::Receive ? receive : receive << 4;        // 0x10000, 0x20000, 0x40000
}
