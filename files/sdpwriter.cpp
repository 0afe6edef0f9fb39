// SPDX-License-Identifier: MIT
#include "files/sdpwriter.h"

#include <QByteArray>
#include <QStringBuilder>

#include <initializer_list>

namespace {

enum class Writer { Element, File };
enum class Line { RtpMap, FrameRate, Fmtp, PacketTime };

using Lines = std::initializer_list<Line>;

// What distinguishes one media section from another.
struct Section {
    const char *payload;
    const char *encoding;
};

// clang-format off
// Rows by element (video, audio, ancillary data), columns by side (receive, send). The audio encoding says
// one channel, whatever the number of channels in a flow.
const Section kSections[kElementCount][kSideCount] = {
    {{"100", "raw/90000"},      {"101", "raw/90000"}},
    {{"96",  "L24/48000/1"},    {"97",  "L24/48000/1"}},
    {{"98",  "smpte291/90000"}, {"99",  "smpte291/90000"}},
};

const char *const kDirections[kSideCount] = {"recvonly", "sendonly"};

// Rows by writer (element, file), columns by element. Ancillary data is announced as video by the one and as
// data by the other.
const char *const kMediaWords[2][kElementCount] = {
    {"video", "audio", "video"},
    {"video", "audio", "data"},
};

// Rows by writer (element, file), columns by side: four orders, none of which follows from another.
const Lines kVideoLines[2][kSideCount] = {
    {{Line::RtpMap, Line::Fmtp},                  {Line::FrameRate, Line::Fmtp, Line::RtpMap}},
    {{Line::RtpMap, Line::FrameRate, Line::Fmtp}, {Line::RtpMap, Line::Fmtp}},
};
const Lines kAudioLines = {Line::RtpMap, Line::PacketTime};
const Lines kAncLines   = {Line::RtpMap};
// clang-format on

// Texts are joined, never put into "%1" templates: a stored text may itself hold a "%1".
class Text {
public:
    Text(const SdpInput &input, Writer writer) : m_input(input), m_writer(writer) { m_text.reserve(4096); }

    void header();
    void section(Element element, Side side, int flow = 0);
    QString take() { return std::move(m_text); }

private:
    QString value(const ChannelKey &key, int flow = 0) const;
    void formatLine(Line line, Element element, Side side);
    void sourceFilter(Side side, const QString &destination, const QString &source);
    void clock();
    const Lines &linesOf(Element element, Side side) const;

