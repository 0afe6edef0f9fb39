/* SPDX-License-Identifier: MIT */
/*
 * rkcfg - the configuration store.
 *
 * A hierarchical key/value store: a key path ("KWX\Internal0\IpConfig") holds named values, each
 * either a text (zero-terminated bytes) or an unsigned 32-bit number. Key paths compare without
 * regard to ASCII case and keep the case of their first writing; value names compare exactly.
 *
 * Results: read calls return 0 when the value was found and non-zero when it is absent (then the
 * caller's variables are untouched). Write calls return non-zero when the stored value was created
 * or changed, 0 when it already was so. Once a write call has returned, the value survives the
 * death of the process and is seen by every other process; rkCFGSave makes it survive a power cut.
 *
 * Every call may be made from any thread and after fork(). Calls block for as long as the disk or
 * another writer takes, at most a few seconds. Failures are logged through ErrOut and never end
 * the process.
 */
#ifndef RKCFG_H
#define RKCFG_H

#include <stdint.h>

#if defined(RKCFG_BUILD)
#define RKCFG_API __attribute__((visibility("default")))
#else
#define RKCFG_API
#endif

#ifdef __cplusplus
extern "C" {
#endif

/* The handle of the default store: all bits set. Any other handle is refused (read: absent, write: 0). */
#define RKCFG_DEFAULT_STORE ((void *)(intptr_t)-1)

/*
 * Reads (write = 0) or writes (write = 1) a text value.
 * Read:  *size is the buffer's size in bytes; at most that many bytes are copied, without adding a
 *        terminating zero when the text is longer. On return *size is the stored size including the
 *        terminating zero. A null buffer or a size of 0 only asks for the size. A number is "absent".
 * Write: *size is the length in bytes including the terminating zero.
 */
RKCFG_API int rkCFGValueString(void *handle, const char *keyPath, const char *valueName, char *buffer,
                               uint32_t *size, int write);

/* Reads (write = 0) or writes (write = 1) a number. A text is "absent". */
RKCFG_API int rkCFGValueDword(void *handle, const char *keyPath, const char *valueName, uint32_t *value,
                              int write);

/*
 * Makes all that was written so far durable (one sync of the write-ahead log). Takes no write lock.
 * name (null: the current default configuration) and flags (0) are reserved. Returns 0 when done,
 * non-zero when the disk refused.
 */
RKCFG_API int rkCFGSave(void *handle, const char *name, int flags);

/* Closes the process's connection, saving first when save is non-zero. The next call opens again. Returns 0 or an error. */
RKCFG_API int rkCFGClose(void *handle, int save);

/*
 * Chooses the default configuration for every process (created when it does not exist). The name is
 * 1 to 64 bytes of UTF-8, no '/', no control character, not beginning with '.'. Returns 0, or
 * non-zero when the name is refused or the disk fails.
 */
RKCFG_API int rkCFGSetDefaultName(const char *utf8Name);

/* Copies the default configuration's name (zero-terminated, cut to size). Returns 0, or non-zero on a null or empty buffer. */
RKCFG_API int rkCFGGetDefaultName(char *buffer, uint32_t size);

#ifdef __cplusplus
}
#endif

#endif /* RKCFG_H */
