/* SPDX-License-Identifier: MIT */
/*
 * rkptp - a software PTP (IEEE 1588-2008, SMPTE ST 2059-2) client.
 */
#ifndef RKPTP_H
#define RKPTP_H

#include <stdint.h>

#if defined(RKPTP_BUILD)
#define RKPTP_API __attribute__((visibility("default")))
#else
#define RKPTP_API
#endif

#ifdef __cplusplus
extern "C" {
#endif

typedef void *PTP_HANDLE;

/* Status of a handle without a running client. */
#define RKPTP_NO_CLIENT (-100)

RKPTP_API PTP_HANDLE rkPTPStart(const char *interfaceAddress);
RKPTP_API void rkPTPEnd(PTP_HANDLE handle);
RKPTP_API int rkPTPGetStatus(PTP_HANDLE handle, int reserved);
RKPTP_API int rkPTPSetTargetDomain(PTP_HANDLE handle, uint32_t domain);
RKPTP_API int rkPTPSetTargetMacAddress(PTP_HANDLE handle, const char *identity);
RKPTP_API int rkPTPGetVersion(PTP_HANDLE handle, char *buffer);
RKPTP_API int rkPTPGetDomain(PTP_HANDLE handle, char *buffer);
RKPTP_API int rkPTPGetSourcePortID(PTP_HANDLE handle, char *buffer);
RKPTP_API int rkPTPGetIPAddress(PTP_HANDLE handle, char *buffer);
RKPTP_API int rkPTPGetGrandmasterID(PTP_HANDLE handle, char *buffer);
RKPTP_API int rkPTPGetTime_Nano(PTP_HANDLE handle, uint64_t *seconds, uint32_t *nanoseconds);
RKPTP_API int rkPTPGetOffset_Nano(PTP_HANDLE handle, int64_t *offset);

#ifdef __cplusplus
}
#endif

#endif /* RKPTP_H */
