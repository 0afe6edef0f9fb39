// SPDX-License-Identifier: MIT
#include "ops/jsontext.h"

#include <QTextCodec>

#include <nlohmann/json.hpp>

#include <algorithm>

namespace ops {

bool isUtf8(const QByteArray &text)
{
    if (std::all_of(text.begin(), text.end(), [](char c) { return static_cast<unsigned char>(c) < 0x80; }))
        return true;
    static QTextCodec *const codec = QTextCodec::codecForName("UTF-8");
    QTextCodec::ConverterState state;
    codec->toUnicode(text.constData(), text.size(), &state);
    return state.invalidChars == 0 && state.remainingChars == 0;
}

Json jsonText(const QByteArray &text)
{
    if (isUtf8(text))
        return text.toStdString();
    return {{"base64", text.toBase64().toStdString()}};
}

std::optional<QByteArray> textOfJson(const Json &json)
{
    if (json.is_string())
        return QByteArray::fromStdString(json.get_ref<const std::string &>());
    const bool packed = json.is_object() && json.size() == 1 && json.contains("base64");
    if (!packed || !json["base64"].is_string())
        return std::nullopt;
    const auto decoded = QByteArray::fromBase64Encoding(
        QByteArray::fromStdString(json["base64"].get_ref<const std::string &>()),
        QByteArray::Base64Encoding | QByteArray::AbortOnBase64DecodingErrors);
    return decoded ? std::optional<QByteArray>(*decoded) : std::nullopt;
}

} // namespace ops
