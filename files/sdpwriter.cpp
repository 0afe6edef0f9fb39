// SPDX-License-Identifier: MIT
#include "files/sdpwriter.h"

#include <QByteArray>

#include <initializer_list>

namespace {

enum class Writer { Element, File };
enum class Line { RtpMap, FrameRate, Fmtp, PacketTime };

using Lines = std::initializer_list<Line>;

// What distinguishes one media section from another. Names of audio values (but not the packet length,
// which the flows of a direction share) are followed by the flow number.
struct Section {
    const char *port;
    const char *destination;
    const char *source;
    const char *packetLength;
    int payload;
    const char *encoding;
    const char *direction;
};

// clang-format off
// Rows by element (video, audio, ancillary data), columns by side (receive, send).
// The audio encoding says one channel on purpose, whatever the number of channels in a flow.
const Section sections[3][2] = {
    // port                        destination address         source address        packet length              pt  encoding             direction
    {{"ReceiveDestinationPort",    "ReceiveDestinationIp",     "ReceiveSourceIp",    nullptr,                   100, "raw/90000",         "recvonly"},
     {"TransmitRemotePort",        "TransmitDestinationIp",    "TransmitIp",         nullptr,                   101, "raw/90000",         "sendonly"}},
    {{"ReceiveAudDestinationPort", "ReceiveAudDestinationIp",  "ReceiveAudSourceIp", "ReceiveAudPacketLength",   96, "L24/48000/1",       "recvonly"},
     {"TransmitAudRemotePort",     "TransmitAudDestinationIp", "TransmitAudIp",      "TransmitAudPacketLength",  97, "L24/48000/1",       "sendonly"}},
    {{"ReceiveAncDestinationPort", "ReceiveAncDestinationIp",  "ReceiveAncSourceIp", nullptr,                    98, "smpte291/90000",    "recvonly"},
     {"TransmitAncRemotePort",     "TransmitAncDestinationIp", "TransmitAncIp",      nullptr,                    99, "smpte291/90000",    "sendonly"}},
};

// Rows by writer (element, file), columns by element. Receivers in the field rely on ancillary data
// being announced as video by the one and as data by the other: keep it so on purpose.
const char *const mediaWords[2][3] = {
    {"video", "audio", "video"},
    {"video", "audio", "data"},
};

// Rows by writer (element, file), columns by side. The four orders differ on purpose.
const Lines videoLines[2][2] = {
    {{Line::RtpMap, Line::Fmtp},                  {Line::FrameRate, Line::Fmtp, Line::RtpMap}},
    {{Line::RtpMap, Line::FrameRate, Line::Fmtp}, {Line::RtpMap, Line::Fmtp}},
};
const Lines audioLines = {Line::RtpMap, Line::PacketTime};
const Lines ancLines   = {Line::RtpMap};
// clang-format on

QString latin1(const char *text)
{
    return QString::fromLatin1(text);
}

// Texts are joined, never put into "%1" templates: a stored text may itself hold a "%1".
class Text {
public:
    Text(const SdpInput &input, Writer writer) : m_input(input), m_writer(writer) { m_text.reserve(4096); }

    void header();
    void section(SdpElement element, SdpSide side, int flow = -1);
    QString take() { return std::move(m_text); }

private:
    QString value(const char *name, bool isString, int flow) const;
    void formatLine(Line line, const Section &section);
    void sourceFilter(SdpSide side, const QString &destination, const QString &source);
    void clock();
    const Lines &linesOf(SdpElement element, SdpSide side) const;

