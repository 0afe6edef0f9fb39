// SPDX-License-Identifier: MIT
//
// The settings of a channel as rows: which value name in the configuration store holds which field of
// which element and side, and how it is stored. Loading, saving, locks and files all walk these rows.
//
// A channel carries three elements (video, audio in up to eight flows, ancillary data), each with a
// receive and a send side (SMPTE ST 2110-20, -30, -40).
#ifndef CORVEL_CHANNELKEYS_H
#define CORVEL_CHANNELKEYS_H

#include "channel/valuenames.h"

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

// How many there are of each of the three above.
constexpr int kElementCount = static_cast<int>(Element::Anc) + 1;
constexpr int kSideCount = static_cast<int>(Side::Send) + 1;
constexpr int kFieldCount = static_cast<int>(Field::PacketTime) + 1;

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
    constexpr const T *begin() const { return first; }
    constexpr const T *end() const { return first + count; }
    constexpr std::size_t size() const { return count; }
};

// All rows, in no order of meaning.
TableView<ChannelKey> channelKeys();

// The row of a field that the element has: the five network fields and the flags of every element, all of
// audio. Any other question is a mistake of the caller and ends the program.
const ChannelKey &channelKey(Element element, Side side, Field field);

// The row, or the null pointer when the element has no such field. Channels, TotalChannels and PacketTime
// exist for audio only.
const ChannelKey *findChannelKey(Element element, Side side, Field field);

// The value name of a row; flowSuffix ("0" to "7", or empty) is appended to per-flow names only.
QByteArray valueName(const ChannelKey &key, const QByteArray &flowSuffix);

// The same for a flow's number. The names of flows 0 to 7 are made once for the whole process.
QByteArray flowValueName(const ChannelKey &key, int flow);

// One field of one side, as a step in an order of fields.
struct FieldStep {
    Side side;
    Field field;
};

// The orders, each named for the walk it is for. Every step has a row; the compiler checks it.
TableView<FieldStep> loadOrder(Element element); // a load reads the fields of an element
TableView<FieldStep> saveOrder(Element element); // a save writes them
TableView<FieldStep> networkFieldOrder();        // the ten network fields as they stand on the page
TableView<FieldStep> lockAllOrder();             // "lock all" sets the ten locks
TableView<FieldStep> lockedCopyOrder();          // locked fields are copied to all elements; no interfaces
TableView<FieldStep> lockedInterfaceOrder();     // what the engine gets after these
TableView<Element> elementOrder();               // video, audio, ancillary data
TableView<Side> sideOrder();                     // receive, send

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

#endif
