/* SPDX-License-Identifier: MIT */
/*
 * Preloaded into a program: the n-th call of a sort goes wrong. Only files in a folder called "corvel" are
 * meant, which is where the store, its copies and its lock lie.
 *
 *   CAMPAIGN_FAULT=CALL:N:KIND[:SUFFIX[:on]]
 *     CALL    one of the names below
 *     N       the N-th one, of files whose path ends with SUFFIX
 *     KIND    an errno by its number; "short" (half of it), "skip" (nothing done, told as done), "slowMS"
 *     on      that one and all after it
 *   CAMPAIGN_JOURNAL=FILE  see journal.h
 *   CAMPAIGN_COUNTS=FILE   how many calls of each sort there were, written at the program's end
 */
#define _GNU_SOURCE
#include "journal.h"

#include <errno.h>
#include <fcntl.h>
#include <limits.h>
#include <stdarg.h>
#include <stdint.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <sys/mman.h>
#include <sys/socket.h>
#include <sys/syscall.h>
#include <time.h>
#include <unistd.h>

#define EXPORT __attribute__((visibility("default")))
#define PASS 0
#define SHORT (-1)
#define SKIP (-2)

enum Call {
    OPEN,
    READ,
    WRITE,
    FSYNC,
    FDATASYNC,
    FTRUNCATE,
    RENAME,
    UNLINK,
    LINK,
    MMAP,
    FCNTL,
    FLOCK,
    CLOSE,
    SEND,
    CALLS
};

static const char *const names[CALLS] = {"open",      "read",   "write",  "fsync", "fdatasync",
                                         "ftruncate", "rename", "unlink", "link",  "mmap",
                                         "fcntl",     "flock",  "close",  "send"};
static long counts[CALLS];

static struct {
    int call;
    long first;
    int kind;
    long pauseMs;
    char suffix[64];
    int on;
    long seen;
} plan = {.call = -1};

static int numberOf(const char *name)
{
    for (int i = 0; i < CALLS; ++i)
        if (strcmp(names[i], name) == 0)
            return i;
    return -1;
}

static int kindOf(const char *text)
{
    if (strcmp(text, "short") == 0)
        return SHORT;
    if (strcmp(text, "skip") == 0)
        return SKIP;
    return atoi(text); /* "slow..." gives 0: the call passes, later */
}

__attribute__((constructor)) static void readPlan(void)
{
    char text[256] = "";
    const char *const wanted = getenv("CAMPAIGN_FAULT");
    if (!wanted || strlen(wanted) >= sizeof text)
        return;
    strcpy(text, wanted);
    char *rest = text;
    const char *field[5] = {"", "", "", "", ""};
    for (int i = 0; i < 5 && rest; ++i)
        field[i] = strsep(&rest, ":");
    plan.call = numberOf(field[0]);
    plan.first = atol(field[1]);
    plan.kind = kindOf(field[2]);
    plan.pauseMs = strncmp(field[2], "slow", 4) == 0 ? atol(field[2] + 4) : 0;
    strncpy(plan.suffix, field[3], sizeof plan.suffix - 1);
    plan.on = strcmp(field[4], "on") == 0;
}

__attribute__((destructor)) static void tellCounts(void)
{
    const char *const path = getenv("CAMPAIGN_COUNTS");
    if (!path)
        return;
    FILE *const file = fopen(path, "w");
    for (int i = 0; file && i < CALLS; ++i)
        fprintf(file, "%s %ld\n", names[i], counts[i]);
    if (file)
        fclose(file);
}

static int endsWith(const char *text, const char *end)
{
    const size_t length = strlen(text);
    const size_t size = strlen(end);
    return length >= size && strcmp(text + length - size, end) == 0;
}

static void pauseFor(long milliseconds)
{
    const struct timespec pause = {milliseconds / 1000, milliseconds % 1000 * 1000000};
    syscall(SYS_nanosleep, &pause, NULL);
}

