// SPDX-License-Identifier: MIT
#include "channel/clockstate.h"

#include <cstddef>

namespace {

// In the order of the states.
const char *const kWords[] = {"no ptp",       "not running",   "starting", "locked",
                              "other master", "no master",     "stale",    "no interface",
                              "not allowed",  "system client", "failed"};

// The numbers of the client's optional call.
const ClockState kNumbered[] = {
    ClockState::NotRunning,  ClockState::Starting,   ClockState::Locked,
    ClockState::OtherMaster, ClockState::NoMaster,   ClockState::Stale,
    ClockState::NoInterface, ClockState::NotAllowed, ClockState::SystemClient,
};
// And those of its status.
const ClockState kByStatus[] = {
    ClockState::Starting,    ClockState::NoMaster,    ClockState::Locked,
    ClockState::OtherMaster, ClockState::NoInterface, ClockState::Stale,
};

template<std::size_t N>
ClockState numbered(const ClockState (&states)[N], int number, ClockState otherwise)
{
    return number >= 0 && number < static_cast<int>(N) ? states[number] : otherwise;
}

} // namespace

const char *clockStateWord(ClockState state)
{
    return kWords[static_cast<int>(state)];
}

ClockState clockStateFromNumber(int number)
{
    return numbered(kNumbered, number, ClockState::Failed);
}

ClockState clockStateFromStatus(int status, bool interfaceExists)
{
    return numbered(kByStatus, status, interfaceExists ? ClockState::NotRunning : ClockState::NoInterface);
}
