// SPDX-License-Identifier: MIT
// What a keeper puts into the cluster: documents as one transaction with its receipt, and overruled ones.
#include "fleet/keeper.h"

namespace fleet {

namespace {

constexpr qint64 kRefusedPauseMs = 10;

std::string conflictKey(const Place &place, const std::string &id, const Conflict &conflict)
{
    return conflictPrefix(place) + keyOfPath(conflict.overruled.path) + '/' + id;
}

} // namespace

void Keeper::push()
{
    const Parcel parcel = nextParcel();
    if (parcel.documents.empty() || !launch(parcel))
        return;
    std::int64_t revision = 0;
    const Outcome outcome = m_cluster.commit(parcel.puts, &revision);
    if (outcome == Outcome::Done)
        arrived(parcel, revision);
    else
        notTaken(outcome, parcel.documents.size());
}

Keeper::Parcel Keeper::nextParcel()
{
    Parcel parcel;
    sign();
    const Documents documents = m_board.pushes(m_most);
    if (documents.empty())
        return parcel;
    const std::string prefix = documentPrefix(m_settings.place);
    std::size_t bytes = 0;
    for (const auto &[key, document] : documents) {
        const ops::Outcome<std::string> text = writeDocument(document);
        if (!text) // only a mistake of ours can lead here: it must not make us busy for good
            m_pushMs = m_nowMs + kNotWantedMs;
        bytes += text ? text->size() : 0;
        if (!text || (bytes > kPushBytes && !parcel.documents.empty()))
            continue;
        parcel.puts.push_back({prefix + key, *text, m_board.expectedRevision(key)});
        parcel.documents.emplace(key, document);
    }
    if (parcel.documents.empty())
        return parcel;
    parcel.receipt = receiptOf(m_settings.place, m_settings.who, m_mark.pushes + 1, parcel.documents);
    parcel.puts.push_back({parcel.receipt.key, parcel.receipt.value});
    return parcel;
}

// Before anything leaves: when the answer gets lost, and this program with it, it must still be known what
// the cluster may have of ours. Without that an edit that was built on it would look like a stranger's.
bool Keeper::launch(const Parcel &parcel)
{
    const Mark before = m_mark;
    ++m_mark.pushes;
    m_mark.receipt = receiptMark(parcel.receipt.value);
    Transaction transaction;
    transaction.steps = m_board.flightSteps(parcel.documents, m_mark.pushes);
    if (apply(std::move(transaction)))
        return true;
    m_mark = before;
    return false;
}

void Keeper::arrived(const Parcel &parcel, std::int64_t revision)
{
    for (const auto &[key, document] : parcel.documents)
        m_board.pushed(key, document, revision);
    m_mark.revision = std::max(m_mark.revision, revision);
    m_status.pushedMs = m_surroundings.utcMs();
    m_status.reason.clear();
    m_pauses.succeeded();
    if (m_board.pushes(1).empty())
        m_most = kMaxPuts - 1;
    settle();
}

// count: of the documents in it. One cannot be made smaller.
void Keeper::notTaken(Outcome outcome, std::size_t count)
{
    switch (outcome) {
    case Outcome::Done:
        return;
    case Outcome::Refused: // somebody was there first: look what they left, and decide again
        m_syncMs = m_nowMs + m_pauses.upTo(kRefusedPauseMs);
        m_pushMs = m_syncMs;
        return;
    case Outcome::Unreachable:
        m_receiptOpen = true;
        return unreachable();
    case Outcome::TooLarge:
        m_most = std::max<std::size_t>(1, count / 2);
        if (count > 1)
            return;
        break;
    case Outcome::Denied:
    case Outcome::NoSpace:
    case Outcome::Compacted:
        break;
    }
    const QByteArray reason =
        "the cluster does not take it: " + QByteArray::fromStdString(m_cluster.reason());
    if (m_status.reason != reason)
        m_surroundings.log(reason);
    m_status.reason = reason;
    m_pushMs = m_nowMs + kNotWantedMs / 2 + m_pauses.upTo(kNotWantedMs);
}

// Written again is the same: the id is the document's own.
void Keeper::uploadConflicts()
{
    if (m_conflicts.empty() || !m_status.connected || m_nowMs < m_pushMs)
        return;
    Transaction transaction;
    std::vector<Put> puts;
    std::size_t bytes = 0;
    for (const auto &[id, conflict] : m_conflicts) {
        const ops::Outcome<std::string> text = writeConflict(conflict);
        if (!text)
            continue;
        bytes += text->size();
        if (puts.size() == m_most || (bytes > kPushBytes && !puts.empty()))
            break;
        puts.push_back({conflictKey(m_settings.place, id, conflict), *text});
        transaction.uploaded.push_back(id);
    }
    if (puts.empty())
        return;
    const Outcome outcome = m_cluster.commit(puts, nullptr);
    if (outcome == Outcome::Done)
        apply(std::move(transaction));
    else
        notTaken(outcome, puts.size());
}

} // namespace fleet
