// SPDX-License-Identifier: MIT
#include "app/view/localinterface.h"

#include <QStringList>

#include <arpa/inet.h>
#include <ifaddrs.h>
#include <netinet/in.h>

#include <cstring>
#include <memory>

namespace {

// The IPv4 addresses of this machine's interfaces; empty when they cannot be read.
QStringList interfaceAddresses()
{
    QStringList addresses;
    ifaddrs *first = nullptr;
    if (getifaddrs(&first) != 0)
        return addresses;
    const std::unique_ptr<ifaddrs, void (*)(ifaddrs *)> owner(first, freeifaddrs);
    for (const ifaddrs *entry = first; entry; entry = entry->ifa_next) {
        if (!entry->ifa_addr || entry->ifa_addr->sa_family != AF_INET)
            continue;
        sockaddr_in address;
        memcpy(&address, entry->ifa_addr, sizeof address);
        addresses.append(QString::fromLatin1(inet_ntoa(address.sin_addr)));
    }
    return addresses;
}

} // namespace

bool isLocalInterface(const QString &address)
{
    const QStringList addresses = interfaceAddresses();
    for (const QString &known : addresses)
        qDebug("interface %s", qPrintable(known));
    return addresses.contains(address);
}
