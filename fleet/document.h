// SPDX-License-Identifier: MIT
//
// The document of one key path: all of its values together, because a channel's settings belong together,
// with who left it so and when. A path without values that once had some has a document too: a deletion is
// a state. Equal values are equal bytes, whoever writes them. docs/fleet.md describes the format.
//
// The reader trusts nobody: it takes the one spelling that the writer gives and nothing else. Pure; any
// thread.
#ifndef CORVEL_FLEET_DOCUMENT_H
#define CORVEL_FLEET_DOCUMENT_H

#include "ops/outcome.h"
#include "ops/snapshot.h"

#include <map>
#include <string>
#include <string_view>

namespace fleet {

constexpr int kDocumentFormat = 1;
constexpr std::size_t kMaxDocumentBytes = 64 * 1024;
constexpr int kMaxPathBytes = 300; // so that its key, three bytes for one at worst, fits into a note
constexpr int kMaxNameBytes = 256;
constexpr int kMaxWordBytes = 64; // of who, user and program

struct Author {
    QByteArray who; // the machine's name in the fleet: "desk-3", "lon-play-17"
    QByteArray user;
    QByteArray program;
    quint32 pid = 0;
};

// In order of their names without regard to ASCII case; names that differ in case only are two.
struct NameOrder {
    bool operator()(const QByteArray &left, const QByteArray &right) const;
};
using Values = std::map<QByteArray, ops::Value, NameOrder>;

struct Document {
    QByteArray path; // as the first writer spelled it
    Author by;
    qint64 atMs = 0; // since 1970, UTC
    Values values;

    // Nothing is left of the path.
    bool deleted() const { return values.empty(); }
};

// What merging compares: neither who, nor when, nor the spelling of the path.
bool sameState(const Document &left, const Document &right);

// A failure says why this cannot be shared: too long, or names that JSON cannot hold.
ops::Outcome<std::string> writeDocument(const Document &document);
ops::Outcome<Document> readDocument(std::string_view bytes);

// "2026-11-21T13:59:00.000Z", and back; -1 for what is not written so.
QByteArray timeText(qint64 atMs);
qint64 timeOfText(const QByteArray &text);

} // namespace fleet

#endif
