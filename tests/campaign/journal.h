/* SPDX-License-Identifier: MIT */
/*
 * What a program did to the files of the store, written down so that another one can make of it what a power
 * cut would have left: the writes, and which of them had been synced. Filled by the shim (shim.c) into the
 * file that CAMPAIGN_JOURNAL names; one process at a time.
 */
#ifndef CAMPAIGN_JOURNAL_H
#define CAMPAIGN_JOURNAL_H

#include <stdint.h>
#include <sys/types.h>

#ifdef __cplusplus
extern "C" {
#endif

enum JournalKind {
    JOURNAL_WRITE,    /* at, then size bytes */
    JOURNAL_TRUNCATE, /* at: the new size */
    JOURNAL_SYNC,     /* of a file */
    JOURNAL_SYNC_DIR, /* of the folder */
    JOURNAL_NAME,     /* the file got this name: made or linked */
    JOURNAL_UNNAME,   /* the name is gone */
    JOURNAL_RENAME,   /* the file was renamed: "old/new" */
    JOURNAL_TOLD /* what the program was told; "inode" says of what, "at" up to where. It writes these itself
                  */
};

/* In the file each is followed by its bytes, or by the name without the folder. */
struct JournalRecord {
    uint32_t kind;
    uint32_t size;
    uint64_t inode;
    uint64_t at;
};

/* Each after the call that it tells of, and only when that went well. */
void journalWrite(int fd, const void *bytes, size_t size, uint64_t at);
void journalTruncate(int fd, uint64_t size);
void journalSync(int fd);
void journalNamed(const char *path);
void journalUnnamed(const char *path);
void journalRenamed(const char *from, const char *to);

#ifdef __cplusplus
}
#endif

#endif
