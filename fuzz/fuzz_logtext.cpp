// SPDX-License-Identifier: MIT
// Any bytes as a message for the log: one line of valid UTF-8 that is bounded and disturbs no terminal.
#include "logtext.h"
#include "require.h"
#include "utf8.h"

#include <cstdint>

using namespace rkos;

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    // A message longer than what is kept: the input, over and over.
    std::string message(reinterpret_cast<const char *>(data), size);
    if (size > 0 && data[0] == 'L' && size % 32 == 0) // seldom: it takes long
        while (message.size() < kMaxMessageBytes + 100)
            message += message;
    const std::string text = logText(message);
    require(text.size() <= 6 * kMaxMessageBytes + 3, "length");
    std::string_view rest = text;
    while (!rest.empty()) {
        const rk::Character character = rk::firstCharacter(rest);
        require(character.length > 0, "not UTF-8");
        require(character.code >= 0x20 && (character.code < 0x7f || character.code > 0x9f),
                "control character");
        require(character.code < 0x2028 || character.code > 0x202e, "separator or direction");
        rest.remove_prefix(character.length);
    }
    const std::string line = logLine(text);
    require(line.back() == '\n' && line.find('\n') == line.size() - 1, "several lines");
    return 0;
}
