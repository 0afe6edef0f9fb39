// SPDX-License-Identifier: MIT
//
// Where things lie in the cluster. Key paths of the store compare without ASCII case, so they become keys in
// lower case, "\" as "/"; every other byte than a-z 0-9 . _ - is written as %XX. Names of sites, servers
// and configurations keep their case that way. Pure; any thread.
#ifndef CORVEL_FLEET_KEYPATH_H
#define CORVEL_FLEET_KEYPATH_H

#include <QByteArray>

#include <optional>
#include <string>
#include <string_view>

namespace fleet {

// One configuration of one server.
struct Place {
    QByteArray site;
    QByteArray server;
    QByteArray configuration;
};

// A name as one part of a key, and back; nothing for what is no such part.
std::string keyPart(const QByteArray &name);
std::optional<QByteArray> nameOfPart(std::string_view part);

// "KWX\Internal0\IpConfig" as "kwx/internal0/ipconfig".
std::string keyOfPath(const QByteArray &path);

std::string sitePrefix(const QByteArray &site);
std::string serversPrefix(const QByteArray &site);
std::string serverPrefix(const QByteArray &site, const QByteArray &server);
std::string aliveKey(const QByteArray &site, const QByteArray &server);
// All of these end in "/": a key path follows, and for conflicts "/" and an id.
std::string documentPrefix(const Place &place);
std::string conflictPrefix(const Place &place);
// Below it one key for each of the last pushes of a machine, see fleet/push.h.
std::string historyPrefix(const QByteArray &site, const QByteArray &server);
// Holds the identity of the cluster that has everything of the server's configuration. No name has capitals.
std::string keptKey(const Place &place);

} // namespace fleet

#endif
