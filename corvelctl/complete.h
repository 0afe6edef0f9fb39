// SPDX-License-Identifier: MIT
//
// Completion for the shells: the hidden command "__complete". The scripts for bash, zsh and fish only hand
// the words over, so that all three offer the same.
#ifndef CORVELCTL_COMPLETE_H
#define CORVELCTL_COMPLETE_H

#include "corvelctl/context.h"

// Prints the candidates for the last of the words, which may be empty; nothing where a file name is wanted.
// The words stand behind "__complete". under: what stands before them in corvelctl's own commands, "fleet " in
// the program that those words are handed to. Gives the exit code.
int complete(const CLI::App &app, Context &context, int argc, char **argv, const char *under = "");

#endif
