// SPDX-License-Identifier: MIT
//
// What documents and conflicts share: strict reading of foreign JSON, and the pieces that both are written
// of. Private to fleet/.
#ifndef CORVEL_FLEET_DOCUMENTJSON_H
#define CORVEL_FLEET_DOCUMENTJSON_H

#include "fleet/document.h"
#include "ops/jsontext.h"

namespace fleet {

// What is wrong, or nothing: no JSON, no UTF-8, longer or deeper than it may be, of another format.
QByteArray parseForeign(std::string_view bytes, std::size_t maxBytes, int maxDepth, ops::Json *json);

std::string quoted(const QByteArray &text);
// "by":{...},"at":"..."
std::string authorText(const Author &by, qint64 atMs);
bool readAuthor(const ops::Json &json, Author *by, qint64 *atMs);
// The member as an object or a text; null where it is none.
const ops::Json *memberOf(const ops::Json &json, const char *name);
QByteArray textMember(const ops::Json &json, const char *name);

// UTF-8 without control characters, not empty, at most so many bytes.
bool plainText(const QByteArray &text, int maxBytes);

} // namespace fleet

#endif
