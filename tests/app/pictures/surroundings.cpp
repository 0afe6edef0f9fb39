// SPDX-License-Identifier: MIT
#include "app/pictures/surroundings.h"

#include "rkos.h"

#include <cstdio>
#include <cstring>

using Surroundings::shownClock;

Surroundings::Clock &Surroundings::shownClock()
{
    static Clock shown;
    return shown;
}

namespace {

constexpr uint64_t kShownSeconds = 1795248930; // 2026-11-21, a quarter past eight in the morning

int client;

int answer(char *buffer, const QByteArray &text)
{
    snprintf(buffer, 64, "%s", text.constData());
    return RKPTP_OK;
}

QByteArray ofMaster(const char *text)
{
    return shownClock().hasMaster ? QByteArray(text) : QByteArray();
}

QByteArray ofClient(const char *text)
{
    return shownClock().status == RKPTP_NO_CLIENT ? QByteArray() : QByteArray(text);
}

} // namespace

int rkOSIPExists(const char *address)
{
    return strcmp(address, Surroundings::kInterface) == 0;
}

PTP_HANDLE rkPTPStart(const char *)
{
    return reinterpret_cast<PTP_HANDLE>(&client);
}

void rkPTPEnd(PTP_HANDLE) {}

int rkPTPGetStatus(PTP_HANDLE handle, int)
{
    return handle ? shownClock().status : RKPTP_NO_CLIENT;
}

int rkPTPGetState(PTP_HANDLE)
{
    return shownClock().state;
}

int rkPTPGetReason(PTP_HANDLE, char *buffer, uint32_t size)
{
    return snprintf(buffer, size, "%s", shownClock().reason.constData()) + 1;
}

int rkPTPGetOffsetAge_Milli(PTP_HANDLE, uint32_t *milliseconds)
{
    *milliseconds = shownClock().age_ms;
    return RKPTP_OK;
}

int rkPTPSetTargetDomain(PTP_HANDLE, uint32_t)
{
    return RKPTP_OK;
}

int rkPTPSetTargetMacAddress(PTP_HANDLE, const char *)
{
    return RKPTP_OK;
}

int rkPTPGetVersion(PTP_HANDLE, char *buffer)
{
    return answer(buffer, ofClient("PTPv2"));
}

int rkPTPGetDomain(PTP_HANDLE, char *buffer)
{
    return answer(buffer, ofClient("127"));
}

int rkPTPGetSourcePortID(PTP_HANDLE, char *buffer)
{
    return answer(buffer, ofMaster("00-1D-C1-FF-FE-12-34-56-1"));
}

int rkPTPGetIPAddress(PTP_HANDLE, char *buffer)
{
    return answer(buffer, Surroundings::kInterface);
}

int rkPTPGetGrandmasterID(PTP_HANDLE, char *buffer)
{
    return answer(buffer, ofMaster(Surroundings::kGrandmaster));
}

int rkPTPGetTime_Nano(PTP_HANDLE, uint64_t *seconds, uint32_t *nanoseconds)
{
    *seconds = kShownSeconds;
    *nanoseconds = 482913047;
    return RKPTP_OK;
}

int rkPTPGetOffset_Nano(PTP_HANDLE, int64_t *offset)
{
    if (!shownClock().hasMaster)
        return RKPTP_NOT_SYNCED;
    *offset = shownClock().offset_ns;
    return RKPTP_OK;
}
