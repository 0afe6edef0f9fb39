// SPDX-License-Identifier: MIT
//
// Values in words: what a number or text of the store means, as the dialog says it, and back with every
// check that can be made without looking at the machine. Pure; any thread.
#ifndef CORVEL_OPS_VALUEWORDS_H
#define CORVEL_OPS_VALUEWORDS_H

#include "ops/outcome.h"
#include "ops/snapshot.h"

#include <QByteArrayList>

namespace ops {

enum class Kind {
    Address,     // IPv4 in four numbers, or empty
    Interface,   // IPv4 address of an interface, or empty
    GrandMaster, // clock identity or MAC address, or empty
    Text,        // any text
    Port,        // 0 to 65535
    Use,         // which network fields are in use: "src,dst,dst-port"
    Number,      // 0 to 4294967295
    AudioCount,  // channels of a flow, up to 64
    AudioTotal,  // channels of all flows, up to 512
    PacketTime,  // microseconds
    Type,        // channel type
    Format,      // video signal format
    Clock,       // clock source
    Domain,      // PTP domain
    FlowMode,    // "single" or "flows"
    Switch,      // "off" or "on"
    ChannelCount // channels of the server
};

// Whether values of this kind are stored as text.
bool isTextKind(Kind kind);

// The value as a person says it. A number out of range comes out as it is, and so does one where a text
// belongs; a text where a number belongs stands in quotes, or it would look like one.
QByteArray inWords(Kind kind, const Value &value);

// The value that the words stand for. Numbers may be given for every kind that is stored as one, decimal or
// after "0x". A failure says what is allowed, with a near miss where there is one.
Outcome<Value> fromWords(Kind kind, const QByteArray &words);

// The words that this kind has, for completion and for near misses; empty for free values.
QByteArrayList wordsOf(Kind kind);

// "239.1.2.3" to its 32 bits; a failure for anything that is not four numbers from 0 to 255.
Outcome<quint32> addressBits(const QByteArray &address);

} // namespace ops

#endif
