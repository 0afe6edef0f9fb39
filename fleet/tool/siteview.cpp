// SPDX-License-Identifier: MIT
#include "fleet/tool/siteview.h"

#include "fleet/keypath.h"
#include "fleet/service/roster.h"

#include <QList>

#include <algorithm>

#include <fnmatch.h>

namespace fleet {

namespace {

constexpr int kTries = 3; // one for each member, as a rule

QByteArray partOf(const QList<QByteArray> &parts, int at)
{
    return at < parts.size() ? nameOfPart(parts.at(at).toStdString()).value_or(QByteArray()) : QByteArray();
}

// SERVER/alive, SERVER/default, SERVER/CONFIGURATION/KEY PATH
void takeEntry(const Entry &entry, const std::string &rest, const QByteArrayList &patterns, SiteView *site)
{
    const QList<QByteArray> parts = QByteArray::fromStdString(rest).split('/');
    const QByteArray server = partOf(parts, 0);
    if (server.isEmpty() || parts.size() < 2 || !matches(server, patterns))
        return;
    ServerView &view = (*site)[server];
    if (parts.size() > 2) {
        SharedConfiguration &configuration = view.configurations[partOf(parts, 1)];
        const auto document = readDocument(entry.value);
        const std::string key =
            rest.substr(static_cast<std::size_t>(parts.at(0).size() + parts.at(1).size() + 2));
        if (document && keyOfPath(document->path) == key)
            configuration.documents[key] = {*document, entry.modRevision};
        else
            ++configuration.foreign;
    } else if (parts.at(1) == "alive") {
        view.alive = readAlive(entry.value);
    } else if (parts.at(1) == "default") {
        view.inUse = QByteArray::fromStdString(entry.value);
    }
}

// SERVER/CONFIGURATION/KEY PATH/ID
void takeConflict(const Entry &entry, const std::string &rest, const QByteArrayList &patterns, SiteView *site)
{
    const QList<QByteArray> parts = QByteArray::fromStdString(rest).split('/');
    const auto conflict = readConflict(entry.value);
    const QByteArray server = partOf(parts, 0);
    if (parts.size() < 4 || !conflict || !matches(server, patterns))
        return;
    (*site)[server].conflicts.push_back({entry.key, server, partOf(parts, 1), parts.last(), *conflict});
}

ops::Outcome<Range> readRange(EtcdCluster &cluster, const std::string &prefix)
{
    Range range;
    Outcome outcome = Outcome::Unreachable;
    for (int turn = 0; turn < kTries && outcome == Outcome::Unreachable; ++turn)
        outcome = cluster.range(prefix, &range);
    if (outcome != Outcome::Done)
        return ops::refused("the cluster does not answer: " + QByteArray::fromStdString(cluster.reason()));
    return range;
}

// A server may read its own only.
std::string prefixFor(const Config &config, const char *what)
{
    const std::string site = sitePrefix(config.site) + what + '/';
    return config.isDesk() ? site : site + keyPart(config.name) + '/';
}

} // namespace

bool matches(const QByteArray &name, const QByteArrayList &patterns)
{
    return patterns.isEmpty() ||
           std::any_of(patterns.begin(), patterns.end(), [&](const QByteArray &pattern) {
               return fnmatch(pattern.constData(), name.constData(), 0) == 0;
           });
}

ops::Snapshot SharedConfiguration::snapshot() const
{
    std::vector<ops::Row> rows;
    for (const auto &document : documents) {
        for (const auto &[name, value] : document.second.document.values)
            rows.push_back({document.second.document.path, name, value});
    }
    return ops::Snapshot::fromRows(std::move(rows));
}

const SharedConfiguration *ServerView::current(QByteArray *name) const
{
    auto found = configurations.find(inUse);
    if (found == configurations.end() && configurations.size() == 1)
        found = configurations.begin();
    if (found == configurations.end())
        return nullptr;
    if (name)
        *name = found->first;
    return &found->second;
}

const Document *ServerView::newest() const
{
    const Document *newest = nullptr;
    for (const auto &configuration : configurations) {
        for (const auto &document : configuration.second.documents) {
            if (!newest || document.second.document.atMs > newest->atMs)
                newest = &document.second.document;
        }
    }
    return newest;
}

ops::Outcome<SiteView> readSite(EtcdCluster &cluster, const Config &config, const QByteArrayList &patterns)
{
    const auto servers = readRange(cluster, prefixFor(config, "servers"));
    if (!servers)
        return servers.failure();
    const auto conflicts = readRange(cluster, prefixFor(config, "conflicts"));
    if (!conflicts)
        return conflicts.failure();
    SiteView site;
    const std::size_t serversSize = serversPrefix(config.site).size();
    for (const Entry &entry : servers->entries)
        takeEntry(entry, entry.key.substr(serversSize), patterns, &site);
    const std::size_t conflictsSize = (sitePrefix(config.site) + "conflicts/").size();
    for (const Entry &entry : conflicts->entries)
        takeConflict(entry, entry.key.substr(conflictsSize), patterns, &site);
    return site;
}

} // namespace fleet
