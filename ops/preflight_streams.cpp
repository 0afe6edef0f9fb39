// SPDX-License-Identifier: MIT
//
// Streams against each other, and the addresses and ports of each.
#include "ops/ipv4.h"
#include "ops/preflightrules.h"

#include <QHash>

namespace ops {

namespace {

constexpr char kNeverTyped[] = "1.0.0.0"; // what the dialog shows and stores for a field nobody filled

using FirstStreams = QHash<quint64, const CheckedStream *>;

FirstStreams firstSenders(const PreflightData &data)
{
    FirstStreams senders;
    for (const CheckedStream &stream : data.streams) {
        if (stream.side == Side::Send && stream.runs() && !senders.contains(stream.target()))
            senders.insert(stream.target(), &stream);
    }
    return senders;
}

// Calls found(first, again) for each stream of a side whose group and port an earlier one has.
template<class Found>
void eachTwice(const PreflightData &data, Side side, const Found &found)
{
    FirstStreams first;
    for (const CheckedStream &stream : data.streams) {
        if (stream.side != side || !stream.runs())
            continue;
        const auto before = first.constFind(stream.target());
        if (before == first.constEnd())
            first.insert(stream.target(), &stream);
        else
            found(**before, stream);
    }
}

void sentTwice(const PreflightData &data, PreflightReport &report)
{
    eachTwice(data, Side::Send, [&](const CheckedStream &first, const CheckedStream &again) {
        report.add(again.name("dst"), again.targetText() + " is sent by " + first.name() + " as well",
                   "give one of them another group");
    });
}

void receivedTwice(const PreflightData &data, PreflightReport &report)
{
    eachTwice(data, Side::Receive, [&](const CheckedStream &first, const CheckedStream &again) {
        report.add(again.name("dst"), again.targetText() + " is received by " + first.name() + " as well",
                   "right for a copy; otherwise correct the one that is wrong");
    });
}

// A receiver that listens to what this server sends, of the same element: the channel's own, or another's.
template<class Found>
void eachLoop(const PreflightData &data, const Found &found)
{
    const FirstStreams senders = firstSenders(data);
    for (const CheckedStream &stream : data.streams) {
        const CheckedStream *sender =
            stream.side == Side::Receive && stream.runs() ? senders.value(stream.target()) : nullptr;
        if (sender)
            found(*sender, stream);
    }
}

void crossedElements(const PreflightData &data, PreflightReport &report)
{
    eachLoop(data, [&](const CheckedStream &sender, const CheckedStream &receiver) {
        if (*sender.place.element != *receiver.place.element)
            report.add(receiver.name("dst"),
                       receiver.targetText() + " is what " + sender.name() + " sends: another kind of stream",
                       "exchange the groups, or the ports");
    });
}

void ownSender(const PreflightData &data, PreflightReport &report)
{
    eachLoop(data, [&](const CheckedStream &sender, const CheckedStream &receiver) {
        const bool same = *sender.place.element == *receiver.place.element;
        if (same && sender.place.channel == receiver.place.channel)
            report.add(receiver.name("dst"), "the channel receives what it sends, " + receiver.targetText(),
                       "correct the receiver, or the sender: they are crossed");
    });
}

void otherSender(const PreflightData &data, PreflightReport &report)
{
    eachLoop(data, [&](const CheckedStream &sender, const CheckedStream &receiver) {
        const bool same = *sender.place.element == *receiver.place.element;
        if (same && sender.place.channel != receiver.place.channel)
            report.add(receiver.name("dst"),
                       receiver.targetText() + " comes from " + sender.name() + " of this server",
                       "right for a loop through the network");
    });
}

// Two groups that differ in what Ethernet does not carry. Each pair is told once, at its second group.
void sharedEthernet(const PreflightData &data, PreflightReport &report)
{
    QHash<quint32, const CheckedStream *> first;
    for (const CheckedStream &stream : data.streams) {
        if (!stream.runs() || !isMulticast(*stream.destination))
            continue;
        const quint32 bits = ethernetBits(*stream.destination);
        const CheckedStream *before = first.value(bits);
        if (!before)
            first.insert(bits, &stream);
        else if (*before->destination != *stream.destination)
            report.add(stream.name("dst"),
                       stream.leg.destination + " and " + before->leg.destination + " of " + before->name() +
                           " share one Ethernet address",
                       "a switch cannot tell them apart; change one of the last three numbers");
    }
}

void noDestination(const CheckedStream &stream, const PreflightData &, PreflightReport &report)
{
    if (stream.uses(Field::DestinationAddress) && (!stream.destination || *stream.destination == 0))
        report.add(stream.name("dst"), "the destination is in use and is \"" + stream.leg.destination + "\"",
                   "fill in the group, or take \"dst\" out of use");
}

bool isGroup(const CheckedStream &stream)
{
    return stream.uses(Field::DestinationAddress) && stream.destination && isMulticast(*stream.destination);
}

void noGroup(const CheckedStream &stream, const PreflightData &, PreflightReport &report)
{
    const bool sends = stream.side == Side::Send && stream.uses(Field::DestinationAddress);
    if (sends && stream.destination && *stream.destination != 0 && !isMulticast(*stream.destination) &&
        stream.leg.destination != kNeverTyped)
        report.add(stream.name("dst"),
                   "sent to the single host " + stream.leg.destination + ", not to a group",
                   "right for one receiver; groups are 224.0.0.0 to 239.255.255.255");
}

void controlGroup(const CheckedStream &stream, const PreflightData &, PreflightReport &report)
{
    if (isGroup(stream) && isControlBlock(*stream.destination))
        report.add(stream.name("dst"),
                   stream.leg.destination + " is in a block for network control: switches flood it",
                   "use a group of your own, 239.0.0.0 to 239.255.255.255");
}

void sourceSpecific(const CheckedStream &stream, const PreflightData &, PreflightReport &report)
{
    const bool source = stream.uses(Field::SourceAddress) && stream.source && isUsableSource(*stream.source);
    if (isGroup(stream) && isSourceSpecific(*stream.destination) && !source)
        report.add(stream.name("dst"), stream.leg.destination + " needs a source address, and none is in use",
                   "set the source and take \"src\" into use, or take another group");
}

void neverTyped(const CheckedStream &stream, const PreflightData &, PreflightReport &report)
{
    const struct {
        Field field;
        const QByteArray &text;
        const char *word;
    } fields[] = {{Field::SourceAddress, stream.leg.source, "src"},
                  {Field::DestinationAddress, stream.leg.destination, "dst"},
                  {Field::Interface, stream.leg.interface, "if"}};
    for (const auto &row : fields) {
        if (stream.uses(row.field) && row.text == kNeverTyped)
            report.add(stream.name(row.word), "1.0.0.0 is in use: the field was never filled in",
                       QByteArray("fill it in, or take \"") + row.word + "\" out of use");
    }
}

template<class Found>
void eachPort(const CheckedStream &stream, const Found &found)
{
    if (stream.uses(Field::SourcePort))
        found("src-port", stream.leg.sourcePort);
    if (stream.uses(Field::DestinationPort))
        found("dst-port", stream.leg.destinationPort);
}

void portZero(const CheckedStream &stream, const PreflightData &, PreflightReport &report)
{
    eachPort(stream, [&](const char *word, quint32 port) {
        if (port == 0)
            report.add(stream.name(word), "port 0 is in use",
                       QByteArray("set it, or take \"") + word + "\" out of use");
    });
}

void portOdd(const CheckedStream &stream, const PreflightData &, PreflightReport &report)
{
    const quint32 port = stream.leg.destinationPort;
    if (stream.uses(Field::DestinationPort) && port % 2 == 1 && port <= 65535)
        report.add(stream.name("dst-port"),
                   "port " + QByteArray::number(port) + " is odd; RTP uses even ones",
                   "odd ports belong to RTCP: some devices take the next lower port instead");
}

void portRange(const CheckedStream &stream, const PreflightData &, PreflightReport &report)
{
    eachPort(stream, [&](const char *word, quint32 port) {
        if (port > 65535)
            report.add(stream.name(word), "port " + QByteArray::number(port) + " does not exist",
                       "ports end at 65535");
    });
}

void filledNotUsed(const CheckedStream &stream, const PreflightData &, PreflightReport &report)
{
    const bool filled =
        stream.destination && isMulticast(*stream.destination) && stream.leg.destinationPort > 0;
    if (filled && !stream.uses(Field::DestinationAddress))
        report.add(stream.name("use"), stream.targetText() + " is filled in and not in use",
                   "take \"dst\" into use, if the stream is meant to run");
}

// clang-format off
const PreflightRule kRules[] = {
    // name                severity           clause          whole            stream
    {"sent-twice",         Severity::Error,   "",             sentTwice,       nullptr},
    {"received-twice",     Severity::Warning, "",             receivedTwice,   nullptr},
    {"crossed-elements",   Severity::Error,   "",             crossedElements, nullptr},
    {"crossed",            Severity::Warning, "",             ownSender,       nullptr},
    {"looped",             Severity::Note,    "",             otherSender,     nullptr},
    {"ethernet-address",   Severity::Warning, "RFC 1112 6.4", sharedEthernet,  nullptr},
    {"no-destination",     Severity::Error,   "",             nullptr,         noDestination},
    {"no-group",           Severity::Warning, "",             nullptr,         noGroup},
    {"control-group",      Severity::Warning, "RFC 5771",     nullptr,         controlGroup},
    {"ssm-source",         Severity::Error,   "RFC 4607",     nullptr,         sourceSpecific},
    {"never-typed",        Severity::Error,   "",             nullptr,         neverTyped},
    {"port-zero",          Severity::Error,   "",             nullptr,         portZero},
    {"port-odd",           Severity::Warning, "RFC 3550 11",  nullptr,         portOdd},
    {"port-range",         Severity::Error,   "",             nullptr,         portRange},
    {"not-in-use",         Severity::Note,    "",             nullptr,         filledNotUsed},
};
// clang-format on

} // namespace

TableView<PreflightRule> preflightStreamRules()
{
    return {kRules, sizeof kRules / sizeof *kRules};
}

} // namespace ops
