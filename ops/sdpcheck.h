// SPDX-License-Identifier: MIT
//
// Session descriptions judged as a strict SMPTE ST 2110 receiver would: what it refuses, and what it takes
// for something else. One rule per row of a table. Pure; any thread; takes any bytes.
#ifndef CORVEL_OPS_SDPCHECK_H
#define CORVEL_OPS_SDPCHECK_H

#include "ops/findings.h"
#include "ops/sdptext.h"

namespace ops {

// What a text cannot say of itself, where the caller knows it.
struct SdpFacts {
    bool interlaced = false; // the signal is interlaced
    int channels = 0;        // audio channels in each flow; 0 when not known
};

// Of one text in the order of its lines, text by text; then what the texts do to each other.
Findings checkSdp(const std::vector<SdpText> &texts, const SdpFacts &facts = {});

// The names of all rules, in the order of the tables.
std::vector<const char *> sdpRuleNames();

} // namespace ops

#endif
