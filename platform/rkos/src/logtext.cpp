// SPDX-License-Identifier: MIT
#include "logtext.h"

#include "rkos.h"
#include "text.h"
#include "utf8.h"

#include <cstdint>
#include <cstdio>
#include <unistd.h>

namespace rkos {

namespace {

constexpr std::string_view kEllipsis = "\xe2\x80\xa6";

struct CharacterRange {
    uint32_t first;
    uint32_t last;
};

// Characters that are valid but would disturb who reads the log on a terminal.
// clang-format off
const CharacterRange kDisturbing[] = {
    {0x0000, 0x001f}, // C0 controls
    {0x007f, 0x009f}, // delete and C1 controls
    {0x061c, 0x061c}, // direction mark
    {0x200e, 0x200f}, // direction marks
    {0x2028, 0x202e}, // line and paragraph separator, direction overrides
    {0x2066, 0x2069}, // direction isolates
    {0xfeff, 0xfeff}, // byte order mark
};
// clang-format on

bool isDisturbing(uint32_t code)
{
    for (const CharacterRange &range : kDisturbing) {
        if (code >= range.first && code <= range.last)
            return true;
    }
    return false;
}

std::string escaped(uint32_t code)
{
    if (code == '\n')
        return "\\n";
    if (code == '\r')
        return "\\r";
    if (code == '\t')
        return "\\t";
    char text[16];
    snprintf(text, sizeof text, code < 0x80 ? "\\x%02x" : "\\u%04x", code);
    return text;
}

std::string escapedByte(char byte)
{
    char text[8];
    snprintf(text, sizeof text, "\\x%02x", static_cast<unsigned>(static_cast<unsigned char>(byte)));
    return text;
}

} // namespace

std::string logText(std::string_view message)
{
    std::string_view rest = rk::trimmed(message);
    const bool tooLong = rest.size() > kMaxMessageBytes;
    if (tooLong)
        rest = rk::cutBefore(rest, kMaxMessageBytes);
    std::string text;
    text.reserve(rest.size() + kEllipsis.size());
    while (!rest.empty()) {
        const rk::Character character = rk::firstCharacter(rest);
        const size_t length = character.length == 0 ? 1 : character.length;
        if (character.length == 0)
            text += escapedByte(rest[0]);
        else if (isDisturbing(character.code))
            text += escaped(character.code);
        else
            text += rest.substr(0, length);
        rest.remove_prefix(length);
    }
    if (tooLong)
        text += kEllipsis;
    return text;
}

std::string logLine(std::string_view text)
{
    char date[64];
    char time[64];
    rkOSGetDateTimeString(date, time, RKOS_TIME_MILLI);
    std::string line = std::string(date) + "T" + time + "Z [" + std::to_string(getpid()) + "] ";
    line += text;
    line += '\n';
    return line;
}

} // namespace rkos
