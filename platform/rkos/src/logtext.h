// SPDX-License-Identifier: MIT
//
// What a message looks like in the log: one line, no control characters, valid UTF-8.
#ifndef RKOS_LOGTEXT_H
#define RKOS_LOGTEXT_H

#include <cstddef>
#include <string>
#include <string_view>

namespace rkos {

// A longer message is cut here, between two characters, and ends in an ellipsis.
constexpr size_t kMaxMessageBytes = 4096;

// White space and line ends around the message are dropped; inside it control characters, line
// and paragraph separators, direction overrides and bytes that are no UTF-8 become escapes (\n, \t, \x1b,
// \u202e). A backslash stays as it is: key paths are full of them and nothing reads the log back.
std::string logText(std::string_view message);

// The whole line with its line end: "2026-11-21T03:51:47.123Z [4711] text".
std::string logLine(std::string_view text);

} // namespace rkos

#endif // RKOS_LOGTEXT_H
