// SPDX-License-Identifier: MIT
#ifndef RKPTP_BINDERS_H
#define RKPTP_BINDERS_H

// Who else has the PTP ports. Two programs on one interface take each other's unicast datagrams away, so ours
// looks first, and goes when another one comes.

#include "interfaces.h"
#include "ptpprocesses.h"

namespace rkptp {

/* One socket bound to port 319 or 320 that takes unicast datagrams. */
struct PortBinder {
    unsigned interface = 0; // number of the interface it is tied to; 0: any, or not known
    uid_t user = 0;
    uint64_t inode = 0;
    uint16_t port = 0;
};

/* The sockets of the network namespace of this process. */
std::vector<PortBinder> readPortBinders();

/* Those of `binders` on one of `wanted` that no process of ours accounts for. Each of ours whose sockets are
   not known has one socket per interface and port. Pure, but for turning names of interfaces into numbers. */
std::vector<PortBinder> foreignBinders(std::vector<PortBinder> binders,
                                       const std::vector<PtpProcess> &processes,
                                       const std::vector<Interface> &wanted);

/* Somebody else's PTP program on an interface we want. */
struct SystemClient {
    uint64_t inode = 0; // of its socket; another number is another client
    std::string who;    // "ptp4l (process 812)", "a program of user 0"
    std::string interface;
    std::string domain;               // as it was started; empty when not known
    std::vector<std::string> sockets; // where it may be asked, best first
};

/* Looks now. `ownSockets`: how many the children of this process account for; as many are no reason to look
   further. The client whose inode is `known` is not described again. */
std::optional<SystemClient> findSystemClient(const std::vector<Interface> &wanted, size_t ownSockets,
                                             uint64_t known);

/* Which of `processes` is the one that this library started for `user` and that has the PTP ports on
   `wanted`; null: none. One in another container or network namespace has none of the sockets seen here,
   though its command line may be the same; where sockets cannot be looked at, some of this user must be here
   at least. */
const PtpProcess *houseClient(const std::vector<PtpProcess> &processes,
                              const std::vector<PortBinder> &binders, const Interface &wanted, uid_t user);

/* A ptp4l on one of `wanted` that this library started in another program of this user, and that can be
 * asked. */
std::optional<SystemClient> findHouseClient(const std::vector<Interface> &wanted);

} // namespace rkptp

#endif // RKPTP_BINDERS_H
