// SPDX-License-Identifier: MIT
//
// Strict UTF-8 decoding. Private to the libraries in platform/; each compiles its own copy.
#ifndef CORVEL_PLATFORM_UTF8_H
#define CORVEL_PLATFORM_UTF8_H

#include <cstddef>
#include <cstdint>
#include <string_view>

namespace rk {

struct Character {
    uint32_t code = 0;
    size_t length = 0; // bytes in the text; 0: no UTF-8
};

// A byte behind the first one of a character.
constexpr bool isContinuation(char byte)
{
    return (static_cast<unsigned char>(byte) & 0xc0) == 0x80;
}

// The first character of `text`. Length 0 when the text is empty or does not begin with a character that is
// complete, written as short as it can be, no surrogate and within Unicode.
inline Character firstCharacter(std::string_view text)
{
    struct LeadByte {
        size_t length;
        uint32_t smallest; // a smaller number should have been written shorter
        unsigned char mask;
        unsigned char value;
    };
    // clang-format off
    constexpr LeadByte kLeadBytes[] = {
        {1, 0x0,     0x80, 0x00},
        {2, 0x80,    0xe0, 0xc0},
        {3, 0x800,   0xf0, 0xe0},
        {4, 0x10000, 0xf8, 0xf0},
    };
    // clang-format on
    const auto lead = static_cast<unsigned char>(text.empty() ? '\xff' : text[0]);
    for (const LeadByte &form : kLeadBytes) {
        if ((lead & form.mask) != form.value || text.size() < form.length)
            continue;
        uint32_t code = lead & static_cast<unsigned char>(~form.mask);
        bool whole = true;
        for (const char next : text.substr(1, form.length - 1)) {
            whole = whole && isContinuation(next);
            code = code << 6 | (static_cast<unsigned char>(next) & 0x3f);
        }
        const bool surrogate = code >= 0xd800 && code <= 0xdfff;
        return whole && code >= form.smallest && code <= 0x10ffff && !surrogate ? Character{code, form.length}
                                                                                : Character();
    }
    return {};
}

// At most `size` bytes of the text, cut before a character and not inside one; runs of continuation bytes
// that are no text are cut anywhere.
inline std::string_view cutBefore(std::string_view text, size_t size)
{
    size_t end = size;
    for (int back = 0; end < text.size() && back < 3 && end > 0 && isContinuation(text[end]); ++back)
        --end;
    return text.substr(0, end);
}

} // namespace rk

#endif // CORVEL_PLATFORM_UTF8_H
