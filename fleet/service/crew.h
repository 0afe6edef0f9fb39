// SPDX-License-Identifier: MIT
//
// The service's one working thread: all keepers, the sign of life, the status. Nothing else speaks to the
// cluster or writes into the store. Its functions may be called from any thread; news() is called on the
// crew's own.
#ifndef CORVEL_FLEET_SERVICE_CREW_H
#define CORVEL_FLEET_SERVICE_CREW_H

#include "fleet/service/alive.h"
#include "fleet/service/gate.h"
#include "fleet/service/post.h"
#include "fleet/service/ptpsign.h"
#include "fleet/service/roster.h"
#include "fleet/service/sitewatch.h"
#include "fleet/statusfile.h"

#include <atomic>
#include <condition_variable>
#include <mutex>
#include <thread>

namespace fleet {

class Crew {
public:
    static constexpr int kLeaseSeconds = 10;
    static constexpr qint64 kAliveMs = 3000;
    static constexpr qint64 kSoonMs = 1000;    // after news, when the last one is so long ago
    static constexpr qint64 kRosterMs = 15000; // a desk looks for servers; with as much chance again

    static constexpr qint64 kFirstRosterMs = 1000;
    static constexpr int kOpenAtOnce = 20; // stores, before something else gets its turn
    // What this machine's programs are told, no more often; and of a desk with many servers.
    static constexpr qint64 kReportMs = 100;
    static constexpr qint64 kLongReportMs = 500;
    static constexpr std::size_t kMany = 100;

    using News = std::function<void(const FleetStatus &)>;

    Crew(Config config, const EtcdOptions &options, News news);
    ~Crew(); // ends it

    void start();
    // The files of a configuration were touched; empty: which one is in use may have changed.
    void touched(const QByteArray &configuration);

private:
    void run();
    qint64 round();
    void takeWakes();
    void assign(Assignments assignments);
    void lookAtRoster();
    bool openSome();
    void open(const Assignment &assignment);
    EtcdCluster &cluster() { return m_config.isDesk() ? static_cast<EtcdCluster &>(m_site) : m_gate; }
    void signOfLife();
    void tellInUse();
    void lookAtPtp();
    std::int64_t heardRevision() const;
    Alive ownAlive() const;
    void report();
    qint64 reportMs() const;
    void wake(const QByteArray &configuration);
    Surroundings surroundings(const QByteArray &configuration);
    static qint64 steadyMs();

    const Config m_config;
    const std::unique_ptr<EtcdCluster> m_cluster;
    Gate m_gate;
    SiteWatch m_site;
    const News m_tell;
    DeskRoster m_desk;
    PtpSign m_ptp;
    bool m_ptpDue = true; // what the configuration in use asks of PTP may be something else
    std::map<QByteArray, std::unique_ptr<Post>> m_posts; // by configuration
    Assignments m_assignments;
    Assignments m_toOpen;
    std::set<QByteArray> m_unopened;   // what could not be opened
    std::set<QByteArray> m_complained; // and was told, once
    QByteArray m_told;                 // which configuration the cluster knows to be in use
    qint64 m_startedMs = 0;
    qint64 m_rosterMs = 0;
    qint64 m_aliveMs = 0;
    qint64 m_saidMs = 0;             // when it last said that it lives
    std::int64_t m_saidRevision = 0; // and how far it had come
    qint64 m_reportedMs = 0;
    bool m_news = true; // something else to tell
    bool m_looked = true;

    std::mutex m_mutex;
    std::condition_variable m_woken;
    std::set<QByteArray> m_wakes;   // configurations whose watch has news
    std::set<QByteArray> m_touches; // configurations whose files were touched
    bool m_stopping = false;
    std::thread m_thread;
};

} // namespace fleet

#endif
