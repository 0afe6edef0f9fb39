// SPDX-License-Identifier: MIT
#include "fleet/service/roster.h"

#include "fleet/service/marks.h"
#include "ops/configurations.h"
#include "ops/jsontext.h"

#include <QList>

#include <algorithm>

namespace fleet {

namespace {

constexpr int kLongestName = 64;

QByteArray literalStart(const QByteArray &pattern)
{
    int length = 0;
    while (length < pattern.size() && !QByteArray("*?[\\").contains(pattern.at(length)))
        ++length;
    return pattern.left(length);
}

} // namespace

bool isConfigurationName(const QByteArray &name)
{
    return !name.isEmpty() && name.size() <= kLongestName && name.front() != '.' && !name.contains('/') &&
           ops::isUtf8(name) &&
           std::none_of(name.begin(), name.end(), [](unsigned char c) { return c < ' ' || c == 0x7f; });
}

bool operator==(const Assignment &left, const Assignment &right)
{
    return left.configuration == right.configuration && left.place.server == right.place.server &&
           left.place.configuration == right.place.configuration && left.place.site == right.place.site;
}

std::string inUseKey(const QByteArray &site, const QByteArray &server)
{
    return serverPrefix(site, server) + "default";
}

Assignments serverAssignments(const Config &config)
{
    const QByteArray inUse = ops::defaultConfiguration();
    QByteArrayList names{inUse};
    for (const QByteArray &name : config.configurations) {
        if (!names.contains(name))
            names.append(name);
    }
    Assignments assignments;
    for (const QByteArray &name : names) {
        if (!name.isEmpty())
            assignments.push_back({name, {config.site, config.name, name}, name == inUse});
    }
    return assignments;
}

std::set<std::string> followedPrefixes(const Config &config)
{
    std::set<std::string> prefixes;
    for (const QByteArray &pattern : config.follow) {
        const QByteArray start = literalStart(pattern);
        const std::string prefix = serversPrefix(config.site) + keyPart(start);
        prefixes.insert(start == pattern ? prefix + '/' : prefix);
    }
    return prefixes;
}

bool DeskRoster::look(EtcdCluster &cluster)
{
    std::map<QByteArray, std::set<QByteArray>> found;
    const std::size_t start = serversPrefix(m_config.site).size();
    for (const std::string &prefix : followedPrefixes(m_config)) {
        std::vector<std::string> keys;
        if (cluster.keys(prefix, &keys) != Outcome::Done)
            return false;
        for (const std::string &key : keys) { // SERVER/CONFIGURATION/...
            const QList<QByteArray> parts = QByteArray::fromStdString(key.substr(start)).split('/');
            const auto server = nameOfPart(parts.at(0).toStdString());
            if (parts.size() < 3 || !server || !m_config.follows(*server))
                continue;
            const auto configuration = nameOfPart(parts.at(1).toStdString());
            if (configuration && isConfigurationName(*configuration))
                found[*server].insert(*configuration);
        }
    }
    for (const auto &server : found) {
        if (!lookAt(cluster, server.first))
            return false;
    }
    m_found = std::move(found);
    return true;
}

bool DeskRoster::lookAt(EtcdCluster &cluster, const QByteArray &server)
{
    Range range;
    if (cluster.get(inUseKey(m_config.site, server), &range) != Outcome::Done)
        return false;
    const QByteArray inUse =
        range.entries.empty() ? QByteArray() : QByteArray::fromStdString(range.entries.front().value);
    if (isConfigurationName(inUse))
        m_inUse[server] = inUse;
    return true;
}

Assignments DeskRoster::assignments()
{
    Assignments assignments;
    for (const auto &[server, configurations] : m_found) {
        const auto inUse = m_inUse.find(server);
        QByteArray &kept = m_kept[server]; // has the name already
        if (kept.isEmpty())
            kept = keptConfigurationOf(server);
        QByteArray plain = kept;
        if (plain.isEmpty() && inUse != m_inUse.end())
            plain = inUse->second;
        if (plain.isEmpty())
            plain = *configurations.begin();
        for (const QByteArray &name : configurations) {
            const QByteArray here = name == plain ? server : name + '@' + server;
            if (isConfigurationName(here))
                assignments.push_back({here, {m_config.site, server, name}, true});
        }
    }
    return assignments;
}

} // namespace fleet
