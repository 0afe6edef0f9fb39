// SPDX-License-Identifier: MIT
#include "worker.h"

#include <algorithm>
#include <csignal>
#include <cstdlib>
#include <new>
#include <pthread.h>
#include <sys/eventfd.h>

namespace rkptp {

namespace {

constexpr size_t kFdsPerChild = 3;
constexpr size_t kFdsPerListener = 2;

void addFds(std::vector<pollfd> &fds, Child &child)
{
    fds.push_back({child.process().pidFd(), POLLIN, 0});
    fds.push_back({child.process().logFd(), POLLIN, 0});
    fds.push_back({child.socketFd(), POLLIN, 0});
}

timespec timeUntil(int64_t until, int64_t now)
{
    const int64_t left = std::max<int64_t>(until - now, 0);
    return {static_cast<time_t>(left / kNanosPerSecond), static_cast<long>(left % kNanosPerSecond)};
}

} // namespace

Worker &Worker::instance()
{
    alignas(Worker) static unsigned char storage[sizeof(Worker)];
    static Worker *const worker = new (storage) Worker;
    return *worker;
}

Worker::Id Worker::add(const Client &client)
{
    if (m_forked)
        return 0;
    const std::lock_guard<std::mutex> lock(m_mutex);
    if (m_stopping || !startThread())
        return 0;
    m_clients[++m_lastId] = client;
    wake();
    return m_lastId;
}

void Worker::remove(Id id)
{
    if (m_forked)
        return;
    const std::lock_guard<std::mutex> lock(m_mutex);
    if (m_clients.erase(id) > 0)
        wake();
}

// Called with the mutex held.
bool Worker::startThread()
{
    if (m_running)
        return true;
    static const bool once = [] {
        // Registered late, so that it runs early: before the log and other libraries are taken down.
        std::atexit([] { instance().stop(); });
        pthread_atfork(nullptr, nullptr, [] { instance().m_forked = true; });
        return true;
    }();
    (void)once;
    // A thread that said it is not running takes no lock any more; it ends at once.
    if (m_thread.joinable())
        m_thread.join();
    m_wake = Descriptor(eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK));
    if (!m_wake.valid())
        return false;
    sigset_t all;
    sigset_t old;
    sigfillset(&all);
    // The new thread inherits the mask: signals are for the threads of the program.
    pthread_sigmask(SIG_SETMASK, &all, &old);
    m_running = true;
    try {
        m_thread = std::thread([this] { run(); });
    } catch (const std::system_error &) {
        m_running = false;
    }
    pthread_sigmask(SIG_SETMASK, &old, nullptr);
    return m_running;
}

// Called with the mutex held.
void Worker::wake()
{
    if (m_wake.valid())
        eventfd_write(m_wake.get(), 1);
}

void Worker::stop()
{
    if (m_forked)
        return;
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        m_stopping = true;
        m_clients.clear();
        wake();
    }
    if (m_thread.joinable())
        m_thread.join();
}

void Worker::run()
{
    pthread_setname_np(pthread_self(), "rkptp");
    int64_t now = monotonicNow();
    while (takeWishes(now)) {
        waitForEvents(settle(now));
        now = monotonicNow();
    }
}

void Worker::killEverything()
{
    // Killed and reaped one by one as their objects go.
    m_seats.clear();
    m_parked.clear();
    m_ending.clear();
    m_folder.remove();
}

// Brings the seats in line with the table. False when the thread has nothing left to do.
bool Worker::takeWishes(int64_t now)
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    for (auto seat = m_seats.begin(); seat != m_seats.end();) {
        if (m_clients.count(seat->first)) {
            ++seat;
            continue;
        }
        park(std::move(seat->second.child), now);
        seat = m_seats.erase(seat);
    }
    for (const auto &[id, client] : m_clients)
        takeWish(m_seats[id], client);
    const bool idle = m_seats.empty() && m_parked.empty() && m_ending.empty();
    if (!m_stopping && !idle)
        return true;
    killEverything();
    m_wake.reset();
    m_running = false;
    return false;
}

void Worker::takeWish(Seat &seat, const Client &client)
{
    if (!(seat.wanted.key == client.key)) {
        seat.carried = CarriedTime();
        seat.retryAt = 0;
    }
    if (!(seat.wanted.wish == client.wish)) {
        seat.otherSince = 0;
        seat.otherLogged = false;
    }
    seat.wanted = client;
}

