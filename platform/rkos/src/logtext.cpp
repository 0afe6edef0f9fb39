// SPDX-License-Identifier: MIT
#include "logtext.h"

#include "rkos.h"

#include <cstdint>
#include <cstdio>
#include <unistd.h>

namespace rkos {

namespace {

constexpr std::string_view blanks = " \t\r\n\v\f";
constexpr std::string_view ellipsis = "\xe2\x80\xa6";

struct CharacterRange {
    uint32_t first;
    uint32_t last;
};

// Characters that are valid but would disturb who reads the log on a terminal.
// clang-format off
const CharacterRange disturbing[] = {
    {0x0000, 0x001f}, // C0 controls
    {0x007f, 0x009f}, // delete and C1 controls
    {0x061c, 0x061c}, // direction mark
    {0x200e, 0x200f}, // direction marks
    {0x2028, 0x202e}, // line and paragraph separator, direction overrides
    {0x2066, 0x2069}, // direction isolates
    {0xfeff, 0xfeff}, // byte order mark
};
// clang-format on

struct LeadByte {
    size_t length;
    uint32_t smallest; // a smaller number should have been written shorter
    unsigned char mask;
    unsigned char value;
};

// clang-format off
const LeadByte leadBytes[] = {
    {1, 0x0,     0x80, 0x00},
    {2, 0x80,    0xe0, 0xc0},
    {3, 0x800,   0xf0, 0xe0},
    {4, 0x10000, 0xf8, 0xf0},
};
// clang-format on

struct Character {
    uint32_t code = 0;
    size_t length = 0; // 0: no UTF-8
};

Character decode(std::string_view text)
{
    const auto lead = static_cast<unsigned char>(text[0]);
    for (const LeadByte &form : leadBytes) {
        if ((lead & form.mask) != form.value || text.size() < form.length)
            continue;
        uint32_t code = lead & static_cast<unsigned char>(~form.mask);
        for (size_t i = 1; i < form.length; ++i) {
            const auto next = static_cast<unsigned char>(text[i]);
            if ((next & 0xc0) != 0x80)
                return {};
            code = code << 6 | (next & 0x3f);
        }
        const bool surrogate = code >= 0xd800 && code <= 0xdfff;
        if (code < form.smallest || code > 0x10ffff || surrogate)
            return {};
        return {code, form.length};
    }
    return {};
}

bool isDisturbing(uint32_t code)
{
    for (const CharacterRange &range : disturbing) {
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

std::string_view trimmed(std::string_view text)
{
    const size_t first = text.find_first_not_of(blanks);
    if (first == std::string_view::npos)
        return {};
    return text.substr(first, text.find_last_not_of(blanks) - first + 1);
}

// Cut before a character, not inside one; runs of continuation bytes that are no text are cut anywhere.
std::string_view cut(std::string_view text, size_t size)
{
    size_t end = size;
    for (int back = 0; back < 3 && end > 0 && (static_cast<unsigned char>(text[end]) & 0xc0) == 0x80; ++back)
        --end;
    return text.substr(0, end);
}

} // namespace

std::string logText(std::string_view message)
{
    std::string_view rest = trimmed(message);
    const bool tooLong = rest.size() > maxMessageBytes;
    if (tooLong)
        rest = cut(rest, maxMessageBytes);
    std::string text;
    text.reserve(rest.size() + ellipsis.size());
    while (!rest.empty()) {
        const Character character = decode(rest);
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
        text += ellipsis;
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
