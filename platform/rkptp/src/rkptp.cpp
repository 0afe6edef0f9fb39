// SPDX-License-Identifier: MIT
#include "rkptp.h"

#include "reason.h"
#include "text.h"
#include "utf8.h"
#include "worker.h"

#include <algorithm>
#include <cstring>

using namespace rkptp;

namespace {

Worker::Id idOf(PTP_HANDLE handle)
{
    return reinterpret_cast<Worker::Id>(handle);
}

// Before a client has started, or after a wish that no client can fulfil.
void resetSnapshot(Client &client)
{
    const bool possible = client.addressValid && client.key.domain <= RKPTP_HIGHEST_DOMAIN;
    client.snapshot = Snapshot();
    client.snapshot.state = possible ? ClientState::Starting : ClientState::None;
    client.snapshot.since = monotonicNow();
}

// RKPTP_OK when take(carried time of the client) says that it holds.
template<class Take>
int lookAtTime(PTP_HANDLE handle, const Take &take)
{
    int result = RKPTP_NO_CLIENT;
    Worker::instance().look(idOf(handle), [&](const Client &client) {
        if (client.snapshot.state != ClientState::None)
            result = take(client.snapshot.carried) ? RKPTP_OK : RKPTP_NOT_SYNCED;
    });
    return result;
}

int readText(PTP_HANDLE handle, Text which, char *buffer)
{
    if (!buffer)
        return RKPTP_BAD_ARGUMENT;
    buffer[0] = 0;
    int result = RKPTP_NO_CLIENT;
    Worker::instance().look(idOf(handle), [&](const Client &client) {
        if (client.snapshot.state == ClientState::None)
            return;
        memcpy(buffer, client.snapshot.text(which).data(), RKPTP_TEXT_SIZE);
        result = RKPTP_OK;
    });
    return result;
}

RKPTP_MASTER shown(const HeardMaster &heard)
{
    RKPTP_MASTER master{};
    master.size = sizeof master;
    master.domain = heard.domain;
    snprintf(master.grandmaster, sizeof master.grandmaster, "%s", formatIdentity(heard.grandmaster).c_str());
    snprintf(master.sourcePort, sizeof master.sourcePort, "%s", formatPortId(heard.source).c_str());
    snprintf(master.interface, sizeof master.interface, "%s", heard.interface.c_str());
    master.priority1 = heard.priority1;
    master.clockClass = heard.clockClass;
    master.clockAccuracy = heard.clockAccuracy;
    master.priority2 = heard.priority2;
    master.variance = heard.variance;
    master.stepsRemoved = heard.stepsRemoved;
    master.age_ms =
        static_cast<uint32_t>(std::max<int64_t>(monotonicNow() - heard.heardAt, 0) / kNanosPerMilli);
    return master;
}

PTP_HANDLE startClient(const char *interfaceAddress, bool readsOnly)
{
    const auto address = parseAddress(interfaceAddress);
    Client client;
    client.addressValid = address.has_value();
    client.key.address = address.value_or(0);
    client.readsOnly = readsOnly;
    client.changedAt = monotonicNow();
    resetSnapshot(client);
    // A number in the guise of a pointer on purpose: it can be neither followed nor freed.
    return reinterpret_cast<PTP_HANDLE>(Worker::instance().add(client)); // NOLINT(performance-no-int-to-ptr)
}

void splitTime(int64_t nanos, uint64_t *seconds, uint32_t *nanoseconds)
{
    if (seconds)
        *seconds = static_cast<uint64_t>(nanos / kNanosPerSecond);
    if (nanoseconds)
        *nanoseconds = static_cast<uint32_t>(nanos % kNanosPerSecond);
}

} // namespace

const char *rkPTPVersion(void)
{
    return "2.0";
}

PTP_HANDLE rkPTPStart(const char *interfaceAddress)
{
    return startClient(interfaceAddress, false);
}

PTP_HANDLE rkPTPStartReading(const char *interfaceAddress)
{
    return startClient(interfaceAddress, true);
}

void rkPTPEnd(PTP_HANDLE handle)
{
    Worker::instance().remove(idOf(handle));
}

int rkPTPGetStatus(PTP_HANDLE handle, int reserved)
{
    (void)reserved;
    int status = RKPTP_NO_CLIENT;
    Worker::instance().look(idOf(handle), [&status](const Client &client) {
        status = statusOf(client.snapshot, client.wish, monotonicNow());
    });
    return status;
}

int rkPTPSetTargetDomain(PTP_HANDLE handle, uint32_t domain)
{
    const bool known = Worker::instance().change(idOf(handle), [domain](Client &client) {
        client.changedAt = monotonicNow();
        if (client.key.domain == domain)
            return;
        client.key.domain = domain;
        resetSnapshot(client);
    });
    if (!known)
        return RKPTP_NO_CLIENT;
    return domain <= RKPTP_HIGHEST_DOMAIN ? RKPTP_OK : RKPTP_BAD_ARGUMENT;
}

