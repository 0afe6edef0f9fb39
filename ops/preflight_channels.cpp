// SPDX-License-Identifier: MIT
//
// What a channel has once: clock, format, audio layout; the NMOS node; and values that nobody can read.
#include "channel/valuenames.h"
#include "ops/assignment.h"
#include "ops/ipv4.h"
#include "ops/preflightrules.h"
#include "ops/sdpfix.h"
#include "ops/sdprules.h"
#include "ops/shellwords.h"
#include "ops/streamrate.h"
#include "ops/vocabulary.h"

namespace ops {

namespace {

bool followsPtp(const CheckedChannel &channel)
{
    return channel.clock == ClockSource::SoftwarePtp || channel.clock == ClockSource::HardwarePtp;
}

void neverSetUp(const PreflightData &data, PreflightReport &report)
{
    for (const CheckedChannel &channel : data.channels) {
        if (channel.empty)
            report.add(QByteArray::number(channel.number), "the channel was never set up",
                       "set it up, or offer fewer channels");
    }
}

void noClient(const PreflightData &data, PreflightReport &report)
{
    for (const CheckedChannel &channel : data.channels) {
        if (channel.clock == ClockSource::SoftwarePtp && !data.machine.noSoftwareClock.isEmpty())
            report.add(channel.name("clock"), "software PTP is set: " + data.machine.noSoftwareClock,
                       "install linuxptp, and corvel's package once more for the capability");
        if (channel.clock == ClockSource::HardwarePtp && !data.machine.hardwareClock)
            report.add(channel.name("clock"), "hardware PTP is set, and this machine has no PTP clock device",
                       "use an interface with one, or software PTP");
    }
}

// The machine has one client, and it follows one domain.
void domains(const PreflightData &data, PreflightReport &report)
{
    const CheckedChannel *first = nullptr;
    for (const CheckedChannel &channel : data.channels) {
        if (!followsPtp(channel))
            continue;
        if (!first)
            first = &channel;
        else if (channel.domain != first->domain)
            report.add(channel.name("domain"),
                       "PTP domain " + QByteArray::number(channel.domain) + ", channel " +
                           QByteArray::number(first->number) + " has " + QByteArray::number(first->domain),
                       "the server follows one domain at a time: set all channels to it");
    }
}

void domainRange(const PreflightData &data, PreflightReport &report)
{
    for (const CheckedChannel &channel : data.channels) {
        if (followsPtp(channel) && channel.domain > kHighestPtpDomain)
            report.add(channel.name("domain"),
                       "PTP domain " + QByteArray::number(channel.domain) + " does not exist",
                       "domains are 0 to 127");
    }
}

void grandMaster(const PreflightData &data, PreflightReport &report)
{
    for (const CheckedChannel &channel : data.channels) {
        const SdpClock clock = parseClock(fixedClock("ptp=" + channel.grandMaster));
        if (followsPtp(channel) && !channel.grandMaster.isEmpty() && !isHexPairs(clock.identity, 8))
            report.add(channel.name("gm"), "\"" + channel.grandMaster + "\" is no identity of a grandmaster",
                       "write eight pairs of digits, or its Ethernet address");
    }
}

void formatUnknown(const PreflightData &data, PreflightReport &report)
{
    for (const CheckedChannel &channel : data.channels) {
        if (channel.runsVideo && !findVideoFormat(channel.format))
            report.add(channel.name("format"), "video runs and its format is not set",
                       "choose the format; session descriptions are written without one");
    }
}

void audioPackets(const PreflightData &data, PreflightReport &report)
{
    for (const CheckedChannel &channel : data.channels) {
        for (int side = 0; side < 2; ++side) {
            const int bytes = audioPacketBytes(channel.audioChannels[side], channel.packetTimes[side]);
            if (channel.runsAudio[side] && bytes > kMostAudioBytes)
                report.add(QByteArray::number(channel.number) +
                               (side ? "/audio tx.ptime" : "/audio rx.ptime"),
                           QByteArray::number(channel.audioChannels[side]) + " channels make packets of " +
                               QByteArray::number(bytes) + " bytes; 1440 fit into a datagram of 1460",
                           "fewer channels in a flow, or 125 us");
        }
    }
}

void nmosAddress(const PreflightData &data, PreflightReport &report)
{
    const auto address = parseIpv4(data.nmosAddress);
    if (data.nmosOverridden)
        return;
    if (data.nmosAddress.isEmpty())
        report.add("server nmos.ip", "the NMOS node has no address, and NMOS is not overridden",
                   "set the node's address, or override NMOS");
    else if (!address || !data.machine.withAddress(*address))
        report.add("server nmos.ip",
                   "the NMOS node's address " + data.nmosAddress + " is not on this machine",
                   "set it to an address of an interface");
}

// "=2" and the like, where what is stored says what was meant.
QByteArray meantBy(const KnownName &known, const Value &value)
{
    const QByteArray text = value.isText ? value.text : QByteArray::number(value.number);
    return !text.isEmpty() && fromWords(known.kind, text) ? '=' + spelled(text, {}) : QByteArray();
}

QByteArray storedAs(const Value &value)
{
    return value.isText ? "the text \"" + value.text + '"' : "the number " + QByteArray::number(value.number);
}

// Everybody who reads a value of the other type gets the answer for one that is absent.
void wrongTypes(const PreflightData &data, PreflightReport &report)
{
    const int channels = channelCount(data.values);
    for (const Row &row : data.values.rows()) {
        const KnownName *known = knownByKey(row.path, row.name);
        if (!known || isTextKind(known->kind) == row.value.isText || channelOfPath(row.path) >= channels)
            continue;
        const QByteArray key = keyInWords(row.path, row.name), meant = meantBy(*known, row.value);
        report.add(key, "stored as " + storedAs(row.value) + ", and read as if nothing were there",
                   meant.isEmpty() ? "set it again, or delete it: corvelctl unset " + key
                                   : "set it again: corvelctl set " + key + meant);
    }
}

// clang-format off
const PreflightRule kRules[] = {
    // name            severity           clause            whole          stream
    {"never-set-up",   Severity::Note,    "",               neverSetUp,    nullptr},
    {"ptp-client",     Severity::Error,   "",               noClient,      nullptr},
    {"ptp-domains",    Severity::Warning, "",               domains,       nullptr},
    {"ptp-domain",     Severity::Error,   "",               domainRange,   nullptr},
    {"ptp-grandmaster", Severity::Error,  "",               grandMaster,   nullptr},
    {"format",         Severity::Error,   "",               formatUnknown, nullptr},
    {"audio-packet",   Severity::Error,   "ST 2110-10",     audioPackets,  nullptr},
    {"nmos-address",   Severity::Warning, "",               nmosAddress,   nullptr},
    {"wrong-type",     Severity::Error,   "",               wrongTypes,    nullptr},
};
// clang-format on

} // namespace

TableView<PreflightRule> preflightChannelRules()
{
    return {kRules, sizeof kRules / sizeof *kRules};
}

} // namespace ops
