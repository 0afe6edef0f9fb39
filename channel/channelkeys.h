// SPDX-License-Identifier: MIT
//
// The settings of a channel as rows: which value name in the configuration store holds which field of
// which element and side, and how it is stored. Loading, saving, locks and files all walk these rows.
//
// A channel carries three elements (video, audio in up to eight flows, ancillary data), each with a
// receive and a send side (SMPTE ST 2110-20, -30, -40).
#ifndef CORVEL_CHANNELKEYS_H
#define CORVEL_CHANNELKEYS_H

#include <QByteArray>

#include <cstddef>

enum class Element { Video, Audio, Anc };
enum class Side { Receive, Send };
enum class Field {
    SourceAddress,
    SourcePort,
    DestinationAddress,
    DestinationPort,
    Interface,
    Flags,
    Channels,
    TotalChannels,
    PacketTime
};

// Audio flows are numbered 0 to 7; their number is the suffix of a per-flow value name.
constexpr int kFlowCount = 8;

// How a value is kept in the store: a text, or an unsigned 32-bit number.
enum class Stored { Text, Number };

struct ChannelKey {
    Element element;
    Side side;
    Field field;
    const char *name;
    Stored stored;
    bool perFlow;
};

// A range over a constant table, for range-based loops.
template<class T>
struct TableView {
    const T *first;
    std::size_t count;
    const T *begin() const { return first; }
    const T *end() const { return first + count; }
    std::size_t size() const { return count; }
};

// All rows, in no order of meaning.
TableView<ChannelKey> channelKeys();

// The row of one field. Channels, TotalChannels and PacketTime exist for audio only; asking for one of
// them of another element gives the null pointer.
const ChannelKey *findChannelKey(Element element, Side side, Field field);

// The value name of a row; flowSuffix ("0" to "7", or empty) is appended to per-flow names only.
QByteArray valueName(const ChannelKey &key, const QByteArray &flowSuffix);

// One field of one side, as a step in an order of fields.
struct FieldStep {
    Side side;
    Field field;
};

// The orders in which a load reads and a save writes the fields of an element.
TableView<FieldStep> loadOrder(Element element);
TableView<FieldStep> saveOrder(Element element);

// Bits of every value whose name ends in "Flags": the network fields of that side that are in use.
struct FlagBit {
    Field field;
    quint32 bit;
};
TableView<FlagBit> flagBits();

// The bit of one of the five network fields, 0 for any other field.
quint32 flagBit(Field field);

// Element codes that address one element and side of a channel in media commands.
quint32 elementCode(Element element, Side side);

// Values that exist once per channel.
namespace ChannelValue {
constexpr char VideoType[] = "VideoType";                 // number: channel type
constexpr char SignalFormat[] = "SignalFormat";           // number: see videoformats.h
constexpr char ClockType[] = "ClockType";                 // number: ClockSource
constexpr char ClockDomain[] = "ClockDomain";             // number: PTP domain
constexpr char ClockGrandMaster[] = "ClockGrandMaster";   // text: grandmaster identity or MAC address
constexpr char AudioFlowType[] = "AudioFlowType";         // number: 0 single flow, 1 flows
constexpr char IpUseFileSettings[] = "IpUseFileSettings"; // number: 0 or 1
} // namespace ChannelValue

// "VideoType". Types 1 and 8 carry several elements.
namespace ChannelType {
constexpr quint32 Smpte2110 = 1;
constexpr quint32 ClockDomainOwner = 8; // the one type whose "ClockDomain" also has an edit of its own
} // namespace ChannelType

// "ClockType", the item data of the clock source combo.
namespace ClockSource {
constexpr quint32 Internal = 0;
constexpr quint32 SoftwarePtp = 0x10000;
constexpr quint32 HardwarePtp = 0x20000;
constexpr quint32 FreeRun = 0x800000;
} // namespace ClockSource

#endif
