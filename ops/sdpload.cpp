// SPDX-License-Identifier: MIT
#include "ops/sdpload.h"

#include "files/sdpreader.h"
#include "ops/draft.h"
#include "ops/sdpstream.h"
#include "ops/vocabulary.h"

#include "channel/channelstore.h"

#include <QHash>

#include <algorithm>

namespace ops {

namespace {

constexpr int kMostLine = 4095; // bytes that the file layer delivers at a time

// Lines as the dialog's file layer hands them to the reader.
SdpLineSource sourceOf(const std::vector<const SdpLine *> &lines)
{
    return [lines, at = std::size_t(0), from = 0](QByteArray &line) mutable {
        if (at >= lines.size())
            return false;
        line = lines[at]->text.mid(from, kMostLine);
        from += line.size();
        if (from >= lines[at]->text.size()) {
            ++at;
            from = 0;
        }
        return true;
    };
}

std::vector<const SdpLine *> linesOf(const SdpSection &section)
{
    std::vector<const SdpLine *> lines;
    for (const SdpLine &line : section.lines)
        lines.push_back(&line);
    return lines;
}

// clang-format off
// Why a line counts for nothing.
const struct {
    const char *start;
    const char *reason;
} kUnread[] = {
    {"a=fmtp:",      "the format is chosen in the channel, not read"},
    {"a=framerate:", "the format is chosen in the channel, not read"},
    {"a=ptime:",     "the packet time is chosen in the channel, not read"},
    {"a=rtpmap:",    "encoding and channels are chosen in the channel, not read"},
    {"a=ts-refclk:", "the clock is chosen in the channel, not read"},
    {"a=mediaclk:",  "the clock is chosen in the channel, not read"},
    {"a=group:",     "a channel has one leg; pairs are not known"},
    {"a=mid:",       "a channel has one leg; pairs are not known"},
};

const struct {
    SdpTick tick;
    Field field;
} kTicks[] = {
    {SdpTick::RecDstAddr, Field::DestinationAddress},
    {SdpTick::RecSrcAddr, Field::SourceAddress},
    {SdpTick::RecDstPort, Field::DestinationPort},
};
// clang-format on

bool isRead(const SdpLine &line)
{
    const bool direction =
        line.text == "a=recvonly" || line.text == "a=sendonly" || line.text == "a=sendrecv";
    const bool anc = line.text.contains("rtpmap") && line.text.contains("smpte291");
    return direction || anc || line.type() == 'm';
}

// Null for a line that the reader takes something from.
const char *whyUnread(const SdpLine &line)
{
    if (isRead(line))
        return nullptr;
    if (line.type() == 'c') {
        const auto connection = parseConnection(line);
        return connection && connection->ipv4 ? nullptr : "no IPv4 address at its end";
    }
    if (line.isAttribute("source-filter"))
        return line.text.startsWith("a=source-filter: ")
                   ? nullptr
                   : "not read without a blank behind \"source-filter:\"";
    for (const auto &row : kUnread) {
        if (line.text.startsWith(row.start))
            return row.reason;
    }
    return line.type() == 'a' ? "not an attribute that is read" : "of no meaning to the settings";
}

class Plan {
public:
    Plan(const Snapshot &snapshot, int channel) : m_draft(snapshot), m_path(channelPath(channel)) {}

    void read(const SdpText &text);
    SdpLoadPlan take();

private:
    void section(const SdpSection &section, const SdpStores &stores);
    void store(int line, const SdpStore &value);
    void session(const SdpText &text, int stores);
    void direction(const SdpStream &stream, int stores);
    void shortPort(const SdpStream &stream);
    void note(int line, bool warning, const QByteArray &text)
    {
        m_plan.notes.push_back({line, warning, text});
    }

    struct Set {
        int line;
        QByteArray text;
    };

