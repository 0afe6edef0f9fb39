// SPDX-License-Identifier: MIT
//
// One configuration at work: its replica, its keeper, and when it is due. One thread.
#ifndef CORVEL_FLEET_SERVICE_POST_H
#define CORVEL_FLEET_SERVICE_POST_H

#include "fleet/keeper.h"
#include "fleet/service/roster.h"
#include "fleet/statusfile.h"
#include "fleet/storereplica.h"

namespace fleet {

class Post {
public:
    // A failure: the store cannot be opened, or a desk would take a configuration of its own for a copy.
    static ops::Outcome<std::unique_ptr<Post>> open(const Assignment &assignment, const Config &config,
                                                    Cluster &cluster, const Surroundings &surroundings);

    void touched()
    {
        m_keeper->touched();
        m_dueMs = 0;
    }
    void woken() { m_dueMs = 0; }
    void doubt()
    {
        m_keeper->doubt();
        m_dueMs = 0;
    }
    // Works when it is due. Returns when it wants to be called again.
    qint64 work(qint64 nowMs);

    // Whether its status is another one than at the last call.
    bool takeNews();

    const Assignment &assignment() const { return m_assignment; }
    KeptConfiguration status() const;

private:
    explicit Post(const Assignment &assignment) : m_assignment(assignment) {}

    const Assignment m_assignment;
    std::unique_ptr<StoreReplica> m_replica;
    std::unique_ptr<Keeper> m_keeper;
    KeeperStatus m_told;
    bool m_worked = true;
    qint64 m_dueMs = 0;
};

} // namespace fleet

#endif
