// SPDX-License-Identifier: MIT
#include "files/sdpreader.h"

#include <arpa/inet.h>
#include <netinet/in.h>

#include <cstring>
#include <string>
#include <string_view>

namespace {

using std::string_view;

enum Side { Receive, Send };
enum Element { Video, Audio, Anc, NoElement };

struct SideNames {
    QByteArray destination;
    QByteArray source;
    QByteArray port;
};

// clang-format off
// Rows by element, columns by side. Audio names are followed by the flow number.
const SideNames &namesOf(Element element, Side side)
{
    static const SideNames names[3][2] = {
        // destination address        source address        port
        {{"ReceiveDestinationIp",     "ReceiveSourceIp",    "ReceiveDestinationPort"},
         {"TransmitDestinationIp",    "TransmitIp",         "TransmitRemotePort"}},
        {{"ReceiveAudDestinationIp",  "ReceiveAudSourceIp", "ReceiveAudDestinationPort"},
         {"TransmitAudDestinationIp", "TransmitAudIp",      "TransmitAudRemotePort"}},
        {{"ReceiveAncDestinationIp",  "ReceiveAncSourceIp", "ReceiveAncDestinationPort"},
         {"TransmitAncDestinationIp", "TransmitAncIp",      "TransmitAncRemotePort"}},
    };
    return names[element][side];
}

SideNames flowNamesOf(Side side, int flow)
{
    const SideNames &stem = namesOf(Audio, side);
    const QByteArray number = QByteArray::number(flow);
    return {stem.destination + number, stem.source + number, stem.port + number};
}

// Media words and the element each stands for. "all" is the text before the first media line: it counts
// as video on purpose, so that a connection address given for the whole session is not lost.
const struct {
    string_view word;
    Element element;
} mediaWords[] = {
    {"video", Video}, {"all", Video}, {"audio", Audio}, {"text", Anc}, {"data", Anc},
};
// clang-format on

// The text of a line without what its source may have left at the end.
string_view lineText(const QByteArray &line)
{
    string_view text(line.constData(), strnlen(line.constData(), size_t(line.size())));
    while (!text.empty() && (text.back() == '\n' || text.back() == '\r'))
        text.remove_suffix(1);
    return text;
}

// Token n, counted from 0, of a line split at single blanks: two blanks in a row enclose an empty token.
string_view token(string_view line, int n)
{
    size_t start = 0;
    for (; n > 0; --n) {
        start = line.find(' ', start);
        if (start == string_view::npos)
            return {};
        ++start;
    }
    return line.substr(start, line.find(' ', start) - start);
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

QString fromUtf8(const std::string &text)
{
    return QString::fromUtf8(text.data(), int(text.size()));
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
    QList<SdpStore> take() { return std::move(m_stores); }

private:
    void mediaLine(string_view text);
    void connectionLine(string_view text);
    void attributeLine(string_view text);
    void sourceFilter(string_view text);
    void applySide(Element element, Side side, int flow);
    void store(const SdpStore &value);

    std::string m_media = "all";
    std::string m_port, m_destination, m_source;
    bool m_receive = false, m_send = false;
    int m_audioBlocks = 0;
    QList<SdpStore> m_stores;
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
    const string_view destination = token(text, 4), source = token(text, 5);
    if (isIpv4(destination))
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

// Every audio block takes the next flow, whatever its direction and even when it stores nothing, on
// purpose; there is no upper bound either.
void Reader::applyBlock()
{
    Element element = NoElement;
    for (const auto &row : mediaWords) {
        if (row.word == m_media)
            element = row.element;
    }
    const int flow = element == Audio ? m_audioBlocks++ : -1;
    const bool both = !m_receive && !m_send;
    if (m_receive || both)
        applySide(element, Receive, flow);
    if (m_send || both)
        applySide(element, Send, flow);
}

// Audio and ancillary data are guarded by the locks of the video values, and the send side ticks the
// receive boxes, both on purpose.
void Reader::applySide(Element element, Side side, int flow)
{
    if (element == NoElement)
        return;
    const SideNames name = element == Audio ? flowNamesOf(side, flow) : namesOf(element, side);
    const SideNames &lock = namesOf(Video, side);
    const auto box = [element](SdpTick tick) { return element == Video ? tick : SdpTick::None; };
    store({name.destination, true, fromUtf8(m_destination), lock.destination, box(SdpTick::RecDstAddr)});
    store({name.source, true, fromUtf8(m_source), lock.source, box(SdpTick::RecSrcAddr)});
    store({name.port, false, fromUtf8(m_port), lock.port, box(SdpTick::RecDstPort)});
}

// Texts of less than two characters, one-digit ports among them, are passed over on purpose.
void Reader::store(const SdpStore &value)
{
    if (value.text.size() >= 2)
        m_stores.append(value);
}

} // namespace

QList<SdpStore> readSdp(const SdpLineSource &source)
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
