// SPDX-License-Identifier: MIT
//
// What a network interface says about its time stamps. Private to the libraries in platform/; each compiles
// its own copy.
#ifndef CORVEL_PLATFORM_ETHTOOL_H
#define CORVEL_PLATFORM_ETHTOOL_H

#include "descriptor.h"

#include <linux/ethtool.h>
#include <linux/sockios.h>
#include <net/if.h>
#include <optional>
#include <string>
#include <sys/ioctl.h>
#include <sys/socket.h>

namespace rk {

// Nothing when there is no such interface or its driver does not say.
inline std::optional<ethtool_ts_info> timestampingOf(const std::string &interface)
{
    ethtool_ts_info info{};
    ifreq request{};
    if (interface.empty() || interface.size() >= sizeof request.ifr_name)
        return std::nullopt;
    const Descriptor socket(::socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, 0));
    info.cmd = ETHTOOL_GET_TS_INFO;
    interface.copy(request.ifr_name, sizeof request.ifr_name - 1);
    request.ifr_data = reinterpret_cast<char *>(&info);
    if (!socket.valid() || ioctl(socket.get(), SIOCETHTOOL, &request) != 0)
        return std::nullopt;
    return info;
}

} // namespace rk

#endif // CORVEL_PLATFORM_ETHTOOL_H
