// SPDX-License-Identifier: MIT
//
// What the PTP client is doing, as the dialog and the command line tell it. Pure; any thread.
#ifndef CORVEL_CLOCKSTATE_H
#define CORVEL_CLOCKSTATE_H

enum class ClockState {
    NoPtp, // another clock source
    NotRunning,
    Starting,
    Locked,
    OtherMaster,
    NoMaster,
    Stale,
    NoInterface,
    NotAllowed,
    SystemClient,
    Failed,
};

// "locked", "other master", ... Stable: style sheets and scripts know these words.
const char *clockStateWord(ClockState state);

// As the optional call of the client numbers it; a number from a later library is Failed.
ClockState clockStateFromNumber(int number);

// From the status alone, which every client has. interfaceExists: that of the client's address.
ClockState clockStateFromStatus(int status, bool interfaceExists);

#endif
