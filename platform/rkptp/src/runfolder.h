// SPDX-License-Identifier: MIT
#ifndef RKPTP_RUNFOLDER_H
#define RKPTP_RUNFOLDER_H

// The private folder for the sockets between this process and its ptp4l children. ptp4l unlinks whatever path
// it is given, so the folder belongs to this user alone and to one process.

#include "fd.h"

#include <string>

namespace rkptp {

class RunFolder {
public:
    ~RunFolder() { remove(); }

    /* Makes the folder below $XDG_RUNTIME_DIR/corvel, else below /tmp/corvel-<uid>, unless it exists already;
       clears away folders of processes that are gone. False when neither place can be used safely. */
    bool prepare();

    /* Removes the folder with what is in it. */
    void remove();

    /* Path of a socket in the folder. */
    std::string pathOf(const std::string &name) const { return m_path + "/" + name; }

private:
    bool prepareBelow(const std::string &parent);

    std::string m_path;
    Fd m_lock; // held for the life of the folder: whoever can take it knows that the owner is gone
};

} // namespace rkptp

#endif // RKPTP_RUNFOLDER_H