/* What is to happen to this call. errno is set for an error. */
static int judge(enum Call call, const char *path)
{
    if (!path || !strstr(path, "/corvel/"))
        return PASS;
    __atomic_add_fetch(&counts[call], 1, __ATOMIC_RELAXED);
    if ((int)call != plan.call || !endsWith(path, plan.suffix))
        return PASS;
    const long seen = __atomic_add_fetch(&plan.seen, 1, __ATOMIC_RELAXED);
    if (seen != plan.first && !(plan.on && seen > plan.first))
        return PASS;
    if (plan.pauseMs > 0)
        pauseFor(plan.pauseMs);
    if (plan.kind > 0)
        errno = plan.kind;
    return plan.kind;
}

static int judgeFd(enum Call call, int fd)
{
    char link[64];
    char path[PATH_MAX];
    const int before = errno;
    snprintf(link, sizeof link, "/proc/self/fd/%d", fd);
    const ssize_t size = syscall(SYS_readlink, link, path, sizeof path - 1);
    errno = before;
    if (size <= 0)
        return PASS;
    path[size] = 0;
    return judge(call, path);
}

/* -- files by descriptor ------------------------------------------------------------------------------- */

static ssize_t transfer(enum Call call, long number, int fd, void *bytes, size_t size, off64_t at)
{
    const int fault = judgeFd(call, fd);
    if (fault > 0)
        return -1;
    if (fault == SKIP)
        return (ssize_t)size;
    if (fault == SHORT && size > 1)
        size /= 2;
    const uint64_t place = number == SYS_write ? (uint64_t)syscall(SYS_lseek, fd, 0, SEEK_CUR) : (uint64_t)at;
    const ssize_t done = syscall(number, fd, bytes, size, at);
    if (call == WRITE && done > 0)
        journalWrite(fd, bytes, (size_t)done, place);
    return done;
}

EXPORT ssize_t read(int fd, void *bytes, size_t size)
{
    return transfer(READ, SYS_read, fd, bytes, size, 0);
}

EXPORT ssize_t pread64(int fd, void *bytes, size_t size, off64_t at)
{
    return transfer(READ, SYS_pread64, fd, bytes, size, at);
}

EXPORT ssize_t pread(int fd, void *bytes, size_t size, off_t at)
{
    return pread64(fd, bytes, size, at);
}

EXPORT ssize_t write(int fd, const void *bytes, size_t size)
{
    return transfer(WRITE, SYS_write, fd, (void *)(uintptr_t)bytes, size, 0);
}

EXPORT ssize_t pwrite64(int fd, const void *bytes, size_t size, off64_t at)
{
    return transfer(WRITE, SYS_pwrite64, fd, (void *)(uintptr_t)bytes, size, at);
}

EXPORT ssize_t pwrite(int fd, const void *bytes, size_t size, off_t at)
{
    return pwrite64(fd, bytes, size, at);
}

static int simple(enum Call call, long number, int fd, long argument)
{
    const int fault = judgeFd(call, fd);
    if (fault == SKIP || fault > 0)
        return fault == SKIP ? 0 : -1;
    const int result = (int)syscall(number, fd, argument);
    if (result == 0 && (call == FSYNC || call == FDATASYNC))
        journalSync(fd);
    if (result == 0 && call == FTRUNCATE)
        journalTruncate(fd, (uint64_t)argument);
    return result;
}

EXPORT int fsync(int fd)
{
    return simple(FSYNC, SYS_fsync, fd, 0);
}

EXPORT int fdatasync(int fd)
{
    return simple(FDATASYNC, SYS_fdatasync, fd, 0);
}

EXPORT int ftruncate64(int fd, off64_t size)
{
    return simple(FTRUNCATE, SYS_ftruncate, fd, size);
}

EXPORT int ftruncate(int fd, off_t size)
{
    return simple(FTRUNCATE, SYS_ftruncate, fd, size);
}

EXPORT int flock(int fd, int operation)
{
    return simple(FLOCK, SYS_flock, fd, operation);
}

EXPORT int close(int fd)
{
    return simple(CLOSE, SYS_close, fd, 0);
}

EXPORT int fcntl64(int fd, int command, ...)
{
    va_list arguments;
    va_start(arguments, command);
    const long argument = va_arg(arguments, long);
    va_end(arguments);
    const int lock = command == F_SETLK || command == F_SETLKW || command == F_GETLK;
    const int fault = lock ? judgeFd(FCNTL, fd) : PASS;
    return fault == PASS || fault == SHORT ? (int)syscall(SYS_fcntl, fd, command, argument)
           : fault == SKIP                 ? 0
                                           : -1;
}

