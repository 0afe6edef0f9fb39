// SPDX-License-Identifier: MIT
//
// Run by fulldisk.sh on a disk of 64 KiB: a C program, so that the header is also seen to be plain C.
#include "rkos.h"

#include <stdio.h>
#include <string.h>

#define CHECK(condition)                                                                                     \
    do {                                                                                                     \
        if (!(condition)) {                                                                                  \
            printf("line %d: %s\n", __LINE__, #condition);                                                   \
            return 1;                                                                                        \
        }                                                                                                    \
    } while (0)

static uint64_t create(const char *path)
{
    return rkOSCreateFile(path, RKOS_GENERIC_WRITE, RKOS_SHARE_READ, NULL, RKOS_CREATE_ALWAYS,
                          RKOS_ATTRIBUTE_NORMAL, NULL);
}

int main(int argc, char **argv)
{
    static char block[4096];
    char path[4096];
    uint32_t written = 0;
    uint32_t total = 0;
    CHECK(argc == 2);
    memset(block, 'x', sizeof block - 1);
    ErrLogSetFileName("fulldisk");

    snprintf(path, sizeof path, "%s/big", argv[1]);
    uint64_t file = create(path);
    CHECK(file != RKOS_INVALID_HANDLE);
    while (rkOSWriteFile(file, block, sizeof block, &written, NULL) != 0)
        total += written;
    CHECK(total + written == 65536);
    CHECK(rkOSfputs("x", file) < 0);
    CHECK(rkOSCloseFile(file) == 0);

    // The disk is full now: a small file can be made, but nothing goes in.
    snprintf(path, sizeof path, "%s/small", argv[1]);
    file = create(path);
    CHECK(file != RKOS_INVALID_HANDLE);
    CHECK(rkOSfputs("v=0\r\n", file) < 0);
    CHECK(rkOSCloseFile(file) == 0);
    return 0;
}
