// SPDX-License-Identifier: MIT
#include "fleet/conflict.h"

#include "fleet/documentjson.h"

#include <QCryptographicHash>

#include <nlohmann/json.hpp>

namespace fleet {

namespace {

constexpr int kMaxDepth = 5; // a document and what is around it
constexpr int kIdLength = 16;

std::string conflictText(const std::string &overruled, const Author &stoodBy, qint64 stoodAtMs)
{
    return "{\"format\":" + std::to_string(kDocumentFormat) + ",\"stood\":{" +
           authorText(stoodBy, stoodAtMs) + "},\"overruled\":" + overruled + '}';
}

} // namespace

std::string conflictId(const Conflict &conflict)
{
    const ops::Outcome<std::string> overruled = writeDocument(conflict.overruled);
    const QByteArray bytes = overruled ? QByteArray::fromStdString(*overruled) : QByteArray();
    const QByteArray hash = QCryptographicHash::hash(bytes, QCryptographicHash::Sha256).toHex();
    return hash.left(kIdLength).toStdString();
}

ops::Outcome<std::string> writeConflict(const Conflict &conflict)
{
    const ops::Outcome<std::string> overruled = writeDocument(conflict.overruled);
    if (!overruled)
        return overruled.failure();
    return conflictText(*overruled, conflict.stoodBy, conflict.stoodAtMs);
}

ops::Outcome<Conflict> readConflict(std::string_view bytes)
{
    ops::Json json;
    if (const QByteArray bad = parseForeign(bytes, kMaxConflictBytes, kMaxDepth, &json); !bad.isEmpty())
        return ops::wrong(bad);
    const ops::Json *stood = memberOf(json, "stood");
    const ops::Json *inner = memberOf(json, "overruled");
    Conflict conflict;
    if (!stood || !inner || !readAuthor(*stood, &conflict.stoodBy, &conflict.stoodAtMs))
        return ops::wrong("no overruled document, or nobody who stood");
    const std::string text = inner->dump();
    const ops::Outcome<Document> document = readDocument(text);
    if (!document)
        return document.failure();
    if (conflictText(text, conflict.stoodBy, conflict.stoodAtMs) != bytes)
        return ops::wrong("not in the one spelling of conflicts");
    conflict.overruled = *document;
    return conflict;
}

} // namespace fleet
