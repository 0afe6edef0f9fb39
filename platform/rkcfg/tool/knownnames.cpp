// SPDX-License-Identifier: MIT
#include "knownnames.h"

#include <algorithm>
#include <iterator>
#include <string>
#include <strings.h>

namespace {

struct Row {
    const char *path; // "#" stands for a number
    const char *name;
    bool isText;
};

const Row kRows[] = {
#include "knownnames.inc"
};

bool isDigit(char c)
{
    return c >= '0' && c <= '9';
}

// "#" in place of each number.
std::string withoutNumbers(const std::string &path)
{
    std::string plain;
    for (const char c : path) {
        if (!isDigit(c))
            plain += c;
        else if (plain.empty() || plain.back() != '#')
            plain += '#';
    }
    return plain;
}

} // namespace

KnownType knownType(const char *path, const char *name)
{
    const std::string anyNumber = withoutNumbers(path);
    const auto *const row = std::find_if(std::begin(kRows), std::end(kRows), [&](const Row &known) {
        return std::string(name) == known.name &&
               (strcasecmp(path, known.path) == 0 || strcasecmp(anyNumber.c_str(), known.path) == 0);
    });
    if (row == std::end(kRows))
        return KnownType::None;
    return row->isText ? KnownType::Text : KnownType::Number;
}
