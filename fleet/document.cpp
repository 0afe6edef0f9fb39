// SPDX-License-Identifier: MIT
#include "fleet/document.h"

#include "fleet/documentjson.h"

#include <nlohmann/json.hpp>

namespace fleet {

namespace {

constexpr int kMaxDepth = 4; // document, values, value, bytes that are no text
constexpr const char *kTextType = "string";
constexpr const char *kNumberType = "dword";

std::string valueText(const ops::Value &value)
{
    const std::string stored = value.isText ? quoted(value.text) : std::to_string(value.number);
    return "{\"type\":\"" + std::string(value.isText ? kTextType : kNumberType) + "\",\"value\":" + stored +
           '}';
}

std::string valuesText(const Values &values)
{
    std::string text;
    for (const auto &[name, value] : values)
        text += (text.empty() ? "" : ",") + quoted(name) + ':' + valueText(value);
    return text;
}

std::string documentText(const Document &document)
{
    return "{\"format\":" + std::to_string(kDocumentFormat) + ",\"path\":" + quoted(document.path) + ',' +
           authorText(document.by, document.atMs) + ",\"values\":{" + valuesText(document.values) + '}' +
           (document.deleted() ? ",\"deleted\":true}" : "}");
}

// What is wrong with the names, or nothing.
QByteArray badName(const Document &document)
{
    if (!plainText(document.path, kMaxPathBytes))
        return "a path that is empty, too long, or no plain text";
    for (const auto &[name, value] : document.values) {
        if (!plainText(name, kMaxNameBytes))
            return "a name that is empty, too long, or no plain text";
    }
    return {};
}

std::optional<ops::Value> readValue(const ops::Json &json)
{
    const QByteArray type = textMember(json, "type");
    const ops::Json *stored = memberOf(json, "value");
    if (!stored)
        return std::nullopt;
    if (type == kNumberType && stored->is_number_unsigned() && stored->get<quint64>() <= 0xffffffffu)
        return ops::Value::ofNumber(stored->get<quint32>());
    const std::optional<QByteArray> text = type == kTextType ? ops::textOfJson(*stored) : std::nullopt;
    return text ? std::optional<ops::Value>(ops::Value::ofText(*text)) : std::nullopt;
}

bool readValues(const ops::Json *json, Values *values)
{
    if (!json || !json->is_object())
        return false;
    for (const auto &item : json->items()) {
        const std::optional<ops::Value> value = readValue(item.value());
        if (!value)
            return false;
        values->emplace(QByteArray::fromStdString(item.key()), *value);
    }
    return true;
}

} // namespace

bool NameOrder::operator()(const QByteArray &left, const QByteArray &right) const
{
    const int order = ops::comparePaths(left, right);
    return order != 0 ? order < 0 : left < right;
}

bool sameState(const Document &left, const Document &right)
{
    return left.values == right.values;
}

ops::Outcome<std::string> writeDocument(const Document &document)
{
    if (const QByteArray bad = badName(document); !bad.isEmpty())
        return ops::wrong(bad);
    std::string text = documentText(document);
    if (text.size() > kMaxDocumentBytes)
        return ops::wrong("longer than " + QByteArray::number(static_cast<int>(kMaxDocumentBytes)) +
                          " bytes");
    return text;
}

ops::Outcome<Document> readDocument(std::string_view bytes)
{
    ops::Json json;
    if (const QByteArray bad = parseForeign(bytes, kMaxDocumentBytes, kMaxDepth, &json); !bad.isEmpty())
        return ops::wrong(bad);
    Document document;
    document.path = textMember(json, "path");
    if (!readAuthor(json, &document.by, &document.atMs))
        return ops::wrong("no author or no time");
    if (!readValues(memberOf(json, "values"), &document.values))
        return ops::wrong("a value that is none");
    if (const QByteArray bad = badName(document); !bad.isEmpty())
        return ops::wrong(bad);
    // Another order, members of others, a name twice, spaces: none of it is ours.
    if (documentText(document) != bytes)
        return ops::wrong("not in the one spelling of documents");
    return document;
}

} // namespace fleet
