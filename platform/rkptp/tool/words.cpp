// SPDX-License-Identifier: MIT
#include "words.h"

#include <cstdio>
#include <ctime>
#include <iterator>

namespace ptpstatus {

namespace {

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

// Texts of the library are UTF-8; what JSON has no room for in them is quoted.
std::string quoted(const std::string &text)
{
    std::string out = "\"";
    for (const char c : text) {
        char escape[8];
        snprintf(escape, sizeof escape, "\\u%04x", static_cast<unsigned>(static_cast<unsigned char>(c)));
        const bool control = static_cast<unsigned char>(c) < 0x20;
        if (c == '"' || c == '\\')
            out += '\\';
        out += control ? std::string(escape) : std::string(1, c);
    }
    return out + '"';
}

std::string field(const char *name, const std::string &value)
{
    return std::string("\"") + name + "\":" + value;
}

std::string asJson(const RKPTP_MASTER &master)
{
    return "{" + field("domain", std::to_string(master.domain)) + "," +
           field("grandmaster", quoted(master.grandmaster)) + "," + field("port", quoted(master.sourcePort)) +
           "," + field("interface", quoted(master.interface)) + "," +
           field("priority1", std::to_string(master.priority1)) + "," +
           field("clockClass", std::to_string(master.clockClass)) + "," +
           field("clockAccuracy", std::to_string(master.clockAccuracy)) + "," +
           field("variance", std::to_string(master.variance)) + "," +
           field("priority2", std::to_string(master.priority2)) + "," +
           field("stepsRemoved", std::to_string(master.stepsRemoved)) + "," +
           field("ageMs", std::to_string(master.age_ms)) + "}";
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
    std::string list;
    for (const RKPTP_MASTER &master : masters)
        list += (list.empty() ? "" : ",") + asJson(master);
    return "{" + field("status", std::to_string(view.status)) + "," +
           field("state", quoted(nameOf(view.state))) + "," + field("reason", quoted(view.reason)) + "," +
           field("systemClient", view.ofSystem ? "true" : "false") + "," +
           field("domain", quoted(view.domain)) + "," + field("grandmaster", quoted(view.grandmaster)) + "," +
           field("port", quoted(view.sourcePort)) + "," + field("address", quoted(view.address)) + "," +
           field("offsetNs", view.offsetKnown ? std::to_string(view.offset) : "null") + "," +
           field("offsetAgeMs", view.offsetKnown ? std::to_string(view.offsetAgeMs) : "null") + "," +
           field("time", quoted(timeText(view))) + "," + field("masters", "[" + list + "]") + "}";
}

} // namespace ptpstatus