void Worker::waitForEvents(int64_t until)
{
    std::vector<pollfd> fds = {{m_wake.get(), POLLIN, 0}};
    for (const Parked &parked : m_parked)
        addFds(fds, *parked.child);
    for (const auto &child : m_ending)
        addFds(fds, *child);
    for (const auto &[id, seat] : m_seats)
        if (seat.listener) {
            fds.push_back({seat.listener->pidFd(), POLLIN, 0});
            fds.push_back({seat.listener->logFd(), POLLIN, 0});
        }
    for (auto &[id, seat] : m_seats)
        if (seat.child)
            addFds(fds, *seat.child);
    const int64_t now = monotonicNow();
    const timespec limit = timeUntil(until, now);
    if (ppoll(fds.data(), fds.size(), until == INT64_MAX ? nullptr : &limit, nullptr) <= 0)
        for (pollfd &fd : fds)
            fd.revents = 0;
    eventfd_t count;
    if (fds[0].revents)
        eventfd_read(m_wake.get(), &count);
    dispatch(&fds[1], monotonicNow());
}

// Walks the children in the order of waitForEvents, each with its three descriptors, listeners with their
// two. The seats come last, as they may hand a child over to the others.
void Worker::dispatch(const pollfd *fds, int64_t now)
{
    for (Parked &parked : m_parked) {
        if (serveSpare(*parked.child, fds, now))
            parked.child.reset();
        fds += kFdsPerChild;
    }
    for (auto &child : m_ending) {
        if (serveSpare(*child, fds, now))
            child.reset();
        fds += kFdsPerChild;
    }
    for (auto &[id, seat] : m_seats) {
        if (!seat.listener)
            continue;
        serveListener(id, seat, fds, now);
        fds += kFdsPerListener;
    }
    for (auto &[id, seat] : m_seats) {
        if (!seat.child)
            continue;
        serve(id, seat, fds, now);
        fds += kFdsPerChild;
    }
    m_parked.erase(std::remove_if(m_parked.begin(), m_parked.end(), [](const Parked &p) { return !p.child; }),
                   m_parked.end());
    m_ending.erase(std::remove(m_ending.begin(), m_ending.end(), nullptr), m_ending.end());
}

// A child without a client. True when it has ended.
bool Worker::serveSpare(Child &child, const pollfd *fds, int64_t now)
{
    if (fds[1].revents)
        child.process().drainLog();
    if (fds[0].revents && child.process().reap())
        return true;
    child.converse(now);
    return false;
}

void Worker::park(std::unique_ptr<Child> child, int64_t now)
{
    constexpr int64_t kParkTime = 300 * kNanosPerMilli;
    if (child && !child->ofSystem())
        m_parked.push_back({std::move(child), now + kParkTime});
}

void Worker::end(std::unique_ptr<Child> child, int64_t now)
{
    if (child->ofSystem())
        return;
    child->askToEnd(now);
    m_ending.push_back(std::move(child));
}

// True while a client that just started may still name the domain this child runs in.
bool Worker::awaited(const Child &child) const
{
    return std::any_of(m_seats.begin(), m_seats.end(), [&child](const auto &row) {
        return !row.second.child && row.second.retryAt == 0 &&
               row.second.wanted.key.address == child.key().address;
    });
}

int64_t Worker::settleParked(int64_t now)
{
    int64_t next = INT64_MAX;
    for (Parked &parked : m_parked) {
        if (now < parked.until)
            next = std::min(next, std::min(parked.until, parked.child->nextDue()));
        else if (awaited(*parked.child))
            next = std::min(next, parked.child->nextDue());
        else
            end(std::move(parked.child), now);
    }
    m_parked.erase(std::remove_if(m_parked.begin(), m_parked.end(), [](const Parked &p) { return !p.child; }),
                   m_parked.end());
    return next;
}

int64_t Worker::settleEnding(int64_t now)
{
    int64_t next = INT64_MAX;
    for (const auto &child : m_ending) {
        if (now >= child->killAt())
            child->forceEnd();
        next = std::min(next, child->killAt());
    }
    return next;
}

int64_t Worker::settle(int64_t now)
{
    int64_t next = INT64_MAX;
    for (auto &[id, seat] : m_seats)
        next = std::min({next, settleSeat(id, seat, now), settleListener(seat, now)});
    // Parked children last: a seat may have taken one, or put one there.
    next = std::min(next, settleParked(now));
    return std::min(next, settleEnding(now));
}

void Worker::publish(Id id, const ChildKey &key, const Snapshot &snapshot)
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    const auto row = m_clients.find(id);
    // What was seen in another domain is of no interest any more.
    if (row == m_clients.end() || !(row->second.key == key))
        return;
    Snapshot &shown = row->second.snapshot;
    const bool same = shown.state == snapshot.state && shown.trouble == snapshot.trouble;
    const int64_t since = same && shown.since != 0 ? shown.since : monotonicNow();
    shown = snapshot;
    shown.since = since;
}

} // namespace rkptp
