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
 * Every change of a value is recorded in the same database and the same commit, see rkCFGHistory.
 *
 * Every call may be made from any thread, and in a child after fork(); calls take turns. A call
 * blocks for as long as the disk takes and at most one second for another process; after one such
 * wait in vain, the following calls do not wait at all until one succeeds, nor for another second
 * unless one has written. No call throws or ends the process. Failures, null pointers and unknown
 * handles give the result for absent, unchanged or failed and one log line through ErrOut; the same
 * failure again is logged once.
 *
 * The first seven calls are the original interface. All others are optional: a site's own library
 * may lack them, so a program that shall run with any library looks them up at run time.
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

/*
 * The handle of the default store: all bits set. Every call that takes a handle accepts it and those
 * that rkCFGOpen gave; any other is refused (read: absent, write: 0).
 */
#define RKCFG_DEFAULT_STORE ((void *)(intptr_t)-1)

/*
 * Reads (write = 0) or writes (write = 1) a text value.
 * Read:  *size is the buffer's size in bytes; at most that many bytes are copied, without a
 *        terminating zero when the text is longer: that is a success too. On return *size is the
 *        stored size including the terminating zero. A null buffer or a size of 0 only asks for the
 *        size. A number is "absent".
 * Write: *size is the length in bytes including the terminating zero. A text without one gets it, so
 *        size 0 stores the empty text. Zeros inside are kept. A number is replaced by the text.
 *        A text of more than 1 MiB (1048576 bytes without its terminating zero) is refused.
 */
RKCFG_API int rkCFGValueString(void *handle, const char *keyPath, const char *valueName, char *buffer,
                               uint32_t *size, int write);

/* Reads (write = 0) or writes (write = 1) a number. A text is "absent", and is replaced by writing. */
RKCFG_API int rkCFGValueDword(void *handle, const char *keyPath, const char *valueName, uint32_t *value,
                              int write);

/*
 * Makes all that was written so far, by any process, durable: one sync of the write-ahead log. Takes
 * no write lock. name is null or the handle's configuration, any other is refused; flags (0) is
 * reserved. Ends the running batch (see rkCFGHistory). Returns 0 when done; non-zero when the disk
 * refused, when the store cannot be written at all, or when a write since the last save failed.
 */
RKCFG_API int rkCFGSave(void *handle, const char *name, int flags);

/*
 * Closes the process's connection, saving first when save is non-zero. With the default store's handle
 * the next call opens again; a handle of rkCFGOpen is gone afterwards. Without save nothing is lost
 * either, but durability is left to the system. A transaction that is open is taken back. Returns 0,
 * also when nothing was open, or what rkCFGSave would return.
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
 * "default" where nobody chose one. Between rkCFGBegin and rkCFGEnd it is the name of the configuration
 * that the transaction is in. Returns 0, or non-zero on a null or empty buffer.
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
 * or all when it is null. Sees one moment of the store. Returns 0, or non-zero when the store cannot
 * be read.
 */
RKCFG_API int rkCFGForEach(void *handle, const char *keyPath, RKCFG_VISITOR visitor, void *context);

/* -- other configurations than the default one ----------------------------------------------------- */

/*
 * A handle for one named configuration, whatever the default is and without changing it. create: 0 it
 * must exist, 1 it is made when it does not. Null (and one log line) when the name is refused, there
 * is no such configuration, or its store cannot be opened. rkCFGClose ends the handle. When another
 * process deletes or renames the configuration, the handle's calls fail; they never make it anew.
 */
RKCFG_API void *rkCFGOpen(const char *utf8Name, int create);

/*
 * Deletes a configuration with its good copies. The default configuration is refused, and as busy one
 * that another process is writing to at this moment. Other processes' handles fail from then on.
 * What had been set aside as damaged stays. Returns 0 when done.
 */
RKCFG_API int rkCFGDelete(const char *utf8Name);

/*
 * Gives a configuration another name, history and good copies included. The default configuration is
 * refused, and a new name that exists. Otherwise as rkCFGDelete. Returns 0 when done.
 */
RKCFG_API int rkCFGRename(const char *utf8Name, const char *newUtf8Name);

/*
 * Makes a copy of a configuration, the default one or another, under a new name: its values and their
 * history, not its notes. The copy is there whole or, also after a crash, not at all. A new name that
 * exists is refused. Otherwise as rkCFGDelete. Returns 0 when done.
 */
RKCFG_API int rkCFGCopy(const char *utf8Name, const char *newUtf8Name);

/* -- did anybody else change something? -------------------------------------------------------------- */

/*
 * *mark is the caller's, 0 at first. Returns 0: since the call that last filled *mark there were at
 * most writes through this handle by this process. 1: something else was written, or the default
 * configuration or its file is another one, or the store was closed and opened between; also at the
 * first call. -1: the store cannot be read now. *mark is brought up to date for 0 and 1. Costs
 * microseconds and takes no lock. 1 may be a false alarm, 0 never is.
 */
RKCFG_API int rkCFGChanged(void *handle, uint64_t *mark);

/* -- a run of writes as one transaction ---------------------------------------------------------------- */

/*
 * From rkCFGBegin to rkCFGEnd all writes of this process through this handle are one transaction: all
 * or nothing for other processes and after a crash; reads of this process see them at once. Other
 * writers wait meanwhile, so it should be short. It stays with its configuration when another process
 * chooses another default. rkCFGSave inside is put off to the end. Returns 0, or non-zero when one is
 * open already, another process is writing, or the store cannot be written.
 *
 * rkCFGEnd with keep 0 takes all back; otherwise it commits, and returns non-zero when that was not
 * possible or when a write inside had failed: then nothing is there. A fork()ed child has no part in
 * its parent's transaction.
 */
