// SPDX-License-Identifier: MIT
//
// Where a watch leaves its news until the keeper's thread takes them. The sink's functions may be called
// from any thread, take() from one.
#ifndef CORVEL_FLEET_INBOX_H
#define CORVEL_FLEET_INBOX_H

#include "fleet/cluster.h"

#include <functional>
#include <mutex>
#include <optional>

namespace fleet {

class Inbox : public WatchSink {
public:
    struct News {
        std::vector<Entry> entries;
        std::int64_t revision = 0;
        std::optional<End> ended;
        std::string reason;
    };

    // wake is called, from any thread, when there is something to take.
    explicit Inbox(std::function<void()> wake) : m_wake(std::move(wake)) {}

    void watching() override;
    void events(const std::vector<Entry> &entries, std::int64_t revision) override;
    void lost(End why, const std::string &reason) override;

    // What came since the last time.
    News take();

private:
    std::function<void()> m_wake;
    std::mutex m_mutex;
    News m_news;
};

} // namespace fleet

#endif
