// SPDX-License-Identifier: MIT
//
// One media section of a session description with its fields taken apart: what is sent, where to, and in
// which form. A field that is missing or malformed is absent here; the check says so.
#ifndef CORVEL_OPS_SDPSTREAM_H
#define CORVEL_OPS_SDPSTREAM_H

#include "ops/sdptext.h"

#include <QList>

#include <optional>

namespace ops {

// A rate as a fraction in lowest terms; "60000/1001", "50" or "29.97".
struct Rate {
    qint64 numerator = 0;
    qint64 denominator = 1;
    double value() const { return static_cast<double>(numerator) / static_cast<double>(denominator); }
    QByteArray text() const; // "50" or "60000/1001"
};
std::optional<Rate> parseRate(const QByteArray &text);

// Decimal digits and nothing else, at most `most`.
std::optional<int> parseNumber(const QByteArray &text, int most);

// "m=video 20000 RTP/AVP 96"
struct SdpMediaLine {
    QByteArray word;
    int port;
    QByteArray protocol;
    QList<QByteArray> formats;
};
std::optional<SdpMediaLine> parseMediaLine(const SdpLine &line);

// "c=IN IP4 239.1.1.1/64"
struct SdpConnection {
    QByteArray address;          // without what follows a "/"
    std::optional<quint32> ipv4; // absent for a host name or IPv6
    QByteArray suffix;           // behind the first "/"
    bool isGroup() const;
};
std::optional<SdpConnection> parseConnection(const SdpLine &line);

// "a=rtpmap:96 L24/48000/8"
struct SdpRtpMap {
    int payload;
    QByteArray encoding;
    int clockRate;
    int channels; // 0 when not given
};
std::optional<SdpRtpMap> parseRtpMap(const SdpLine &line);

// "a=source-filter: incl IN IP4 239.1.1.1 10.0.0.5"
struct SdpFilter {
    const SdpLine *line;
    QByteArray mode, network, family, destination;
    QList<QByteArray> sources;
};
std::optional<SdpFilter> parseFilter(const SdpLine &line);

// "a=fmtp:96 width=1920; interlace;"
struct SdpParameter {
    QByteArray name, value;
    bool hasValue;
};
struct SdpFmtp {
    const SdpLine *line = nullptr; // null: there is none
    QByteArray payload;
    std::vector<SdpParameter> parameters;
    const SdpParameter *find(const char *name) const;
    QByteArray value(const char *name) const;
};
SdpFmtp parseFmtp(const SdpLine &line);

enum class SdpKind { Video, Audio, Anc, Other };
// Which ways a section goes. Without a word of its own, and of the session, it goes both.
enum SdpDirection { Receives = 1, Sends = 2, Both = 3, Inactive = 0 };

struct SdpStream {
    const SdpText *text;
    const SdpSection *section;
    SdpKind kind; // ancillary data is told by its encoding, whatever the media word
    SdpDirection direction;
    std::optional<SdpMediaLine> media;
    const SdpLine *connectionLine; // its own or the session's
    std::optional<SdpConnection> connection;
    const SdpLine *mapLine;
    std::optional<SdpRtpMap> map;
    SdpFmtp fmtp;
    std::vector<SdpFilter> filters; // its own, or the session's
    int line() const { return section->number(); }
    // "239.1.1.1:20000", empty when either is missing.
    QByteArray destination() const;
    // The first included source address, or empty.
    QByteArray source() const;
};

// The views point into the text.
SdpStream streamOf(const SdpText &text, const SdpSection &section);
std::vector<SdpStream> streamsOf(const SdpText &text);

} // namespace ops

#endif
