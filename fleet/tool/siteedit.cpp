// SPDX-License-Identifier: MIT
#include "fleet/tool/siteedit.h"

#include "fleet/push.h"

#include <QDateTime>

#include <pwd.h>
#include <unistd.h>

namespace fleet {

namespace {

ops::Failure failureOf(Outcome outcome, const EtcdCluster &cluster)
{
    if (outcome == Outcome::Refused)
        return ops::refused("somebody else changed it meanwhile");
    if (outcome == Outcome::Denied)
        return ops::refused("this machine's role does not allow it");
    return ops::refused(QByteArray::fromStdString(cluster.reason()));
}

// Of the commands, apart from the pushes of the service.
Receipt receiptFor(const Place &place, const Documents &documents, const QByteArray &who)
{
    const auto number = static_cast<std::uint64_t>(QDateTime::currentMSecsSinceEpoch());
    return receiptOf(place, who + ".commands", number, documents);
}

// What one transaction takes of the documents from position on.
struct Parcel {
    Documents documents;
    std::vector<Put> puts;
};

ops::Outcome<Parcel> nextParcel(const SiteEdit &edit, std::size_t most, Documents::const_iterator position)
{
    Parcel parcel;
    std::size_t bytes = 0;
    for (; position != edit.documents.end() && parcel.puts.size() < most; ++position) {
        const auto text = writeDocument(position->second);
        if (!text)
            return text.failure();
        bytes += text->size();
        if (bytes > kMaxCommitBytes / 2 && !parcel.puts.empty())
            break;
        parcel.puts.push_back(
            {documentPrefix(edit.place) + position->first, *text, edit.revisions.at(position->first)});
        parcel.documents.insert(*position);
    }
    return parcel;
}

ops::Failure failedAfter(std::size_t written, const SiteEdit &edit, ops::Failure failure)
{
    if (written > 0)
        failure.text += "; " + QByteArray::number(static_cast<qulonglong>(written)) + " of its " +
                        QByteArray::number(static_cast<qulonglong>(edit.documents.size())) +
                        " key paths were written before";
    return failure;
}

} // namespace

Author ownAuthor(const QByteArray &who)
{
    const passwd *entry = getpwuid(getuid());
    return {who, entry ? QByteArray(entry->pw_name) : QByteArray::number(getuid()), "corvel-fleet",
            static_cast<quint32>(getpid())};
}

ops::Outcome<SiteEdit> siteEdit(const Place &place, const SharedConfiguration &configuration,
                                const ops::Changes &changes, const QByteArray &who)
{
    SiteEdit edit{place, changes, {}, {}};
    for (const ops::Change &change : changes) {
        const std::string key = keyOfPath(change.path);
        const auto foreign = configuration.foreign.find(key);
        if (foreign != configuration.foreign.end())
            return ops::refused("what the cluster has of " + change.path +
                                " is not written over: " + foreign->second);
        const auto shared = configuration.documents.find(key);
        const bool known = shared != configuration.documents.end();
        const auto [position, anew] =
            edit.documents.emplace(key, known ? shared->second.document : Document());
        Document &document = position->second;
        if (anew && !known)
            document.path = change.path;
        document.by = ownAuthor(who);
        document.atMs = QDateTime::currentMSecsSinceEpoch();
        edit.revisions[key] = known ? shared->second.revision : Put::kAbsent;
        document.values.erase(change.name);
        if (change.after)
            document.values.emplace(change.name, *change.after);
    }
    return edit;
}

ops::Outcome<std::int64_t> writeEdit(EtcdCluster &cluster, const SiteEdit &edit, const QByteArray &who)
{
    std::int64_t revision = 0;
    std::size_t written = 0;
    std::size_t most = kMaxPuts - 1;
    for (auto position = edit.documents.begin(); position != edit.documents.end();) {
        auto parcel = nextParcel(edit, most, position);
        if (!parcel)
            return failedAfter(written, edit, parcel.failure());
        const Receipt receipt = receiptFor(edit.place, parcel->documents, who);
        parcel->puts.push_back({receipt.key, receipt.value});
        const Outcome outcome = cluster.commit(parcel->puts, &revision);
        const std::size_t count = parcel->documents.size();
        if (outcome == Outcome::TooLarge && count > 1) { // the cluster may be set up to take fewer
            most = count / 2;
            continue;
        }
        if (outcome != Outcome::Done)
            return failedAfter(written, edit, failureOf(outcome, cluster));
        written += count;
        std::advance(position, count);
    }
    return revision;
}

ops::Outcome<Taken> takenBy(EtcdCluster &cluster, const SiteEdit &edit, std::int64_t revision)
{
    Range range;
    Outcome outcome = cluster.get(aliveKey(edit.place.site, edit.place.server), &range);
    if (outcome != Outcome::Done)
        return failureOf(outcome, cluster);
    const auto alive = range.entries.empty() ? std::nullopt : readAlive(range.entries.front().value);
    if (!alive || !alive->inStep || alive->revision < revision)
        return Taken::NotYet;
    for (const auto &[key, document] : edit.documents) {
        outcome = cluster.get(documentPrefix(edit.place) + key, &range);
        if (outcome != Outcome::Done)
            return failureOf(outcome, cluster);
        const auto now = range.entries.empty() ? ops::Outcome<Document>(ops::wrong("gone"))
                                               : readDocument(range.entries.front().value);
        if (!now || !sameState(*now, document))
            return Taken::Overruled;
    }
    return Taken::Yes;
}

} // namespace fleet
