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

constexpr int64_t kSettleTime =
    300 * kNanosPerMilli; // after the last wish: the domain arrives after the start
constexpr int64_t kSearchInterval = 5 * kNanosPerSecond;
constexpr int64_t kLookInterval = 1 * kNanosPerSecond; // between looks for somebody else on the PTP ports
constexpr int64_t kConfirmTime =
    200 * kNanosPerMilli;                            // one of ours that ends has sockets, but no command line
constexpr int64_t kLoneliness = 2 * kNanosPerSecond; // without a master, before others are listened to
constexpr int64_t kPatience = 2 * kNanosPerSecond;   // before another grandmaster is worth a line in the log

// Kinds of log lines; each is written at most once a minute.
enum LogKind { NoInterface, NoLauncher, NoFolder, NoStart, Ended, Silent, OtherGrandmaster, Fault };

bool runnable(const Client &client)
{
    return client.addressValid && client.key.domain <= RKPTP_HIGHEST_DOMAIN;
}

std::string noInterface(uint32_t address)
{
    return address == 0 ? "no network interface is up that could be listened on"
                        : "no network interface has the address " + formatAddress(address);
}

std::string endDetail(Child &child, const ProcessEnd &ended)
{
    if (ended.exited && ended.code == LAUNCH_NO_CAPABILITY)
        return "ptp4l may not open the ports 319 and 320. To mend: sudo setcap cap_net_bind_service=p " +
               findLauncher();
    if (ended.exited && ended.code == LAUNCH_NO_PTP4L)
        return "ptp4l is missing. To mend: sudo apt-get install linuxptp";
    return std::string("ptp4l ended (") + (ended.exited ? "code " : "signal ") + std::to_string(ended.code) +
           "): " + child.process().lastLines();
}

size_t common(const std::vector<Interface> &some, const std::vector<Interface> &others)
{
    return static_cast<size_t>(std::count_if(some.begin(), some.end(), [&others](const Interface &one) {
        return std::any_of(others.begin(), others.end(),
                           [&one](const Interface &other) { return other.index == one.index; });
    }));
}

} // namespace

// Returns when this seat wants to be looked at next.
int64_t Worker::settleSeat(Id id, Seat &seat, int64_t now)
{
    if (seat.child && (!runnable(seat.wanted) || !(seat.child->key() == seat.wanted.key)))
        park(std::move(seat.child), now);
    if (!runnable(seat.wanted))
        return INT64_MAX;
    if (seat.child && now >= seat.lookAt)
        giveWay(id, seat, now);
    if (!seat.child && (seat.wanted.readsOnly || !adopt(id, seat))) {
        const int64_t startAt = std::max(seat.wanted.changedAt + kSettleTime, seat.retryAt);
        if (now < startAt)
            return startAt;
        startChild(id, seat, now);
    }
    return seat.child ? std::min(seat.child->nextDue(), seat.lookAt) : seat.retryAt;
}

// ---- beside somebody else --------------------------------------------------------------------------

// What the children that shall go on hold. One that ends counts as a stranger, who is then looked at more
// closely.
size_t Worker::ownSockets(const std::vector<Interface> &interfaces) const
{
    constexpr size_t kPerInterface = 2;
    size_t sockets = 0;
    const auto add = [&](const std::unique_ptr<Child> &child) {
        if (child && !child->ofSystem())
            sockets += kPerInterface * common(child->interfaces(), interfaces);
    };
    for (const auto &[id, seat] : m_seats)
        add(seat.child);
    for (const Parked &parked : m_parked)
        add(parked.child);
    return sockets;
}