    const SdpInput &m_input;
    Writer m_writer;
    QString m_text;
};

QString Text::value(const ChannelKey &key, int flow) const
{
    return m_input.value(flowValueName(key, flow).constData(), key.stored == Stored::Text);
}

// The origin is the send interface and the version 0 in every text, the receive side included.
void Text::header()
{
    m_text += QLatin1String("v=0\no=- ") % QString::number(m_input.sessionId) % QLatin1String(" 0 IN IP4 ") %
              value(channelKey(Element::Video, Side::Send, Field::Interface)) %
              QLatin1String("\ns=Halvect IP Config\nt=0 0\n");
}

const Lines &Text::linesOf(Element element, Side side) const
{
    switch (element) {
    case Element::Video:
        return kVideoLines[static_cast<int>(m_writer)][static_cast<int>(side)];
    case Element::Audio:
        return kAudioLines;
    case Element::Anc:
        return kAncLines;
    }
    Q_UNREACHABLE();
}

void Text::section(Element element, Side side, int flow)
{
    const auto stored = [&](Field field) { return value(channelKey(element, side, field), flow); };
    const QString destination = stored(Field::DestinationAddress);
    m_text += QLatin1String("m=") %
              QLatin1String(kMediaWords[static_cast<int>(m_writer)][static_cast<int>(element)]) %
              QLatin1Char(' ') % stored(Field::DestinationPort) % QLatin1String(" RTP/AVP ") %
              QLatin1String(kSections[static_cast<int>(element)][static_cast<int>(side)].payload) %
              QLatin1String("\nc=IN IP4 ") % destination % QLatin1Char('\n');
    sourceFilter(side, destination, stored(Field::SourceAddress));
    for (Line line : linesOf(element, side))
        formatLine(line, element, side);
    clock();
    m_text += QLatin1String("a=") % QLatin1String(kDirections[static_cast<int>(side)]) % QLatin1Char('\n');
}

void Text::sourceFilter(Side side, const QString &destination, const QString &source)
{
    const bool receive = side == Side::Receive;
    if (!(receive ? m_input.recSrc : m_input.sndSrc))
        return;
    const bool exact = receive ? m_input.recDst : m_input.sndDst;
    m_text += QLatin1String("a=source-filter: incl IN IP4 ") % (exact ? destination : QStringLiteral("*")) %
              QLatin1Char(' ') % source % QLatin1Char('\n');
}

// Sampling, depth and colorimetry are fixed, and no interlace parameter is ever written.
void Text::formatLine(Line line, Element element, Side side)
{
    const Section &section = kSections[static_cast<int>(element)][static_cast<int>(side)];
    const QLatin1String payload(section.payload);
    switch (line) {
    case Line::RtpMap:
        m_text += QLatin1String("a=rtpmap:") % payload % QLatin1Char(' ') % QLatin1String(section.encoding);
        break;
    case Line::FrameRate:
        m_text += QLatin1String("a=framerate:") % m_input.rate;
        break;
    case Line::PacketTime: // one for all flows of a direction
        m_text += QLatin1String("a=ptime:") % value(channelKey(element, side, Field::PacketTime));
        break;
    case Line::Fmtp:
        m_text += QLatin1String("a=fmtp:") % payload % QLatin1String(" width=") % m_input.width %
                  QLatin1String("; height=") % m_input.height %
                  QLatin1String("; TP=2110TPNL; exactframerate=") % m_input.rate %
                  QLatin1String("; PM=2110GPM; SSN=ST2110-20:2017; sampling=YCbCr-4:2:2; depth=10; "
                                "colorimetry=BT709;");
        break;
    }
    m_text += QLatin1Char('\n');
}

void Text::clock()
{
    if (!m_input.useGmId || m_input.gmAddress.isEmpty())
        return;
    if (m_input.clockIndex != 0)
        m_text += QLatin1String("a=ts-refclk:ptp=IEEE1588-2008:") % m_input.gmAddress % QLatin1Char(':') %
                  m_input.gmDomain;
    else
        m_text += QLatin1String("a=ts-refclk:localmac=") % m_input.gmAddress;
    m_text += QLatin1String("\na=mediaclk:direct=0\n");
}

} // namespace

QString writeElementSdp(const SdpInput &input, Element element, Side side)
{
    Text text(input, Writer::Element);
    text.header();
    switch (element) {
    case Element::Video:
        text.section(element, side);
        break;
    case Element::Audio:
        for (int flow = 0; flow < input.flows; ++flow) {
            text.section(element, Side::Receive, flow);
            text.section(element, Side::Send, flow);
        }
        break;
    case Element::Anc:
        text.section(element, Side::Receive);
        text.section(element, Side::Send);
        break;
    }
    return text.take();
}

QString writeFileSdp(const SdpInput &input, Side side)
{
    Text text(input, Writer::File);
    text.header();
    text.section(Element::Video, side);
    for (int flow = 0; flow < input.flows; ++flow)
        text.section(Element::Audio, side, flow);
    text.section(Element::Anc, side);
    return text.take();
}

// The cut is blind: "abcdef" gives "ab.rx.sdp". chop() also takes a shorter name whole.
SdpFileNames sdpFileNames(const QString &answer)
{
    QString stem = answer;
    stem.chop(4);
    return {stem + QLatin1String(".rx.sdp"), stem + QLatin1String(".tx.sdp")};
}
