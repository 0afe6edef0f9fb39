// SPDX-License-Identifier: MIT
#ifndef RKPTP_OUTPUTLINES_H
#define RKPTP_OUTPUTLINES_H

// What a child process writes, cut into lines; the last two of them are kept, to say why it ended.

#include <cstddef>
#include <functional>
#include <string>

namespace rkptp {

class OutputLines {
public:
    static constexpr size_t kLongestLine = 400;

    /* The next bytes, however they are cut. Control characters are left out, what is longer than a line may
       be is dropped, empty lines count for nothing. */
    void take(const char *text, size_t size);

    /* "first; second": ptp4l names the reason first and then says what it could not do. */
    const std::string &last() const { return m_last; }

    /* Who gets each line first; a line that he takes (true) is not kept. */
    void setReader(std::function<bool(const std::string &)> reader) { m_reader = std::move(reader); }

private:
    void keep(std::string line);

    std::string m_line;
    std::string m_before;
    std::string m_newest;
    std::string m_last;
    std::function<bool(const std::string &)> m_reader;
};

} // namespace rkptp

#endif // RKPTP_OUTPUTLINES_H