// Whether the PTP ports are ours to use. Somebody else counts once he was seen twice.
Worker::Look Worker::look(Seat &seat, const std::vector<Interface> &interfaces, int64_t now)
{
    // Before a start there is no guessing: a child of ours may not have opened its sockets yet.
    const size_t own = seat.child ? ownSockets(interfaces) : 0;
    const auto found = findSystemClient(interfaces, own, seat.system.inode);
    // From now on, not from before: on a busy machine a look takes its time.
    seat.lookAt = monotonicNow() + kLookInterval;
    if (!found) {
        seat.system = SystemClient();
        return Look::Free;
    }
    if (found->inode != seat.system.inode) {
        seat.system = *found;
        seat.systemSince = now;
    }
    if (now - seat.systemSince >= kConfirmTime)
        return Look::Taken;
    seat.lookAt = seat.systemSince + kConfirmTime;
    return Look::Suspect;
}

// The ports change hands: to the system's client when it has come, to ours when it has gone.
void Worker::giveWay(Id id, Seat &seat, int64_t now)
{
    const bool visiting = seat.child->ofSystem();
    const Look seen = look(seat, seat.child->interfaces(), now);
    if (seen == Look::Suspect || (seen == Look::Taken) == visiting)
        return;
    if (!visiting)
        ErrOut("PTP: %s has come to the PTP ports on %s; the client of this program leaves",
               seat.system.who.c_str(), seat.system.interface.c_str());
    replace(id, seat, now);
    seat.retryAt = now;
}

void Worker::visit(Id id, Seat &seat, std::vector<Interface> interfaces, int64_t now)
{
    auto child = std::make_unique<Child>(seat.wanted.key, std::move(interfaces), seat.carried);
    if (!m_folder.prepare() || !child->visit(seat.system, m_folder, ++m_childNumber, now))
        return block(id, seat, now);
    seat.child = std::move(child);
    if (seat.wanted.readsOnly) // nothing of ours has to give way; that it goes shows in its silence
        seat.lookAt = INT64_MAX;
    // One that could not be read before is told of when it answers.
    if (seat.systemLogged != seat.system.inode)
        publish(id, seat.child->key(), seat.child->view());
}

void Worker::block(Id id, Seat &seat, int64_t now)
{
    seat.trouble = Trouble::SystemClient;
    seat.detail = seat.system.who + " has the PTP ports on " + seat.system.interface +
                  " and cannot be read, so no second client is started. To mend: let users read its socket "
                  "(uds_ro_address of ptp4l), or stop it";
    if (std::exchange(seat.systemLogged, seat.system.inode) != seat.system.inode)
        ErrOut("PTP: %s", seat.detail.c_str());
    seat.child.reset();
    fail(id, seat, now + (seat.wanted.readsOnly ? kSearchInterval : kLookInterval));
}

// Nobody else has the ports: then another program of the house may have a ptp4l, which answers us as well.
void Worker::readHouse(Id id, Seat &seat, std::vector<Interface> interfaces, int64_t now)
{
    const auto house = findHouseClient(interfaces);
    auto child = std::make_unique<Child>(seat.wanted.key, std::move(interfaces), seat.carried);
    if (house && m_folder.prepare() && child->visit(*house, m_folder, ++m_childNumber, now)) {
        seat.lookAt = INT64_MAX;
        seat.child = std::move(child);
        return publish(id, seat.child->key(), seat.child->view());
    }
    seat.trouble = Trouble::None;
    fail(id, seat, now + kSearchInterval);
}

// ---- the masters of all domains --------------------------------------------------------------------

// Listened to when somebody asks for them, and when a client has been without a master for a while: then it
// is worth knowing whether another domain has one.
int64_t Worker::settleListener(Seat &seat, int64_t now)
{
    const Snapshot seen = seat.child ? seat.child->view() : Snapshot();
    const bool lonely = seat.child && !seat.wanted.readsOnly &&
                        (seen.state == ClientState::Listening || seen.state == ClientState::Faulty ||
                         (seen.state == ClientState::Following && !seen.carried.freshAt(now)));
    seat.lonelySince = !lonely ? 0 : seat.lonelySince == 0 ? now : seat.lonelySince;
    const bool listen = seat.wanted.wantsMasters || (lonely && now - seat.lonelySince >= kLoneliness);
    if (listen && !seat.listener)
        seat.listener = std::make_unique<Listener>();
    if (!seat.listener)
        return lonely ? seat.lonelySince + kLoneliness : INT64_MAX;
    seat.listener->want(listen && runnable(seat.wanted) ? seat.interfaces : std::vector<Interface>(), now);
    return seat.listener->nextDue(now);
}

