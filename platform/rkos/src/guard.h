// SPDX-License-Identifier: MIT
//
// What every entry point of the library stands behind: no exception leaves it, no signal raised by
// a write ends the host program, errno is the caller's own.
#ifndef RKOS_GUARD_H
#define RKOS_GUARD_H

#include <cerrno>
#include <csignal>
#include <ctime>
#include <fcntl.h>
#include <unistd.h>
#include <utility>

namespace rkos {

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

// A file descriptor that closes itself.
class Fd {
public:
    Fd() = default;
    explicit Fd(int fd) : m_fd(fd) {}
    Fd(Fd &&other) noexcept : m_fd(std::exchange(other.m_fd, -1)) {}
    Fd &operator=(Fd &&other) noexcept
    {
        std::swap(m_fd, other.m_fd);
        return *this;
    }
    Fd(const Fd &) = delete;
    Fd &operator=(const Fd &) = delete;
    ~Fd()
    {
        if (m_fd >= 0) {
            const int saved = errno;
            ::close(m_fd);
            errno = saved;
        }
    }

    int get() const { return m_fd; }
    bool valid() const { return m_fd >= 0; }
    int release() { return std::exchange(m_fd, -1); }

private:
    int m_fd = -1;
};

// A program may have been started with its standard streams closed. What we open must then not take
// their numbers, or what is meant for standard error would end in the user's file.
inline Fd aboveStandardStreams(Fd fd)
{
    if (!fd.valid() || fd.get() > STDERR_FILENO)
        return fd;
    return Fd(fcntl(fd.get(), F_DUPFD_CLOEXEC, STDERR_FILENO + 1));
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
