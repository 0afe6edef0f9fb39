// SPDX-License-Identifier: MIT
//
// Streams against the machine: interfaces, routes, packet sizes, links.
#include "ops/ipv4.h"
#include "ops/preflightrules.h"

#include <map>

namespace ops {

namespace {

constexpr int kNeededMtu = 1480; // a datagram of 1460 bytes with its IP header
constexpr quint32 kNeverTyped = 0x01000000;

// The interface that a stream uses, when the machine has it.
const NetInterface *interfaceOf(const CheckedStream &stream, const PreflightData &data)
{
    return stream.uses(Field::Interface) && stream.interface ? data.machine.withAddress(*stream.interface)
                                                             : nullptr;
}

void withoutAddress(const CheckedStream &stream, const PreflightData &, PreflightReport &report)
{
    if (stream.uses(Field::Interface) && (!stream.interface || *stream.interface == 0))
        report.add(stream.name("if"),
                   "an interface is in use, and its address is \"" + stream.leg.interface + "\"",
                   "set the address of the interface, or take \"if\" out of use");
}

void missing(const CheckedStream &stream, const PreflightData &data, PreflightReport &report)
{
    const bool named = stream.uses(Field::Interface) && stream.interface && *stream.interface != 0 &&
                       *stream.interface != kNeverTyped;
    if (named && !data.machine.withAddress(*stream.interface))
        report.add(stream.name("if"), "no interface of this machine has the address " + stream.leg.interface,
                   "correct the address here, or give it to the interface");
}

void down(const CheckedStream &stream, const PreflightData &data, PreflightReport &report)
{
    const NetInterface *interface = interfaceOf(stream, data);
    if (interface && !interface->up)
        report.add(stream.name("if"), interface->name + " is down or has no link",
                   "look at the cable and the switch, or \"ip link set " + interface->name + " up\"");
}

void noMulticast(const CheckedStream &stream, const PreflightData &data, PreflightReport &report)
{
    const NetInterface *interface = interfaceOf(stream, data);
    if (interface && !interface->multicast && stream.runs() && isMulticast(*stream.destination))
        report.add(stream.name("if"), interface->name + " takes no multicast",
                   "\"ip link set " + interface->name + " multicast on\", or another interface");
}

void smallPackets(const CheckedStream &stream, const PreflightData &data, PreflightReport &report)
{
    const NetInterface *interface = interfaceOf(stream, data);
    if (interface && interface->mtu > 0 && interface->mtu < kNeededMtu)
        report.add(stream.name("if"),
                   interface->name + " takes packets of " + QByteArray::number(interface->mtu) +
                       " bytes; 1480 are needed",
                   "\"ip link set " + interface->name + " mtu 1500\"");
}

// With an interface named the kernel asks no route for a group.
void noRoute(const CheckedStream &stream, const PreflightData &data, PreflightReport &report)
{
    const bool named = stream.uses(Field::Interface) && isMulticast(stream.destination.value_or(0));
    if (stream.side == Side::Send && stream.runs() && !named && !data.machine.hasRoute(*stream.destination))
        report.add(stream.name("dst"), "no route leads to " + stream.leg.destination,
                   "take \"if\" into use with the interface's address, or add a route");
}

struct Load {
    qint64 bits = 0;
    int streams = 0;
};

void slowLink(const PreflightData &data, PreflightReport &report)
{
    std::map<std::pair<const NetInterface *, Side>, Load> loads;
    for (const CheckedStream &stream : data.streams) {
        const NetInterface *interface = stream.runs() ? interfaceOf(stream, data) : nullptr;
        if (!interface)
            continue;
        Load &load = loads[{interface, stream.side}];
        load.bits += stream.bitRate;
        ++load.streams;
    }
    for (const auto &[key, load] : loads) {
        const qint64 mbit = load.bits / 1000000;
        if (key.first->speedMbit > 0 && mbit > key.first->speedMbit)
            report.add(key.first->name,
                       QByteArray::number(load.streams) +
                           (key.second == Side::Send ? " streams sent" : " streams received") + " make " +
                           QByteArray::number(mbit) + " Mbit/s; the link has " +
                           QByteArray::number(key.first->speedMbit),
                       "spread the channels over interfaces, or use a faster link");
    }
}

// clang-format off
const PreflightRule kRules[] = {
    // name                  severity         clause        whole     stream
    {"interface-empty",      Severity::Error, "",           nullptr,  withoutAddress},
    {"interface-missing",    Severity::Error, "",           nullptr,  missing},
    {"interface-down",       Severity::Error, "",           nullptr,  down},
    {"interface-multicast",  Severity::Error, "",           nullptr,  noMulticast},
    {"mtu",                  Severity::Error, "ST 2110-10", nullptr,  smallPackets},
    {"no-route",             Severity::Error, "",           nullptr,  noRoute},
    {"link-speed",           Severity::Error, "",           slowLink, nullptr},
};
// clang-format on

} // namespace

TableView<PreflightRule> preflightMachineRules()
{
    return {kRules, sizeof kRules / sizeof *kRules};
}

} // namespace ops
