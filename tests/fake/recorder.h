// SPDX-License-Identifier: MIT
//
// Stands between a test program and the platform libraries: what is written to the store, the log, files and
// events is noted, in order, and handed on to the real library. Link the target corvel_recorder; the dynamic
// linker then finds these functions first. Only the PTP client is not handed on: none is started.
#ifndef CORVEL_TEST_RECORDER_H
#define CORVEL_TEST_RECORDER_H

#include <QByteArray>
#include <QByteArrayList>

namespace Recorder {

// Forgets all that was noted.
void clear();

// What happened since clear(), one entry a call:
//   "Name=value"  a text or number written, for channel paths without the path, else "PATH\Name=value"
//   "save"        the store committed
//   "close 1"     the store closed (1: saving first)
//   "name NAME"   another configuration made the default
//   "log TEXT"    a log line, exactly as it was formatted
//   "ptp start ADDRESS", "ptp end", "ptp domain N", "ptp target TEXT"
QByteArrayList calls();

// The calls that begin with this text.
QByteArrayList callsOf(const QByteArray &start);

// The values that were asked for since clear(), in order: "Name", for other paths than a channel's
// "PATH\Name", and " size" behind it when only the size of a text was asked for.
QByteArrayList reads();

// The channel whose path the last write named, -1 before the first.
int lastChannel();

// Writes since the last save, and saves, a close with saving among them; both counted since clear().
int pending();
int saves();

// How a file command goes about its work, one entry a call, "*" before it under the wait cursor:
//   "create NAME ACCESS SHARE DISPOSITION ATTRIBUTES"   a file opened; the access in hexadecimal digits
//   "put TEXT"                                          the first eight bytes written, "|" for a line end
//   "get SIZE", "get SIZE into old text"                a line read, into an empty buffer or another one
//   "close", "close nothing"                            a file closed, or one that was never open
//   "makedir MODE", "micro", "grandmaster"              a folder made, the clock and the PTP client asked
//   "PATH\Name=value", "save"                           a number written to the store, a commit
QByteArrayList fileCalls();

// How an event was opened last: "ACCESS INHERIT NAME", the access in hexadecimal digits.
QByteArray openedEvent();

} // namespace Recorder

#endif
