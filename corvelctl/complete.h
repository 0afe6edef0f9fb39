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

// "__complete WORD...", and "__complete_bash LINE BREAKS" with bash's line up to the cursor. Before
// everything else, as the words behind are no words of ours yet.
bool isCompletion(int argc, char **argv);

// Something behind this command is asked for.
bool completesUnder(const char *command, int argc, char **argv);

// Prints the candidates for the last of the words, which may be empty. under: the first word, in the program
// that it is handed to. Gives the exit code, Found where a file name is right as well.
int complete(const CLI::App &app, Context &context, int argc, char **argv, const QByteArray &under = {});

#endif
