// SPDX-License-Identifier: MIT
#include "reason.h"

#include <algorithm>

namespace rkptp {

namespace {

std::string place(const Circumstances &all)
{
    const std::string names = all.seen.interfaces.data();
    return names.empty() ? "the network" : names;
}

std::string textOf(const Snapshot &seen, Text which)
{
    return seen.text(which).data();
}

std::string seconds(int64_t from, int64_t to)
{
    return std::to_string(std::max<int64_t>(to - from, 0) / kNanosPerSecond) + " s";
}

// Who is followed, where, and through whom it is seen.
std::string master(const Circumstances &all)
{
    return textOf(all.seen, Text::Grandmaster) + " in domain " + textOf(all.seen, Text::Domain) + " on " +
           place(all) + (all.seen.ofSystem ? ", seen through the system's own ptp4l" : "");
}

// "; a master of domain 0 is heard": the domain is the usual mistake.
std::string otherDomains(const Circumstances &all)
{
    std::vector<uint32_t> domains;
    for (const HeardMaster &one : all.masters)
        if (one.domain != all.domain &&
            std::find(domains.begin(), domains.end(), one.domain) == domains.end())
            domains.push_back(one.domain);
    if (domains.empty())
        return {};
    std::string text = domains.size() == 1 ? "; a master of domain " : "; masters are heard of the domains ";
    for (size_t i = 0; i < domains.size(); ++i)
        text += (i == 0 ? "" : ", ") + std::to_string(domains[i]);
    return text + (domains.size() == 1 ? " is heard" : "");
}

std::string noMaster(const Circumstances &all)
{
    if (all.seen.isMaster)
        return "the system's own ptp4l gives the time on " + place(all) + " itself, so it follows nobody";
    const std::string text = "no master heard on " + place(all) + ", domain " + std::to_string(all.domain) +
                             ", for " + seconds(all.seen.since, all.now);
    const bool inDomain = std::any_of(all.masters.begin(), all.masters.end(),
                                      [&all](const HeardMaster &one) { return one.domain == all.domain; });
    if (inDomain)
        return "a master of domain " + std::to_string(all.domain) + " is heard on " + place(all) +
               ", but gives no time yet";
    const std::string others = otherDomains(all);
    return others.empty()
               ? text + "; check cable, interface and domain, and multicast 224.0.1.129 in the switch"
               : text + others;
}

std::string otherMaster(const Circumstances &all)
{
    if (all.seen.otherDomain)
        return "the system's own ptp4l follows " + master(all) + "; asked was domain " +
               std::to_string(all.domain);
    const std::string asked = formatIdentity(all.wish.id);
    return "follows " + master(all) + "; asked was " +
           (asked.empty() ? "an identity that cannot be read" : asked);
}

std::string stale(const Circumstances &all)
{
    return "no sync on " + place(all) + ", domain " + std::to_string(all.domain) + ", for " +
           seconds(all.seen.carried.lastSync, all.now) +
           "; time and offset are carried on from the last one" + otherDomains(all);
}

std::string notRunning(const Circumstances &all)
{
    if (!all.addressValid)
        return "the interface's address is none";
    if (all.domain > RKPTP_HIGHEST_DOMAIN)
        return "domain " + std::to_string(all.domain) + " is none; domains go from 0 to " +
               std::to_string(RKPTP_HIGHEST_DOMAIN);
    return "no PTP client runs";
}

} // namespace

int stateOf(const Snapshot &seen, const GrandmasterWish &wish, int64_t mono)
{
    switch (statusOf(seen, wish, mono)) {
    case RKPTP_STARTING:
        return RKPTP_STATE_STARTING;
    case RKPTP_LISTENING:
        return RKPTP_STATE_NO_MASTER;
    case RKPTP_LOCKED:
        return RKPTP_STATE_LOCKED;
    case RKPTP_OTHER_GRANDMASTER:
        return RKPTP_STATE_OTHER_MASTER;
    case RKPTP_PORT_FAULTY:
        return RKPTP_STATE_NO_INTERFACE;
    case RKPTP_SYNC_LOST:
        return RKPTP_STATE_STALE;
    }
    switch (seen.trouble) {
    case Trouble::None:
        break;
    case Trouble::NoInterface:
        return RKPTP_STATE_NO_INTERFACE;
    case Trouble::NotAllowed:
        return RKPTP_STATE_NOT_ALLOWED;
    case Trouble::SystemClient:
        return RKPTP_STATE_SYSTEM_CLIENT;
    case Trouble::Failed:
        return RKPTP_STATE_FAILED;
    }
    return RKPTP_STATE_NOT_RUNNING;
}

std::string reasonFor(const Circumstances &all)
{
    switch (stateOf(all.seen, all.wish, all.now)) {
    case RKPTP_STATE_STARTING:
        return "the PTP client is starting";
    case RKPTP_STATE_LOCKED:
        return "locked to " + master(all);
    case RKPTP_STATE_OTHER_MASTER:
        return otherMaster(all);
    case RKPTP_STATE_NO_MASTER:
        return noMaster(all);
    case RKPTP_STATE_STALE:
        return stale(all);
    case RKPTP_STATE_NOT_RUNNING:
        return notRunning(all);
    }
    if (all.seen.state == ClientState::Faulty)
        return "the link of " + place(all) + " is down, or the interface is gone";
    return all.seen.detail[0] != 0 ? all.seen.detail.data() : "ptp4l cannot be started";
}

} // namespace rkptp
