// SPDX-License-Identifier: MIT
//
// What every entry point of the library stands behind: no exception leaves it, no signal raised by
// a write ends the host program, errno is the caller's own.
#ifndef RKOS_GUARD_H
#define RKOS_GUARD_H

#include "descriptor.h"

#include <cerrno>
#include <csignal>
#include <ctime>
#include <utility>

namespace rkos {

using rk::aboveStandardStreams;
using rk::Descriptor;

// Runs `body`; an exception (memory exhausted, in practice) becomes `onFailure`.
template<typename Result, typename Body>
Result guarded(Result onFailure, Body &&body) noexcept
{
    try {
        return std::forward<Body>(body)();
    } catch (...) {
        return onFailure;
    }
}

// Leaves errno as it was found.
class ErrnoKeeper {
public:
    ErrnoKeeper() : m_saved(errno) {}
    ErrnoKeeper(const ErrnoKeeper &) = delete;
    ErrnoKeeper &operator=(const ErrnoKeeper &) = delete;
    ~ErrnoKeeper() { errno = m_saved; }

private:
    int m_saved;
};

// While it lives, a write to a closed pipe or beyond the file size limit fails with an error instead
// of ending the process. The signal such a write leaves behind is taken back, one that was already
// waiting is kept for its owner.
class WriteSignalShield {
public:
    WriteSignalShield()
    {
        sigemptyset(&m_shielded);
        sigaddset(&m_shielded, SIGPIPE);
        sigaddset(&m_shielded, SIGXFSZ);
        sigset_t pending;
        sigemptyset(&pending);
        sigpending(&pending);
        m_pipeWaiting = sigismember(&pending, SIGPIPE) == 1;
        m_sizeWaiting = sigismember(&pending, SIGXFSZ) == 1;
        pthread_sigmask(SIG_BLOCK, &m_shielded, &m_before);
    }
    WriteSignalShield(const WriteSignalShield &) = delete;
    WriteSignalShield &operator=(const WriteSignalShield &) = delete;
    ~WriteSignalShield()
    {
        const ErrnoKeeper keep;
        takeBack(SIGPIPE, m_pipeWaiting);
        takeBack(SIGXFSZ, m_sizeWaiting);
        pthread_sigmask(SIG_SETMASK, &m_before, nullptr);
    }

private:
    static void takeBack(int signal, bool wasWaiting)
    {
        sigset_t pending;
        sigemptyset(&pending);
        sigpending(&pending);
        if (wasWaiting || sigismember(&pending, signal) != 1)
            return;
        sigset_t only;
        sigemptyset(&only);
        sigaddset(&only, signal);
        const timespec noWait = {0, 0};
        sigtimedwait(&only, nullptr, &noWait);
    }

    sigset_t m_shielded;
    sigset_t m_before;
    bool m_pipeWaiting = false;
    bool m_sizeWaiting = false;
};

} // namespace rkos

#endif // RKOS_GUARD_H
