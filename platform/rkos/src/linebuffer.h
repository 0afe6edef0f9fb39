// SPDX-License-Identifier: MIT
//
// Read-ahead over a file descriptor: lines without a system call for each byte.
#ifndef RKOS_LINEBUFFER_H
#define RKOS_LINEBUFFER_H

#include <cstddef>
#include <vector>

namespace rkos {

class LineBuffer {
public:
    // Reads up to size-1 bytes of the current line into buffer and ends them with a zero byte. The
    // line end (LF or CR LF) is taken from the file and not stored, also when it lies across the cut
    // of a long line. False at the end of the file (or on a read error) when nothing was read.
    bool readLine(int fd, char *buffer, size_t size);

    // Puts the file's position back to the first byte not yet handed out and forgets what was read
    // ahead. To be called before the file is written through the same descriptor.
    bool dropReadAhead(int fd);

    // errno of the last failed read; 0 when none failed.
    int error() const { return m_error; }

private:
    bool ensure(int fd, size_t count);
    size_t unread() const { return m_end - m_begin; }

    std::vector<char> m_data;
    size_t m_begin = 0;
    size_t m_end = 0;
    int m_error = 0;
};

} // namespace rkos

#endif // RKOS_LINEBUFFER_H
