// SPDX-License-Identifier: MIT
#ifndef RKPTP_RUNFOLDER_H
#define RKPTP_RUNFOLDER_H

// The private folder for the sockets between this process and its ptp4l children. ptp4l unlinks whatever path
// it is given, so the folder belongs to this user alone and to one process.

#include "descriptor.h"

#include <string>

namespace rkptp {

using rk::Descriptor;

class RunFolder {
public:
    ~RunFolder() { remove(); }

    /* Makes the folder in the first usable of rk::runtimeFolders(), else under a name of its own in /tmp,
       unless it exists already; clears away folders of processes that are gone. False when none can be made
       safely. */
    bool prepare();

    /* Removes the folder with what is in it. */
    void remove();

    /* Path of a socket in the folder. */
    std::string pathOf(const std::string &name) const { return m_path + "/" + name; }

private:
    bool prepareIn(const Descriptor &parent, const std::string &path, const char *prefix);

    std::string m_path;
    Descriptor m_lock; // held for the life of the folder: whoever can take it knows that the owner is gone
};

} // namespace rkptp

#endif // RKPTP_RUNFOLDER_H
