// SPDX-License-Identifier: MIT
#include "rkos.h"

#include <arpa/inet.h>
#include <ifaddrs.h>
#include <netinet/in.h>

namespace {

bool hasAddress(const ifaddrs &entry, in_addr wanted)
{
    if (entry.ifa_addr == nullptr || entry.ifa_addr->sa_family != AF_INET)
        return false;
    // Through void *: the kernel's entry is aligned for the family it names.
    const void *address = entry.ifa_addr;
    return static_cast<const sockaddr_in *>(address)->sin_addr.s_addr == wanted.s_addr;
}

} // namespace

extern "C" int rkOSIPExists(const char *utf8Address)
{
    in_addr wanted{};
    if (utf8Address == nullptr || inet_pton(AF_INET, utf8Address, &wanted) != 1)
        return 0;
    ifaddrs *list = nullptr;
    if (wanted.s_addr == INADDR_ANY || getifaddrs(&list) != 0)
        return 0;
    bool found = false;
    for (const ifaddrs *entry = list; entry != nullptr && !found; entry = entry->ifa_next)
        found = hasAddress(*entry, wanted);
    freeifaddrs(list);
    return found ? 1 : 0;
}
