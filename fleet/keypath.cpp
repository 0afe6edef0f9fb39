// SPDX-License-Identifier: MIT
#include "fleet/keypath.h"

namespace fleet {

namespace {

constexpr const char *kRoot = "/corvel/v1/";
constexpr char kDigits[] = "0123456789ABCDEF";

bool plain(char c)
{
    return (c >= 'a' && c <= 'z') || (c >= '0' && c <= '9') || c == '.' || c == '_' || c == '-';
}

void addByte(std::string &key, char c)
{
    const auto byte = static_cast<unsigned char>(c);
    if (plain(c))
        key += c;
    else
        key.append({'%', kDigits[byte >> 4], kDigits[byte & 15]});
}

char lower(char c)
{
    return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
}

// -1 for what is no digit.
int digit(char c)
{
    const std::string_view digits(kDigits, 16);
    const std::size_t at = digits.find(c);
    return at != std::string_view::npos ? static_cast<int>(at) : -1;
}

// The byte behind a "%".
std::optional<char> packedByte(std::string_view digits)
{
    const int high = digits.size() == 2 ? digit(digits[0]) : -1;
    const int low = digits.size() == 2 ? digit(digits[1]) : -1;
    if (high < 0 || low < 0)
        return std::nullopt;
    return static_cast<char>(high << 4 | low);
}

} // namespace

std::string keyPart(const QByteArray &name)
{
    std::string part;
    for (const char c : name)
        addByte(part, c);
    return part;
}

std::optional<QByteArray> nameOfPart(std::string_view part)
{
    QByteArray name;
    for (std::size_t at = 0; at < part.size(); ++at) {
        const std::optional<char> byte = part[at] == '%' ? packedByte(part.substr(at + 1, 2)) : part[at];
        if (!byte)
            return std::nullopt;
        at += part[at] == '%' ? 2 : 0;
        name += *byte;
    }
    // One name has one part.
    return keyPart(name) == part ? std::optional<QByteArray>(name) : std::nullopt;
}

std::string keyOfPath(const QByteArray &path)
{
    std::string key;
    for (const char c : path) {
        if (c == '\\')
            key += '/';
        else
            addByte(key, lower(c));
    }
    return key;
}

std::string sitePrefix(const QByteArray &site)
{
    return kRoot + keyPart(site) + '/';
}

std::string serversPrefix(const QByteArray &site)
{
    return sitePrefix(site) + "servers/";
}

std::string serverPrefix(const QByteArray &site, const QByteArray &server)
{
    return serversPrefix(site) + keyPart(server) + '/';
}

// A configuration may have this name as well: its keys have one more part.
std::string aliveKey(const QByteArray &site, const QByteArray &server)
{
    return serverPrefix(site, server) + "alive";
}

std::string documentPrefix(const Place &place)
{
    return serverPrefix(place.site, place.server) + keyPart(place.configuration) + '/';
}

std::string conflictPrefix(const Place &place)
{
    return sitePrefix(place.site) + "conflicts/" + keyPart(place.server) + '/' +
           keyPart(place.configuration) + '/';
}

std::string historyPrefix(const QByteArray &site, const QByteArray &server)
{
    return sitePrefix(site) + "history/" + keyPart(server) + '/';
}

std::string keptKey(const Place &place)
{
    return historyPrefix(place.site, place.server) + "KEPT/" + keyPart(place.configuration);
}

} // namespace fleet
