// SPDX-License-Identifier: MIT
//
// A cluster in memory, with everything that can happen to a real one: calls without an answer, done or not,
// calls that arrive late, watches that lag or end, compaction, and a restored older state.
#ifndef TESTS_FLEET_MEMORYCLUSTER_H
#define TESTS_FLEET_MEMORYCLUSTER_H

#include "fleet/cluster.h"

#include <deque>
#include <functional>
#include <map>
#include <set>

class MemoryLink;

// What the members have.
class MemoryCluster {
public:
    struct Event {
        std::int64_t revision;
        std::vector<fleet::Entry> entries;
    };

    std::map<std::string, fleet::Entry> entries;
    std::int64_t revision = 1;
    std::uint64_t identity = 1;
    std::deque<Event> log;
    std::int64_t compacted = 0;
    std::function<void(const fleet::Entry &)> onPut; // told of everything that ever was here

    bool holds(const std::vector<fleet::Put> &puts, bool compare) const;
    void put(const std::vector<fleet::Put> &puts);
    std::vector<fleet::Entry> below(const std::string &prefix) const;
    void compact();
};

// One machine's way to it.
class MemoryLink : public fleet::Cluster {
public:
    enum class Fault { None, LostBefore, LostAfter, Late };

    explicit MemoryLink(MemoryCluster &cluster) : m_cluster(cluster) {}

    // Asked before each call that changes or reads; None at first.
    std::function<Fault()> fault;
    // Called before and after each call: it may throw, as a program may be killed there.
    std::function<void()> danger;
    bool cut = false;
    fleet::Outcome answer = fleet::Outcome::Done; // of commits, when something else than Done is wanted
    std::size_t takes = fleet::kMaxPuts;          // in one commit
    bool compares = true;                         // false: a mistake for tests to find
    bool swallowConflicts = false;                // the same
    int commits = 0;
    std::size_t largest = 0; // puts in one commit

    // Hands on so many of the watch's events.
    void deliver(std::size_t most = 1000000);
    // Ends the watch.
    void breakWatch(fleet::WatchSink::End why, const std::string &reason = "broken");
    bool watches() const { return m_sink != nullptr; }
    // What the network held back arrives, if it still holds.
    void arriveLate();
    void forgetLate() { m_late.clear(); }
    void forgetWatch(const fleet::WatchSink *sink);

    fleet::Outcome range(const std::string &prefix, fleet::Range *range) override;
    fleet::Outcome get(const std::string &key, fleet::Range *range) override;
    fleet::Outcome commit(const std::vector<fleet::Put> &puts, std::int64_t *revision) override;
    std::unique_ptr<fleet::Watch> watch(const std::string &prefix, std::int64_t fromRevision,
                                        fleet::WatchSink *sink) override;
    fleet::Outcome keepAlive(const std::string &key, const std::string &value, int seconds) override;
    fleet::Outcome endLease() override { return fleet::Outcome::Done; }
    bool cutOff() const override { return cut; }
    std::string reason() const override { return "no way to the cluster"; }

private:
    Fault nextFault();
    void pass() const;
    fleet::Outcome read(const std::string &prefix, bool exact, fleet::Range *range);

    MemoryCluster &m_cluster;
    fleet::WatchSink *m_sink = nullptr;
    std::string m_prefix;
    std::int64_t m_next = 0;
    std::vector<std::vector<fleet::Put>> m_late;
};

#endif