RKCFG_API int rkCFGBegin(void *handle);
RKCFG_API int rkCFGEnd(void *handle, int keep);

/*
 * Deletes a value, text or number. Non-zero when it was there and is gone, 0 when it was not there or
 * could not be deleted.
 */
RKCFG_API int rkCFGRemove(void *handle, const char *keyPath, const char *valueName);

/* -- history ------------------------------------------------------------------------------------------- */

/*
 * A batch is a run of writes of one process up to its next rkCFGSave, rkCFGClose, rkCFGLabel or
 * rkCFGEnd. The last 100000 changes of the last 90 days are kept, whole batches: the oldest one may
 * go beyond that. The numbers "Changes" and "Days" below the key path "rkcfg\History" set other bounds
 * for a configuration. Older changes are removed a few at a time when a process opens or saves it.
 * Programs that write past this library, or with a version before history, leave no record.
 */

/*
 * Names the batch that the next write of this process starts ("Load File site.ipp"): at most 200
 * bytes of UTF-8, null for none. A label that no write used is dropped by the next rkCFGSave or
 * rkCFGClose. Returns 0 when taken.
 */
RKCFG_API int rkCFGLabel(void *handle, const char *utf8Label);

/* One change. Texts as in rkCFGValueString: with a terminating zero, which the size counts. */
typedef struct RKCFG_CHANGE {
    uint32_t size;       /* of this structure: later versions may add members at its end */
    int64_t id;          /* ascending, never used again within one database file */
    int64_t batch;       /* id of the first change of its batch */
    int64_t time_us;     /* microseconds since 1970, UTC */
    const char *program; /* the program's name without its folder, UTF-8 */
    uint32_t pid;
    const char *user;  /* user name, or the user id in decimal where the machine has no name for it */
    const char *label; /* of the batch, or null */
    const char *keyPath;
    const char *valueName;
    int oldType, newType; /* 0 absent, 1 text, 2 number */
    const char *oldText;  /* null unless a text */
    uint32_t oldSize;
    const char *newText;
    uint32_t newSize;
    uint32_t oldNumber, newNumber;
    int64_t undoes; /* the batch that this one took back, or 0 */
} RKCFG_CHANGE;

/* Non-zero ends the walk. It may use the store. The pointers are valid for the call only. */
typedef int (*RKCFG_CHANGE_VISITOR)(void *context, const RKCFG_CHANGE *change);

/*
 * Walks the recorded changes: after >= 0, those with a greater id, oldest first; -1, all, newest
 * first. Changes made after the walk began are not visited. Returns 0, or non-zero when the store
 * cannot be read to the end.
 */
RKCFG_API int rkCFGHistory(void *handle, int64_t after, RKCFG_CHANGE_VISITOR visitor, void *context);

/*
 * Takes a batch back: in one transaction and as a batch of its own, each value that is now what the
 * batch left gets what it had before the batch (deleted when it was absent). A value that already is
 * so stays. Any other is a conflict: it is visited (old: what it had before the batch, new: what is
 * there now; visitor may be null) and left alone unless force is non-zero. With dryRun the conflicts
 * are visited and nothing is changed. Returns the number of conflicts that were left alone, or -1 when
 * the batch is unknown or the store failed; then nothing is changed. *newBatch (may be null) is the
 * batch that was made, 0 when nothing had to be changed: taking that one back puts all back again.
 * Inside rkCFGBegin and rkCFGEnd it is part of that transaction. Durable after rkCFGSave.
 */
RKCFG_API int rkCFGTakeBack(void *handle, int64_t batch, int force, int dryRun, RKCFG_CHANGE_VISITOR conflict,
                            void *context, int64_t *newBatch);

/* -- notes --------------------------------------------------------------------------------------------- */

/*
 * What a program keeps for itself in a configuration, beside the values and in the same transactions:
 * bytes without any meaning here, under a key of an owner. Owners do not see each other's notes by
 * accident: each takes its program's name. Notes are no values: rkCFGForEach does not visit them and
 * they leave no history. Good copies, renaming and repairs carry them along. owner is 1 to 64 bytes of
 * UTF-8, key 1 to 1024, data at most 1 MiB; both compare byte by byte.
 */

/*
 * Stores a note, replaces it, or removes it when data is null or size is 0. Inside rkCFGBegin and
 * rkCFGEnd it is part of that transaction. Returns 0 when done, also when there was nothing to remove.
 */
RKCFG_API int rkCFGSetNote(void *handle, const char *owner, const char *key, const void *data, uint32_t size);

/*
 * Reads a note: *size is the buffer's size in bytes, and the note's on return; at most the buffer's are
 * copied. A null buffer or a size of 0 only asks for the size. Returns 0 when there is one.
 */
RKCFG_API int rkCFGNote(void *handle, const char *owner, const char *key, void *buffer, uint32_t *size);

/* Non-zero ends the walk. It may use the store. The pointers are valid for the call only. */
typedef int (*RKCFG_NOTE_VISITOR)(void *context, const char *key, const void *data, uint32_t size);

/* Walks an owner's notes in order of their keys. Sees one moment. Returns 0, or non-zero when unreadable. */
RKCFG_API int rkCFGForEachNote(void *handle, const char *owner, RKCFG_NOTE_VISITOR visitor, void *context);

/* Version of this interface, "2.2". */
RKCFG_API const char *rkCFGVersion(void);

#ifdef __cplusplus
}
#endif

#endif /* RKCFG_H */
