/* SPDX-License-Identifier: MIT */
/*
 * rkos - files, directories, named events, time, interfaces and the log.
 *
 * Handles are 64-bit numbers. The invalid handle has all bits set (RKOS_INVALID_HANDLE); 0 is never
 * given either. A number is given once in the life of a process: a handle that was closed, made up
 * or belongs to the other kind (file, event) is refused and never reaches anything else.
 * Access, share, disposition and attribute numbers are those of the Win32 file-creation call.
 *
 * Results: a call that returns int gives non-zero when it did what it says (or when the answer is
 * yes) and 0 when not. Two calls keep what their names promise instead: rkOSfputs gives -1 on failure and
 * rkOSWaitEvent gives 0 when the event was signalled.
 *
 * Paths and names are UTF-8 (any bytes but zero are taken as they are). A null pointer is a failure,
 * not a crash. All calls may be made from any thread. A child after fork() may make them too; only a
 * handle that another thread of the parent was using at that moment is not for the child. None throws,
 * none ends the process, none blocks unless it says so; file calls wait for the disk as read and
 * write do. The descriptors behind handles are closed on exec.
 */
#ifndef RKOS_H
#define RKOS_H

#include <stdint.h>

#if defined(RKOS_BUILD)
#define RKOS_API __attribute__((visibility("default")))
#else
#define RKOS_API
#endif

