// SPDX-License-Identifier: MIT
//
// Completion for the shells: the hidden commands "__complete", followed by the words so far without their
// quotes, and
// "__complete_bash", followed by the line up to the cursor and the characters at which bash breaks words.
// Both print what may stand in place of the last word, one per line. Exit status 1: a file name may stand
// there.
#ifndef CORVELCTL_COMPLETE_H
#define CORVELCTL_COMPLETE_H

#include "corvelctl/context.h"

struct Offered {
    QByteArrayList words;
    bool files = false; // a file name is right as well
};

// The candidates for the last of the words, which may be empty.
Offered completions(const CLI::App &app, Context &context, const QByteArrayList &words);

#endif
