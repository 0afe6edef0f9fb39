// SPDX-License-Identifier: MIT
#include "linebuffer.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <unistd.h>

namespace rkos {

namespace {

constexpr size_t kReadAhead = 65536;

ssize_t readRetried(int fd, char *buffer, size_t size)
{
    ssize_t got = -1;
    do {
        got = ::read(fd, buffer, size);
    } while (got < 0 && errno == EINTR);
    return got;
}

} // namespace

// True when `count` bytes (at most two are ever asked for) are there to be looked at.
bool LineBuffer::ensure(int fd, size_t count)
{
    if (m_data.empty())
        m_data.resize(kReadAhead);
    while (unread() < count) {
        std::copy(m_data.begin() + static_cast<ptrdiff_t>(m_begin),
                  m_data.begin() + static_cast<ptrdiff_t>(m_end), m_data.begin());
        m_end -= m_begin;
        m_begin = 0;
        const ssize_t got = readRetried(fd, m_data.data() + m_end, m_data.size() - m_end);
        if (got < 0)
            m_error = errno;
        if (got <= 0)
            return false;
        m_end += static_cast<size_t>(got);
    }
    return true;
}

bool LineBuffer::readLine(int fd, char *buffer, size_t size)
{
    if (!ensure(fd, 1))
        return false;
    size_t used = 0;
    bool ended = false;
    while (!ended && used < size - 1 && ensure(fd, 1)) {
        const char *from = m_data.data() + m_begin;
        const size_t count = std::min(unread(), size - 1 - used);
        const void *lineEnd = memchr(from, '\n', count);
        ended = lineEnd != nullptr;
        const size_t taken = ended ? static_cast<size_t>(static_cast<const char *>(lineEnd) - from) : count;
        memcpy(buffer + used, from, taken);
        used += taken;
        m_begin += taken + (ended ? 1 : 0);
    }
    // The buffer is full: a line end that follows at once belongs to this piece.
    if (!ended && ensure(fd, 1) && m_data[m_begin] == '\n') {
        ended = true;
        m_begin += 1;
    } else if (!ended && ensure(fd, 2) && m_data[m_begin] == '\r' && m_data[m_begin + 1] == '\n') {
        m_begin += 2;
    }
    if (ended && used > 0 && buffer[used - 1] == '\r')
        --used;
    buffer[used] = '\0';
    return true;
}

bool LineBuffer::dropReadAhead(int fd)
{
    const off_t back = static_cast<off_t>(unread());
    m_begin = m_end = 0;
    return back == 0 || lseek(fd, -back, SEEK_CUR) >= 0;
}

} // namespace rkos
