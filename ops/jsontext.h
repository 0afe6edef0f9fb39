// SPDX-License-Identifier: MIT
//
// Bytes of the store in JSON: a string, or {"base64": "..."} where they are no UTF-8. Pure; any thread.
#ifndef CORVEL_OPS_JSONTEXT_H
#define CORVEL_OPS_JSONTEXT_H

#include <QByteArray>

#include <nlohmann/json_fwd.hpp>

#include <optional>

namespace ops {

using Json = nlohmann::ordered_json;

bool isUtf8(const QByteArray &text);

Json jsonText(const QByteArray &text);

// The bytes again; nothing when it is neither of the two forms.
std::optional<QByteArray> textOfJson(const Json &json);

} // namespace ops

#endif
