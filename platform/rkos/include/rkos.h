/* SPDX-License-Identifier: MIT */
/*
 * rkos - files, directories, named events, time, interfaces and the log.
 *
 * Handles are 64-bit numbers; the invalid handle has all bits set (RKOS_INVALID_HANDLE). Access,
 * share, disposition and attribute numbers are those of the Win32 file-creation call. Paths are
 * UTF-8. All calls may be made from any thread; none throws and none ends the process.
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

#define RKOS_GENERIC_READ 0x80000000u
#define RKOS_GENERIC_WRITE 0x40000000u
#define RKOS_SHARE_READ 1u
#define RKOS_CREATE_ALWAYS 2u
#define RKOS_OPEN_EXISTING 3u
#define RKOS_TRUNCATE_EXISTING 5u
#define RKOS_ATTRIBUTE_NORMAL 128u

RKOS_API uint64_t rkOSCreateFile(const char *path, uint32_t access, uint32_t share, void *security,
                                 uint32_t disposition, uint32_t attributes, void *templ);
RKOS_API char *rkOSfgets(char *buffer, int size, uint64_t file);
RKOS_API int rkOSfputs(const char *text, uint64_t file);
RKOS_API int rkOSWriteFile(uint64_t file, const void *data, uint32_t length, uint32_t *written,
                           void *overlapped);
RKOS_API int rkOSCloseFile(uint64_t file);
RKOS_API int rkOSFileExists(const char *path);
RKOS_API int rkOSMakeDir(const char *path, int mode);

RKOS_API int rkOSGetDocumentsDir(char *buffer);
RKOS_API int rkOSGetConfigDir(char *buffer);
RKOS_API int rkOSGetTempPath(char *buffer, uint32_t size);

RKOS_API uint64_t rkOSOpenEvent(uint32_t access, int inherit, const char *name);
RKOS_API int rkOSSetEvent(uint64_t event);
RKOS_API int rkOSCloseEvent(uint64_t event);
RKOS_API uint64_t rkOSCreateEvent(const char *name);
RKOS_API int rkOSWaitEvent(uint64_t event, uint32_t milliseconds);

RKOS_API uint64_t rkOSGetMicro(void);
RKOS_API uint64_t rkOSGetTimePTPNano(void);
RKOS_API int rkOSGetDateTimeString(char *date, char *time, uint32_t flags);
RKOS_API int rkOSGetEpochDateTimeString(uint64_t seconds, char *date, char *time, uint32_t nanoseconds,
                                        uint32_t flags);

RKOS_API int rkOSIPExists(const char *utf8Address);

RKOS_API void ErrLogSetFileName(const char *name);
RKOS_API void ErrOut(const char *format, ...) __attribute__((format(printf, 1, 2)));

#ifdef __cplusplus
}
#endif

#endif /* RKOS_H */
