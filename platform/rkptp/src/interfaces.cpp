// SPDX-License-Identifier: MIT
#include "interfaces.h"

#include "ethtool.h"

#include <algorithm>
#include <arpa/inet.h>
#include <ifaddrs.h>
#include <linux/net_tstamp.h>
#include <memory>
#include <net/if.h>
#include <netinet/in.h>

namespace rkptp {

namespace {

// One number of the address, moving `text` behind it; -1 when there is none up to 255.
int readOctet(const char *&text)
{
    int value = 0;
    int digits = 0;
    for (; *text >= '0' && *text <= '9'; ++text, ++digits)
        value = std::min(value * 10 + (*text - '0'), 1000);
    return digits >= 1 && digits <= 3 && value <= 255 ? value : -1;
}

uint32_t addressIn(const ifaddrs &entry)
{
    return ntohl(reinterpret_cast<const sockaddr_in *>(entry.ifa_addr)->sin_addr.s_addr);
}

// ptp4l gives up altogether when one of its interfaces cannot do this; bridges are such.
bool takesTimestamps(const char *name)
{
    constexpr unsigned kNeeded =
        SOF_TIMESTAMPING_TX_SOFTWARE | SOF_TIMESTAMPING_RX_SOFTWARE | SOF_TIMESTAMPING_SOFTWARE;
    const auto info = rk::timestampingOf(name);
    // A driver that does not say is given a try, as ptp4l does.
    return !info || (info->so_timestamping & kNeeded) == kNeeded;
}

bool suits(const ifaddrs &entry, uint32_t wanted)
{
    if (!entry.ifa_addr || entry.ifa_addr->sa_family != AF_INET)
        return false;
    if (wanted != INADDR_ANY)
        return addressIn(entry) == wanted;
    constexpr unsigned kNeeded = IFF_UP | IFF_MULTICAST;
    constexpr unsigned kUnwanted = IFF_LOOPBACK | IFF_POINTOPOINT;
    return (entry.ifa_flags & kNeeded) == kNeeded && !(entry.ifa_flags & kUnwanted);
}

Interface describe(const ifaddrs &entry)
{
    Interface found;
    found.name = entry.ifa_name;
    // A second address may carry a label ("eth0:1"); the interface is the part before the colon.
    found.name.resize(std::min(found.name.find(':'), found.name.size()));
    found.address = formatAddress(addressIn(entry));
    found.index = if_nametoindex(found.name.c_str());
    return found;
}

} // namespace

std::optional<uint32_t> parseAddress(const char *text)
{
    if (!text || !*text)
        return INADDR_ANY;
    uint32_t address = 0;
    for (int i = 0; i < 4; ++i) {
        if (i > 0 && *text++ != '.')
            return std::nullopt;
        const int octet = readOctet(text);
        if (octet < 0)
            return std::nullopt;
        address = address << 8 | static_cast<uint32_t>(octet);
    }
    return *text ? std::nullopt : std::optional<uint32_t>(address);
}

std::vector<Interface> findInterfaces(uint32_t address)
{
    std::vector<Interface> found;
    ifaddrs *list = nullptr;
    if (getifaddrs(&list) != 0)
        return found;
    const std::unique_ptr<ifaddrs, decltype(&freeifaddrs)> guard(list, freeifaddrs);
    for (const ifaddrs *entry = list; entry; entry = entry->ifa_next) {
        if (!suits(*entry, address))
            continue;
        const Interface one = describe(*entry);
        const bool known = std::any_of(found.begin(), found.end(),
                                       [&one](const Interface &other) { return other.index == one.index; });
        if (one.index != 0 && !known && (address != INADDR_ANY || takesTimestamps(one.name.c_str())))
            found.push_back(one);
    }
    std::sort(found.begin(), found.end(),
              [](const Interface &a, const Interface &b) { return a.index < b.index; });
    if (found.size() > kMaxInterfaces)
        found.resize(kMaxInterfaces);
    return found;
}

std::string formatAddress(uint32_t address)
{
    const in_addr network{htonl(address)};
    char text[INET_ADDRSTRLEN] = "";
    inet_ntop(AF_INET, &network, text, sizeof text);
    return text;
}

} // namespace rkptp
