// SPDX-License-Identifier: MIT
//
// The sockets behind named events: where they lie, how one is made, found and connected to.
#ifndef RKOS_EVENTSOCKET_H
#define RKOS_EVENTSOCKET_H

#include "guard.h"

#include <string>
#include <sys/stat.h>
#include <vector>

namespace rkos {

// 1 to 200 bytes, no "/", no control character, no "." in front.
bool isEventName(const char *name);

// A directory in which events lie.
struct EventDirectory {
    Descriptor fd;
    std::string path;
    bool shared = false; // the system service's: other users may set what is in it
};

// The system service's directory when there is a safe one, then the user's. May be empty.
std::vector<EventDirectory> eventDirectories();

// A socket connected to the living service of that name in `directory`; invalid when there is none.
Descriptor connectEvent(const EventDirectory &directory, const std::string &name);

// The same in the first directory that has one.
Descriptor connectEvent(const std::string &name);

// A service's own socket and where it lies.
struct EventSocket {
    Descriptor fd;
    Descriptor directory;
    std::string name;
    dev_t device = 0;
    ino_t inode = 0;

    // Takes the name away, unless somebody else carries it meanwhile.
    void unlinkName() const;
};

// Makes the name. Takes the place of what a dead service left; fails when a living one has it.
EventSocket bindEvent(const std::string &name);

} // namespace rkos

#endif // RKOS_EVENTSOCKET_H
