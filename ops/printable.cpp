// SPDX-License-Identifier: MIT
#include "ops/printable.h"

#include "ops/jsontext.h"

#include <algorithm>

namespace ops {

QByteArray printable(const QByteArray &text)
{
    const bool valid = isUtf8(text);
    const auto harmless = [valid](char c) {
        const auto byte = static_cast<unsigned char>(c);
        return byte >= 0x20 && byte != 0x7f && (valid || byte < 0x80);
    };
    if (std::all_of(text.begin(), text.end(), harmless))
        return text;
    QByteArray shown;
    for (const char c : text)
        shown += harmless(c) ? QByteArray(1, c) : "\\x" + QByteArray(1, c).toHex();
    return shown;
}

} // namespace ops
