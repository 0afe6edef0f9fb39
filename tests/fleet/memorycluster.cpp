// SPDX-License-Identifier: MIT
#include "fleet/memorycluster.h"

using namespace fleet;

namespace {

class MemoryWatch : public Watch {
public:
    MemoryWatch(MemoryLink *link, WatchSink *sink) : m_link(link), m_sink(sink) {}
    ~MemoryWatch() override { m_link->forgetWatch(m_sink); }

private:
    MemoryLink *m_link;
    WatchSink *m_sink;
};

bool beginsWith(const std::string &text, const std::string &prefix)
{
    return text.compare(0, prefix.size(), prefix) == 0;
}

} // namespace

bool MemoryCluster::holds(const std::vector<Put> &puts, bool compare) const
{
    for (const Put &put : puts) {
        const auto found = entries.find(put.key);
        const std::int64_t present = found != entries.end() ? found->second.modRevision : 0;
        if (compare && put.expectedRevision != Put::kAnyRevision && put.expectedRevision != present)
            return false;
    }
    return true;
}

void MemoryCluster::put(const std::vector<Put> &puts)
{
    Event event{++revision, {}};
    for (const Put &put : puts) {
        Entry entry{put.key, put.value, revision, put.remove};
        event.entries.push_back(entry);
        if (onPut)
            onPut(entry);
        if (put.remove)
            entries.erase(put.key);
        else
            entries[put.key] = entry;
    }
    log.push_back(std::move(event));
}

std::vector<Entry> MemoryCluster::below(const std::string &prefix) const
{
    std::vector<Entry> found;
    for (auto at = entries.lower_bound(prefix); at != entries.end() && beginsWith(at->first, prefix); ++at)
        found.push_back(at->second);
    return found;
}

void MemoryCluster::compact()
{
    compacted = revision;
    log.clear();
}

MemoryLink::Fault MemoryLink::nextFault()
{
    if (cut)
        return Fault::LostBefore;
    return fault ? fault() : Fault::None;
}

void MemoryLink::pass() const
{
    if (danger)
        danger();
}

void MemoryLink::deliver(std::size_t most)
{
    if (m_sink && m_next <= m_cluster.compacted)
        return breakWatch(WatchSink::End::Compacted);
    for (const MemoryCluster::Event &event : m_cluster.log) {
        if (!m_sink || most == 0 || cut)
            return;
        if (event.revision < m_next)
            continue;
        std::vector<Entry> own;
        for (const Entry &entry : event.entries) {
            if (beginsWith(entry.key, m_prefix))
                own.push_back(entry);
        }
        m_next = event.revision + 1;
        --most;
        if (!own.empty())
            m_sink->events(own, event.revision);
    }
}

void MemoryLink::breakWatch(WatchSink::End why, const std::string &reason)
{
    WatchSink *sink = m_sink;
    m_sink = nullptr;
    if (sink)
        sink->lost(why, reason);
}

void MemoryLink::forgetWatch(const WatchSink *sink)
{
    if (m_sink == sink)
        m_sink = nullptr;
}

void MemoryLink::arriveLate()
{
    for (const std::vector<Put> &puts : m_late) {
        if (m_cluster.holds(puts, compares))
            m_cluster.put(puts);
    }
    m_late.clear();
}

Outcome MemoryLink::read(const std::string &prefix, bool exact, Range *range)
{
    pass();
    if (nextFault() != Fault::None)
        return Outcome::Unreachable;
    range->entries = m_cluster.below(prefix);
    if (exact && !range->entries.empty() && range->entries.front().key != prefix)
        range->entries.clear();
    if (exact && range->entries.size() > 1)
        range->entries.resize(1);
    range->revision = m_cluster.revision;
    range->cluster = m_cluster.identity;
    pass();
    return Outcome::Done;
}

Outcome MemoryLink::range(const std::string &prefix, Range *range)
{
    return read(prefix, false, range);
}

Outcome MemoryLink::get(const std::string &key, Range *range)
{
    return read(key, true, range);
}

Outcome MemoryLink::commit(const std::vector<Put> &puts, std::int64_t *revision)
{
    pass();
    ++commits;
    largest = std::max(largest, puts.size());
    const Fault met = nextFault();
    if (met == Fault::Late)
        m_late.push_back(puts);
    if (met == Fault::LostBefore || met == Fault::Late)
        return Outcome::Unreachable;
    if (answer != Outcome::Done)
        return answer;
    if (puts.size() > takes)
        return Outcome::TooLarge;
    const bool swallowed = swallowConflicts && puts.front().key.find("/conflicts/") != std::string::npos;
    if (swallowed)
        return Outcome::Done;
    if (!m_cluster.holds(puts, compares))
        return met == Fault::LostAfter ? Outcome::Unreachable : Outcome::Refused;
    m_cluster.put(puts);
    if (revision)
        *revision = m_cluster.revision;
    pass();
    return met == Fault::LostAfter ? Outcome::Unreachable : Outcome::Done;
}

std::unique_ptr<Watch> MemoryLink::watch(const std::string &prefix, std::int64_t fromRevision,
                                         WatchSink *sink)
{
    m_sink = sink;
    m_prefix = prefix;
    m_next = fromRevision;
    return std::make_unique<MemoryWatch>(this, sink);
}

Outcome MemoryLink::keepAlive(const std::string &key, const std::string &value, int)
{
    m_cluster.put({{key, value}});
    return Outcome::Done;
}
