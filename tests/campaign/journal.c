/* SPDX-License-Identifier: MIT */
#define _GNU_SOURCE
#include "journal.h"

#include <fcntl.h>
#include <limits.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <sys/uio.h>
#include <unistd.h>

static int journal = -1;

/* Past the shim's own calls, which is where this comes from. */
__attribute__((constructor)) static void openJournal(void)
{
    const char *const path = getenv("CAMPAIGN_JOURNAL");
    if (path)
        journal = (int)syscall(SYS_openat, AT_FDCWD, path, O_WRONLY | O_APPEND | O_CLOEXEC, 0);
}

static void append(uint32_t kind, uint64_t inode, uint64_t at, const void *bytes, size_t size)
{
    const struct JournalRecord record = {kind, (uint32_t)size, inode, at};
    const struct iovec parts[2] = {{(void *)(uintptr_t)&record, sizeof record},
                                   {(void *)(uintptr_t)bytes, size}};
    if (syscall(SYS_writev, journal, parts, size > 0 ? 2 : 1) != (long)(sizeof record + size))
        abort();
}

/* The store's folder is called "corvel". Its index (-shm) is made anew after a power cut. */
static int isOurs(const char *path)
{
    const char *const folder = strstr(path, "/corvel/");
    const size_t length = strlen(path);
    return folder && !strchr(folder + strlen("/corvel/"), '/') &&
           !(length > 4 && !strcmp(path + length - 4, "-shm"));
}

/* 1 for a file of ours, 2 for the folder itself. */
static int meant(int fd, struct stat *info)
{
    char link[64];
    char path[PATH_MAX];
    if (journal < 0 || fstat(fd, info) != 0)
        return 0;
    snprintf(link, sizeof link, "/proc/self/fd/%d", fd);
    const ssize_t size = syscall(SYS_readlink, link, path, sizeof path - 1);
    if (size <= 0)
        return 0;
    path[size] = 0;
    if (S_ISDIR(info->st_mode))
        return size > 7 && !strcmp(path + size - 7, "/corvel") ? 2 : 0;
    char *const gone = strstr(path, " (deleted)");
    if (gone)
        *gone = 0;
    return S_ISREG(info->st_mode) && isOurs(path) ? 1 : 0;
}

void journalWrite(int fd, const void *bytes, size_t size, uint64_t at)
{
    struct stat info;
    if (meant(fd, &info) == 1)
        append(JOURNAL_WRITE, info.st_ino, at, bytes, size);
}

void journalTruncate(int fd, uint64_t size)
{
    struct stat info;
    if (meant(fd, &info) == 1)
        append(JOURNAL_TRUNCATE, info.st_ino, size, NULL, 0);
}

void journalSync(int fd)
{
    struct stat info;
    const int what = meant(fd, &info);
    if (what != 0)
        append(what == 1 ? JOURNAL_SYNC : JOURNAL_SYNC_DIR, info.st_ino, 0, NULL, 0);
}

static const char *nameIn(const char *path)
{
    return strrchr(path, '/') + 1;
}

void journalNamed(const char *path)
{
    struct stat info;
    if (journal >= 0 && isOurs(path) && lstat(path, &info) == 0 && S_ISREG(info.st_mode))
        append(JOURNAL_NAME, info.st_ino, 0, nameIn(path), strlen(nameIn(path)));
}

void journalUnnamed(const char *path)
{
    if (journal >= 0 && isOurs(path))
        append(JOURNAL_UNNAME, 0, 0, nameIn(path), strlen(nameIn(path)));
}

void journalRenamed(const char *from, const char *to)
{
    struct stat info;
    char names[2 * NAME_MAX + 2];
    if (journal < 0 || !isOurs(from) || !isOurs(to) || lstat(to, &info) != 0)
        return;
    const int size = snprintf(names, sizeof names, "%s/%s", nameIn(from), nameIn(to));
    append(JOURNAL_RENAME, info.st_ino, 0, names, (size_t)size);
}
