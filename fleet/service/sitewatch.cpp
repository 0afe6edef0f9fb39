// SPDX-License-Identifier: MIT
#include "fleet/service/sitewatch.h"

#include <algorithm>
#include <utility>

namespace fleet {

namespace {

bool beginsWith(const std::string &text, const std::string &start)
{
    return text.compare(0, start.size(), start) == 0;
}

} // namespace

// One keeper's part. Its sink is called under the mutex, so none is called after it has left.
class SiteWatch::Seat : public Watch {
public:
    Seat(SiteWatch &site, const std::string &prefix, WatchSink *sink)
        : m_site(site), m_prefix(prefix), m_sink(sink)
    {
    }
    ~Seat() override { m_site.leave(*this); }

    const std::string &prefix() const { return m_prefix; }
    WatchSink &sink() const { return *m_sink; }

private:
    SiteWatch &m_site;
    const std::string m_prefix;
    WatchSink *const m_sink;
};

SiteWatch::SiteWatch(EtcdCluster &cluster, std::string prefix, std::function<std::int64_t()> steadyMs)
    : m_cluster(cluster), m_prefix(std::move(prefix)), m_steadyMs(std::move(steadyMs))
{
}

SiteWatch::~SiteWatch() = default;

// ------------------------------------------------------------------------------------------ for the keepers

std::unique_ptr<Watch> SiteWatch::watch(const std::string &prefix, std::int64_t fromRevision, WatchSink *sink)
{
    const bool ours = beginsWith(prefix, m_prefix) && prefix.back() == '/';
    if (!ours || !begin(fromRevision))
        return m_cluster.watch(prefix, fromRevision, sink);
    auto seat = std::make_unique<Seat>(*this, prefix, sink);
    const std::lock_guard<std::mutex> lock(m_mutex);
    if (m_ended) // meanwhile
        sink->lost(End::Gone, "the watch of the site ended");
    else
        replay(*seat, fromRevision);
    return seat;
}

// Starts the watch when there is none. False when it does not have what came since that revision.
bool SiteWatch::begin(std::int64_t fromRevision)
{
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        if (m_denied)
            return false;
        if (!m_ended)
            return fromRevision >= m_begin;
    }
    m_watch.reset(); // it has made its last call
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        m_recent.clear();
        m_known.clear();
        m_lists.clear();
        m_begin = fromRevision;
        m_revision = fromRevision - 1;
        m_stands = false;
        m_ended = false;
    }
    m_watch = m_cluster.watch(m_prefix, fromRevision, this);
    return true;
}

void SiteWatch::replay(Seat &seat, std::int64_t fromRevision)
{
    m_seats.emplace(seat.prefix(), &seat);
    if (m_stands)
        seat.sink().watching();
    std::vector<Entry> missed;
    for (const Entry &entry : m_recent) {
        if (entry.modRevision >= fromRevision && beginsWith(entry.key, seat.prefix()))
            missed.push_back(entry);
    }
    if (!missed.empty())
        seat.sink().events(missed, m_revision);
}

void SiteWatch::leave(Seat &seat)
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    const auto [first, last] = m_seats.equal_range(seat.prefix());
    const auto own = std::find_if(first, last, [&](const auto &one) { return one.second == &seat; });
    if (own != last)
        m_seats.erase(own);
}

// -------------------------------------------------------------------------------------------- of the watch

void SiteWatch::watching()
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_stands = true;
    for (const auto &seat : m_seats)
        seat.second->sink().watching();
}

void SiteWatch::events(const std::vector<Entry> &entries, std::int64_t revision)
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    std::map<Seat *, std::vector<Entry>> parts;
    for (const Entry &entry : entries) {
        note(entry);
        for (auto slash = entry.key.find('/', m_prefix.size()); slash != std::string::npos;
             slash = entry.key.find('/', slash + 1)) {
            const auto [first, last] = m_seats.equal_range(entry.key.substr(0, slash + 1));
            std::for_each(first, last, [&](const auto &seat) { parts[seat.second].push_back(entry); });
        }
    }
    m_revision = revision;
    for (const auto &[seat, part] : parts)
        seat->sink().events(part, revision);
}

