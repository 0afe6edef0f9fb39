// SPDX-License-Identifier: MIT
#include "fleet/service/configkeys.h"

#include "ops/suggest.h"

#include <algorithm>

namespace fleet {

namespace {

constexpr int kLongestName = 64; // of a configuration, which a server's name becomes at a desk

bool isPlain(char c)
{
    return (c >= 'a' && c <= 'z') || (c >= '0' && c <= '9') || c == '.' || c == '_' || c == '-';
}

QByteArray notAName(const QByteArray &value)
{
    const bool fine = !value.isEmpty() && value.size() <= kLongestName && value.front() != '.' &&
                      std::all_of(value.begin(), value.end(), isPlain);
    return fine ? QByteArray() : "a name has 1 to 64 of a-z 0-9 . _ - and does not begin with a dot";
}

QByteArrayList listOf(const QByteArray &value)
{
    QByteArrayList list;
    for (const QByteArray &word : value.split(',')) {
        if (!word.trimmed().isEmpty())
            list.append(word.trimmed());
    }
    return list;
}

bool isEndpoint(const QByteArray &word)
{
    const int colon = word.lastIndexOf(':');
    bool number = false;
    const int port = word.mid(colon + 1).toInt(&number);
    return colon > 0 && number && port > 0 && port < 65536 && !word.contains('/');
}

QByteArray readRole(const QByteArray &value, Config &config)
{
    config.role = value == "desk" ? Role::Desk : Role::Server;
    return value == "desk" || value == "server" ? QByteArray() : "server or desk";
}

QByteArray readSite(const QByteArray &value, Config &config)
{
    config.site = value;
    return notAName(value);
}

QByteArray readName(const QByteArray &value, Config &config)
{
    config.name = value;
    return notAName(value);
}

QByteArray readEndpoints(const QByteArray &value, Config &config)
{
    config.endpoints = listOf(value);
    const auto &list = config.endpoints;
    return !list.isEmpty() && std::all_of(list.begin(), list.end(), isEndpoint)
               ? QByteArray()
               : "HOST:PORT of each member, with commas between";
}

template<QByteArray Config::*Member>
QByteArray readFileName(const QByteArray &value, Config &config)
{
    config.*Member = value;
    return value.startsWith('/') ? QByteArray() : "a file name that begins with /";
}

template<QByteArrayList Config::*Member>
QByteArray readList(const QByteArray &value, Config &config)
{
    config.*Member = listOf(value);
    return (config.*Member).isEmpty() ? "one name or more, with commas between" : QByteArray();
}

QByteArray readPort(const QByteArray &value, Config &config)
{
    bool number = false;
    config.metricsPort = value.toInt(&number);
    return number && config.metricsPort >= 0 && config.metricsPort < 65536 ? QByteArray()
                                                                           : "a port, or 0 for none";
}

constexpr ConfigKey kKeys[] = {
    // section   key              needed              of                     how it is read
    {"fleet", "role", ConfigKey::Always, ConfigKey::Both, readRole},
    {"fleet", "site", ConfigKey::Always, ConfigKey::Both, readSite},
    {"fleet", "name", ConfigKey::Always, ConfigKey::Both, readName},
    {"cluster", "endpoints", ConfigKey::Always, ConfigKey::Both, readEndpoints},
    {"cluster", "ca", ConfigKey::Always, ConfigKey::Both, readFileName<&Config::authorityFile>},
    {"cluster", "certificate", ConfigKey::Always, ConfigKey::Both, readFileName<&Config::certificateFile>},
    {"cluster", "key", ConfigKey::Always, ConfigKey::Both, readFileName<&Config::keyFile>},
    {"share", "configurations", ConfigKey::Optional, ConfigKey::ServerOnly,
     readList<&Config::configurations>},
    {"follow", "servers", ConfigKey::ForDesk, ConfigKey::DeskOnly, readList<&Config::follow>},
    {"metrics", "port", ConfigKey::Optional, ConfigKey::Both, readPort},
};

QByteArray fullName(const ConfigKey &key)
{
    return QByteArray("[") + key.section + "] " + key.name;
}

QByteArray complaintOf(const ConfigKey &key, const Config &config, bool given)
{
    const bool needed = key.need == ConfigKey::Always || (key.need == ConfigKey::ForDesk && config.isDesk());
    if (needed && !given)
        return fullName(key) + " is missing";
    const bool foreign = key.of == (config.isDesk() ? ConfigKey::ServerOnly : ConfigKey::DeskOnly);
    if (foreign && given)
        return fullName(key) + " is for a " + (config.isDesk() ? "server" : "desk") + ", and role says " +
               (config.isDesk() ? "desk" : "server");
    return QByteArray();
}

} // namespace

const ConfigKey *configKey(const QByteArray &section, const QByteArray &name)
{
    const auto *found = std::find_if(std::begin(kKeys), std::end(kKeys), [&](const ConfigKey &key) {
        return section == key.section && name == key.name;
    });
    return found == std::end(kKeys) ? nullptr : found;
}

QByteArray complaint(const Config &config, const QByteArrayList &given)
{
    for (const ConfigKey &key : kKeys) {
        const QByteArray words = complaintOf(key, config, given.contains(fullName(key)));
        if (!words.isEmpty())
            return words;
    }
    return QByteArray();
}

QByteArray nearestKey(const QByteArray &section, const QByteArray &name)
{
    QByteArrayList names;
    for (const ConfigKey &key : kKeys)
        names.append(fullName(key));
    return ops::didYouMean('[' + section + "] " + name, names);
}

} // namespace fleet
