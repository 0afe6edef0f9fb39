// SPDX-License-Identifier: MIT
#include "words.h"

#include <cstdio>
#include <ctime>
#include <iterator>
#include <nlohmann/json.hpp>

namespace ptpstatus {

namespace {

using Json = nlohmann::ordered_json;
using TextGetter = int (*)(PTP_HANDLE, char *);

std::string textOf(TextGetter getter, PTP_HANDLE handle)
{
    char buffer[RKPTP_TEXT_SIZE] = "";
    getter(handle, buffer);
    return buffer;
}

std::string timeText(const View &view)
{
    char date[32] = "";
    char text[64];
    const auto whole = static_cast<time_t>(view.seconds);
    tm parts{};
    if (gmtime_r(&whole, &parts))
        strftime(date, sizeof date, "%Y-%m-%d %H:%M:%S", &parts);
    snprintf(text, sizeof text, "%s.%03u", date, static_cast<unsigned>(view.nanoseconds / 1000000));
    return text;
}

std::string masterText(const View &view)
{
    const std::string place = view.address.empty() ? "on all interfaces" : "on " + view.address;
    return view.grandmaster + " (port " + view.sourcePort + ") in domain " + view.domain + " " + place +
           ", offset " + std::to_string(view.offset) + " ns, PTP time " + timeText(view) +
           (view.ofSystem ? ", seen through the system's own ptp4l" : "");
}

// The words of a state, by its number.
const char *const kStateNames[] = {"not running", "starting",     "locked",      "other master",  "no master",
                                   "stale",       "no interface", "not allowed", "system client", "failed"};

const char *nameOf(int state)
{
    const bool known = state >= 0 && static_cast<size_t>(state) < std::size(kStateNames);
    return known ? kStateNames[state] : "unknown";
}

Json toJson(const RKPTP_MASTER &master)
{
    return {{"domain", master.domain},
            {"grandmaster", master.grandmaster},
            {"port", master.sourcePort},
            {"interface", master.interface},
            {"priority1", master.priority1},
            {"clockClass", master.clockClass},
            {"clockAccuracy", master.clockAccuracy},
            {"variance", master.variance},
            {"priority2", master.priority2},
            {"stepsRemoved", master.stepsRemoved},
            {"ageMs", master.age_ms}};
}

} // namespace

View look(PTP_HANDLE handle)
{
    View view;
    char reason[512];
    rkPTPGetReason(handle, reason, sizeof reason);
    view.status = rkPTPGetStatus(handle, 0);
    view.state = rkPTPGetState(handle);
    view.ofSystem = rkPTPUsesSystemClient(handle) != 0;
    view.offsetKnown = rkPTPGetOffsetAge_Milli(handle, &view.offsetAgeMs) == RKPTP_OK;
    rkPTPGetOffset_Nano(handle, &view.offset);
    rkPTPGetTime_Nano(handle, &view.seconds, &view.nanoseconds);
    view.grandmaster = textOf(rkPTPGetGrandmasterID, handle);
    view.sourcePort = textOf(rkPTPGetSourcePortID, handle);
    view.domain = textOf(rkPTPGetDomain, handle);
    view.address = textOf(rkPTPGetIPAddress, handle);
    view.reason = reason;
    return view;
}

std::vector<RKPTP_MASTER> mastersOf(PTP_HANDLE handle)
{
    std::vector<RKPTP_MASTER> masters;
    rkPTPForEachMaster(
        handle,
        [](void *context, const RKPTP_MASTER *master) {
            static_cast<std::vector<RKPTP_MASTER> *>(context)->push_back(*master);
            return 0;
        },
        &masters);
    return masters;
}

std::string inWords(const View &view, const std::string &wantedGrandmaster)
{
    switch (view.status) {
    case RKPTP_LOCKED:
        return "locked to " + masterText(view);
    case RKPTP_OTHER_GRANDMASTER:
        return "another grandmaster than " + (wantedGrandmaster.empty() ? "asked" : wantedGrandmaster) +
               ": " + masterText(view);
    case RKPTP_STARTING:
        return "starting";
    case RKPTP_LISTENING:
        return "no master seen";
    case RKPTP_PORT_FAULTY:
        return "link down or interface gone";
    case RKPTP_SYNC_LOST:
        return "sync lost";
    default:
        return "no client can run";
    }
}

std::string inWords(const RKPTP_MASTER &master)
{
    char text[400];
    snprintf(text, sizeof text,
             "master: domain %u, %s on %s, priority %u/%u, class %u, accuracy 0x%02x, %u step%s away",
             master.domain, master.grandmaster, master.interface, unsigned{master.priority1},
             unsigned{master.priority2}, unsigned{master.clockClass}, unsigned{master.clockAccuracy},
             unsigned{master.stepsRemoved}, master.stepsRemoved == 1 ? "" : "s");
    return text;
}

std::string asJson(const View &view, const std::vector<RKPTP_MASTER> &masters)
{
    Json list = Json::array();
    for (const RKPTP_MASTER &master : masters)
        list.push_back(toJson(master));
    const Json all = {{"status", view.status},
                      {"state", nameOf(view.state)},
                      {"reason", view.reason},
                      {"systemClient", view.ofSystem},
                      {"domain", view.domain},
                      {"grandmaster", view.grandmaster},
                      {"port", view.sourcePort},
                      {"address", view.address},
                      {"offsetNs", view.offsetKnown ? Json(view.offset) : Json()},
                      {"offsetAgeMs", view.offsetKnown ? Json(view.offsetAgeMs) : Json()},
                      {"time", timeText(view)},
                      {"masters", list}};
    // A text that is no UTF-8 (the name of an interface may be anything) is no reason to end.
    return all.dump(-1, ' ', false, Json::error_handler_t::replace);
}

} // namespace ptpstatus
