// SPDX-License-Identifier: MIT
//
// What the commands that change something share: print the changes, ask, write them as one batch.
#ifndef CORVELCTL_CHANGES_H
#define CORVELCTL_CHANGES_H

#include "corvelctl/context.h"
#include "ops/snapshot.h"

// One line or item per value, "2/video rx.dst: 239.20.2.1 -> 239.20.9.1"; a dry run and diff print the same.
void printChanges(Output &out, const ops::Changes &changes);
void printChange(Output &out, const ops::Change &change);
QByteArray changeText(const Output &out, const ops::Change &change);

// The JSON form of one change, which the history extends.
Json changeItem(const ops::Change &change);

enum class Ask { Never, Always };

// Prints the changes and makes them true, unless this is a dry run, with a label for the history. With Ask
// somebody at a terminal is asked first; without a terminal --yes is needed.
int applyChanges(Context &context, ops::Store &store, const ops::Changes &changes, const QByteArray &label,
                 Ask ask = Ask::Never);

// "3 values" or "1 value".
QByteArray counted(std::size_t number, const char *thing);

// True when the user agrees: --yes, or an answer at the terminal.
bool agreed(const Context &context, const QByteArray &question);

#endif
