// SPDX-License-Identifier: MIT
//
// The machine's network as the preflight sees it: a picture taken once, so that the rules can be tested with
// any machine that one can think of.
#ifndef CORVEL_OPS_NETPICTURE_H
#define CORVEL_OPS_NETPICTURE_H

#include <QByteArray>

#include <vector>

namespace ops {

struct NetRoute {
    quint32 network;
    quint32 mask;
};

struct NetInterface {
    QByteArray name;
    std::vector<quint32> addresses; // IPv4, host order
    std::vector<NetRoute> networks; // of those addresses
    bool up = false;                // switched on, and with a link
    bool multicast = false;
    bool loopback = false;
    int mtu = 0;          // bytes of an IP packet
    qint64 speedMbit = 0; // 0: not known
};

struct NetPicture {
    std::vector<NetInterface> interfaces;
    std::vector<NetRoute> routes; // those that lead somewhere
    QByteArray noSoftwareClock;   // why no software PTP client can run; empty: one can
    bool hardwareClock = false;   // there is a PTP clock device

    const NetInterface *withAddress(quint32 address) const;
    bool hasRoute(quint32 destination) const;
};

// The machine as it is now. Reads files of the system; does not block.
NetPicture machinePicture();

// The routes in the text of /proc/net/route.
std::vector<NetRoute> parseRoutes(const QByteArray &text);

} // namespace ops

#endif
