/* SPDX-License-Identifier: MIT */
#include "rkptp.h"

#include <string.h>
#include <time.h>

/* No PTP client is built in yet: every handle reports "no client" and every text is empty. */

static int emptyText(char *buffer)
{
    if (buffer)
        memset(buffer, 0, 64);
    return RKPTP_NO_CLIENT;
}

PTP_HANDLE rkPTPStart(const char *interfaceAddress)
{
    (void)interfaceAddress;
    return NULL;
}

void rkPTPEnd(PTP_HANDLE handle) { (void)handle; }

int rkPTPGetStatus(PTP_HANDLE handle, int reserved)
{
    (void)handle;
    (void)reserved;
    return RKPTP_NO_CLIENT;
}

int rkPTPSetTargetDomain(PTP_HANDLE handle, uint32_t domain)
{
    (void)handle;
    (void)domain;
    return RKPTP_NO_CLIENT;
}

int rkPTPSetTargetMacAddress(PTP_HANDLE handle, const char *identity)
{
    (void)handle;
    (void)identity;
    return RKPTP_NO_CLIENT;
}

int rkPTPGetVersion(PTP_HANDLE handle, char *buffer) { return (void)handle, emptyText(buffer); }
int rkPTPGetDomain(PTP_HANDLE handle, char *buffer) { return (void)handle, emptyText(buffer); }
int rkPTPGetSourcePortID(PTP_HANDLE handle, char *buffer) { return (void)handle, emptyText(buffer); }
int rkPTPGetIPAddress(PTP_HANDLE handle, char *buffer) { return (void)handle, emptyText(buffer); }
int rkPTPGetGrandmasterID(PTP_HANDLE handle, char *buffer) { return (void)handle, emptyText(buffer); }

int rkPTPGetTime_Nano(PTP_HANDLE handle, uint64_t *seconds, uint32_t *nanoseconds)
{
    struct timespec now = {0, 0};
    (void)handle;
    clock_gettime(CLOCK_REALTIME, &now);
    if (seconds)
        *seconds = (uint64_t)now.tv_sec;
    if (nanoseconds)
        *nanoseconds = (uint32_t)now.tv_nsec;
    return RKPTP_NO_CLIENT;
}

int rkPTPGetOffset_Nano(PTP_HANDLE handle, int64_t *offset)
{
    (void)handle;
    (void)offset;
    return RKPTP_NO_CLIENT;
}
