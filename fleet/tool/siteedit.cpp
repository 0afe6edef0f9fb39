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
        return ops::refused("somebody else changed it meanwhile; nothing was written");
    if (outcome == Outcome::Denied)
        return ops::refused("this machine's role does not allow it");
    return ops::refused(QByteArray::fromStdString(cluster.reason()));
}

// Of the commands, apart from the pushes of the service.
Receipt receiptFor(const SiteEdit &edit, const QByteArray &who)
{
    const auto number = static_cast<std::uint64_t>(QDateTime::currentMSecsSinceEpoch());
    return receiptOf(edit.place, who + ".commands", number, edit.documents);
}

} // namespace

Author ownAuthor(const QByteArray &who)
{
    const passwd *entry = getpwuid(getuid());
    return {who, entry ? QByteArray(entry->pw_name) : QByteArray::number(getuid()), "corvel-fleet",
            static_cast<quint32>(getpid())};
}

SiteEdit siteEdit(const Place &place, const SharedConfiguration &configuration, const ops::Changes &changes,
                  const QByteArray &who)
{
    SiteEdit edit{place, changes, {}, {}};
    for (const ops::Change &change : changes) {
        const std::string key = keyOfPath(change.path);
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
    std::vector<Put> puts;
    for (const auto &[key, document] : edit.documents) {
        const auto text = writeDocument(document);
        if (!text)
            return text.failure();
        puts.push_back({documentPrefix(edit.place) + key, *text, edit.revisions.at(key)});
    }
    const Receipt receipt = receiptFor(edit, who);
    puts.push_back({receipt.key, receipt.value});
    std::int64_t revision = 0;
    const Outcome outcome = cluster.commit(puts, &revision);
    if (outcome != Outcome::Done)
        return failureOf(outcome, cluster);
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
