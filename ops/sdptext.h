// SPDX-License-Identifier: MIT
//
// A session description (SDP, RFC 4566) as its lines, cut into the session's part and one section per
// media line. Nothing is lost and nothing judged: what cannot be understood stays a line.
// Parsers at hand (GStreamer's, the one of the browsers) keep neither line numbers nor broken lines, and
// both are what a check is about; hence this small one.
#ifndef CORVEL_OPS_SDPTEXT_H
#define CORVEL_OPS_SDPTEXT_H

#include <QByteArray>

#include <vector>

namespace ops {

struct SdpLine {
    int number;      // in the file, counted from 1; 0 for a line that was added
    QByteArray text; // without its line end

    char type() const;                        // the letter before "=", or NUL for a line of no such form
    QByteArray value() const;                 // behind the "="
    bool isAttribute(const char *name) const; // "a=name" or "a=name:…"
    QByteArray attributeValue() const;        // behind the first ":", or empty
    QByteArray trimmedValue() const;          // the same without blanks around it
};

struct SdpSection {
    std::vector<SdpLine> lines; // a media section starts with its media line

    const SdpLine *find(char type) const;
    const SdpLine *attribute(const char *name) const;
    std::vector<const SdpLine *> attributes(const char *name) const;
    int number() const { return lines.empty() ? 0 : lines.front().number; }
};

// The order of the lines of a session and of a media section (RFC 4566 5).
constexpr char kSdpSessionOrder[] = "vosiuepcbtrzka";
constexpr char kSdpMediaOrder[] = "micbka";

// What stands before the first such character (all when there is none), and what behind it.
QByteArray textBefore(const QByteArray &text, char separator);
QByteArray textBehind(const QByteArray &text, char separator);

struct SdpText {
    QByteArray file; // its name, for places
    SdpSection session;
    std::vector<SdpSection> media;
    bool bareLineFeeds = false; // a line ends in LF alone
    bool openEnd = false;       // the last line has no end

    // All lines in their order.
    std::vector<const SdpLine *> lines() const;
    // Adds a line where it belongs: a media line starts a section.
    void add(const SdpLine &line);
};

SdpText parseSdp(const QByteArray &bytes, const QByteArray &file);

// The text again, every line ended by CR LF.
QByteArray sdpBytes(const SdpText &text);

} // namespace ops

#endif
