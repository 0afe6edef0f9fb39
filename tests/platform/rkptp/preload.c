/* SPDX-License-Identifier: MIT */
/* Preloaded by a test; says so in every program it gets into. */
#include <stdio.h>

__attribute__((constructor)) static void say(void)
{
    puts("preloaded");
}