    const SdpInput &m_input;
    Writer m_writer;
    QString m_text;
};

QString Text::value(const char *name, bool isString, int flow) const
{
    if (flow < 0)
        return m_input.value(name, isString);
    return m_input.value((QByteArray(name) + QByteArray::number(flow)).constData(), isString);
}

// The origin is the send interface and the version 0 in every text, the receive side included, on purpose.
void Text::header()
{
    m_text += QLatin1String("v=0\no=- ") + QString::number(m_input.sessionId) + QLatin1String(" 0 IN IP4 ") +
              m_input.value("TransmitInterface", true) + QLatin1String("\ns=Halvect IP Config\nt=0 0\n");
}

const Lines &Text::linesOf(SdpElement element, SdpSide side) const
{
    switch (element) {
    case SdpElement::Video:
        return videoLines[int(m_writer)][int(side)];
    case SdpElement::Audio:
        return audioLines;
    case SdpElement::Anc:
        break;
    }
    return ancLines;
}

void Text::section(SdpElement element, SdpSide side, int flow)
{
    const Section &row = sections[int(element)][int(side)];
    const QString destination = value(row.destination, true, flow);
    m_text += QLatin1String("m=") + latin1(mediaWords[int(m_writer)][int(element)]) + QLatin1Char(' ') +
              value(row.port, false, flow) + QLatin1String(" RTP/AVP ") + QString::number(row.payload) +
              QLatin1String("\nc=IN IP4 ") + destination + QLatin1Char('\n');
    sourceFilter(side, destination, value(row.source, true, flow));
    for (Line line : linesOf(element, side))
        formatLine(line, row);
    clock();
    m_text += QLatin1String("a=") + latin1(row.direction) + QLatin1Char('\n');
}

void Text::sourceFilter(SdpSide side, const QString &destination, const QString &source)
{
    const bool receive = side == SdpSide::Receive;
    if (!(receive ? m_input.recSrc : m_input.sndSrc))
        return;
    const bool exact = receive ? m_input.recDst : m_input.sndDst;
    m_text += QLatin1String("a=source-filter: incl IN IP4 ") + (exact ? destination : QStringLiteral("*")) +
              QLatin1Char(' ') + source + QLatin1Char('\n');
}

// Sampling, depth and colorimetry are fixed, and no interlace parameter is ever written, on purpose.
void Text::formatLine(Line line, const Section &section)
{
    const QString payload = QString::number(section.payload);
    switch (line) {
    case Line::RtpMap:
        m_text += QLatin1String("a=rtpmap:") + payload + QLatin1Char(' ') + latin1(section.encoding);
        break;
    case Line::FrameRate:
        m_text += QLatin1String("a=framerate:") + m_input.rate;
        break;
    case Line::PacketTime:
        m_text += QLatin1String("a=ptime:") + m_input.value(section.packetLength, false);
        break;
    case Line::Fmtp:
        m_text += QLatin1String("a=fmtp:") + payload + QLatin1String(" width=") + m_input.width +
                  QLatin1String("; height=") + m_input.height +
                  QLatin1String("; TP=2110TPNL; exactframerate=") + m_input.rate +
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
        m_text += QLatin1String("a=ts-refclk:ptp=IEEE1588-2008:") + m_input.gmAddress + QLatin1Char(':') +
                  m_input.gmDomain;
    else
        m_text += QLatin1String("a=ts-refclk:localmac=") + m_input.gmAddress;
    m_text += QLatin1String("\na=mediaclk:direct=0\n");
}

} // namespace

QString writeElementSdp(const SdpInput &input, SdpElement element, SdpSide side)
{
    Text text(input, Writer::Element);
    text.header();
    switch (element) {
    case SdpElement::Video:
        text.section(element, side);
        break;
    case SdpElement::Audio:
        for (int flow = 0; flow < input.flows; ++flow) {
            text.section(element, SdpSide::Receive, flow);
            text.section(element, SdpSide::Send, flow);
        }
        break;
    case SdpElement::Anc:
        text.section(element, SdpSide::Receive);
        text.section(element, SdpSide::Send);
        break;
    }
    return text.take();
}

QString writeFileSdp(const SdpInput &input, SdpSide side)
{
    Text text(input, Writer::File);
    text.header();
    text.section(SdpElement::Video, side);
    for (int flow = 0; flow < input.flows; ++flow)
        text.section(SdpElement::Audio, side, flow);
    text.section(SdpElement::Anc, side);
    return text.take();
}

// The cut is blind on purpose: "abcdef" gives "ab.rx.sdp". chop() also takes a shorter name whole.
SdpFileNames sdpFileNames(const QString &answer)
{
    QString stem = answer;
    stem.chop(4);
    return {stem + QLatin1String(".rx.sdp"), stem + QLatin1String(".tx.sdp")};
}
