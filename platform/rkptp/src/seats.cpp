// SPDX-License-Identifier: MIT
// The part of the worker that looks after one client: starting its ptp4l, watching it, dealing with its end.
#include "worker.h"

#include "../launcher/launchcodes.h"
#include "rkos.h"

#include <algorithm>
#include <csignal>
#include <cstring>

namespace rkptp {

namespace {

constexpr int64_t settleTime = 300 * nanosPerMilli; // after the last wish: the domain arrives after the start
constexpr int64_t searchInterval = 5 * nanosPerSecond;
constexpr int64_t patience = 2 * nanosPerSecond; // before another grandmaster is worth a line in the log

// Kinds of log lines; each is written at most once a minute.
enum LogKind { NoInterface, NoLauncher, NoFolder, NoStart, Ended, Silent, OtherGrandmaster, Fault };

bool runnable(const Client &client)
{
    return client.addressValid && client.key.domain <= RKPTP_HIGHEST_DOMAIN;
}

Snapshot withoutClient(const CarriedTime &carried)
{
    Snapshot snapshot;
    snapshot.state = ClientState::None;
    snapshot.carried = carried;
    return snapshot;
}

void reportNoInterface(uint32_t address)
{
    if (address == 0)
        ErrOut("PTP: no network interface is up that could be listened on");
    else
        ErrOut("PTP: no network interface has the address %s", formatAddress(address).c_str());
}

} // namespace

// Returns when this seat wants to be looked at next.
int64_t Worker::settleSeat(Id id, Seat &seat, int64_t now)
{
    if (seat.child && (!runnable(seat.wanted) || !(seat.child->key() == seat.wanted.key)))
        park(std::move(seat.child), now);
    if (!runnable(seat.wanted))
        return INT64_MAX;
    if (!seat.child && !adopt(id, seat)) {
        const int64_t startAt = std::max(seat.wanted.changedAt + settleTime, seat.retryAt);
        if (now < startAt)
            return startAt;
        startChild(id, seat, now);
    }
    return seat.child ? seat.child->nextDue() : seat.retryAt;
}

bool Worker::adopt(Id id, Seat &seat)
{
    const auto found = std::find_if(m_parked.begin(), m_parked.end(), [&seat](const Parked &parked) {
        return parked.child->key() == seat.wanted.key;
    });
    if (found == m_parked.end())
        return false;
    seat.child = std::move(found->child);
    m_parked.erase(found);
    publish(id, seat.child->key(), seat.child->view());
    return true;
}

void Worker::fail(Id id, Seat &seat, int64_t retryAt)
{
    seat.retryAt = retryAt;
    publish(id, seat.wanted.key, withoutClient(seat.carried));
}

void Worker::startChild(Id id, Seat &seat, int64_t now)
{
    std::vector<Interface> interfaces = findInterfaces(seat.wanted.key.address);
    if (interfaces.empty()) {
        if (m_logLimit.allowed(NoInterface, now))
            reportNoInterface(seat.wanted.key.address);
        return fail(id, seat, now + searchInterval);
    }
    const std::string key = seat.wanted.key.text();
    const int64_t allowedAt = m_spawnLimit.allowedAt(key, now);
    if (allowedAt <= now)
        return launch(id, seat, std::move(interfaces), now);
    if (m_spawnLimit.failing(key, now))
        return fail(id, seat, allowedAt);
    // Only held back by the general rate: it is still on its way.
    seat.retryAt = allowedAt;
}

void Worker::launch(Id id, Seat &seat, std::vector<Interface> interfaces, int64_t now)
{
    const std::string key = seat.wanted.key.text();
    const std::string launcher = findLauncher();
    LogKind kind = NoStart;
    std::string trouble;
    auto child = std::make_unique<Child>(seat.wanted.key, std::move(interfaces), seat.carried);
    m_spawnLimit.started(now);
    if (launcher.empty()) {
        kind = NoLauncher;
        trouble = "the launcher is missing: " + expectedLauncher();
    } else if (!m_folder.prepare()) {
        kind = NoFolder;
        trouble = "no private folder for the sockets can be made, not even in /tmp";
    } else if (const int error = child->start(launcher, m_folder, ++m_childNumber, now)) {
        trouble = "cannot start " + launcher + ": " + strerror(error);
    }
    if (trouble.empty()) {
        seat.child = std::move(child);
        return publish(id, seat.child->key(), seat.child->view());
    }
    if (m_logLimit.allowed(kind, now))
        ErrOut("PTP: %s", trouble.c_str());
    m_spawnLimit.failed(key, now);
    fail(id, seat, m_spawnLimit.allowedAt(key, now));
}

void Worker::serve(Id id, Seat &seat, const pollfd *fds, int64_t now)
{
    Child &child = *seat.child;
    if (fds[1].revents)
        child.process().drainLog();
    if (fds[0].revents) {
        if (const auto end = child.process().reap())
            return childEnded(id, seat, *end, now);
    }
    if (child.converse(now)) {
        publish(id, child.key(), child.view());
        watch(seat, now);
        if (child.outdated())
            replace(id, seat, now);
    } else if (child.silent(now)) {
        childSilent(id, seat, now);
    }
}

// The interfaces have changed: start anew with those of now, bridging with the time carried so far.
void Worker::replace(Id id, Seat &seat, int64_t now)
{
    seat.carried = seat.child->view().carried;
    const ChildKey key = seat.child->key();
    end(std::move(seat.child), now);
    Snapshot snapshot;
    snapshot.carried = seat.carried;
    publish(id, key, snapshot);
}

void Worker::childEnded(Id id, Seat &seat, const ProcessEnd &ended, int64_t now)
{
    const std::string key = seat.child->key().text();
    seat.child->process().drainLog();
    reportEnd(*seat.child, ended, now);
    seat.carried = seat.child->view().carried;
    seat.child.reset();
    m_spawnLimit.failed(key, now);
    fail(id, seat, m_spawnLimit.allowedAt(key, now));
}

void Worker::childSilent(Id id, Seat &seat, int64_t now)
{
    if (m_logLimit.allowed(Silent, now))
        ErrOut("PTP: ptp4l does not answer and is started again");
    const std::string key = seat.child->key().text();
    seat.carried = seat.child->view().carried;
    end(std::move(seat.child), now);
    m_spawnLimit.failed(key, now);
    fail(id, seat, m_spawnLimit.allowedAt(key, now));
}

void Worker::reportEnd(Child &child, const ProcessEnd &ended, int64_t now)
{
    if (!m_logLimit.allowed(Ended, now))
        return;
    if (ended.exited && ended.code == LAUNCH_NO_CAPABILITY)
        return ErrOut(
            "PTP: ptp4l may not open the ports 319 and 320. To mend: sudo setcap cap_net_bind_service=p %s",
            findLauncher().c_str());
    if (ended.exited && ended.code == LAUNCH_NO_PTP4L)
        return ErrOut("PTP: ptp4l is missing. To mend: sudo apt-get install linuxptp");
    ErrOut("PTP: ptp4l ended (%s %d): %s", ended.exited ? "code" : "signal", ended.code,
           child.process().lastLines().c_str());
}

// Lines for the log about a child that runs but does not do what was asked.
void Worker::watch(Seat &seat, int64_t now)
{
    const Snapshot seen = seat.child->view();
    const int status = statusOf(seen, seat.wanted.wish, now);
    if (status != RKPTP_OTHER_GRANDMASTER)
        seat.otherSince = 0;
    else if (seat.otherSince == 0)
        seat.otherSince = now;
    else if (!seat.otherLogged && now - seat.otherSince > patience &&
             m_logLimit.allowed(OtherGrandmaster, now)) {
        seat.otherLogged = true;
        const std::string asked = formatIdentity(seat.wanted.wish.id);
        ErrOut("PTP: follows grandmaster %s in domain %u, asked was %s",
               formatIdentity(seen.grandmaster).c_str(), unsigned{seat.wanted.key.domain},
               asked.empty() ? "an identity that cannot be read" : asked.c_str());
    }
    const bool faulty = status == RKPTP_PORT_FAULTY;
    if (faulty && !seat.faultLogged && m_logLimit.allowed(Fault, now))
        ErrOut("PTP: the interface has a fault or is gone: %s", seat.child->process().lastLines().c_str());
    seat.faultLogged = faulty;
}

} // namespace rkptp
