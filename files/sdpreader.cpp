// SPDX-License-Identifier: MIT
#include "files/sdpreader.h"

#include "channel/channelkeys.h"

#include <arpa/inet.h>
#include <netinet/in.h>

#include <algorithm>
#include <cstring>
#include <string>
#include <string_view>
#include <utility>

namespace {

using std::string_view;

// Media words and the element each stands for. "all" is the text before the first media line: it counts
// as video, so that a connection address given for the whole session is not lost.
const struct {
    string_view word;
    Element element;
} kMediaWords[] = {
    {"video", Element::Video}, {"all", Element::Video}, {"audio", Element::Audio},
    {"text", Element::Anc},    {"data", Element::Anc},
};

// What a side of a block stores, in this order. Audio and ancillary data are guarded by the locks of the
// video values.
struct Part {
    Field field;
    bool isString;
    SdpTick box;
    QByteArray lock[kSideCount];
};

Part part(Field field, bool isString, SdpTick box)
{
    Part made{field, isString, box, {}};
    for (const Side side : sideOrder())
        made.lock[static_cast<int>(side)] = flowValueName(channelKey(Element::Video, side, field), 0);
    return made;
}

const Part (&parts())[3]
{
    static const Part all[] = {part(Field::DestinationAddress, true, SdpTick::RecDstAddr),
                               part(Field::SourceAddress, true, SdpTick::RecSrcAddr),
                               part(Field::DestinationPort, false, SdpTick::RecDstPort)};
    return all;
}

// The text of a line without what its source may have left at the end.
string_view lineText(const QByteArray &line)
{
    string_view text(line.constData(), strnlen(line.constData(), static_cast<std::size_t>(line.size())));
    while (!text.empty() && (text.back() == '\n' || text.back() == '\r'))
        text.remove_suffix(1);
    return text;
}

// The line from its token n on, counted from 0. Tokens are split at single blanks: two blanks in a row
// enclose an empty one.
string_view fromToken(string_view line, int n)
{
    for (; n > 0; --n) {
        const size_t blank = line.find(' ');
        if (blank == string_view::npos)
            return {};
        line.remove_prefix(blank + 1);
    }
    return line;
}

string_view token(string_view line, int n)
{
    const string_view rest = fromToken(line, n);
    return rest.substr(0, rest.find(' '));
}

string_view lastToken(string_view line)
{
    const size_t blank = line.rfind(' ');
    return blank == string_view::npos ? line : line.substr(blank + 1);
}

// A token without the letter and the equals sign it starts with.
string_view withoutType(string_view text)
{
    return text.size() > 2 ? text.substr(2) : string_view();
}

bool contains(string_view text, string_view part)
{
    return text.find(part) != string_view::npos;
}

// Nearly always ASCII, for which the other conversion takes half the time.
QString fromUtf8(const std::string &text)
{
    const bool ascii =
        std::all_of(text.begin(), text.end(), [](char c) { return static_cast<unsigned char>(c) < 0x80; });
    return ascii ? QString::fromLatin1(text.data(), static_cast<int>(text.size()))
                 : QString::fromUtf8(text.data(), static_cast<int>(text.size()));
}

bool isIpv4(string_view text)
{
    char buffer[INET_ADDRSTRLEN];
    if (text.empty() || text.size() >= sizeof buffer)
        return false;
    std::memcpy(buffer, text.data(), text.size());
    buffer[text.size()] = '\0';
    in_addr address;
    return inet_pton(AF_INET, buffer, &address) == 1;
}

class Reader {
public:
    void line(const QByteArray &line);
    void applyBlock();
    void startBlock();
    SdpStores take() { return std::move(m_stores); }

private:
    void mediaLine(string_view text);
    void connectionLine(string_view text);
    void attributeLine(string_view text);
    void sourceFilter(string_view text);
    void applySide(Element element, Side side, int flow);
    const std::string &text(Field field) const;

    std::string m_media = "all";
    std::string m_port, m_destination, m_source;
    bool m_receive = false, m_send = false;
    int m_audioBlocks = 0;
    SdpStores m_stores;
};

void Reader::line(const QByteArray &line)
{
    switch (line.isEmpty() ? '\0' : line.front()) {
    case 'm':
        mediaLine(lineText(line));
        break;
    case 'c':
        connectionLine(lineText(line));
        break;
    case 'a':
        attributeLine(lineText(line));
        break;
    default:
        break;
    }
}

void Reader::mediaLine(string_view text)
{
    m_media = withoutType(token(text, 0));
    m_port = token(text, 1);
    m_receive = m_send = false;
}

// A time to live or an address count behind the address is dropped.
void Reader::connectionLine(string_view text)
{
    string_view address = lastToken(text);
    address = address.substr(0, address.find('/'));
    if (isIpv4(address))
        m_destination = address;
}

void Reader::attributeLine(string_view text)
{
    const string_view attribute = withoutType(token(text, 0));
    if (attribute == "source-filter:")
        sourceFilter(text);
    else if (attribute == "recvonly")
        m_receive = true;
    else if (attribute == "sendonly")
        m_send = true;
    else if (attribute == "sendrecv")
        m_receive = m_send = true;
    else if (contains(attribute, "rtpmap") && contains(text, "smpte291"))
        m_media = "data"; // whatever the media line says: some senders announce it as video
}

// A "*" is no address, so it leaves the destination of the connection line in place.
void Reader::sourceFilter(string_view text)
{
    const string_view addresses = fromToken(text, 4);
    const string_view destination = token(addresses, 0), source = token(addresses, 1);
    if (destination != m_destination && isIpv4(destination))
        m_destination = destination;
    if (isIpv4(source))
        m_source = source;
}

void Reader::startBlock()
{
    m_port.clear();
    m_destination.clear();
    m_source.clear();
}

// Every audio block takes the next flow, whatever its direction and even when it stores nothing: flows are
// counted, not recognised. There is no upper bound either.
void Reader::applyBlock()
{
    for (const auto &row : kMediaWords) {
        if (row.word != m_media)
            continue;
        const int flow = row.element == Element::Audio ? m_audioBlocks++ : 0;
        const bool both = !m_receive && !m_send;
        if (m_receive || both)
            applySide(row.element, Side::Receive, flow);
        if (m_send || both)
            applySide(row.element, Side::Send, flow);
        return;
    }
}

const std::string &Reader::text(Field field) const
{
    if (field == Field::DestinationPort)
        return m_port;
    return field == Field::SourceAddress ? m_source : m_destination;
}

// The send side ticks the receive boxes. Texts of less than two characters, one-digit ports among them, are
// passed over. Deliberate, both.
void Reader::applySide(Element element, Side side, int flow)
{
    for (const Part &part : parts()) {
        QString stored = fromUtf8(text(part.field));
        if (stored.size() < 2)
            continue;
        const SdpTick box = element == Element::Video ? part.box : SdpTick::None;
        m_stores.append({flowValueName(channelKey(element, side, part.field), flow), part.isString,
                         std::move(stored), part.lock[static_cast<int>(side)], box});
    }
}

} // namespace

SdpStores readSdp(const SdpLineSource &source)
{
    Reader reader;
    QByteArray line;
    if (!source(line))
        return {};
    if (line.startsWith('v') && !source(line))
        return {};
    reader.line(line);
    while (source(line)) {
        if (line.startsWith('m')) {
            reader.applyBlock();
            reader.startBlock();
        }
        reader.line(line);
    }
    reader.applyBlock();
    return reader.take();
}
