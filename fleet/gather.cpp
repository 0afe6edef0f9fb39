// SPDX-License-Identifier: MIT
#include "fleet/gather.h"

namespace fleet {

void Gather::touch(qint64 nowMs)
{
    if (m_burstMs < 0)
        m_burstMs = nowMs;
    m_looks = kLooks;
    m_dueMs = qMin(nowMs + kQuietMs, m_burstMs + kMostMs);
}

void Gather::looked(qint64 nowMs, bool news)
{
    m_burstMs = -1;
    const bool again = !news && m_looks-- > 0;
    m_dueMs = nowMs + (again ? kAgainMs : kSweepMs);
}

} // namespace fleet
