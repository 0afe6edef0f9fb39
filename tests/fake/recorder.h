// SPDX-License-Identifier: MIT
//
// Stands between a test program and the platform libraries: every store write, commit, log line and clock
// call is noted, in order, and handed on to the real library. Link recorder.cpp into the program itself;
// the dynamic linker then finds these functions first.
#ifndef CORVEL_TEST_RECORDER_H
#define CORVEL_TEST_RECORDER_H

#include <QByteArray>
#include <QByteArrayList>

namespace Recorder {

// What happened since clear(), one entry a call:
//   "Name=value"  a text or number written, for channel paths without the path, else "PATH\Name=value"
//   "save"        the store committed
//   "close 1"     the store closed (1: saving first)
//   "name NAME"   another configuration made the default
//   "log TEXT"    a log line, exactly as it was formatted
//   "ptp start ADDRESS", "ptp end", "ptp domain N", "ptp target TEXT"   (not handed on: no client is started)
QByteArrayList calls();
void clear();

// The values that were asked for since clear(), in order: "Name", for other paths than a channel's
// "PATH\Name", and " size" behind it when only the size of a text was asked for.
QByteArrayList reads();

// The calls that begin with this text.
QByteArrayList callsOf(const QByteArray &start);

// The channel whose path the last write named, -1 before the first.
int lastChannel();

} // namespace Recorder

#endif
