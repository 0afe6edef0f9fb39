// SPDX-License-Identifier: MIT
//
// White space at the ends of a text. Private to the libraries in platform/; each compiles its own copy.
#ifndef CORVEL_PLATFORM_TEXT_H
#define CORVEL_PLATFORM_TEXT_H

#include <string_view>

namespace rk {

// The text without blanks, tabs and line ends around it.
inline std::string_view trimmed(std::string_view text)
{
    constexpr std::string_view kBlanks = " \t\r\n\v\f";
    const size_t first = text.find_first_not_of(kBlanks);
    if (first == std::string_view::npos)
        return {};
    return text.substr(first, text.find_last_not_of(kBlanks) - first + 1);
}

} // namespace rk

#endif // CORVEL_PLATFORM_TEXT_H
