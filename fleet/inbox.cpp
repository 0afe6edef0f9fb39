// SPDX-License-Identifier: MIT
#include "fleet/inbox.h"

#include <utility>

namespace fleet {

// It begins right behind a range read, so there is no gap before it.
void Inbox::watching() {}

void Inbox::events(const std::vector<Entry> &entries, std::int64_t revision)
{
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        m_news.entries.insert(m_news.entries.end(), entries.begin(), entries.end());
        m_news.revision = revision;
    }
    m_wake();
}

void Inbox::lost(End why, const std::string &reason)
{
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        m_news.ended = why;
        m_news.reason = reason;
    }
    m_wake();
}

Inbox::News Inbox::take()
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    return std::exchange(m_news, {});
}

} // namespace fleet
