// SPDX-License-Identifier: MIT
#include "pathorder.h"

#include <algorithm>
#include <cstdint>
#include <cstring>

namespace rkcfg {

namespace {

constexpr int kWordBytes = sizeof(uint64_t);

uint64_t wordAt(const char *text)
{
    uint64_t word = 0;
    memcpy(&word, text, kWordBytes);
    return word;
}

bool hasZero(uint64_t word)
{
    return ((word - 0x0101010101010101u) & ~word & 0x8080808080808080u) != 0;
}

// SQLite ends its comparison at a zero byte, so nothing is passed over that holds one.
int compare(void *, int leftBytes, const void *leftText, int rightBytes, const void *rightText)
{
    const char *left = static_cast<const char *>(leftText);
    const char *right = static_cast<const char *>(rightText);
    int rest = std::min(leftBytes, rightBytes);
    for (; rest >= kWordBytes; rest -= kWordBytes, left += kWordBytes, right += kWordBytes) {
        if (wordAt(left) != wordAt(right) || hasZero(wordAt(left)))
            break;
    }
    const int order = sqlite3_strnicmp(left, right, rest);
    return order != 0 ? order : leftBytes - rightBytes;
}

} // namespace

int hastenPathOrder(sqlite3 *db)
{
    return sqlite3_create_collation(db, "NOCASE", SQLITE_UTF8, nullptr, compare);
}

} // namespace rkcfg