EXPORT int fcntl(int fd, int command, ...)
{
    va_list arguments;
    va_start(arguments, command);
    const long argument = va_arg(arguments, long);
    va_end(arguments);
    return fcntl64(fd, command, argument);
}

EXPORT void *mmap64(void *place, size_t size, int protection, int flags, int fd, off64_t at)
{
    if (fd >= 0 && judgeFd(MMAP, fd) > 0)
        return MAP_FAILED;
    return (void *)syscall(SYS_mmap, place, size, protection, flags, fd, at);
}

EXPORT void *mmap(void *place, size_t size, int protection, int flags, int fd, off_t at)
{
    return mmap64(place, size, protection, flags, fd, at);
}

/* Of a socket all are meant. */
EXPORT ssize_t send(int fd, const void *bytes, size_t size, int flags)
{
    const int fault = judge(SEND, "/corvel/");
    if (fault == SKIP)
        return (ssize_t)size;
    return fault > 0 ? -1 : syscall(SYS_sendto, fd, bytes, size, flags, NULL, 0);
}

/* -- files by name --------------------------------------------------------------------------------------- */

static int openAt(int folder, const char *path, int flags, int mode)
{
    const int fault = judge(OPEN, path);
    if (fault > 0)
        return -1;
    const int made = (flags & O_CREAT) && syscall(SYS_faccessat, folder, path, F_OK) != 0;
    const int fd = (int)syscall(SYS_openat, folder, path, flags, mode);
    if (fd >= 0 && made)
        journalNamed(path);
    if (fd >= 0 && !made && (flags & O_TRUNC))
        journalTruncate(fd, 0);
    return fd;
}

#define MODE_OF(flags)                                                                                       \
    int mode = 0;                                                                                            \
    if ((flags) & (O_CREAT | O_TMPFILE)) {                                                                   \
        va_list arguments;                                                                                   \
        va_start(arguments, flags);                                                                          \
        mode = va_arg(arguments, int);                                                                       \
        va_end(arguments);                                                                                   \
    }

EXPORT int open(const char *path, int flags, ...)
{
    MODE_OF(flags)
    return openAt(AT_FDCWD, path, flags, mode);
}

EXPORT int open64(const char *path, int flags, ...)
{
    MODE_OF(flags)
    return openAt(AT_FDCWD, path, flags, mode);
}

EXPORT int openat(int folder, const char *path, int flags, ...)
{
    MODE_OF(flags)
    return openAt(folder, path, flags, mode);
}

static int named(enum Call call, const char *path)
{
    const int fault = judge(call, path);
    return fault == SHORT ? PASS : fault;
}

EXPORT int rename(const char *from, const char *to)
{
    const int fault = named(RENAME, to);
    if (fault != PASS)
        return fault == SKIP ? 0 : -1;
    const int result = (int)syscall(SYS_rename, from, to);
    if (result == 0)
        journalRenamed(from, to);
    return result;
}

EXPORT int renameat2(int fromFolder, const char *from, int toFolder, const char *to, unsigned flags)
{
    const int fault = named(RENAME, to);
    if (fault != PASS)
        return fault == SKIP ? 0 : -1;
    const int result = (int)syscall(SYS_renameat2, fromFolder, from, toFolder, to, flags);
    if (result == 0)
        journalRenamed(from, to);
    return result;
}

EXPORT int link(const char *from, const char *to)
{
    const int fault = named(LINK, to);
    if (fault != PASS)
        return fault == SKIP ? 0 : -1;
    const int result = (int)syscall(SYS_link, from, to);
    if (result == 0)
        journalNamed(to);
    return result;
}

EXPORT int unlink(const char *path)
{
    const int fault = named(UNLINK, path);
    if (fault != PASS)
        return fault == SKIP ? 0 : -1;
    const int result = (int)syscall(SYS_unlink, path);
    if (result == 0)
        journalUnnamed(path);
    return result;
}
