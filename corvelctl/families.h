// SPDX-License-Identifier: MIT
//
// The families of commands, each one file.
#ifndef CORVELCTL_FAMILIES_H
#define CORVELCTL_FAMILIES_H

namespace CLI {
class App;
}
struct Context;

void addLookCommands(CLI::App &app, Context &context); // show, get, list

#endif