    SdpLoadPlan m_plan;
    Draft m_draft;
    QByteArray m_path;
    QHash<QByteArray, Set> m_set; // by value name
};

// The reader goes through the text as a whole: an audio section's flow depends on those before it. Read
// alone, a section gives as many values, which tells whose they are.
void Plan::read(const SdpText &text)
{
    SdpStores all = readSdp(sourceOf(text.lines()));
    const auto next = [&all](const SdpSection &section) {
        const int count = qMin(all.size(), readSdp(sourceOf(linesOf(section))).size());
        const SdpStores own = all.mid(0, count);
        all = all.mid(count);
        return own;
    };
    const SdpStores common = next(text.session);
    section(text.session, common);
    session(text, common.size());
    for (const SdpSection &media : text.media) {
        const SdpStores own = next(media);
        section(media, own);
        direction(streamOf(text, media), own.size());
    }
}

void Plan::section(const SdpSection &section, const SdpStores &stores)
{
    for (const SdpLine &line : section.lines) {
        if (const char *reason = whyUnread(line))
            note(line.number, false, "ignored: " + QByteArray(reason));
    }
    for (const SdpStore &value : stores)
        store(section.number(), value);
}

void Plan::store(int line, const SdpStore &value)
{
    const QByteArray text = value.text.toUtf8();
    const auto before = m_set.constFind(value.valueName);
    if (before != m_set.constEnd() && before->text != text)
        note(line, true,
             keyInWords(m_path, value.valueName) + ": " + text + " wins over " + before->text + " of line " +
                 QByteArray::number(before->line) + "; of a pair the last leg stays");
    if (!knownByKey(m_path, value.valueName))
        note(line, true, value.valueName + ": a flow beyond the eighth, which nothing reads");
    m_set.insert(value.valueName, {line, text});
    m_draft.set(m_path, value.valueName,
                value.isString ? Value::ofText(text) : Value::ofNumber(toDword(value.text)));
    ++m_plan.values;
    for (const auto &row : kTicks) {
        const QByteArray flags = findChannelKey(Element::Video, Side::Receive, Field::Flags)->name;
        if (row.tick == value.box)
            m_draft.set(m_path, flags, Value::ofNumber(m_draft.number(m_path, flags) | flagBit(row.field)));
    }
}

// An address of the session counts as video's, so that it is not lost; without video that is a surprise.
void Plan::session(const SdpText &text, int stores)
{
    const auto streams = streamsOf(text);
    const bool video = std::any_of(streams.begin(), streams.end(),
                                   [](const SdpStream &stream) { return stream.kind == SdpKind::Video; });
    const SdpLine *line = text.session.find('c');
    if (stores > 0)
        note(line ? line->number : 1, !video,
             QByteArray("the session's address becomes video's destination, received and sent") +
                 (video ? "" : ", though the text describes no video"));
}

void Plan::direction(const SdpStream &stream, int stores)
{
    const bool said = stream.section->attribute("recvonly") || stream.section->attribute("sendonly") ||
                      stream.section->attribute("sendrecv");
    if (stores == 0)
        note(stream.line(), true,
             "nothing of this section is stored: no video, audio or ancillary data, or no address");
    else if (!said)
        note(stream.line(), true,
             "without a direction the section sets both sides, what is received and what is sent");
    if (stores > 0)
        shortPort(stream);
}

void Plan::shortPort(const SdpStream &stream)
{
    if (stream.media && stream.media->port < 10)
        note(stream.line(), true, "a port of one digit is not stored");
}

SdpLoadPlan Plan::take()
{
    m_plan.changes = m_draft.changes();
    std::stable_sort(m_plan.notes.begin(), m_plan.notes.end(),
                     [](const SdpLoadNote &a, const SdpLoadNote &b) { return a.line < b.line; });
    return std::move(m_plan);
}

} // namespace

SdpLoadPlan planSdpLoad(const QByteArray &text, const Snapshot &snapshot, int channel)
{
    Plan plan(snapshot, channel);
    plan.read(parseSdp(text, QByteArray()));
    return plan.take();
}

} // namespace ops
