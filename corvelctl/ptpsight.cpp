// SPDX-License-Identifier: MIT
#include "corvelctl/ptpsight.h"

#include "rkos.h"
#include "rkptp.h"

#include <QFile>

#include <chrono>
#include <dlfcn.h>
#include <thread>

namespace {

constexpr auto kTick = std::chrono::milliseconds(100);
constexpr int kTicksPerSecond = 10;

// The library's later calls, which a site's own may lack. The record grows at its end only.
struct Master {
    uint32_t size;
    uint32_t domain;
    char grandmaster[64];
    char sourcePort[64];
    char interface[16];
    uint8_t priority1, clockClass, clockAccuracy, priority2;
    uint16_t variance, stepsRemoved;
    uint32_t age_ms;
};

using MasterVisitor = int (*)(void *context, const Master *master);

template<class Function>
Function *call(const char *name)
{
    return reinterpret_cast<Function *>(dlsym(RTLD_DEFAULT, name));
}

int addMaster(void *context, const Master *master)
{
    ops::PtpMaster seen;
    seen.domain = master->domain;
    seen.grandmaster = master->grandmaster;
    seen.interface = master->interface;
    seen.priority1 = master->priority1;
    seen.priority2 = master->priority2;
    seen.clockClass = master->clockClass;
    seen.clockAccuracy = master->clockAccuracy;
    seen.stepsRemoved = master->stepsRemoved;
    seen.ageMs = master->age_ms;
    static_cast<std::vector<ops::PtpMaster> *>(context)->push_back(seen);
    return 0;
}

std::vector<ops::PtpMaster> mastersOf(PTP_HANDLE handle)
{
    std::vector<ops::PtpMaster> masters;
    if (auto *visit = call<int(PTP_HANDLE, MasterVisitor, void *)>("rkPTPForEachMaster"))
        visit(handle, addMaster, &masters);
    return masters;
}

// Without the call for it, as near as the status says.
ClockState stateOf(PTP_HANDLE handle)
{
    if (auto *state = call<int(PTP_HANDLE)>("rkPTPGetState"))
        return clockStateFromNumber(state(handle));
    return clockStateFromStatus(rkPTPGetStatus(handle, 0), true);
}

QByteArray reasonOf(PTP_HANDLE handle)
{
    char text[512] = "";
    if (auto *reason = call<int(PTP_HANDLE, char *, uint32_t)>("rkPTPGetReason"))
        reason(handle, text, sizeof text);
    return text;
}

using TextGetter = int (*)(PTP_HANDLE, char *);

QByteArray textOf(TextGetter getter, PTP_HANDLE handle)
{
    char text[RKPTP_TEXT_SIZE] = "";
    getter(handle, text);
    return text;
}

// The kernel's list of joined groups; the address is in the byte order of the machine.
std::optional<bool> hasJoined()
{
    QFile list(QStringLiteral("/proc/net/igmp"));
    if (!list.open(QIODevice::ReadOnly))
        return std::nullopt;
    return list.readAll().contains("810100E0");
}

bool isSettled(ClockState state)
{
    return state != ClockState::Starting && state != ClockState::NoMaster;
}

ClockState waitForAnswer(PTP_HANDLE handle, int seconds, bool thorough)
{
    ClockState state = stateOf(handle);
    mastersOf(handle); // the first call makes the client listen
    for (int tick = 0; tick < seconds * kTicksPerSecond && (thorough || !isSettled(state)); ++tick) {
        std::this_thread::sleep_for(kTick);
        state = stateOf(handle);
    }
    return state;
}

void readMaster(PTP_HANDLE handle, PtpView &view)
{
    view.domain = textOf(rkPTPGetDomain, handle);
    view.grandmaster = textOf(rkPTPGetGrandmasterID, handle);
    view.sourcePort = textOf(rkPTPGetSourcePortID, handle);
    view.address = textOf(rkPTPGetIPAddress, handle);
    int64_t offset = 0;
    if (rkPTPGetOffset_Nano(handle, &offset) == RKPTP_OK)
        view.offsetNs = offset;
    uint32_t age = 0;
    auto *ageOf = call<int(PTP_HANDLE, uint32_t *)>("rkPTPGetOffsetAge_Milli");
    if (ageOf && ageOf(handle, &age) == RKPTP_OK)
        view.offsetAgeMs = age;
    auto *usesSystem = call<int(PTP_HANDLE)>("rkPTPUsesSystemClient");
    view.systemClient = usesSystem && usesSystem(handle) == 1;
}

} // namespace

PtpView lookAtPtp(const PtpWish &wish, bool thorough)
{
    PtpView view;
    const bool all = wish.target.interface.isEmpty() || wish.target.interface == "0.0.0.0";
    const PTP_HANDLE handle = rkPTPStart(all ? "0.0.0.0" : wish.target.interface.constData());
    rkPTPSetTargetDomain(handle, wish.target.domain);
    rkPTPSetTargetMacAddress(handle, wish.target.grandmaster.constData());
    view.sight.interface = wish.target.interface;
    view.sight.domain = wish.target.domain;
    view.sight.wanted = wish.target.grandmaster;
    view.sight.addressIsHere = all || rkOSIPExists(wish.target.interface.constData()) != 0;
    view.sight.state = waitForAnswer(handle, wish.seconds, thorough);
    view.sight.reason = reasonOf(handle);
    view.sight.masters = mastersOf(handle);
    const bool runs = view.sight.state == ClockState::NoMaster || view.sight.state == ClockState::Locked;
    if (runs)
        view.sight.joined = hasJoined();
    readMaster(handle, view);
    rkPTPEnd(handle);
    return view;
}
