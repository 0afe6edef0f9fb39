// SPDX-License-Identifier: MIT
//
// The families of commands, each one file.
#ifndef CORVELCTL_FAMILIES_H
#define CORVELCTL_FAMILIES_H

namespace CLI {
class App;
}
struct Context;

void addLookCommands(CLI::App &app, Context &context);   // show, get, list
void addChangeCommands(CLI::App &app, Context &context); // set, unset
void addDumpCommands(CLI::App &app, Context &context);   // dump, restore, diff
void addIppCommands(CLI::App &app, Context &context);    // ipp export, import, check
void addSdpCommands(CLI::App &app, Context &context);    // sdp check, fix, load, write
void addCheckCommands(CLI::App &app, Context &context);  // check
void addConfigCommands(CLI::App &app, Context &context); // config list, new, copy, rename, delete, use
void addManyCommands(CLI::App &app, Context &context);   // copy, flows, table export, import
void addTimeCommands(CLI::App &app, Context &context);   // history, undo, redo, blame
void addWatchCommand(CLI::App &app, Context &context);   // watch
void addClockCommands(CLI::App &app, Context &context);  // ptp, ptp doctor
void addFleetCommand(CLI::App &app, Context &context);   // fleet

#endif
