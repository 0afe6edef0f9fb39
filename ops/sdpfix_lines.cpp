// SPDX-License-Identifier: MIT
//
// Fixing the form of the text: stray bytes, missing lines, their order.
#include "ops/sdpfixer.h"
#include "ops/sdprules.h"

#include <algorithm>
#include <cstring>

namespace ops {

namespace {

QByteArray cleaned(const SdpLine &line)
{
    QByteArray text = line.text;
    text.replace('\0', "").replace('\r', "");
    if (text.startsWith("\xef\xbb\xbf"))
        text.remove(0, 3);
    while (text.endsWith(' ') || text.endsWith('\t'))
        text.chop(1);
    while (text.size() > 2 && text[1] == '=' && text[2] == ' ')
        text.remove(2, 1);
    return text == "s=" ? QByteArray("s=-") : text;
}

bool isUseless(const SdpLine &line)
{
    const char type = line.type();
    return !type || (type != 'm' && (!std::strchr(kSdpSessionOrder, type) || line.value().isEmpty()));
}

// Bytes taken away may leave a media line, so the sections are made anew.
void cleanAll(SdpFixer &fixer)
{
    SdpText cleanText;
    cleanText.file = fixer.text().file;
    for (const SdpLine *given : fixer.text().lines()) {
        SdpLine line = *given;
        fixer.replace(line, cleaned(line));
        if (isUseless(line))
            fixer.noteRemoved(line);
        else
            cleanText.add(line);
    }
    fixer.text() = cleanText;
}

// A line whose place is not known goes where attributes go; times and their repeats stay together.
int rankOf(const SdpLine &line, const char *order)
{
    const char *place = std::strchr(order, line.type() == 'r' ? 't' : line.type());
    return place ? static_cast<int>(place - order) : static_cast<int>(std::strlen(order));
}

void sortSection(SdpFixer &fixer, SdpSection &section, const char *order)
{
    const auto before = [order](const SdpLine &one, const SdpLine &other) {
        return rankOf(one, order) < rankOf(other, order);
    };
    if (std::is_sorted(section.lines.begin(), section.lines.end(), before))
        return;
    int highest = -1;
    for (const SdpLine &line : section.lines) {
        if (rankOf(line, order) < highest)
            fixer.noteMoved(line);
        highest = std::max(highest, rankOf(line, order));
    }
    std::stable_sort(section.lines.begin(), section.lines.end(), before);
}

// A line of the session's behind a media line means nothing where it stands.
void dropMisplaced(SdpFixer &fixer, SdpSection &section)
{
    for (std::size_t at = section.lines.size(); at-- > 0;) {
        if (!std::strchr(kSdpMediaOrder, section.lines[at].type()))
            fixer.remove(section, at);
    }
}

void sortAll(SdpFixer &fixer)
{
    sortSection(fixer, fixer.session(), kSdpSessionOrder);
    for (SdpSection &section : fixer.media())
        sortSection(fixer, section, kSdpMediaOrder);
}

// A session has one version, one origin and one name; the first is taken.
void dropSeconds(SdpFixer &fixer)
{
    SdpSection &session = fixer.session();
    for (std::size_t at = session.lines.size(); at-- > 0;) {
        const SdpLine &line = session.lines[at];
        const bool single = line.type() == 'v' || line.type() == 'o' || line.type() == 's';
        if (single && session.find(line.type()) != &line)
            fixer.remove(session, at);
    }
}

// The sender's address, as far as the text tells: a filter's source.
QByteArray senderAddress(SdpFixer &fixer)
{
    for (const SdpStream &stream : streamsOf(fixer.text())) {
        if (!stream.source().isEmpty())
            return stream.source();
    }
    return "127.0.0.1";
}

void addVersion(SdpFixer &fixer)
{
    const SdpLine *line = fixer.session().find('v');
    if (line)
        fixer.replace(*editable(fixer.session(), line), "v=0");
    else
        fixer.insert(fixer.session(), 0, "v=0");
}

void addOrigin(SdpFixer &fixer)
{
    const SdpLine *line = fixer.session().find('o');
    if (!line)
        fixer.insert(fixer.session(), 1, "o=- 1 0 IN IP4 " + senderAddress(fixer));
    else if (line->value().split(' ').size() == 5 && line->text.endsWith(" IN IP4")) // no interface was set
        fixer.replace(*editable(fixer.session(), line), line->text + ' ' + senderAddress(fixer));
}

void addNameAndTime(SdpFixer &fixer)
{
    const auto rank = [](char type) {
        return static_cast<int>(std::strchr(kSdpSessionOrder, type) - kSdpSessionOrder);
    };
    for (const char *line : {"s=-", "t=0 0"}) {
        if (fixer.session().find(line[0]))
            continue;
        std::size_t at = 0;
        while (at < fixer.session().lines.size() &&
               rankOf(fixer.session().lines[at], kSdpSessionOrder) < rank(line[0]))
            ++at;
        fixer.insert(fixer.session(), at, line);
    }
}

// clang-format off
const SdpFixStep kSteps[] = {
    // name          whole           section
    {"clean",        cleanAll,       nullptr},
    {"misplaced",    nullptr,        dropMisplaced},
    {"order",        sortAll,        nullptr},
    {"seconds",      dropSeconds,    nullptr},
    {"version",      addVersion,     nullptr},
    {"origin",       addOrigin,      nullptr},
    {"missing-line", addNameAndTime, nullptr},
};
// clang-format on

} // namespace

TableView<SdpFixStep> sdpLineSteps()
{
    return {kSteps, sizeof kSteps / sizeof *kSteps};
}

} // namespace ops
