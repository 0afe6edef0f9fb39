// SPDX-License-Identifier: MIT
//
// Completion for the shells: the hidden command "__complete". The scripts for bash, zsh and fish only hand
// the words over, so that all three offer the same.
#ifndef CORVELCTL_COMPLETE_H
#define CORVELCTL_COMPLETE_H

#include "corvelctl/context.h"

// The candidates for the last of the words, which may be empty; nothing where a file name is wanted.
QByteArrayList completions(const CLI::App &app, Context &context, const QByteArrayList &words);

#endif
