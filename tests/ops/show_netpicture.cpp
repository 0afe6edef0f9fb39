// SPDX-License-Identifier: MIT
//
// show_netpicture ADDRESS...: prints the machine's interfaces by name and whether the addresses have a route.
#include "ops/ipv4.h"
#include "ops/netpicture.h"

#include <algorithm>
#include <cstdio>

int main(int argc, char **argv)
{
    ops::NetPicture picture = ops::machinePicture();
    std::sort(picture.interfaces.begin(), picture.interfaces.end(),
              [](const ops::NetInterface &a, const ops::NetInterface &b) { return a.name < b.name; });
    for (const ops::NetInterface &interface : picture.interfaces) {
        std::printf("%s: up=%d multicast=%d loopback=%d mtu=%d", interface.name.constData(), interface.up,
                    interface.multicast, interface.loopback, interface.mtu);
        for (const quint32 address : interface.addresses)
            std::printf(" %s", ops::ipv4Text(address).constData());
        std::printf("\n");
    }
    for (int at = 1; at < argc; ++at) {
        const auto address = ops::parseIpv4(argv[at]);
        if (!address)
            return 2;
        std::printf("%s %s\n", argv[at], picture.hasRoute(*address) ? "routed" : "not routed");
    }
    return 0;
}
