// SPDX-License-Identifier: MIT
//
// A file descriptor that closes itself. Private to the libraries in platform/; each compiles its own copy.
#ifndef CORVEL_PLATFORM_DESCRIPTOR_H
#define CORVEL_PLATFORM_DESCRIPTOR_H

#include <cerrno>
#include <fcntl.h>
#include <unistd.h>
#include <utility>

namespace rk {

class Descriptor {
public:
    Descriptor() = default;
    explicit Descriptor(int fd) : m_fd(fd) {}
    Descriptor(Descriptor &&other) noexcept : m_fd(other.release()) {}
    Descriptor &operator=(Descriptor &&other) noexcept
    {
        if (this != &other)
            reset(other.release());
        return *this;
    }
    Descriptor(const Descriptor &) = delete;
    Descriptor &operator=(const Descriptor &) = delete;
    ~Descriptor() { reset(); }

    int get() const { return m_fd; }
    bool valid() const { return m_fd >= 0; }

    // Gives the descriptor away without closing it.
    int release() { return std::exchange(m_fd, -1); }

    // Closes what it holds and takes `fd`. errno stays as it is, so that a failure can be told after it.
    void reset(int fd = -1)
    {
        const int old = std::exchange(m_fd, fd);
        if (old < 0)
            return;
        const int saved = errno;
        ::close(old);
        errno = saved;
    }

private:
    int m_fd = -1;
};

// A program may have been started with its standard streams closed. What we open must then not take
// their numbers, or what is meant for standard error would end in the user's file.
inline Descriptor aboveStandardStreams(Descriptor fd)
{
    if (!fd.valid() || fd.get() > STDERR_FILENO)
        return fd;
    return Descriptor(fcntl(fd.get(), F_DUPFD_CLOEXEC, STDERR_FILENO + 1));
}

} // namespace rk

#endif // CORVEL_PLATFORM_DESCRIPTOR_H
