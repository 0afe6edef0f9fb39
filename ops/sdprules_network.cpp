// SPDX-License-Identifier: MIT
//
// Where a stream goes and where it comes from: ports, payload types, addresses, source filters.
#include "ops/ipv4.h"
#include "ops/sdprules.h"

namespace ops {

namespace {

void portZero(const SdpStream &stream, SdpReport &report)
{
    if (stream.media && stream.media->port == 0)
        report.add(*stream.text, stream.line(), "port 0: nothing can be sent there",
                   "give the stream its port; 5004 is the registered one of RTP");
}

void portOdd(const SdpStream &stream, SdpReport &report)
{
    if (stream.media && stream.media->port % 2 == 1)
        report.add(*stream.text, stream.line(),
                   "port " + QByteArray::number(stream.media->port) + " is odd; RTP uses even ones",
                   "odd ports belong to RTCP: some receivers take the next lower port instead");
}

void protocol(const SdpStream &stream, SdpReport &report)
{
    if (stream.media && stream.media->protocol != "RTP/AVP")
        report.add(*stream.text, stream.line(), "the protocol is " + stream.media->protocol, "write RTP/AVP");
}

void payloadType(const SdpStream &stream, SdpReport &report)
{
    if (!stream.media)
        return;
    for (const QByteArray &format : stream.media->formats) {
        const auto payload = parseNumber(format, 127);
        if (!payload || *payload < 96)
            report.add(*stream.text, stream.line(), "payload type " + format + " has a fixed meaning or none",
                       "use one from 96 to 127, in rtpmap and fmtp too");
    }
}

void payloadMap(const SdpStream &stream, SdpReport &report)
{
    const QByteArray remedy =
        "write \"a=rtpmap:PAYLOAD ENCODING/RATE\" for the payload type of the media line";
    if (!stream.mapLine)
        report.add(*stream.text, stream.line(), "no rtpmap: nobody knows what is sent", remedy);
    else if (!stream.map)
        report.add(*stream.text, stream.mapLine->number, "the rtpmap cannot be understood", remedy);
    else if (stream.media && !stream.media->formats.contains(QByteArray::number(stream.map->payload)))
        report.add(*stream.text, stream.mapLine->number,
                   "rtpmap is for payload type " + QByteArray::number(stream.map->payload) +
                       ", the media line has another",
                   remedy);
}

void connection(const SdpStream &stream, SdpReport &report)
{
    const QByteArray remedy = "write \"c=IN IP4 ADDRESS\", behind a group its time to live";
    if (!stream.connectionLine)
        report.add(*stream.text, stream.line(), "no connection line, neither here nor for the session",
                   remedy);
    else if (!stream.connection)
        report.add(*stream.text, stream.connectionLine->number, "the connection line cannot be understood",
                   remedy);
    else if (!stream.connection->ipv4 && stream.connectionLine->value().startsWith("IN IP4 "))
        report.add(*stream.text, stream.connectionLine->number,
                   "\"" + stream.connection->address + "\" is no IPv4 address", remedy);
}

void timeToLive(const SdpStream &stream, SdpReport &report)
{
    if (!stream.connection || !stream.connection->isGroup())
        return;
    const QByteArray suffix = stream.connection->suffix;
    const QByteArray remedy = "write \"c=IN IP4 " + stream.connection->address + "/64\"";
    if (suffix.isEmpty())
        report.add(*stream.text, stream.connectionLine->number, "a group without a time to live", remedy);
    else if (!parseNumber(textBefore(suffix, '/'), 255))
        report.add(*stream.text, stream.connectionLine->number,
                   "time to live \"" + suffix + "\" is not 0 to 255", remedy);
}

void unicastSuffix(const SdpStream &stream, SdpReport &report)
{
    const bool single = stream.connection && stream.connection->ipv4 && !stream.connection->isGroup();
    if (single && !stream.connection->suffix.isEmpty())
        report.add(*stream.text, stream.connectionLine->number,
                   "a time to live behind the address of one host",
                   "only groups have one; remove \"/" + stream.connection->suffix + "\"");
}

void severalGroups(const SdpStream &stream, SdpReport &report)
{
    if (stream.connection && stream.connection->isGroup() && stream.connection->suffix.contains('/'))
        report.add(*stream.text, stream.connectionLine->number, "a count of groups behind the time to live",
                   "a stream has one group; receivers join the first, or none");
}

void controlGroup(const SdpStream &stream, SdpReport &report)
{
    if (stream.connection && stream.connection->isGroup() && isControlBlock(*stream.connection->ipv4))
        report.add(*stream.text, stream.connectionLine->number,
                   stream.connection->address + " is in a block for network control: switches flood it",
                   "use a group of your own, 239.0.0.0 to 239.255.255.255");
}

void sourceSpecific(const SdpStream &stream, SdpReport &report)
{
    if (stream.connection && stream.connection->isGroup() && isSourceSpecific(*stream.connection->ipv4) &&
        stream.source().isEmpty())
        report.add(*stream.text, stream.connectionLine->number,
                   stream.connection->address + " needs a source to be joined, and none is given",
                   "add \"a=source-filter: incl IN IP4 GROUP SOURCE\"");
}

const char *filterTrouble(const SdpLine &line, const std::optional<SdpFilter> &filter)
{
    if (!line.attributeValue().startsWith(' '))
        return "no blank behind \"source-filter:\"";
    if (!filter || (filter->mode != "incl" && filter->mode != "excl") || filter->network != "IN")
        return "the filter is not of the form incl IN IP4 DESTINATION SOURCE";
    return filter->sources.isEmpty() ? "the filter names no source" : nullptr;
}

void filterFormIn(const SdpText &text, const SdpSection &section, SdpReport &report)
{
    for (const SdpLine *line : section.attributes("source-filter")) {
        if (const char *trouble = filterTrouble(*line, parseFilter(*line)))
            report.add(text, line->number, trouble,
                       "write \"a=source-filter: incl IN IP4 DESTINATION SOURCE\"");
    }
}

void filterForm(const SdpText &text, SdpReport &report)
{
    filterFormIn(text, text.session, report);
    for (const SdpSection &section : text.media)
        filterFormIn(text, section, report);
}

// A session's filter is for whichever of the session's groups it names.
void filterDestination(const SdpStream &stream, SdpReport &report)
{
    for (const SdpFilter &filter : stream.filters) {
        const bool own = filter.line->number >= stream.line();
        if (own && stream.connection && filter.destination != "*" &&
            filter.destination != stream.connection->address)
            report.add(
                *stream.text, filter.line->number,
                "the filter is for " + filter.destination + ", the stream goes to " +
                    stream.connection->address,
                "name the connection address in the filter; as it stands the filter holds for nothing");
    }
}

void filterSource(const SdpStream &stream, SdpReport &report)
{
    for (const SdpFilter &filter : stream.filters) {
        for (const QByteArray &source : filter.sources) {
            const auto address = parseIpv4(source);
            if (filter.family == "IP4" && (!address || !isUsableSource(*address)))
                report.add(*stream.text, filter.line->number, source + " is no address a sender can have",
                           "name the sender's own address");
        }
    }
}

// clang-format off
const SdpRule kRules[] = {
    // name                severity           clause           text        stream
    {"port-zero",          Severity::Error,   "",              nullptr,    portZero},
    {"port-odd",           Severity::Warning, "RFC 3550 11",   nullptr,    portOdd},
    {"protocol",           Severity::Error,   "ST 2110-10 6.2", nullptr,   protocol},
    {"payload-type",       Severity::Error,   "RFC 3551 6",    nullptr,    payloadType},
    {"rtpmap",             Severity::Error,   "RFC 4566 6",    nullptr,    payloadMap},
    {"connection",         Severity::Error,   "RFC 4566 5.7",  nullptr,    connection},
    {"ttl",                Severity::Error,   "RFC 4566 5.7",  nullptr,    timeToLive},
    {"ttl-unicast",        Severity::Warning, "RFC 4566 9",    nullptr,    unicastSuffix},
    {"several-groups",     Severity::Warning, "RFC 4566 5.7",  nullptr,    severalGroups},
    {"control-group",      Severity::Warning, "RFC 5771",      nullptr,    controlGroup},
    {"ssm-source",         Severity::Error,   "RFC 4607",      nullptr,    sourceSpecific},
    {"filter-form",        Severity::Error,   "RFC 4570 3",    filterForm, nullptr},
    {"filter-destination", Severity::Error,   "RFC 4570 3",    nullptr,    filterDestination},
    {"filter-source",      Severity::Error,   "RFC 4570 3",    nullptr,    filterSource},
};
// clang-format on

} // namespace

TableView<SdpRule> sdpNetworkRules()
{
    return {kRules, sizeof kRules / sizeof *kRules};
}

} // namespace ops