#ifdef __cplusplus
extern "C" {
#endif

#define RKOS_INVALID_HANDLE ((uint64_t)-1)

/* The version of the interface of the library that is loaded, "2.0". What this header has and an older
 * library lacks is missing there; the functions themselves keep their meaning. */
RKOS_API const char *rkOSVersion(void);

/* ---- Files ----------------------------------------------------------------------------------------- */

#define RKOS_GENERIC_READ 0x80000000u
#define RKOS_GENERIC_WRITE 0x40000000u

#define RKOS_SHARE_READ 1u

#define RKOS_CREATE_NEW 1u        /* fails when the file exists */
#define RKOS_CREATE_ALWAYS 2u     /* makes the file, or empties the existing one */
#define RKOS_OPEN_EXISTING 3u     /* fails when the file does not exist */
#define RKOS_OPEN_ALWAYS 4u       /* makes the file when it does not exist */
#define RKOS_TRUNCATE_EXISTING 5u /* empties the file, fails when it does not exist; needs write access */

#define RKOS_ATTRIBUTE_NORMAL 128u

/*
 * Opens a file. Returns its handle, or RKOS_INVALID_HANDLE.
 * access: RKOS_GENERIC_READ, RKOS_GENERIC_WRITE or both. disposition: one of the five above.
 * share, security, attributes and templ are accepted and have no effect: nothing is locked.
 *
 * Only regular files are opened. A directory, pipe, device or socket is refused without touching it
 * and without waiting. Symbolic links are followed. A new file gets 0666 less the umask.
 * In the library's own directories (rkOSGetTempPath, rkOSGetConfigDir, the log's) the rules are
 * stricter: no symbolic link is followed, a file of another owner or with a second name is refused
 * and left as it is, and a file is 0600.
 */
RKOS_API uint64_t rkOSCreateFile(const char *path, uint32_t access, uint32_t share, void *security,
                                 uint32_t disposition, uint32_t attributes, void *templ);

/*
 * Reads the next line into buffer (size bytes, at least 2) and ends it with a zero byte. Returns
 * buffer, or null at the end of the file, on a read error (one line in the log), without read access
 * or on a bad handle.
 * The line end (LF, or CR LF) is dropped; an empty line gives "". A last line without line end is
 * returned like any other. A line of more than size-1 bytes continues in the next call; its line end is
 * dropped also when it lies across the cut. Zero bytes in the file are put into the buffer as they are, so
 * for a caller who takes text the line ends there; the next call goes on with the next line.
 */
RKOS_API char *rkOSfgets(char *buffer, int size, uint64_t file);

/*
 * Writes a zero-terminated text as it is; no line end is added. Returns 1 when all of it was written, -1
 * when not (full disk, no write access, bad handle). Text written is at the operating system when
 * the call returns. The first write that fails on a handle leaves a line with the file's name in the log.
 */
RKOS_API int rkOSfputs(const char *text, uint64_t file);

/*
 * Writes length bytes at the handle's position. Returns 1 when all were written. *written, when given,
 * is set in every case and counts the bytes that are in the file. overlapped is ignored: the call is
 * never asynchronous. data may be null when length is 0. Failures are logged as with rkOSfputs.
 * Reading and writing on one handle share one position: a write starts behind the last line read.
 */
RKOS_API int rkOSWriteFile(uint64_t file, const void *data, uint32_t length, uint32_t *written,
                           void *overlapped);

/*
 * Closes the file; the handle is gone whatever the result. Returns 1 when everything written through
 * it is in the file, 0 when a write or the close itself failed (logged) or the handle is bad.
 * RKOS_INVALID_HANDLE, 0 and a handle closed before are accepted and do nothing. Data is handed to the
 * operating system, not forced to the disk.
 */
RKOS_API int rkOSCloseFile(uint64_t file);

/* Returns 1 when path names anything that exists, directories included; a trailing "/" is fine. */
RKOS_API int rkOSFileExists(const char *path);

/*
 * Makes a directory and what is missing above it. Returns 1 when it is there in the end, also when it
 * was there before; 0 when something else has the name, it cannot be made or mode is no mode.
 * mode: the decimal digits are read as octal permissions, so the number 777 means 0777; less the
 * umask. Missing parents get 0777 less the umask. Digits 8 and 9, negative numbers and more than four
 * digits are refused.
 */
RKOS_API int rkOSMakeDir(const char *path, int mode);

/* ---- Directories -----------------------------------------------------------------------------------
 * Each fills the caller's buffer with an absolute path that ends in "/" and returns 1. On failure (no
 * home directory, not to be made, owned by somebody else, too long for the buffer) the buffer holds "" and
 * the result is 0. The environment is read at each call.
 */

/* Bytes a buffer must have for the calls that take no size. */
#define RKOS_PATH_SIZE 4096

/*
 * The user's documents: $XDG_DOCUMENTS_DIR, else XDG_DOCUMENTS_DIR of user-dirs.dirs in the
 * configuration base directory, else "Documents" in the home directory. Not created.
 */
RKOS_API int rkOSGetDocumentsDir(char *buffer);

/*
 * The configuration: "corvel/" below $XDG_CONFIG_HOME, else below ".config" in the home directory. Made
 * when missing. Private: 0700, ours, no symbolic link; permissions of others are taken away.
 */
RKOS_API int rkOSGetConfigDir(char *buffer);

/*
 * Temporary files: a private directory (0700, ours, no symbolic link), made when missing. The first
 * that can be used and whose name fits size bytes: "corvel/" in $XDG_RUNTIME_DIR (which must be ours and
 * closed to others), "corvel-<uid>/" in $TMPDIR, the same in /tmp, "corvel/run/" in the state directory.
 */
RKOS_API int rkOSGetTempPath(char *buffer, uint32_t size);

/* ---- Named events ----------------------------------------------------------------------------------
 * An event belongs to the living process that created it (the service); others open and set it. It is
 * an auto-reset event: however often it is set before the service looks, the wait returns once.
 * When the service ends in any way, the event is gone: it cannot be opened, and what its file left
 * behind is taken over by the next create. Names have 1 to 200 bytes without "/" and control characters
 * and do not begin with ".".
 * An event is a datagram socket with the event's name: in /run/corvel when that directory exists (owned by
 * root or by us, not writable for everybody), else in "events/" below the first directory of
 * rkOSGetTempPath. An open looks in both, in this order; a create takes the first it may write to.
 * In /run/corvel everybody whom the directory's permissions let in may set the event; elsewhere only
 * the same user. A service that forks must not keep the event open in the child beyond its own life.
 */

/*
 * Opens an event to set it. Returns a handle, or RKOS_INVALID_HANDLE when no living service has the
 * name. Never creates. access and inherit have no effect.
 */
RKOS_API uint64_t rkOSOpenEvent(uint32_t access, int inherit, const char *name);

/*
 * Sets the event. Returns 1 when the service will see it, also when it was set already; 0 when there
 * is no living service or the handle is bad. Never waits, whatever the service does. When the service
 * was replaced by a new one since the open, the new one is set. A service may set its own event.
 */
RKOS_API int rkOSSetEvent(uint64_t event);

/*
 * Closes either side. The service's side takes the name away and ends a wait that is under way in another
 * thread with -1. Returns 1, or 0 on a bad handle (RKOS_INVALID_HANDLE, 0, closed before), which is harmless.
 */
RKOS_API int rkOSCloseEvent(uint64_t event);

/*
 * The service's side: makes the event and owns it until rkOSCloseEvent or the end of the process.
 * Returns RKOS_INVALID_HANDLE when a living service has the name, or no directory can be written to. May
 * wait up to 2 s for another process that is creating an event at the same moment.
 */
RKOS_API uint64_t rkOSCreateEvent(const char *name);

/*
 * Waits until the event is set, at most so many milliseconds; RKOS_INFINITE waits for ever, 0 only looks.
 * Returns 0 when it was set, and resets it; RKOS_WAIT_TIMEOUT; or RKOS_WAIT_FAILED when the handle is
 * none of rkOSCreateEvent's or was closed. Of several waiting threads one returns. Blocks.
 */
RKOS_API int rkOSWaitEvent(uint64_t event, uint32_t milliseconds);

#define RKOS_INFINITE 0xFFFFFFFFu
#define RKOS_WAIT_TIMEOUT 1
#define RKOS_WAIT_FAILED (-1)

/* ---- Time ------------------------------------------------------------------------------------------ */

/*
 * Microseconds since 1970-01-01 UTC, as a counter: strictly increasing within the process, no number
 * twice, not moved by a step of the system clock after the first call. Differs from run to run.
 */
RKOS_API uint64_t rkOSGetMicro(void);

/*
 * The hardware PTP time in nanoseconds: the clock of the network interface that the default route uses,
 * else /dev/ptp0, looked for once, at the first call. Without such a clock, or without the right to
 * read it, TAI when the kernel knows its offset, else the system's UTC time. One clock reading per
 * call after the first.
 */
RKOS_API uint64_t rkOSGetTimePTPNano(void);

/* What the texts below hold. Other bits have no effect. */
#define RKOS_TIME_MILLI 0x80u         /* three digits behind the seconds */
#define RKOS_TIME_NANO 0x200u         /* nine digits behind the seconds */
#define RKOS_TIME_ISO 0x10000u        /* date as year-month-day; the only form there is */
#define RKOS_TIME_UNCHANGED 0x200000u /* the seconds are shown as given, whatever their scale; always so */

/* "2026-11-21" and "03:51:47.123" */
#define RKOS_TIME_FORMAT_SYSTEM (RKOS_TIME_ISO | RKOS_TIME_MILLI) /* 0x10080 */
/* "2026-11-21" and "03:51:47.123456789" */
#define RKOS_TIME_FORMAT_PTP (RKOS_TIME_UNCHANGED | RKOS_TIME_ISO | RKOS_TIME_NANO) /* 0x210200 */

/*
 * Date and time of now in UTC: "YYYY-MM-DD" and "HH:MM:SS" with the fraction that flags ask for. Buffers of
 * 64 bytes; either may be null. Returns 1, or 0 when both are null.
 */
RKOS_API int rkOSGetDateTimeString(char *date, char *time, uint32_t flags);

/*
 * The same for so many seconds since 1970-01-01 and nanoseconds (whole seconds in them are carried).
 * Every input gives texts of less than 64 bytes; years beyond 9999 have more digits. The fraction is cut,
 * not rounded. No time zone and no leap seconds: days have 86400 s.
 */
RKOS_API int rkOSGetEpochDateTimeString(uint64_t seconds, char *date, char *time, uint32_t nanoseconds,
                                        uint32_t flags);

/* ---- Interfaces ------------------------------------------------------------------------------------ */

/*
 * Returns 1 when a network interface of this machine, loopback included, has the IPv4 address ("192.0.2.7").
 * "0.0.0.0", "", null and what is no address give 0.
 */
RKOS_API int rkOSIPExists(const char *utf8Address);

/* ---- Log ------------------------------------------------------------------------------------------- */

/*
 * From now on the log of this process is <name>.log in "corvel/" below $XDG_STATE_HOME, else below
 * ".local/state" in the home directory. Without a name (never called, null or "") lines go to standard
 * error, as they do when the file cannot be written. A name with "/" or control characters, with "."
 * in front or of more than 100 bytes is refused with a line in the log. The file is opened, 0600, with the
 * first line.
 */
RKOS_API void ErrLogSetFileName(const char *name);

/*
 * Writes one line to the log: UTC time, process number, message. Text that comes from outside belongs
 * into the arguments, never into the format.
 * A message is one line: white space and line ends around it are dropped, control characters inside it
 * and bytes that are no UTF-8 are escaped. A message of more than 4096 bytes is cut and ends in an ellipsis.
 * An empty one writes nothing. The whole line is one write, so lines of several processes do not mix. At 1
 * MiB the file becomes <name>.log.1 and so on; three old ones are kept. A file that has got a second name is
 * left behind in the same way, unchanged. Never waits for a reader and never fails: a line that finds no
 * place (full disk, full pipe) is counted, and the next one that does is preceded by the count. errno is left
 * as it was. A call from a signal handler that has interrupted another one is counted only.
 */
RKOS_API void ErrOut(const char *format, ...) __attribute__((format(printf, 1, 2)));

#ifdef __cplusplus
}
#endif

#endif /* RKOS_H */