void Worker::serveListener(Id id, Seat &seat, const pollfd *fds, int64_t now)
{
    if (!seat.listener->serve(fds[0].revents != 0, fds[1].revents != 0, now))
        return;
    const std::lock_guard<std::mutex> lock(m_mutex);
    const auto row = m_clients.find(id);
    if (row != m_clients.end())
        row->second.masters = seat.listener->masters().sorted();
}

// ---- ours ------------------------------------------------------------------------------------------

bool Worker::adopt(Id id, Seat &seat)
{
    const auto found = std::find_if(m_parked.begin(), m_parked.end(), [&seat](const Parked &parked) {
        return parked.child->key() == seat.wanted.key;
    });
    if (found == m_parked.end())
        return false;
    seat.child = std::move(found->child);
    seat.interfaces = seat.child->interfaces();
    m_parked.erase(found);
    publish(id, seat.child->key(), seat.child->view());
    return true;
}

void Worker::fail(Id id, Seat &seat, int64_t retryAt)
{
    seat.retryAt = retryAt;
    Snapshot snapshot;
    snapshot.state = ClientState::None;
    snapshot.carried = seat.carried;
    snapshot.trouble = seat.trouble;
    snprintf(snapshot.detail.data(), snapshot.detail.size(), "%s", seat.detail.c_str());
    publish(id, seat.wanted.key, snapshot);
}

void Worker::startChild(Id id, Seat &seat, int64_t now)
{
    std::vector<Interface> interfaces = findInterfaces(seat.wanted.key.address);
    if (interfaces.empty()) {
        seat.trouble = Trouble::NoInterface;
        seat.detail = noInterface(seat.wanted.key.address);
        if (m_logLimit.allowed(NoInterface, now))
            ErrOut("PTP: %s", seat.detail.c_str());
        return fail(id, seat, now + kSearchInterval);
    }
    seat.interfaces = interfaces;
    const Look seen = look(seat, interfaces, now);
    if (seen == Look::Taken)
        return visit(id, seat, std::move(interfaces), now);
    if (seen == Look::Suspect) {
        seat.retryAt = seat.lookAt;
        return;
    }
    if (seat.wanted.readsOnly)
        return readHouse(id, seat, std::move(interfaces), now);
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
    seat.trouble = Trouble::Failed;
    seat.detail = trouble;
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
    const bool answered = child.converse(now);
    if (child.mistaken(now))
        return block(id, seat, now);
    if (answered) {
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
    const bool denied = ended.exited && ended.code == LAUNCH_NO_CAPABILITY;
    seat.trouble = denied ? Trouble::NotAllowed : Trouble::Failed;
    seat.detail = endDetail(*seat.child, ended);
    if (m_logLimit.allowed(Ended, now))
        ErrOut("PTP: %s", seat.detail.c_str());
    seat.carried = seat.child->view().carried;
    seat.child.reset();
    m_spawnLimit.failed(key, now);
    fail(id, seat, m_spawnLimit.allowedAt(key, now));
}

void Worker::childSilent(Id id, Seat &seat, int64_t now)
{
    if (seat.child->ofSystem()) {
        replace(id, seat, now);
        seat.retryAt = now + kLookInterval;
        return;
    }
    seat.trouble = Trouble::Failed;
    seat.detail = "ptp4l does not answer and is started again";
    if (m_logLimit.allowed(Silent, now))
        ErrOut("PTP: ptp4l does not answer and is started again");
    const std::string key = seat.child->key().text();
    seat.carried = seat.child->view().carried;
    end(std::move(seat.child), now);
    m_spawnLimit.failed(key, now);
    fail(id, seat, m_spawnLimit.allowedAt(key, now));
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
    else if (!seat.otherLogged && now - seat.otherSince > kPatience &&
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
