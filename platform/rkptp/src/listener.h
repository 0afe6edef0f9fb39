// SPDX-License-Identifier: MIT
#ifndef RKPTP_LISTENER_H
#define RKPTP_LISTENER_H

// The masters that can be heard on the interfaces of one client: a launcher that listens, and what it has
// told. Used by the worker thread only.

#include "announce.h"
#include "interfaces.h"
#include "process.h"

#include <memory>

namespace rkptp {

class Listener {
public:
    Listener();

    /* Brings the listening process in line: it runs for these interfaces, or not at all when there are none.
     */
    void want(const std::vector<Interface> &interfaces, int64_t now);

    int pidFd() const { return m_process ? m_process->pidFd() : -1; }
    int logFd() const { return m_process ? m_process->logFd() : -1; }

    /* Takes what has come in. True when the list has changed. */
    bool serve(bool ended, bool told, int64_t now);

    /* When it wants to be looked at without news: INT64_MAX, or to drop a master that has gone silent. */
    int64_t nextDue(int64_t now) const;

    const MasterList &masters() const { return m_masters; }

private:
    void start(int64_t now);

    std::vector<Interface> m_interfaces;
    std::unique_ptr<Process> m_process;
    MasterList m_masters;
    int64_t m_now = 0;
    int64_t m_retryAt = 0;
    bool m_heard = false;
};

} // namespace rkptp

#endif // RKPTP_LISTENER_H
