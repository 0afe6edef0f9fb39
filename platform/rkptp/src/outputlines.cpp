// SPDX-License-Identifier: MIT
#include "outputlines.h"

#include <utility>

namespace rkptp {

void OutputLines::keep(std::string line)
{
    if (m_reader && m_reader(line))
        return;
    m_before = std::exchange(m_newest, std::move(line));
    m_last = m_before.empty() ? m_newest : m_before + "; " + m_newest;
}

void OutputLines::take(const char *text, size_t size)
{
    for (size_t i = 0; i < size; ++i) {
        const bool printable = static_cast<unsigned char>(text[i]) >= ' ' && text[i] != 0x7f;
        if (text[i] == '\n' && !m_line.empty())
            keep(std::exchange(m_line, {}));
        else if (printable && m_line.size() < kLongestLine)
            m_line += text[i];
    }
}

} // namespace rkptp
