// SPDX-License-Identifier: MIT
//
// The form of the text: lines, their order, the session's own fields.
#include "ops/ipv4.h"
#include "ops/sdprules.h"

#include <cstring>

namespace ops {

namespace {

bool isKnownType(char type)
{
    return type && (std::strchr(kSdpSessionOrder, type) || type == 'm');
}

void lineForm(const SdpText &text, SdpReport &report)
{
    for (const SdpLine *line : text.lines()) {
        const QByteArray value = line->value();
        const bool blankName = line->type() == 's' && value == " "; // the standard's own "no name"
        if (!line->type())
            report.add(text, line->number, "no line of the form letter=value",
                       "remove the line; a strict reader refuses the whole description");
        else if ((value.isEmpty() || value[0] == ' ') && !blankName)
            report.add(text, line->number,
                       QByteArray("nothing, or a blank, behind \"") + line->type() + "=\"",
                       "write the value right behind the \"=\", or remove the line");
    }
}

void controlBytes(const SdpText &text, SdpReport &report)
{
    for (const SdpLine *line : text.lines()) {
        if (line->text.contains('\0') || line->text.contains('\r'))
            report.add(text, line->number, "a NUL or a carriage return inside the line", "remove it");
    }
}

void lineEnds(const SdpText &text, SdpReport &report)
{
    if (text.bareLineFeeds || text.openEnd)
        report.add(text, 1, "lines end in a line feed alone, or the last one has no end",
                   "end every line with CR LF; most readers take a line feed as well");
}

void unknownTypes(const SdpText &text, SdpReport &report)
{
    for (const SdpLine *line : text.lines()) {
        if (line->type() && !isKnownType(line->type()))
            report.add(text, line->number,
                       QByteArray("\"") + line->type() + "=\" is no field of a description",
                       "remove the line; every reader passes over it");
    }
}

void version(const SdpText &text, SdpReport &report)
{
    const auto lines = text.lines();
    if (lines.empty() || lines.front()->text != "v=0")
        report.add(text, 1, "the text does not start with \"v=0\"", "make that the first line");
}

// Each type may stand where the order has it, and no later.
void orderOf(const SdpText &text, const SdpSection &section, const char *order, SdpReport &report)
{
    const char *at = order;
    for (const SdpLine &line : section.lines) {
        const char *place = line.type() ? std::strchr(order, line.type()) : nullptr;
        const bool timeAgain = line.type() == 't' && *at == 'r';
        if (place && place < at && !timeAgain)
            report.add(text, line.number,
                       QByteArray("\"") + line.type() + "=\" stands behind \"" + *at +
                           "=\", where it must not",
                       QByteArray("keep to the order ") + order);
        else if (place)
            at = place;
    }
}

void order(const SdpText &text, SdpReport &report)
{
    orderOf(text, text.session, kSdpSessionOrder, report);
    for (const SdpSection &section : text.media)
        orderOf(text, section, kSdpMediaOrder, report);
}

void missingLines(const SdpText &text, SdpReport &report)
{
    for (const char type : {'o', 's', 't'}) {
        if (!text.session.find(type))
            report.add(text, 1, QByteArray("the session has no \"") + type + "=\" line",
                       type == 'o' ? "add \"o=- ID VERSION IN IP4 ADDRESS\" with the sender's address"
                                   : (type == 's' ? "add \"s=-\"" : "add \"t=0 0\""));
    }
}

// Null when the origin is as it must be.
const char *originTrouble(const QList<QByteArray> &parts)
{
    if (parts.size() != 6 || parts.contains(QByteArray()))
        return "the origin has not its six fields";
    bool numbers[2];
    parts[1].toULongLong(&numbers[0]);
    parts[2].toULongLong(&numbers[1]);
    if (!numbers[0] || !numbers[1])
        return "session id and version of the origin are not both numbers";
    if (parts[3] != "IN" || (parts[4] != "IP4" && parts[4] != "IP6"))
        return "the origin is neither IN IP4 nor IN IP6";
    const auto address = parseIpv4(parts[5]);
    return address && isMulticast(*address) ? "the origin is a group, not the sender's own address" : nullptr;
}

void origin(const SdpText &text, SdpReport &report)
{
    const SdpLine *line = text.session.find('o');
    const char *trouble = line ? originTrouble(line->value().split(' ')) : nullptr;
    if (trouble)
        report.add(text, line->number, trouble,
                   "write \"o=- ID VERSION IN IP4 ADDRESS\" with the sender's address");
}

void noMedia(const SdpText &text, SdpReport &report)
{
    if (text.media.empty())
        report.add(text, 1, "no media line: nothing is described",
                   "was it written with no audio flow, or cut off?");
}

void mediaLine(const SdpStream &stream, SdpReport &report)
{
    if (!stream.media)
        report.add(*stream.text, stream.line(), "the media line cannot be understood",
                   "write \"m=WORD PORT RTP/AVP PAYLOAD\" with a port from 0 to 65535 and single blanks");
}

// clang-format off
const SdpRule kRules[] = {
    // name             severity           clause           text          stream
    {"line-form",       Severity::Error,   "RFC 4566 5",    lineForm,     nullptr},
    {"control-bytes",   Severity::Error,   "RFC 4566 5",    controlBytes, nullptr},
    {"line-ends",       Severity::Note,    "RFC 4566 5",    lineEnds,     nullptr},
    {"unknown-type",    Severity::Warning, "RFC 4566 5",    unknownTypes, nullptr},
    {"version",         Severity::Error,   "RFC 4566 5.1",  version,      nullptr},
    {"line-order",      Severity::Error,   "RFC 4566 5",    order,        nullptr},
    {"missing-line",    Severity::Error,   "RFC 4566 5",    missingLines, nullptr},
    {"origin",          Severity::Error,   "RFC 4566 5.2",  origin,       nullptr},
    {"no-media",        Severity::Error,   "",              noMedia,      nullptr},
    {"media-line",      Severity::Error,   "RFC 4566 5.14", nullptr,      mediaLine},
};
// clang-format on

} // namespace

TableView<SdpRule> sdpLineRules()
{
    return {kRules, sizeof kRules / sizeof *kRules};
}

} // namespace ops
