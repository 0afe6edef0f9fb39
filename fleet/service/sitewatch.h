// SPDX-License-Identifier: MIT
//
// A cluster in front of the real one for a desk, which follows many servers: one watch of all of them, and
// each keeper gets its own part. Who lives and which configurations there are is known from that watch as
// well, so it is not asked for each server. What cannot be had so is had as without it. Calls are one
// thread's; the sinks are called from the watch's thread.
#ifndef CORVEL_FLEET_SERVICE_SITEWATCH_H
#define CORVEL_FLEET_SERVICE_SITEWATCH_H

#include "fleet/etcd/etcdcluster.h"

#include <deque>
#include <functional>
#include <map>
#include <mutex>
#include <optional>
#include <set>

namespace fleet {

class SiteWatch : public EtcdCluster, private WatchSink {
public:
    // Changes that are kept for who begins to watch a moment after it has read.
    static constexpr std::size_t kKept = 4096;
    // What is known is asked for nevertheless once in so many milliseconds: whether the cluster answers.
    static constexpr std::int64_t kAskMs = 5000;
    static constexpr std::int64_t kListMs = 600000; // and the list of keys in so many

    // prefix: of the servers, with "/" at its end.
    SiteWatch(EtcdCluster &cluster, std::string prefix, std::function<std::int64_t()> steadyMs);
    ~SiteWatch() override;
    SiteWatch(const SiteWatch &) = delete;
    SiteWatch &operator=(const SiteWatch &) = delete;

    bool cutOff() const override { return m_cluster.cutOff(); }
    std::string reason() const override { return m_cluster.reason(); }
    std::unique_ptr<Watch> watch(const std::string &prefix, std::int64_t fromRevision,
                                 WatchSink *sink) override;
    Outcome get(const std::string &key, Range *range) override;
    Outcome keys(const std::string &prefix, std::vector<std::string> *keys) override;
    Outcome names(const std::string &prefix, Range *range) override;
    Outcome getAll(const std::vector<std::string> &keys, Range *range) override;
    Outcome range(const std::string &prefix, Range *range) override;
    Outcome commit(const std::vector<Put> &puts, std::int64_t *revision) override;
    Outcome keepAlive(const std::string &key, const std::string &value, int seconds) override;
    Outcome endLease() override;

private:
    class Seat;
    using Seats = std::multimap<std::string, Seat *>; // by prefix
    struct Known {
        std::optional<std::string> value; // nothing: there is no such key
        std::int64_t revision = 0;
    };
    struct List {
        std::set<std::string> keys;
        std::int64_t readMs = 0;
    };

    void watching() override;
    void events(const std::vector<Entry> &entries, std::int64_t revision) override;
    void lost(End why, const std::string &reason) override;

    bool begin(std::int64_t fromRevision);
    void replay(Seat &seat, std::int64_t fromRevision);
    void note(const Entry &entry);
    bool isShort(const std::string &key) const;
    bool known(const std::string &key, Range *range);
    Outcome heard(Outcome outcome);
    void leave(Seat &seat);

    EtcdCluster &m_cluster;
    const std::string m_prefix;
    const std::function<std::int64_t()> m_steadyMs;
    bool m_doubt = true;        // the last call got no answer
    std::int64_t m_askedMs = 0; // when a key was last really asked for

    std::mutex m_mutex;
    Seats m_seats;
    std::deque<Entry> m_recent;
    std::map<std::string, Known> m_known; // alive and default of each server
    std::map<std::string, List> m_lists;  // by prefix
    std::int64_t m_begin = 0;             // everything from this revision on came here
    std::int64_t m_revision = 0;          // the last one that did
    bool m_stands = false;
    bool m_ended = true;
    bool m_denied = false;          // this machine's role does not allow to watch all of them
    std::unique_ptr<Watch> m_watch; // last: no call comes after it has gone
};

} // namespace fleet

#endif
