// SPDX-License-Identifier: MIT
#include "fleet/tool/siteview.h"

#include "fleet/keypath.h"
#include "fleet/service/roster.h"

#include <QList>

#include <algorithm>
#include <functional>
#include <set>

#include <fnmatch.h>

namespace fleet {

namespace {

constexpr int kTries = 3; // one for each member, as a rule
constexpr std::size_t kMostOneByOne = 50;

QByteArray partOf(const QList<QByteArray> &parts, int at)
{
    return at < parts.size() ? nameOfPart(parts.at(at).toStdString()).value_or(QByteArray()) : QByteArray();
}

// Takes the entries of one site.
class Reading {
public:
    Reading(QByteArray site, bool own, SiteView *view) : m_site(std::move(site)), m_own(own), m_view(*view) {}

    void takeServers(const Range &range);
    // The same of entries without values. The keys of what has to be read of each server go to *signs.
    void takeNames(const Range &range, std::vector<std::string> *signs);
    void takeConflicts(const Range &range);

private:
    ServerView &server(const QByteArray &name);
    static void takeDocument(const Entry &entry, const std::string &key, SharedConfiguration *configuration);

    const QByteArray m_site;
    const bool m_own;
    SiteView &m_view;
};

ServerView &Reading::server(const QByteArray &name)
{
    ServerView &view = m_view[m_own ? name : m_site + '/' + name];
    view.site = m_site;
    view.name = name;
    view.ownSite = m_own;
    return view;
}

void Reading::takeDocument(const Entry &entry, const std::string &key, SharedConfiguration *configuration)
{
    const auto document = readDocument(entry.value);
    if (document && keyOfPath(document->path) == key)
        configuration->documents[key] = {*document, entry.modRevision};
    else
        configuration->foreign[key] = document ? "its path belongs to another key" : document.failure().text;
}

// SERVER/alive, SERVER/default, SERVER/CONFIGURATION/KEY PATH
void Reading::takeServers(const Range &range)
{
    const std::size_t start = serversPrefix(m_site).size();
    for (const Entry &entry : range.entries) {
        const std::string rest = entry.key.substr(start);
        const QList<QByteArray> parts = QByteArray::fromStdString(rest).split('/');
        const QByteArray name = partOf(parts, 0);
        if (name.isEmpty() || parts.size() < 2)
            continue;
        ServerView &view = server(name);
        const auto before = static_cast<std::size_t>(parts.at(0).size() + parts.at(1).size() + 2);
        if (parts.size() > 2)
            takeDocument(entry, rest.substr(before), &view.configurations[partOf(parts, 1)]);
        else if (parts.at(1) == "alive")
            view.alive = readAlive(entry.value);
        else if (parts.at(1) == "default" && isConfigurationName(QByteArray::fromStdString(entry.value)))
            view.inUse = QByteArray::fromStdString(entry.value);
    }
}

void Reading::takeNames(const Range &range, std::vector<std::string> *signs)
{
    const std::size_t start = serversPrefix(m_site).size();
    for (const Entry &entry : range.entries) {
        const QList<QByteArray> parts = QByteArray::fromStdString(entry.key.substr(start)).split('/');
        const QByteArray name = partOf(parts, 0);
        if (name.isEmpty() || parts.size() < 2)
            continue;
        ServerView &view = server(name);
        if (parts.size() == 2)
            signs->push_back(entry.key);
        else
            view.shared[entry.key] = entry.modRevision;
    }
}

// SERVER/CONFIGURATION/KEY PATH/ID
void Reading::takeConflicts(const Range &range)
{
    const std::size_t start = (sitePrefix(m_site) + "conflicts/").size();
    for (const Entry &entry : range.entries) {
        const QList<QByteArray> parts = QByteArray::fromStdString(entry.key.substr(start)).split('/');
        const auto conflict = readConflict(entry.value);
        const QByteArray name = partOf(parts, 0);
        if (parts.size() >= 4 && conflict && !name.isEmpty())
            server(name).conflicts.push_back({entry.key, partOf(parts, 1), parts.last(), *conflict});
    }
}

bool isGlob(const QByteArray &text)
{
    return text.contains('*') || text.contains('?') || text.contains('[');
}

// Asks again when there is no answer.
ops::Outcome<Range> asked(const EtcdCluster &cluster, const std::function<Outcome(Range *)> &ask)
{
    Range range;
    Outcome outcome = Outcome::Unreachable;
    for (int turn = 0; turn < kTries && outcome == Outcome::Unreachable; ++turn)
        outcome = ask(&range);
    if (outcome != Outcome::Done)
        return ops::refused("the cluster does not answer: " + QByteArray::fromStdString(cluster.reason()));
    return range;
}

ops::Outcome<Range> readRange(EtcdCluster &cluster, const std::string &prefix)
{
    return asked(cluster, [&](Range *range) { return cluster.range(prefix, range); });
}

ops::Outcome<Range> readAll(EtcdCluster &cluster, const std::vector<std::string> &keys)
{
    return asked(cluster, [&](Range *range) { return cluster.getAll(keys, range); });
}

// A server may read its own only.
std::string prefixFor(const Config &config, const QByteArray &site, const char *what)
{
    const std::string prefix = sitePrefix(site) + what + '/';
    return config.isDesk() || site != config.site ? prefix : prefix + keyPart(config.name) + '/';
}

ops::Outcome<ops::Done> readOne(EtcdCluster &cluster, const Config &config, const QByteArray &site,
                                SiteView *view)
{
    const std::string prefix = prefixFor(config, site, "servers");
    const auto names = asked(cluster, [&](Range *range) { return cluster.names(prefix, range); });
    if (!names)
        return names.failure();
    Reading reading(site, site == config.site, view);
    std::vector<std::string> keys;
    reading.takeNames(*names, &keys);
    const auto signs = readAll(cluster, keys);
    if (!signs)
        return signs.failure();
    const auto conflicts = readRange(cluster, prefixFor(config, site, "conflicts"));
    if (!conflicts)
        return conflicts.failure();
    reading.takeServers(*signs);
    reading.takeConflicts(*conflicts);
    return ops::Done();
}

// Reads what lies below the prefixes, and keeps what is of these servers of one site.
ops::Outcome<ops::Done> takePrefixes(EtcdCluster &cluster, const std::set<std::string> &prefixes,
                                     const ServerViews &servers)
{
    const QByteArray site = servers.front()->site;
    SiteView read;
    Reading reading(site, true, &read);
    for (const std::string &prefix : prefixes) {
        const auto range = readRange(cluster, prefix);
        if (!range)
            return range.failure();
        reading.takeServers(*range);
    }
    for (ServerView *server : servers)
        server->configurations = std::move(read[server->name].configurations);
    return ops::Done();
}

// Which sites there are can only be seen with a role for all of them.
ops::Outcome<std::set<QByteArray>> sitesLike(EtcdCluster &cluster, const QByteArray &glob)
{
    if (!isGlob(glob))
        return std::set<QByteArray>{glob};
    const std::string start = sitePrefix("x");
    const std::string all = start.substr(0, start.size() - 2);
    std::vector<std::string> keys;
    if (cluster.keys(all, &keys) != Outcome::Done)
        return ops::refused("which sites there are cannot be read, name them one by one: " +
                            QByteArray::fromStdString(cluster.reason()));
    std::set<QByteArray> sites;
    for (const std::string &key : keys) {
        const auto site = nameOfPart(key.substr(all.size(), key.find('/', all.size()) - all.size()));
        if (site && fnmatch(glob.constData(), site->constData(), 0) == 0)
            sites.insert(*site);
    }
    return sites;
}

} // namespace

ops::Snapshot SharedConfiguration::snapshot() const
{
    std::vector<ops::Row> rows;
    for (const auto &document : documents) {
        for (const auto &[name, value] : document.second.document.values)
            rows.push_back({document.second.document.path, name, value});
    }
    return ops::Snapshot::fromRows(std::move(rows));
}

const SharedConfiguration *ServerView::current(QByteArray *which) const
{
    auto found = configurations.find(inUse);
    if (found == configurations.end() && configurations.size() == 1)
        found = configurations.begin();
    if (found == configurations.end())
        return nullptr;
    if (which)
        *which = found->first;
    return &found->second;
}

const Document *ServerView::newest() const
{
    const Document *newest = last ? &*last : nullptr;
    for (const auto &configuration : configurations) {
        for (const auto &document : configuration.second.documents) {
            if (!newest || document.second.document.atMs > newest->atMs)
                newest = &document.second.document;
        }
    }
    return newest;
}

bool ServerView::vouched() const
{
    const std::string kept = alive ? documentPrefix({site, name, alive->configuration}) : std::string();
    const auto seen = [&](const auto &document) {
        return document.first.compare(0, kept.size(), kept) == 0 && document.second <= alive->revision;
    };
    return alive && alive->inStep && alive->refused == 0 && std::all_of(shared.begin(), shared.end(), seen);
}

PtpSeen ServerView::ptp() const
{
    return alive && alive->ptp ? *alive->ptp : PtpSeen();
}

int ServerView::foreign() const
{
    std::size_t count = 0;
    for (const auto &configuration : configurations)
        count += configuration.second.foreign.size();
    return static_cast<int>(count);
}

QByteArray stateOf(const ServerView &view)
{
    if (!view.alive)
        return "off";
    return view.alive->inStep ? "in step" : view.alive->waiting > 0 ? "edits wait" : "behind";
}

ops::Outcome<SiteView> readSites(EtcdCluster &cluster, const Config &config, const QByteArrayList &others)
{
    std::set<QByteArray> sites{config.site};
    for (const QByteArray &other : others) {
        const auto found = sitesLike(cluster, other);
        if (!found)
            return found.failure();
        sites.insert(found->begin(), found->end());
    }
    SiteView view;
    for (const QByteArray &site : sites) {
        const auto read = readOne(cluster, config, site, &view);
        if (!read)
            return site == config.site
                       ? read.failure()
                       : ops::refused("the site " + site + " cannot be read: " + read.failure().text);
    }
    return view;
}

// Of many servers one after the other would take longer than the whole site.
ops::Outcome<ops::Done> readDocuments(EtcdCluster &cluster, const ServerViews &servers)
{
    std::map<QByteArray, ServerViews> sites;
    for (ServerView *server : servers)
        sites[server->site].push_back(server);
    for (const auto &[site, some] : sites) {
        std::set<std::string> prefixes;
        for (const ServerView *server : some)
            prefixes.insert(serverPrefix(site, server->name));
        if (some.size() > kMostOneByOne)
            prefixes = {serversPrefix(site)};
        const auto read = takePrefixes(cluster, prefixes, some);
        if (!read)
            return read.failure();
    }
    return ops::Done();
}

ops::Outcome<ops::Done> readLast(EtcdCluster &cluster, const ServerViews &servers)
{
    std::map<std::string, ServerView *> views;
    for (ServerView *server : servers) {
        const auto older = [](const auto &left, const auto &right) { return left.second < right.second; };
        const auto last = std::max_element(server->shared.begin(), server->shared.end(), older);
        if (last != server->shared.end())
            views.emplace(last->first, server);
    }
    std::vector<std::string> keys;
    for (const auto &view : views)
        keys.push_back(view.first);
    const auto entries = readAll(cluster, keys);
    if (!entries)
        return entries.failure();
    for (const Entry &entry : entries->entries) {
        const auto document = readDocument(entry.value);
        if (document)
            views.at(entry.key)->last = *document;
    }
    return ops::Done();
}

} // namespace fleet
