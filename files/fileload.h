// SPDX-License-Identifier: MIT
//
// What was read from a file goes into the store. Nothing is made durable here: that is the caller's
// commitStore, once for the whole file. Every call may block for as long as the store does.
#ifndef CORVEL_FILELOAD_H
#define CORVEL_FILELOAD_H

#include "channel/lockbook.h"
#include "files/sdpreader.h"
#include "files/settingsfile.h"

#include <QByteArray>
#include <QList>

#include <functional>

// Puts the next line into its argument and returns true, or returns false at the end of the file.
using FileLines = std::function<bool(QByteArray &line)>;

// Stores one value of a settings file: in its channel, or for the machine.
void storeSettingsValue(const SettingsValue &value);

enum class SettingsLoadEnd {
    EndOfFile,
    SectionBelowTheFirst, // the file ends its own loading; what was stored stays stored
    Stopped               // betweenSections said so; what was stored stays stored
};

struct SettingsLoad {
    // Takes each value; storeSettingsValue unless set.
    std::function<void(const SettingsValue &value)> store = storeSettingsValue;
    // Called before the first value of each section, with its channel; false ends the loading. May be empty.
    // A place to show progress and to look for a wish to stop.
    std::function<bool(int channel)> betweenSections;
};

struct SettingsLoadResult {
    SettingsLoadEnd end = SettingsLoadEnd::EndOfFile;
    int values = 0;          // how many were handed to store
    int channels = 0;        // how many different ones they belong to
    SettingsLeftOut leftOut; // what was not handed over
};

// Takes the lines behind the signature line and stores value by value, without regard to locks.
SettingsLoadResult loadSettingsFile(const FileLines &lines, const SettingsLoad &load = {});

// What became of the values of a session description.
struct DescriptionLoad {
    quint32 ticked = 0; // receive flags, as FlagBit has them
    int stored = 0;     // values written, each name once
    int locked = 0;     // values left out because their lock is set, each name once
};

// Stores what a session description holds for the channel, but for the values whose lock in the book is set.
// Of several values for one name only the last is written, at its place. When a stored value ticks a "use"
// box, the bits are added to the channel's receive flags, last.
DescriptionLoad storeSessionDescription(const SdpStores &values, const LockBook &book, int channel);

// The field whose receive box a tick means; None has none.
bool tickedField(SdpTick tick, Field *field);

#endif
