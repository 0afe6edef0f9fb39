// SPDX-License-Identifier: MIT
//
// The look at the whole server before it goes on air: every channel, element and flow against the others and
// against the machine. One rule per row of a table. Pure; any thread. The time grows with the number of
// streams, not with its square.
#ifndef CORVEL_OPS_PREFLIGHT_H
#define CORVEL_OPS_PREFLIGHT_H

#include "ops/findings.h"
#include "ops/netpicture.h"
#include "ops/snapshot.h"

namespace ops {

enum class Preflight {
    Used, // channels in which something was ever set up
    All   // and those without, which are named
};

// Only fields whose "use" flag is on count, where a rule says nothing else.
Findings runPreflight(const Snapshot &snapshot, const NetPicture &machine, Preflight which = Preflight::Used);

// The names of all rules, in the order of the tables.
std::vector<const char *> preflightRuleNames();

} // namespace ops

#endif
