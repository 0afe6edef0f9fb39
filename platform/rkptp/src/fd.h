// SPDX-License-Identifier: MIT
#ifndef RKPTP_FD_H
#define RKPTP_FD_H

#include <unistd.h>

#include <utility>

namespace rkptp {

/* Owns one file descriptor. */
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
    ~Fd() { reset(); }

    int get() const { return m_fd; }
    bool valid() const { return m_fd >= 0; }
    void reset()
    {
        if (m_fd >= 0)
            close(m_fd);
        m_fd = -1;
    }

private:
    int m_fd = -1;
};

} // namespace rkptp

#endif // RKPTP_FD_H
