// SPDX-License-Identifier: MIT
// After a cluster lost its memory: the server tells when it has put everything back, and from then on desks
// put back what only they have left. Before that, theirs might be older than the server's.
#include "fleet/keeper.h"

namespace fleet {

void Keeper::tellKept()
{
    const bool all = m_board.pushes(1).empty() && m_status.connected && m_nowMs >= m_pushMs;
    if (m_settings.role != Role::Server || !m_keptDue || !all)
        return;
    const std::string key = keptKey(m_settings.place);
    const std::string identity = std::to_string(m_mark.cluster);
    Range range;
    if (m_cluster.get(key, &range) != Outcome::Done)
        return unreachable();
    const bool told = !range.entries.empty() && range.entries.front().value == identity;
    const Outcome outcome = told ? Outcome::Done : m_cluster.commit({{key, identity}}, nullptr);
    m_keptDue = outcome != Outcome::Done;
    if (m_keptDue)
        notTaken(outcome, 1);
}

bool Keeper::askKept()
{
    Range range;
    if (!m_board.gone() || m_settings.role != Role::Desk)
        return true;
    if (m_cluster.get(keptKey(m_settings.place), &range) != Outcome::Done) {
        unreachable();
        return false;
    }
    m_board.setServerKept(!range.entries.empty() &&
                          range.entries.front().value == std::to_string(m_mark.cluster));
    return true;
}

} // namespace fleet
