// SPDX-License-Identifier: MIT
#include "identity.h"

#include "text.h"

#include <algorithm>
#include <cstdio>
#include <sys/random.h>
#include <vector>

namespace rkptp {

namespace {

constexpr size_t kMacBytes = 6;

int hexDigit(char c)
{
    if (c >= '0' && c <= '9')
        return c - '0';
    if (c >= 'a' && c <= 'f')
        return c - 'a' + 10;
    if (c >= 'A' && c <= 'F')
        return c - 'A' + 10;
    return -1;
}

bool isSeparator(char c)
{
    return c == '-' || c == ':' || c == '.';
}

// The bytes of the text, or nothing when a separator splits a byte, differs from the first or stands at an
// end.
std::optional<std::vector<uint8_t>> readBytes(std::string_view text)
{
    std::vector<uint8_t> bytes;
    char separator = 0;
    for (size_t i = 0; i < text.size(); i += 2) {
        if (isSeparator(text[i])) {
            if (bytes.empty() || (separator && text[i] != separator))
                return std::nullopt;
            separator = text[i++];
        }
        const int high = i < text.size() ? hexDigit(text[i]) : -1;
        const int low = i + 1 < text.size() ? hexDigit(text[i + 1]) : -1;
        if (high < 0 || low < 0 || bytes.size() == ClockId().size())
            return std::nullopt;
        bytes.push_back(static_cast<uint8_t>(high * 16 + low));
    }
    return bytes;
}

} // namespace

std::optional<ClockId> parseIdentity(std::string_view text)
{
    auto bytes = readBytes(rk::trimmed(text));
    if (!bytes)
        return std::nullopt;
    if (bytes->size() == kMacBytes)
        bytes->insert(bytes->begin() + 3, {0xff, 0xfe});
    ClockId id;
    if (bytes->size() != id.size())
        return std::nullopt;
    std::copy(bytes->begin(), bytes->end(), id.begin());
    return id;
}

bool isUnknown(const ClockId &id)
{
    return std::all_of(id.begin(), id.end(), [](uint8_t byte) { return byte == 0; });
}

std::string formatIdentity(const ClockId &id)
{
    if (isUnknown(id))
        return {};
    std::string text;
    char byte[4];
    for (uint8_t value : id) {
        snprintf(byte, sizeof byte, "%02X-", unsigned{value});
        text += byte;
    }
    text.pop_back();
    return text;
}

std::string formatPortId(const PortId &id)
{
    const std::string clock = formatIdentity(id.clock);
    return clock.empty() ? clock : clock + "-" + std::to_string(id.port);
}

std::string formatForPtp4l(const ClockId &id)
{
    char text[32];
    snprintf(text, sizeof text, "%02x%02x%02x.%02x%02x.%02x%02x%02x", id[0], id[1], id[2], id[3], id[4],
             id[5], id[6], id[7]);
    return text;
}

ClockId randomIdentity()
{
    constexpr unsigned kLocalBit = 0x02;
    constexpr unsigned kGroupBit = 0x01;
    ClockId id{};
    // Eight bytes never fail or come in parts once the system is up.
    while (getrandom(id.data(), id.size(), 0) < 0)
        continue;
    id[0] = static_cast<uint8_t>((id[0] | kLocalBit) & ~kGroupBit);
    id[3] = 0xff;
    id[4] = 0xfe;
    return id;
}

} // namespace rkptp
