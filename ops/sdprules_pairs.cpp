// SPDX-License-Identifier: MIT
//
// Streams against each other: the two legs of a protected stream (a=group:DUP, RFC 7104), and one group and
// port in two descriptions.
#include "ops/sdprules.h"

#include <QHash>

namespace ops {

namespace {

using Sections = QHash<QByteArray, const SdpSection *>;
using Legs = std::vector<const SdpSection *>;

Sections sectionsByName(const SdpText &text)
{
    Sections sections;
    for (const SdpSection &section : text.media) {
        const SdpLine *name = section.attribute("mid");
        if (name && !sections.contains(name->trimmedValue()))
            sections.insert(name->trimmedValue(), &section);
    }
    return sections;
}

// "DUP primary secondary" of a group line; empty for another kind of group.
QList<QByteArray> legNames(const SdpLine &line)
{
    QList<QByteArray> names = line.trimmedValue().split(' ');
    names.removeAll(QByteArray());
    return names.value(0) == "DUP" ? names.mid(1) : QList<QByteArray>();
}

Legs legsOf(const SdpLine &line, const Sections &sections)
{
    Legs legs;
    for (const QByteArray &name : legNames(line)) {
        if (const SdpSection *section = sections.value(name))
            legs.push_back(section);
    }
    return legs;
}

// Which pair a section belongs to: the line of its group, 0 for none.
QHash<const SdpSection *, int> groupsOf(const SdpText &text)
{
    QHash<const SdpSection *, int> groups;
    const Sections sections = sectionsByName(text);
    for (const SdpLine *line : text.session.attributes("group")) {
        for (const SdpSection *leg : legsOf(*line, sections))
            groups.insert(leg, line->number);
    }
    return groups;
}

void nameTwice(const SdpText &text, SdpReport &report)
{
    const Sections sections = sectionsByName(text);
    for (const SdpSection &section : text.media) {
        const SdpLine *name = section.attribute("mid");
        if (name && sections.value(name->trimmedValue()) != &section)
            report.add(text, name->number,
                       "mid " + name->trimmedValue() + " is another section's name as well",
                       "give each section a name of its own");
    }
}

void legMissing(const SdpText &text, SdpReport &report)
{
    const Sections sections = sectionsByName(text);
    for (const SdpLine *line : text.session.attributes("group")) {
        const QList<QByteArray> names = legNames(*line);
        for (const QByteArray &name : names) {
            if (!sections.contains(name))
                report.add(text, line->number, "no section has the mid " + name,
                           "add \"a=mid:" + name + "\" to its section");
        }
        if (names.size() == 1)
            report.add(text, line->number, "a group of one leg", "name both legs, or remove the line");
    }
}

// One leg against the first of its pair.
using LegCheck = void (*)(const SdpStream &first, const SdpStream &leg, SdpReport &report);

void eachLeg(const SdpText &text, SdpReport &report, LegCheck check)
{
    const QHash<const SdpSection *, int> groups = groupsOf(text);
    QHash<int, SdpStream> firsts;
    for (const SdpStream &stream : streamsOf(text)) {
        const int group = groups.value(stream.section);
        if (group == 0)
            continue;
        const auto first = firsts.constFind(group);
        if (first == firsts.constEnd())
            firsts.insert(group, stream);
        else
            check(*first, stream, report);
    }
}

bool sameGroup(const SdpStream &one, const SdpStream &other)
{
    return one.connection && other.connection && one.connection->address == other.connection->address;
}

void legsAlike(const SdpText &text, SdpReport &report)
{
    eachLeg(text, report, [](const SdpStream &first, const SdpStream &leg, SdpReport &out) {
        if (sameGroup(first, leg) && first.source() == leg.source())
            out.add(*leg.text, leg.line(), "both legs are " + leg.destination() + ": there is no second path",
                    "give the second leg its own group, sent from the other interface");
    });
}

void legsShare(const SdpText &text, SdpReport &report)
{
    eachLeg(text, report, [](const SdpStream &first, const SdpStream &leg, SdpReport &out) {
        const bool group = sameGroup(first, leg);
        const bool source = !leg.source().isEmpty() && first.source() == leg.source();
        if (group == source)
            return; // apart as they should be, or the same in all and told above
        out.add(*leg.text, leg.line(),
                group ? "both legs go to the group " + leg.connection->address
                      : "both legs come from " + leg.source(),
                group ? "a switch that knows both networks cannot keep them apart; use two groups"
                      : "one cable carries both; send the second from the other interface");
    });
}

void legsDiffer(const SdpText &text, SdpReport &report)
{
    eachLeg(text, report, [](const SdpStream &first, const SdpStream &leg, SdpReport &out) {
        for (const char *name : {"rtpmap", "fmtp", "ptime", "mediaclk"}) {
            const SdpLine *one = first.section->attribute(name), *other = leg.section->attribute(name);
            if ((one ? one->text : QByteArray()) != (other ? other->text : QByteArray()))
                out.add(*leg.text, leg.line(), QByteArray("the legs differ in ") + name,
                        "both carry the same packets, so both say the same");
        }
    });
}

// A pair of files written at once is one session: same origin, and the same streams are no clash.
bool sameSession(const SdpText &one, const SdpText &other)
{
    const SdpLine *first = one.session.find('o'), *second = other.session.find('o');
    return &one != &other && first && second && first->text == second->text;
}

struct Seen {
    SdpStream stream;
    int group; // the pair it belongs to
};

// The first of each group and port, per direction.
using SeenStreams = QHash<QByteArray, Seen>;

void lookAt(const SdpStream &stream, int group, SeenStreams &seen, SdpReport &report)
{
    const auto before = seen.constFind(stream.destination());
    if (before == seen.constEnd()) {
        seen.insert(stream.destination(), {stream, group});
        return;
    }
    const SdpText &other = *before->stream.text;
    const bool legs = group != 0 && &other == stream.text && before->group == group;
    if (!legs && !sameSession(other, *stream.text))
        report.add(*stream.text, stream.line(),
                   stream.destination() + " is in " + other.file + ':' +
                       QByteArray::number(before->stream.line()) + " too",
                   "two streams on one group and port destroy each other; give one another group");
}

// clang-format off
const SdpRule kRules[] = {
    // name        severity           clause        text        stream
    {"mid-twice",  Severity::Error,   "RFC 5888 4", nameTwice,  nullptr},
    {"leg-missing", Severity::Error,  "RFC 7104",   legMissing, nullptr},
    {"legs-alike", Severity::Error,   "ST 2022-7",  legsAlike,  nullptr},
    {"legs-share", Severity::Warning, "ST 2022-7",  legsShare,  nullptr},
    {"legs-differ", Severity::Error,  "ST 2022-7",  legsDiffer, nullptr},
};
// clang-format on

} // namespace

const SdpRule kSdpTwiceRule = {"stream-twice", Severity::Error, "", nullptr, nullptr};

void findStreamsTwice(const std::vector<SdpText> &texts, SdpReport &report)
{
    SeenStreams sent, received;
    for (const SdpText &text : texts) {
        const QHash<const SdpSection *, int> groups = groupsOf(text);
        for (const SdpStream &stream : streamsOf(text)) {
            if (stream.destination().isEmpty())
                continue;
            if (stream.direction & Sends)
                lookAt(stream, groups.value(stream.section), sent, report);
            if (stream.direction == Receives)
                lookAt(stream, groups.value(stream.section), received, report);
        }
    }
}

TableView<SdpRule> sdpPairRules()
{
    return {kRules, sizeof kRules / sizeof *kRules};
}

} // namespace ops
