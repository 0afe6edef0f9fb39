// SPDX-License-Identifier: MIT
// What is heard of either side, and what the store is to take of it. What goes up is in keeper_push.cpp.
#include "fleet/keeper.h"

#include <tuple>

namespace fleet {

namespace {

constexpr qint64 kRefusedMs = 60000;
constexpr int kSettleRounds = 3;

std::string placeMark(const KeeperSettings &settings)
{
    return (settings.role == Role::Server ? "server " : "desk ") + documentPrefix(settings.place);
}

auto tied(const KeeperStatus &status)
{
    return std::tie(status.connected, status.inStep, status.reason, status.sinceMs, status.behindMs,
                    status.serverAlive, status.serverSeenMs, status.storeErrors, status.waiting,
                    status.conflicts, status.overruled, status.refused, status.pushedMs, status.appliedMs,
                    status.appliedFrom);
}

} // namespace

bool operator==(const KeeperStatus &left, const KeeperStatus &right)
{
    return tied(left) == tied(right);
}

Keeper::Keeper(KeeperSettings settings, Replica &replica, Cluster &cluster, Surroundings surroundings,
               const Rules &rules)
    : m_settings(std::move(settings)), m_replica(replica), m_cluster(cluster),
      m_surroundings(std::move(surroundings)),
      m_board(m_settings.role, documentPrefix(m_settings.place), rules), m_inbox(m_surroundings.wake),
      m_pauses(m_surroundings.random)
{
    m_board.onRefusal(m_surroundings.log);
    m_nowMs = m_surroundings.steadyMs();
    m_syncMs = m_nowMs + m_pauses.upTo(kStartJitterMs);
    m_status.sinceMs = m_status.behindMs = m_surroundings.utcMs();
}

Keeper::~Keeper() = default;

void Keeper::touched()
{
    m_gather.touch(m_surroundings.steadyMs());
}

void Keeper::doubt()
{
    if (m_status.connected)
        m_syncMs = m_surroundings.steadyMs();
}

qint64 Keeper::work()
{
    m_nowMs = m_surroundings.steadyMs();
    const bool prepared = prepare();
    if (prepared)
        workOn();
    noteStep();
    return prepared ? pause() : kRefusedMs;
}

void Keeper::workOn()
{
    takeNews();
    if (lookDue())
        look();
    if (m_nowMs >= m_syncMs)
        resync();
    const bool known = m_localKnown && m_remoteKnown && m_nowMs >= m_settleMs;
    if (known && settle() && m_status.connected && m_nowMs >= m_pushMs) {
        push();
        uploadConflicts();
        tellKept();
    }
    askAlive();
}

void Keeper::noteStep()
{
    if (status().inStep)
        m_status.behindMs = 0;
    else if (m_status.behindMs == 0)
        m_status.behindMs = m_surroundings.utcMs();
}

// States that were agreed on elsewhere, or in another role, would be taken for an edit here: a desk that
// is made a server would put its old copies into the cluster.
bool Keeper::prepare()
{
    Memory memory;
    if (m_recalled)
        return m_mark.place == placeMark(m_settings);
    if (!m_replica.recall(&memory)) {
        ++m_status.storeErrors;
        return false;
    }
    m_recalled = true;
    m_mark = memory.mark;
    if (m_mark.place.empty()) {
        m_mark.place = placeMark(m_settings);
        m_markDirty = true;
    }
    if (m_mark.place != placeMark(m_settings)) {
        away("this configuration was kept as " + QByteArray::fromStdString(m_mark.place) +
             ": leave the fleet first");
        return false;
    }
    m_board.recall(memory);
    m_conflicts = std::move(memory.conflicts);
    return true;
}

void Keeper::takeNews()
{
    const Inbox::News news = m_inbox.take();
    for (const Entry &entry : news.entries)
        m_board.takeEvent(entry);
    m_mark.revision = std::max(m_mark.revision, news.revision);
    if (!news.ended)
        return;
    m_watch.reset();
    m_syncMs = m_nowMs + m_pauses.next(kFirstPauseMs, kLongestPauseMs);
    away("the watch ended: " + QByteArray::fromStdString(news.reason));
}

bool Keeper::lookDue() const
{
    return m_nowMs >= m_gather.dueMs() || (m_localDirty && m_nowMs >= m_settleMs);
}

void Keeper::look()
{
    const bool news = m_replica.changed();
    m_gather.looked(m_nowMs, news);
    m_localDirty = m_localDirty || news;
    if (!m_localDirty)
        return;
    Documents documents;
    if (!m_replica.read(&documents)) {
        ++m_status.storeErrors;
        m_settleMs = m_nowMs + kBusyMs;
        return;
    }
    m_board.setLocal(documents);
    m_status.overruled = m_replica.overruled();
    m_localKnown = true;
    m_localDirty = false;
}

qint64 Keeper::pause() const
{
    qint64 due = std::min(m_gather.dueMs(), m_syncMs);
    if (m_localDirty || (m_localKnown && m_remoteKnown && m_board.dirty()))
        due = std::min(due, m_settleMs);
    if (m_status.connected && m_settings.role == Role::Desk)
        due = std::min(due, m_aliveMs);
    const bool more = !m_conflicts.empty() || (m_remoteKnown && !m_board.pushes(1).empty());
    if (m_status.connected && more)
        due = std::min(due, std::max(m_pushMs, m_settleMs));
    return std::max<qint64>(0, due - m_nowMs);
}

// ------------------------------------------------------------------------------------------ the cluster

// First the receipt, then the range: so a push that the receipt tells of is in the range.
void Keeper::resync()
{
    Range range;
    if (!askReceipt())
        return;
    if (m_cluster.range(documentPrefix(m_settings.place), &range) != Outcome::Done)
        return unreachable();
    takeRange(range);
    if (!askKept())
        return;
    present();
    m_syncMs = m_nowMs + kResyncMs / 2 + m_pauses.upTo(kResyncMs);
}

bool Keeper::askReceipt()
{
    Range range;
    if (m_receiptOpen && !m_mark.receipt.empty()) {
        const std::string key = receiptKey(m_settings.place, m_settings.who, m_mark.pushes);
        if (m_cluster.get(key, &range) != Outcome::Done) {
            unreachable();
            return false;
        }
    }
    if (!range.entries.empty() && receiptMark(range.entries.front().value) == m_mark.receipt) {
        m_board.landed(m_mark.pushes);
        m_remoteKnown = false; // what was heard of before the push would look like an answer to it
    }
    m_receiptOpen = false;
    return true;
}

void Keeper::takeRange(const Range &range)
{
    const bool another = m_mark.cluster != range.cluster;
    if (!m_board.gone()) {
        m_agreedCluster = m_mark.cluster;
        m_agreedRevision = m_mark.revision;
    }
    const bool restored = m_mark.cluster != 0 && (another || range.revision < m_mark.revision);
    if (restored)
        m_surroundings.log("the cluster was set up again: what is here is compared with what it has");
    m_board.setRemote(range, restored);
    m_markDirty = m_markDirty || another || restored;
    m_keptDue = m_keptDue || another || restored;
    m_mark.cluster = range.cluster;
    m_mark.revision = range.revision;
    m_remoteKnown = true;
    if (!m_watch)
        m_watch = m_cluster.watch(documentPrefix(m_settings.place), range.revision + 1, &m_inbox);
}

void Keeper::askAlive()
{
    if (m_settings.role != Role::Desk || !m_status.connected || m_nowMs < m_aliveMs)
        return;
    m_aliveMs = (m_nowMs / kAliveMs + 1) * kAliveMs; // all keepers of a desk at once
    Range range;
    const std::string key = aliveKey(m_settings.place.site, m_settings.place.server);
    const Outcome outcome = m_cluster.get(key, &range);
    if (outcome == Outcome::Unreachable)
        return unreachable();
    if (outcome != Outcome::Done)
        return;
    const bool alive = !range.entries.empty();
    if (alive)
        m_seenMs = m_surroundings.utcMs();
    if (alive != m_status.serverAlive || m_status.serverSeenMs == 0)
        m_status.serverSeenMs = m_seenMs;
    m_status.serverAlive = alive;
}

void Keeper::away(const QByteArray &reason)
{
    if (m_status.connected || m_status.reason != reason)
        m_surroundings.log("the cluster is away: " + reason);
    if (m_status.connected)
        m_status.sinceMs = m_surroundings.utcMs();
    m_status.connected = false;
    m_status.reason = reason;
}

void Keeper::present()
{
    m_pauses.succeeded();
    if (m_status.connected)
        return;
    m_surroundings.log("the cluster is there");
    m_status.connected = true;
    m_status.reason.clear();
    m_status.sinceMs = m_surroundings.utcMs();
}

void Keeper::unreachable()
{
    const qint64 longestMs = m_cluster.cutOff() ? kCutOffPauseMs : kLongestPauseMs;
    m_syncMs = m_nowMs + m_pauses.next(kFirstPauseMs, longestMs);
    away(QByteArray::fromStdString(m_cluster.reason()));
}

// -------------------------------------------------------------------------------------------- the store

// False when there is something to be done that could not be done now. What one round applies needs a
// second one at most.
bool Keeper::settle()
{
    for (int round = 0; round < kSettleRounds; ++round) {
        sign();
        Transaction transaction = m_board.localPart();
        if (transaction.steps.empty() && !m_markDirty)
            return true;
        if (!apply(std::move(transaction)))
            return false;
    }
    return true;
}

bool Keeper::apply(Transaction transaction)
{
    transaction.mark = m_mark;
    if (m_board.gone()) { // still to be compared as with another cluster after a start
        transaction.mark.cluster = m_agreedCluster;
        transaction.mark.revision = m_agreedRevision;
    }
    switch (m_replica.apply(transaction)) {
    case Applied::Done:
        remember(transaction);
        return true;
    case Applied::Moved:
        m_localDirty = true;
        break;
    case Applied::Failed:
        ++m_status.storeErrors;
        m_settleMs = m_nowMs + kBusyMs / 2 + m_pauses.upTo(kBusyMs);
        break;
    }
    m_board.notApplied(transaction);
    return false;
}

void Keeper::remember(const Transaction &transaction)
{
    m_board.applied(transaction);
    m_board.setRestored(m_board.restored() && !m_markDirty);
    m_markDirty = false;
    for (const Step &step : transaction.steps) {
        if (step.conflict)
            m_conflicts.emplace(conflictId(*step.conflict), *step.conflict);
        m_status.overruled += step.conflict && step.values;
    }
    for (const std::string &id : transaction.uploaded)
        m_conflicts.erase(id);
    if (transaction.label.isEmpty())
        return;
    m_status.appliedMs = m_surroundings.utcMs();
    m_status.appliedFrom = transaction.label;
}

// All at once: who changed what is found by going back in the store's history.
void Keeper::sign()
{
    Documents documents = m_board.unsignedOnes();
    std::vector<Document *> all;
    for (auto &[key, document] : documents)
        all.push_back(&document);
    if (all.empty())
        return;
    m_replica.sign(all);
    for (Document *document : all)
        document->by.who = m_settings.who;
    m_board.takeSignatures(documents);
}

KeeperStatus Keeper::status() const
{
    KeeperStatus status = m_status;
    status.waiting = m_localKnown ? m_board.waiting() : 0;
    status.refused = m_board.refused();
    status.conflicts = static_cast<int>(m_conflicts.size());
    status.revision = m_mark.revision;
    status.inStep = status.connected && m_localKnown && status.waiting == 0 && status.conflicts == 0;
    return status;
}

} // namespace fleet
