// SPDX-License-Identifier: MIT
#include "app/slots/ptpcalls.h"

#include <dlfcn.h>

namespace {

using StateCall = int (*)(PTP_HANDLE);
using ReasonCall = int (*)(PTP_HANDLE, char *, uint32_t);
using AgeCall = int (*)(PTP_HANDLE, uint32_t *);

struct Calls {
    StateCall state = reinterpret_cast<StateCall>(dlsym(RTLD_DEFAULT, "rkPTPGetState"));
    ReasonCall reason = reinterpret_cast<ReasonCall>(dlsym(RTLD_DEFAULT, "rkPTPGetReason"));
    AgeCall age = reinterpret_cast<AgeCall>(dlsym(RTLD_DEFAULT, "rkPTPGetOffsetAge_Milli"));
};

const Calls &calls()
{
    static const Calls found;
    return found;
}

} // namespace

std::optional<int> ptpState(PTP_HANDLE handle)
{
    if (!calls().state)
        return std::nullopt;
    return calls().state(handle);
}

QString ptpReason(PTP_HANDLE handle)
{
    char text[512] = {};
    if (calls().reason)
        calls().reason(handle, text, sizeof text);
    return QString::fromUtf8(text);
}

std::optional<quint32> ptpOffsetAgeMs(PTP_HANDLE handle)
{
    uint32_t age = 0;
    if (!calls().age || calls().age(handle, &age) != RKPTP_OK)
        return std::nullopt;
    return age;
}
