/* SPDX-License-Identifier: MIT */
/* What a harness insists on beyond not crashing. */
#ifndef FUZZ_REQUIRE_H
#define FUZZ_REQUIRE_H

#include <cstdio>
#include <cstdlib>

inline void require(bool condition, const char *what)
{
    if (condition)
        return;
    std::fprintf(stderr, "broken: %s\n", what);
    std::abort();
}

#endif
