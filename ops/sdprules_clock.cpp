// SPDX-License-Identifier: MIT
//
// Which clock a stream follows: ts-refclk and mediaclk (RFC 7273, narrowed by ST 2110-10).
#include "channel/valuenames.h"
#include "ops/sdprules.h"

#include <cctype>

namespace ops {

namespace {

void clockMissing(const SdpStream &stream, SdpReport &report)
{
    if (stream.section->attribute("ts-refclk"))
        return;
    const bool session = stream.text->session.attribute("ts-refclk");
    report.add(
        *stream.text, stream.line(),
        session ? "the reference clock is given for the session only" : "no reference clock",
        session
            ? "repeat it in every media section"
            : "add \"a=ts-refclk:ptp=IEEE1588-2008:IDENTITY:DOMAIN\" or \"a=ts-refclk:localmac=ADDRESS\"");
}

const char *clockTrouble(const SdpClock &clock)
{
    if (clock.kind == "localmac")
        return isHexPairs(clock.identity, 6) ? nullptr : "the address of localmac is not six pairs of digits";
    if (clock.kind != "ptp")
        return "the reference clock is neither ptp nor localmac";
    if (clock.version == "traceable")
        return "traceable without the version of PTP";
    if (clock.version != "IEEE1588-2008")
        return "the version of PTP is not IEEE1588-2008";
    const bool known = clock.identity == "traceable" || isHexPairs(clock.identity, 8);
    return known ? nullptr : "the grandmaster is not eight pairs of digits";
}

void clockForm(const SdpStream &stream, SdpReport &report)
{
    for (const SdpLine *line : stream.section->attributes("ts-refclk")) {
        if (const char *trouble = clockTrouble(parseClock(line->attributeValue())))
            report.add(*stream.text, line->number, trouble,
                       "write ptp=IEEE1588-2008:AC-DE-48-FF-FE-23-45-67:127, ptp=IEEE1588-2008:traceable or "
                       "localmac=AC-DE-48-23-45-67, with \"-\" between the pairs");
    }
}

void clockDomain(const SdpStream &stream, SdpReport &report)
{
    for (const SdpLine *line : stream.section->attributes("ts-refclk")) {
        const SdpClock clock = parseClock(line->attributeValue());
        const bool named = clock.domain.startsWith("domain-name=");
        if (clock.kind == "ptp" && clock.hasDomain && !named &&
            !parseNumber(clock.domain, static_cast<int>(kHighestPtpDomain)))
            report.add(*stream.text, line->number, "PTP domain \"" + clock.domain + "\" is not 0 to 127",
                       "write the number of the domain, or leave it out with its colon");
    }
}

void clockWithoutDomain(const SdpStream &stream, SdpReport &report)
{
    for (const SdpLine *line : stream.section->attributes("ts-refclk")) {
        const SdpClock clock = parseClock(line->attributeValue());
        if (clock.kind == "ptp" && !clock.hasDomain && isHexPairs(clock.identity, 8))
            report.add(*stream.text, line->number, "a grandmaster without its PTP domain",
                       "add \":DOMAIN\"; receivers otherwise take 0 or 127");
    }
}

void mediaClockMissing(const SdpStream &stream, SdpReport &report)
{
    if (!stream.section->attribute("mediaclk"))
        report.add(*stream.text, stream.line(), "no media clock", "add \"a=mediaclk:direct=0\"");
}

// The offset of "direct=N"; nothing for another form.
std::optional<int> directOffset(const SdpLine &line)
{
    const QByteArray first = line.trimmedValue().split(' ').value(0);
    return first.startsWith("direct=") ? parseNumber(first.mid(7), 2000000000) : std::nullopt;
}

void mediaClockForm(const SdpStream &stream, SdpReport &report)
{
    const SdpLine *line = stream.section->attribute("mediaclk");
    if (line && !directOffset(*line) && line->trimmedValue() != "sender")
        report.add(*stream.text, line->number, "the media clock is neither direct nor sender",
                   "write \"a=mediaclk:direct=0\"");
}

void mediaClockOffset(const SdpStream &stream, SdpReport &report)
{
    const SdpLine *line = stream.section->attribute("mediaclk");
    const SdpLine *clock = stream.section->attribute("ts-refclk");
    if (line && clock && parseClock(clock->attributeValue()).kind == "ptp" &&
        directOffset(*line).value_or(0) != 0)
        report.add(*stream.text, line->number, "the media clock has an offset from PTP",
                   "write \"a=mediaclk:direct=0\"");
}

// clang-format off
const SdpRule kRules[] = {
    // name              severity           clause                text     stream
    {"refclk-missing",   Severity::Error,   "ST 2110-10 8.2",      nullptr, clockMissing},
    {"refclk-form",      Severity::Error,   "ST 2110-10 8.2",      nullptr, clockForm},
    {"refclk-domain",    Severity::Error,   "RFC 7273 4.8",        nullptr, clockDomain},
    {"refclk-no-domain", Severity::Warning, "ST 2110-10:2022 8.2", nullptr, clockWithoutDomain},
    {"mediaclk-missing", Severity::Error,   "ST 2110-10 8.1",      nullptr, mediaClockMissing},
    {"mediaclk-form",    Severity::Warning, "ST 2110-10 8.1",      nullptr, mediaClockForm},
    {"mediaclk-offset",  Severity::Error,   "ST 2110-10 7.4",      nullptr, mediaClockOffset},
};
// clang-format on

} // namespace

bool isHexPairs(const QByteArray &text, int pairs)
{
    const QList<QByteArray> list = text.split('-');
    for (const QByteArray &pair : list) {
        if (pair.size() != 2 || !std::isxdigit(static_cast<unsigned char>(pair[0])) ||
            !std::isxdigit(static_cast<unsigned char>(pair[1])))
            return false;
    }
    return list.size() == pairs;
}

SdpClock parseClock(const QByteArray &value)
{
    SdpClock clock{textBefore(value, '='), {}, textBehind(value, '='), {}, false};
    if (clock.kind != "ptp")
        return clock;
    const QList<QByteArray> parts = clock.identity.split(':');
    clock.version = parts[0];
    clock.identity = parts.value(1);
    clock.hasDomain = parts.size() > 2;
    clock.domain = clock.hasDomain ? parts.mid(2).join(':') : QByteArray();
    return clock;
}

TableView<SdpRule> sdpClockRules()
{
    return {kRules, sizeof kRules / sizeof *kRules};
}

} // namespace ops
