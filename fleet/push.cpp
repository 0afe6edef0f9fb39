// SPDX-License-Identifier: MIT
#include "fleet/push.h"

#include "fleet/documentjson.h"

#include <QCryptographicHash>

#include <algorithm>

namespace fleet {

namespace {

constexpr std::size_t kNamedPaths = 20;

// The document that was changed last speaks for all.
const Document &newest(const Documents &documents)
{
    const auto older = [](const auto &left, const auto &right) {
        return left.second.atMs < right.second.atMs;
    };
    return std::max_element(documents.begin(), documents.end(), older)->second;
}

std::string pathsText(const Documents &documents)
{
    std::string text;
    std::size_t named = 0;
    for (const auto &[key, document] : documents) {
        if (named++ < kNamedPaths)
            text += (text.empty() ? "" : ",") + quoted(document.path);
    }
    return text;
}

} // namespace

std::string receiptKey(const Place &place, const QByteArray &who, std::uint64_t number)
{
    const std::string slot = std::to_string(number % kHistorySlots);
    return historyPrefix(place.site, place.server) + keyPart(who) + '/' + (slot.size() < 2 ? "0" : "") + slot;
}

Receipt receiptOf(const Place &place, const QByteArray &who, std::uint64_t number, const Documents &documents)
{
    const Document &last = newest(documents);
    return {receiptKey(place, who, number),
            "{\"format\":1,\"push\":" + std::to_string(number) + ',' + authorText(last.by, last.atMs) +
                ",\"configuration\":" + quoted(place.configuration) + ",\"documents\":" +
                std::to_string(documents.size()) + ",\"paths\":[" + pathsText(documents) + "]}"};
}

std::string receiptMark(const std::string &value)
{
    return QCryptographicHash::hash(QByteArray::fromStdString(value), QCryptographicHash::Sha256)
        .toHex()
        .toStdString();
}

} // namespace fleet
