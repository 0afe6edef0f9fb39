// SPDX-License-Identifier: MIT
#ifndef RKPTP_IDENTITY_H
#define RKPTP_IDENTITY_H

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace rkptp {

/* A clock identity (EUI-64) as it travels in PTP messages. All zero means "unknown". */
using ClockId = std::array<uint8_t, 8>;

bool isUnknown(const ClockId &id);

struct PortId {
    ClockId clock{};
    uint16_t port = 0;
};

inline bool operator==(const PortId &a, const PortId &b)
{
    return a.clock == b.clock && a.port == b.port;
}

/*
 * Reads an identity in any usual spelling: 16 digits (EUI-64) or 12 digits (MAC address, widened with
 * FF-FE in the middle), either case, bytes joined or grouped with one kind of separator: '-', ':' or '.'.
 * Blanks around it are dropped. Nothing when the text is anything else, including half typed.
 */
std::optional<ClockId> parseIdentity(std::string_view text);

/* "00-1D-C1-FF-FE-12-34-56", the form session descriptions use; empty for the unknown identity. */
std::string formatIdentity(const ClockId &id);

/* The identity followed by "-" and the port number in decimal; empty for the unknown identity. */
std::string formatPortId(const PortId &id);

/* "001dc1.fffe.123456", the form ptp4l takes on its command line. */
std::string formatForPtp4l(const ClockId &id);

/* A fresh identity for one client: random, with the "locally administered" bit set. */
ClockId randomIdentity();

} // namespace rkptp

#endif // RKPTP_IDENTITY_H
