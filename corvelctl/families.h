// SPDX-License-Identifier: MIT
//
// The families of commands, each one file.
#ifndef CORVELCTL_FAMILIES_H
#define CORVELCTL_FAMILIES_H

class Command;
struct Context;

void addLookCommands(Command &app, Context &context);   // show, get, list
void addChangeCommands(Command &app, Context &context); // set, unset
void addDumpCommands(Command &app, Context &context);   // dump, restore, diff
void addIppCommands(Command &app, Context &context);    // ipp export, import, check
void addSdpCommands(Command &app, Context &context);    // sdp check, fix, load, write
void addCheckCommands(Command &app, Context &context);  // check
void addConfigCommands(Command &app, Context &context); // config list, new, copy, rename, delete, use
void addManyCommands(Command &app, Context &context);   // copy, flows, table export, import
void addTimeCommands(Command &app, Context &context);   // history, undo, redo, blame
void addWatchCommand(Command &app, Context &context);   // watch
void addClockCommands(Command &app, Context &context);  // ptp, ptp doctor
void addFleetCommand(Command &app, Context &context);   // fleet
// What may follow "fleet", asked of that program; the words as they came.
int completeFleet(const Context &context, int argc, char **argv);

#endif
