// SPDX-License-Identifier: MIT
#include "fleet/service/post.h"

#include "fleet/service/marks.h"

#include <utility>

namespace fleet {

ops::Outcome<std::unique_ptr<Post>> Post::open(const Assignment &assignment, const Config &config,
                                               Cluster &cluster, const Surroundings &surroundings)
{
    const QByteArray &name = assignment.configuration;
    if (config.role == Role::Desk && isOwn(name))
        return ops::refused("the configuration \"" + name +
                            "\" is this machine's own and stays as it is: rename it, " +
                            "and the server of that name gets its place");
    auto replica = StoreReplica::open(name, assignment.create, config.name);
    if (!replica)
        return replica.failure();
    std::unique_ptr<Post> post(new Post(assignment));
    post->m_replica = std::move(*replica);
    post->m_keeper = std::make_unique<Keeper>(KeeperSettings{config.role, assignment.place, config.name},
                                              *post->m_replica, cluster, surroundings);
    return post;
}

qint64 Post::work(qint64 nowMs)
{
    if (nowMs < m_dueMs)
        return m_dueMs;
    m_dueMs = nowMs + m_keeper->work();
    m_worked = true;
    return m_dueMs;
}

bool Post::takeNews()
{
    if (!std::exchange(m_worked, false))
        return false;
    const KeeperStatus status = m_keeper->status();
    const bool news = !(status == m_told);
    m_told = status;
    return news;
}

KeptConfiguration Post::status() const
{
    return {m_assignment.configuration, m_assignment.place.server, m_keeper->status()};
}

} // namespace fleet
