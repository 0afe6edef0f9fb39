/* SPDX-License-Identifier: MIT */
/*
 * rkcfg - the configuration store.
 *
 * A hierarchical key/value store: a key path ("KWX\Internal0\IpConfig") holds named values, each
 * either a text (zero-terminated bytes of any length) or an unsigned 32-bit number. Key paths
 * compare without regard to ASCII case and keep the case of their first writing; value names compare
 * exactly. Nothing is done to either: "\" has no meaning here and no byte but zero is special.
 *
 * There are several named configurations, each one file <name>.rkcfg in the directory that
 * rkOSGetConfigDir gives. One of them is the default configuration of all processes, and that is the
 * one these calls read and write. When another process chooses another default, the next call here
 * follows. The first call opens the store and makes it when there is none. A damaged file is set
 * aside as <name>.rkcfg.corrupt-<time> and replaced by the last good copy, or by an empty store.
 *
 * Results: read calls return 0 when the value was found and non-zero when it is absent (then the
 * caller's variables are untouched). Write calls return non-zero when the stored value was created
 * or changed, 0 when it already was so or could not be written. All other calls return 0 when done
 * and non-zero when not. Once a write call has returned non-zero, the value survives the death of
 * the process and is seen by every other process; rkCFGSave makes it survive a power cut.
 *
 * Every call may be made from any thread, and in a child after fork(); calls take turns. A call
 * blocks for as long as the disk takes and at most three seconds for another writer; after one such
 * wait in vain, the following calls wait 50 ms until one succeeds. No call throws or ends the
 * process. Failures, null pointers and unknown handles give the result for absent, unchanged or
 * failed and one log line through ErrOut; the same failure again is logged once.
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
 * Read:  *size is the buffer's size in bytes; at most that many bytes are copied, without a
 *        terminating zero when the text is longer: that is a success too. On return *size is the
 *        stored size including the terminating zero. A null buffer or a size of 0 only asks for the
 *        size. A number is "absent".
 * Write: *size is the length in bytes including the terminating zero. A text without one gets it, so
 *        size 0 stores the empty text. Zeros inside are kept. A number is replaced by the text.
 */
RKCFG_API int rkCFGValueString(void *handle, const char *keyPath, const char *valueName, char *buffer,
                               uint32_t *size, int write);

/* Reads (write = 0) or writes (write = 1) a number. A text is "absent", and is replaced by writing. */
RKCFG_API int rkCFGValueDword(void *handle, const char *keyPath, const char *valueName, uint32_t *value,
                              int write);

/*
 * Makes all that was written so far, by any process, durable: one sync of the write-ahead log. Takes
 * no write lock. name is null or the current default configuration, any other is refused; flags (0)
 * is reserved. Returns 0 when done; non-zero when the disk refused, when the store cannot be written
 * at all, or when a write since the last save failed.
 */
RKCFG_API int rkCFGSave(void *handle, const char *name, int flags);

/*
 * Closes the process's connection, saving first when save is non-zero. The next call opens again.
 * Without save nothing is lost either, but durability is left to the system. Returns 0, also when
 * nothing was open, or what rkCFGSave would return.
 */
RKCFG_API int rkCFGClose(void *handle, int save);

/*
 * Chooses the default configuration for every process (created when it does not exist). The name is
 * 1 to 64 bytes of UTF-8, no '/', no control character, not beginning with '.'. Returns 0, or
 * non-zero when the name is refused, its store cannot be opened or the disk fails; then the default
 * stays as it was.
 */
RKCFG_API int rkCFGSetDefaultName(const char *utf8Name);

/*
 * Copies the default configuration's name (zero-terminated, cut to size at a whole character). It is
 * "default" where nobody chose one. Returns 0, or non-zero on a null or empty buffer.
 */
RKCFG_API int rkCFGGetDefaultName(char *buffer, uint32_t size);

/*
 * Called for each value: text and its size including the terminating zero, or a null text and the
 * number. The pointers are valid for the call only. It may use the store; non-zero ends the walk.
 */
typedef int (*RKCFG_VISITOR)(void *context, const char *keyPath, const char *valueName, const char *text,
                             uint32_t size, uint32_t number);

/*
 * Walks all values in order of key path and value name: those of keyPath and of the paths below it,
 * or all when it is null. Sees one moment of the store. For tools: a site's own library may lack it.
 * Returns 0, or non-zero when the store cannot be read.
 */
RKCFG_API int rkCFGForEach(void *handle, const char *keyPath, RKCFG_VISITOR visitor, void *context);

#ifdef __cplusplus
}
#endif

#endif /* RKCFG_H */
