// SPDX-License-Identifier: MIT
#ifndef RKPTP_INTERFACES_H
#define RKPTP_INTERFACES_H

// From an IPv4 address to the interfaces a client listens on.

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace rkptp {

/* As many interfaces as one ptp4l is given at most. */
constexpr size_t kMaxInterfaces = 8;

struct Interface {
    std::string name;
    std::string address; // dotted, the first one of the interface or the one asked for
    unsigned index = 0;
};

inline bool operator==(const Interface &a, const Interface &b)
{
    return a.name == b.name && a.address == b.address && a.index == b.index;
}

/* The address in host order: four decimal numbers with dots, leading zeros allowed as the address fields of
   the dialog may hold them. Null and empty text mean 0.0.0.0. Nothing for any other text. */
std::optional<uint32_t> parseAddress(const char *text);

/* The interface that has this address; for 0.0.0.0 every running multicast interface with an IPv4 address
   except loopback, in the order of their numbers, at most maxInterfaces. Empty when there is none. */
std::vector<Interface> findInterfaces(uint32_t address);

/* An address in host order as dotted text. */
std::string formatAddress(uint32_t address);

} // namespace rkptp

#endif // RKPTP_INTERFACES_H