int rkPTPSetTargetMacAddress(PTP_HANDLE handle, const char *identity)
{
    const std::string_view text = identity ? identity : "";
    const bool any = rk::trimmed(text).empty();
    const auto id = parseIdentity(text);
    const bool known = Worker::instance().change(idOf(handle), [&](Client &client) {
        client.changedAt = monotonicNow();
        client.wish.any = any;
        client.wish.id = id.value_or(ClockId());
    });
    if (!known)
        return RKPTP_NO_CLIENT;
    return any || id ? RKPTP_OK : RKPTP_BAD_ARGUMENT;
}

int rkPTPGetVersion(PTP_HANDLE handle, char *buffer)
{
    return readText(handle, Text::Version, buffer);
}
int rkPTPGetDomain(PTP_HANDLE handle, char *buffer)
{
    return readText(handle, Text::Domain, buffer);
}
int rkPTPGetSourcePortID(PTP_HANDLE handle, char *buffer)
{
    return readText(handle, Text::SourcePort, buffer);
}
int rkPTPGetIPAddress(PTP_HANDLE handle, char *buffer)
{
    return readText(handle, Text::Address, buffer);
}
int rkPTPGetGrandmasterID(PTP_HANDLE handle, char *buffer)
{
    return readText(handle, Text::Grandmaster, buffer);
}

int rkPTPGetTime_Nano(PTP_HANDLE handle, uint64_t *seconds, uint32_t *nanoseconds)
{
    int result = RKPTP_NO_CLIENT;
    CarriedTime carried;
    Worker::instance().look(idOf(handle), [&](const Client &client) {
        result = client.snapshot.state == ClientState::None ? RKPTP_NO_CLIENT : RKPTP_NOT_SYNCED;
        carried = client.snapshot.carried;
    });
    const int64_t ptp = carried.valid ? carried.ptpMinusMono + monotonicNow() : -1;
    // A master can claim any time; one before 1970 is none that could be shown.
    if (ptp >= 0) {
        splitTime(ptp, seconds, nanoseconds);
        return RKPTP_OK;
    }
    splitTime(readClocks().realtime, seconds, nanoseconds);
    return result;
}

int rkPTPGetOffset_Nano(PTP_HANDLE handle, int64_t *offset)
{
    if (!offset)
        return RKPTP_BAD_ARGUMENT;
    return lookAtTime(handle, [offset](const CarriedTime &carried) {
        if (carried.valid)
            *offset = carried.offset;
        return carried.freshAt(monotonicNow());
    });
}

int rkPTPGetState(PTP_HANDLE handle)
{
    int state = RKPTP_STATE_NOT_RUNNING;
    Worker::instance().look(idOf(handle), [&state](const Client &client) {
        state = stateOf(client.snapshot, client.wish, monotonicNow());
    });
    return state;
}

int rkPTPGetReason(PTP_HANDLE handle, char *buffer, uint32_t size)
{
    Circumstances all;
    const bool known = Worker::instance().look(idOf(handle), [&all](const Client &client) {
        all = {client.snapshot,     client.wish,    client.key.domain,
               client.addressValid, client.masters, monotonicNow()};
    });
    const std::string text = known ? reasonFor(all) : "no PTP client runs";
    if (buffer && size > 0) {
        const std::string_view part = rk::cutBefore(text, size - 1);
        memcpy(buffer, part.data(), part.size());
        buffer[part.size()] = 0;
    }
    return static_cast<int>(text.size() + 1);
}

int rkPTPGetOffsetAge_Milli(PTP_HANDLE handle, uint32_t *milliseconds)
{
    if (!milliseconds)
        return RKPTP_BAD_ARGUMENT;
    return lookAtTime(handle, [milliseconds](const CarriedTime &carried) {
        const int64_t age = std::max<int64_t>(monotonicNow() - carried.lastSync, 0) / kNanosPerMilli;
        if (carried.valid)
            *milliseconds = static_cast<uint32_t>(std::min<int64_t>(age, UINT32_MAX));
        return carried.valid;
    });
}

int rkPTPUsesSystemClient(PTP_HANDLE handle)
{
    int result = 0;
    Worker::instance().look(idOf(handle), [&result](const Client &client) {
        result = client.snapshot.ofSystem && client.snapshot.state != ClientState::None ? 1 : 0;
    });
    return result;
}

int rkPTPForEachMaster(PTP_HANDLE handle, RKPTP_MASTER_VISITOR visitor, void *context)
{
    std::vector<HeardMaster> masters;
    bool listening = false;
    Worker::instance().look(idOf(handle), [&](const Client &client) {
        masters = client.masters;
        listening = client.wantsMasters;
    });
    if (!listening)
        Worker::instance().change(idOf(handle), [](Client &client) { client.wantsMasters = true; });
    int visited = 0;
    for (const HeardMaster &one : masters) {
        if (!visitor)
            break;
        const RKPTP_MASTER master = shown(one);
        ++visited;
        if (visitor(context, &master) != 0)
            break;
    }
    return visited;
}
