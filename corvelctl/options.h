// SPDX-License-Identifier: MIT
//
// Options that mean the same in every program with these commands.
#ifndef CORVELCTL_OPTIONS_H
#define CORVELCTL_OPTIONS_H

#include "corvelctl/context.h"

// --json, --lines, --dry-run, --yes, --quiet
void addCommonOptions(CLI::App &app, Context &context);

#endif