void SiteWatch::note(const Entry &entry)
{
    for (auto &[prefix, list] : m_lists) {
        if (!beginsWith(entry.key, prefix))
            continue;
        if (entry.deleted)
            list.keys.erase(entry.key);
        else
            list.keys.insert(entry.key);
    }
    if (isShort(entry.key)) {
        m_known[entry.key] = {entry.deleted ? std::nullopt : std::optional<std::string>(entry.value),
                              entry.modRevision};
        return;
    }
    m_recent.push_back(entry);
    if (m_recent.size() <= kKept)
        return;
    m_begin = m_recent.front().modRevision + 1;
    m_recent.pop_front();
}

void SiteWatch::lost(End why, const std::string &reason)
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_ended = true;
    m_stands = false;
    m_denied = m_denied || why == End::Denied;
    const Seats seats = std::move(m_seats);
    m_seats.clear();
    for (const auto &seat : seats)
        seat.second->sink().lost(why, reason);
}

// ------------------------------------------------------------------------------------------- what is asked

Outcome SiteWatch::heard(Outcome outcome)
{
    m_doubt = outcome == Outcome::Unreachable;
    return outcome;
}

// "SERVER/alive" or "SERVER/default", and no document.
bool SiteWatch::isShort(const std::string &key) const
{
    const auto slash = key.find('/', m_prefix.size());
    return beginsWith(key, m_prefix) && slash != std::string::npos &&
           key.find('/', slash + 1) == std::string::npos;
}

bool SiteWatch::known(const std::string &key, Range *range)
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    const auto found = m_known.find(key);
    if (!m_stands || m_doubt || found == m_known.end() || m_steadyMs() - m_askedMs >= kAskMs)
        return false;
    range->entries.clear();
    range->revision = m_revision;
    if (found->second.value)
        range->entries.push_back({key, *found->second.value, found->second.revision, false});
    return true;
}

Outcome SiteWatch::get(const std::string &key, Range *range)
{
    if (known(key, range))
        return Outcome::Done;
    const Outcome outcome = heard(m_cluster.get(key, range));
    if (outcome != Outcome::Done || !isShort(key))
        return outcome;
    m_askedMs = m_steadyMs();
    const std::lock_guard<std::mutex> lock(m_mutex);
    Known &known = m_known[key];
    if (known.revision > range->revision) // heard of since then
        return outcome;
    const bool there = !range->entries.empty();
    known.value = there ? std::optional<std::string>(range->entries.front().value) : std::nullopt;
    known.revision = there ? range->entries.front().modRevision : range->revision;
    return outcome;
}

Outcome SiteWatch::keys(const std::string &prefix, std::vector<std::string> *keys)
{
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        const auto list = m_lists.find(prefix);
        if (m_stands && !m_doubt && list != m_lists.end() && m_steadyMs() - list->second.readMs < kListMs) {
            keys->assign(list->second.keys.begin(), list->second.keys.end());
            return Outcome::Done;
        }
    }
    const Outcome outcome = heard(m_cluster.keys(prefix, keys));
    const std::lock_guard<std::mutex> lock(m_mutex);
    if (outcome != Outcome::Done || !m_stands)
        return outcome;
    m_lists[prefix] = {std::set<std::string>(keys->begin(), keys->end()), m_steadyMs()};
    const std::deque<Entry> recent = std::exchange(m_recent, {});
    for (const Entry &entry : recent) // what came while it was read; of each key the last is the newest
        note(entry);
    return outcome;
}

Outcome SiteWatch::range(const std::string &prefix, Range *range)
{
    return heard(m_cluster.range(prefix, range));
}

Outcome SiteWatch::names(const std::string &prefix, Range *range)
{
    return heard(m_cluster.names(prefix, range));
}

Outcome SiteWatch::getAll(const std::vector<std::string> &keys, Range *range)
{
    return heard(m_cluster.getAll(keys, range));
}

Outcome SiteWatch::commit(const std::vector<Put> &puts, std::int64_t *revision)
{
    return heard(m_cluster.commit(puts, revision));
}

Outcome SiteWatch::keepAlive(const std::string &key, const std::string &value, int seconds)
{
    return heard(m_cluster.keepAlive(key, value, seconds));
}

Outcome SiteWatch::endLease()
{
    return heard(m_cluster.endLease());
}

} // namespace fleet
