// SPDX-License-Identifier: MIT
#ifndef RKPTP_WIRE_H
#define RKPTP_WIRE_H

// What all PTP messages have in common as bytes (IEEE 1588-2008 clause 13.3). The caller has checked the
// length.

#include "identity.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>

namespace rkptp {
namespace wire {

// Where the fields of the header stand, which is 34 bytes long.
constexpr size_t kAtType = 0;
constexpr size_t kAtVersion = 1;
constexpr size_t kAtLength = 2;
constexpr size_t kAtDomain = 4;
constexpr size_t kAtSource = 20;
constexpr size_t kAtSequence = 30;
constexpr size_t kAtControl = 32;
constexpr size_t kAtInterval = 33;

constexpr uint8_t kPtpVersion = 2;

inline uint16_t get16(const uint8_t *at)
{
    return static_cast<uint16_t>(at[0] << 8 | at[1]);
}

inline ClockId getClock(const uint8_t *at)
{
    ClockId id;
    std::copy_n(at, id.size(), id.begin());
    return id;
}

inline PortId getPort(const uint8_t *at)
{
    return {getClock(at), get16(at + 8)};
}

inline bool isMessage(const uint8_t *bytes, uint8_t type)
{
    return (bytes[kAtType] & 0x0f) == type && (bytes[kAtVersion] & 0x0f) == kPtpVersion;
}

} // namespace wire
} // namespace rkptp

#endif // RKPTP_WIRE_H
