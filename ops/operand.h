// SPDX-License-Identifier: MIT
//
// The two sides of a comparison: the store, a configuration, a channel, a dump or a settings file. Blocks for
// as long as the disk takes.
#ifndef CORVEL_OPS_OPERAND_H
#define CORVEL_OPS_OPERAND_H

#include "ops/outcome.h"
#include "ops/snapshot.h"
#include "ops/store.h"

namespace ops {

struct Operand {
    Snapshot values;
    int channel = -1;     // only this one, or all below 0
    bool partial = false; // a settings file: what it does not carry is not compared
};

// "store" is the store given; a number is one of its channels; "config:NAME", or a name that no file has, is
// a configuration; anything else is a file, told apart by its content, "FILE#NAME" one configuration of a
// dump.
Outcome<Operand> readOperand(const QByteArray &text, const Store &store);

// What turns left into right. With a channel on both sides, the right one's values are compared with the left
// one's; with a channel on one side, with the same channel of the other.
Changes compare(const Operand &left, const Operand &right);

} // namespace ops

#endif
