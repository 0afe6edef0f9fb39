// SPDX-License-Identifier: MIT
#include "binders.h"

#include "descriptor.h"

#include <algorithm>
#include <fstream>
#include <linux/inet_diag.h>
#include <linux/netlink.h>
#include <linux/sock_diag.h>
#include <net/if.h>
#include <netinet/in.h>
#include <sstream>
#include <sys/socket.h>

namespace rkptp {

namespace {

using rk::Descriptor;

constexpr uint16_t kPtpPorts[] = {319, 320};

bool isPtpPort(uint16_t port)
{
    return std::find(std::begin(kPtpPorts), std::end(kPtpPorts), port) != std::end(kPtpPorts);
}

// ---- sockets ---------------------------------------------------------------------------------------

// Who is bound to a group gets no datagram that is meant for one machine, and takes none away.
bool takesUnicast(uint8_t family, const uint32_t *address)
{
    if (family == AF_INET6)
        return (ntohl(address[0]) >> 24) != 0xff;
    return !IN_MULTICAST(ntohl(address[0]));
}

void keepBinder(const inet_diag_msg &message, std::vector<PortBinder> &found)
{
    const uint16_t port = ntohs(message.id.idiag_sport);
    if (isPtpPort(port) && takesUnicast(message.idiag_family, message.id.idiag_src))
        found.push_back({message.id.idiag_if, message.idiag_uid, message.idiag_inode, port});
}

// One datagram of the kernel's answer. False when it was the last one.
bool takeMessages(const char *bytes, size_t size, std::vector<PortBinder> &found, bool &complete)
{
    const auto *header = reinterpret_cast<const nlmsghdr *>(bytes);
    auto left = static_cast<unsigned>(size);
    for (; NLMSG_OK(header, left); header = NLMSG_NEXT(header, left)) {
        complete = header->nlmsg_type == NLMSG_DONE;
        if (complete || header->nlmsg_type == NLMSG_ERROR)
            return false;
        if (header->nlmsg_len >= NLMSG_LENGTH(sizeof(inet_diag_msg)))
            keepBinder(*static_cast<const inet_diag_msg *>(NLMSG_DATA(header)), found);
    }
    return true;
}

// Asks the kernel, which also tells the interface. False when it knows no such question.
bool askKernel(uint8_t family, std::vector<PortBinder> &found)
{
    struct {
        nlmsghdr header;
        inet_diag_req_v2 request;
    } question{};
    question.header.nlmsg_len = sizeof question;
    question.header.nlmsg_type = SOCK_DIAG_BY_FAMILY;
    question.header.nlmsg_flags = NLM_F_REQUEST | NLM_F_DUMP;
    question.request.sdiag_family = family;
    question.request.sdiag_protocol = IPPROTO_UDP;
    question.request.idiag_states = ~0U;
    const Descriptor socket(::socket(AF_NETLINK, SOCK_RAW | SOCK_CLOEXEC, NETLINK_SOCK_DIAG));
    if (!socket.valid() || send(socket.get(), &question, sizeof question, 0) != sizeof question)
        return false;
    alignas(nlmsghdr) char answer[16384];
    bool complete = false;
    ssize_t got = 0;
    do
        got = recv(socket.get(), answer, sizeof answer, 0);
    while (got > 0 && takeMessages(answer, static_cast<size_t>(got), found, complete));
    return complete;
}

// "  12: 0100007F:013F 00000000:0000 07 ... uid timeout inode ..."; the address in the machine's own order.
void readTable(const char *path, uint8_t family, std::vector<PortBinder> &found)
{
    std::ifstream table(path);
    for (std::string line; std::getline(table, line);) {
        std::istringstream fields(line);
        std::string skipped;
        std::string local;
        uid_t user = 0;
        uint64_t inode = 0;
        fields >> skipped >> local >> skipped >> skipped >> skipped >> skipped >> skipped >> user >>
            skipped >> inode;
        const size_t colon = local.find(':');
        if (fields.fail() || colon == std::string::npos || colon < 8)
            continue;
        const auto port = static_cast<uint16_t>(strtoul(local.c_str() + colon + 1, nullptr, 16));
        const auto first = static_cast<uint32_t>(strtoul(local.substr(0, 8).c_str(), nullptr, 16));
        if (isPtpPort(port) && takesUnicast(family, &first))
            found.push_back({0, user, inode, port});
    }
}

// ---- putting it together ---------------------------------------------------------------------------

// A ptp4l that is not ours and may be the one behind the socket, where the kernel does not tell.
bool mayHold(const PtpProcess &process, const PortBinder &binder, const std::string &interface)
{
    return !process.ours() && process.user == binder.user &&
           (process.interfaces().empty() || process.runsOn(interface));
}

void describe(const PtpProcess &process, SystemClient &client)
{
    client.domain = process.option("domainNumber");
    for (const char *name : {"uds_ro_address", "uds_address"}) {
        const std::string socket = process.option(name);
        if (!socket.empty())
            client.sockets.insert(client.sockets.end(), socket);
    }
}

SystemClient describeClient(const PortBinder &binder, const std::vector<PtpProcess> &processes,
                            const std::vector<Interface> &wanted)
{
    SystemClient client;
    client.inode = binder.inode;
    const auto on = std::find_if(wanted.begin(), wanted.end(),
                                 [&binder](const Interface &one) { return one.index == binder.interface; });
    client.interface = on == wanted.end() ? wanted.front().name : on->name;
    const pid_t holder = holderOf(binder.inode);
    client.who = holder != 0 ? nameOf(holder) : "a program of user " + std::to_string(binder.user);
    const auto process = std::find_if(processes.begin(), processes.end(), [&](const PtpProcess &one) {
        return holder != 0 ? one.pid == holder : mayHold(one, binder, client.interface);
    });
    if (process != processes.end()) {
        client.who = nameOf(process->pid);
        describe(*process, client);
    }
    // Where linuxptp has them when nothing else is said; the read-only ones first.
    for (const char *usual :
         {"/var/run/ptp/ptp4lro", "/var/run/ptp4lro", "/var/run/ptp/ptp4l", "/var/run/ptp4l"})
        client.sockets.emplace_back(usual);
    return client;
}

std::vector<PortBinder> relevant(const std::vector<PortBinder> &binders, const std::vector<Interface> &wanted)
{
    std::vector<PortBinder> found;
    std::copy_if(
        binders.begin(), binders.end(), std::back_inserter(found), [&wanted](const PortBinder &binder) {
            return binder.interface == 0 ||
                   std::any_of(wanted.begin(), wanted.end(),
                               [&binder](const Interface &one) { return one.index == binder.interface; });
        });
    return found;
}

// One that was there before may have opened its sockets in between.
void merge(std::vector<PtpProcess> &processes, const std::vector<PtpProcess> &later)
{
    for (const PtpProcess &late : later) {
        const auto known = std::find_if(processes.begin(), processes.end(),
                                        [&late](const PtpProcess &one) { return one.pid == late.pid; });
        if (known == processes.end()) {
            processes.push_back(late);
            continue;
        }
        known->sockets.insert(known->sockets.end(), late.sockets.begin(), late.sockets.end());
        known->socketsKnown = known->socketsKnown || late.socketsKnown;
    }
}

// Takes away what a process of ours accounts for.
void takeAway(const PtpProcess &process, std::vector<PortBinder> &binders)
{
    const auto takeOne = [&](unsigned interface, uint16_t port) {
        const auto found = std::find_if(binders.begin(), binders.end(), [&](const PortBinder &one) {
            return one.user == process.user && one.port == port &&
                   (one.interface == interface || one.interface == 0);
        });
        if (found != binders.end())
            binders.erase(found);
    };
    const auto held = [&process](const PortBinder &one) { return process.holds(one.inode); };
    binders.erase(std::remove_if(binders.begin(), binders.end(), held), binders.end());
    if (process.socketsKnown || !process.sockets.empty())
        return;
    for (const std::string &name : process.interfaces())
        for (const uint16_t port : kPtpPorts)
            takeOne(if_nametoindex(name.c_str()), port);
}

} // namespace

std::vector<PortBinder> readPortBinders()
{
    std::vector<PortBinder> found;
    if (askKernel(AF_INET, found) && askKernel(AF_INET6, found))
        return found;
    found.clear();
    readTable("/proc/self/net/udp", AF_INET, found);
    readTable("/proc/self/net/udp6", AF_INET6, found);
    return found;
}

std::vector<PortBinder> foreignBinders(std::vector<PortBinder> binders,
                                       const std::vector<PtpProcess> &processes,
                                       const std::vector<Interface> &wanted)
{
    binders = relevant(binders, wanted);
    for (const PtpProcess &process : processes)
        if (process.ours())
            takeAway(process, binders);
    return binders;
}

std::optional<SystemClient> findSystemClient(const std::vector<Interface> &wanted, size_t ownSockets,
                                             uint64_t known)
{
    if (relevant(readPortBinders(), wanted).size() <= ownSockets)
        return std::nullopt;
    // Before and after the sockets: one that ended or began meanwhile is in one of the two.
    std::vector<PtpProcess> processes = readPtpProcesses();
    const std::vector<PortBinder> binders = readPortBinders();
    merge(processes, readPtpProcesses());
    const std::vector<PortBinder> foreign = foreignBinders(binders, processes, wanted);
    if (foreign.empty())
        return std::nullopt;
    const auto same = [known](const PortBinder &one) { return one.inode == known; };
    if (std::any_of(foreign.begin(), foreign.end(), same)) {
        SystemClient client;
        client.inode = known;
        return client;
    }
    return describeClient(foreign.front(), processes, wanted);
}

const PtpProcess *houseClient(const std::vector<PtpProcess> &processes,
                              const std::vector<PortBinder> &binders, const Interface &wanted, uid_t user)
{
    const PtpProcess *likely = nullptr;
    for (const PtpProcess &process : processes) {
        if (!process.ours() || process.user != user || !process.runsOn(wanted.name))
            continue;
        for (const PortBinder &one : relevant(binders, {wanted})) {
            if (process.holds(one.inode))
                return &process;
            if (!process.socketsKnown && one.user == user)
                likely = &process;
        }
    }
    return likely;
}

std::optional<SystemClient> findHouseClient(const std::vector<Interface> &wanted)
{
    const std::vector<PtpProcess> processes = readPtpProcesses();
    const std::vector<PortBinder> binders = readPortBinders();
    for (const Interface &one : wanted) {
        const PtpProcess *process = houseClient(processes, binders, one, geteuid());
        if (!process)
            continue;
        SystemClient client;
        client.who = nameOf(process->pid);
        client.interface = one.name;
        describe(*process, client);
        return client;
    }
    return std::nullopt;
}

} // namespace rkptp
