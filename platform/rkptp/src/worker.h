// SPDX-License-Identifier: MIT
#ifndef RKPTP_WORKER_H
#define RKPTP_WORKER_H

// The table of clients and the one thread that runs their ptp4l children. The functions of the library write
// wishes into the table and read snapshots from it; the thread brings the children in line with the wishes.
// It starts with the first client and ends by itself when no client and no child is left.

#include "announce.h"
#include "child.h"
#include "listener.h"
#include "spawnlimit.h"

#include <map>
#include <memory>
#include <mutex>
#include <thread>

namespace rkptp {

/* What a caller wants, and what he gets to see. Guarded by the mutex of the table. */
struct Client {
    bool addressValid = false;
    ChildKey key;
    GrandmasterWish wish;
    int64_t changedAt = 0; // CLOCK_MONOTONIC of the last Start or SetTarget call
    Snapshot snapshot;
    bool readsOnly = false;           // starts nothing: shows what a ptp4l that runs already sees
    bool wantsMasters = false;        // somebody asked for the list
    std::vector<HeardMaster> masters; // as last heard
};

class Worker {
public:
    using Id = uintptr_t;

    /* The one of this process. Never destroyed: a thread of the program may call in while it exits. */
    static Worker &instance();

    /* Adds a client; 0 when the thread cannot be started or the process is ending. */
    Id add(const Client &client);

    /* Forgets a client; unknown numbers are welcome. */
    void remove(Id id);

    /* Calls change(client) under the mutex and wakes the thread. False when there is no such client. */
    template<typename Change>
    bool change(Id id, Change change)
    {
        return withClient(id, [&](Client &client) {
            change(client);
            wake();
        });
    }

    /* Calls look(client) under the mutex; no system call. False when there is no such client. */
    template<typename Look>
    bool look(Id id, Look look)
    {
        return withClient(id, [&look](const Client &client) { look(client); });
    }

    /* Kills every child and ends the thread, at the end of the process. */
    void stop();

private:
    template<typename Work>
    bool withClient(Id id, const Work &work)
    {
        if (m_forked)
            return false;
        const std::lock_guard<std::mutex> lock(m_mutex);
        const auto row = m_clients.find(id);
        if (row == m_clients.end())
            return false;
        work(row->second);
        return true;
    }

    // What the thread keeps about one client. The copy of the wishes is refreshed at the start of each turn.
    struct Seat {
        Client wanted;
        std::unique_ptr<Child> child;
        CarriedTime carried; // of a child that broke down
        int64_t retryAt = 0;
        int64_t otherSince = 0; // follows another grandmaster since
        bool otherLogged = false;
        bool faultLogged = false;
        Trouble trouble = Trouble::None;    // why there is no child
        std::string detail;                 // the same in words
        SystemClient system;                // somebody else on the PTP ports, as last seen
        int64_t systemSince = 0;            // this one was seen first; 0: there is none
        uint64_t systemLogged = 0;          // its socket; one line for each
        int64_t lookAt = 0;                 // for somebody else, next
        std::vector<Interface> interfaces;  // of the child, or those it would be started on
        std::unique_ptr<Listener> listener; // to the masters of all domains
        int64_t lonelySince = 0;            // without a master since; 0: it has one
    };
    enum class Look { Free, Suspect, Taken };
    struct Parked {
        std::unique_ptr<Child> child;
        int64_t until = 0;
    };

    // The thread and the table (worker.cpp).
    bool startThread();
    void wake();
    void run();
    bool takeWishes(int64_t now);
    void takeWish(Seat &seat, const Client &client);
    void killEverything();
    void waitForEvents(int64_t until);
    void dispatch(const pollfd *fds, int64_t now);
    bool serveSpare(Child &child, const pollfd *fds, int64_t now);
    void park(std::unique_ptr<Child> child, int64_t now);
    void end(std::unique_ptr<Child> child, int64_t now);
    bool awaited(const Child &child) const;
    int64_t settle(int64_t now);
    int64_t settleParked(int64_t now);
    int64_t settleEnding(int64_t now);
    void publish(Id id, const ChildKey &key, const Snapshot &snapshot);

    // One client (seats.cpp).
    int64_t settleSeat(Id id, Seat &seat, int64_t now);
    bool adopt(Id id, Seat &seat);
    void startChild(Id id, Seat &seat, int64_t now);
    void launch(Id id, Seat &seat, std::vector<Interface> interfaces, int64_t now);
    void fail(Id id, Seat &seat, int64_t retryAt);
    Look look(Seat &seat, const std::vector<Interface> &interfaces, int64_t now);
    size_t ownSockets(const std::vector<Interface> &interfaces) const;
    void giveWay(Id id, Seat &seat, int64_t now);
    void visit(Id id, Seat &seat, std::vector<Interface> interfaces, int64_t now);
    void block(Id id, Seat &seat, int64_t now);
    void readHouse(Id id, Seat &seat, std::vector<Interface> interfaces, int64_t now);
    void serve(Id id, Seat &seat, const pollfd *fds, int64_t now);
    void replace(Id id, Seat &seat, int64_t now);
    void childEnded(Id id, Seat &seat, const ProcessEnd &ended, int64_t now);
    void childSilent(Id id, Seat &seat, int64_t now);
    void watch(Seat &seat, int64_t now);
    int64_t settleListener(Seat &seat, int64_t now);
    void serveListener(Id id, Seat &seat, const pollfd *fds, int64_t now);

    std::mutex m_mutex;
    std::map<Id, Client> m_clients;
    Id m_lastId = 0;
    bool m_running = false; // a thread is there and looks at the table once more before it ends
    bool m_stopping = false;
    bool m_forked = false; // this is the child of a fork: no thread, and the mutex may be held by nobody
    std::thread m_thread;
    Descriptor m_wake;

    // From here on the thread's own.
    std::map<Id, Seat> m_seats;
    std::vector<Parked> m_parked;
    std::vector<std::unique_ptr<Child>> m_ending;
    RunFolder m_folder;
    SpawnLimit m_spawnLimit;
    LogLimit m_logLimit;
    unsigned m_childNumber = 0;
};

} // namespace rkptp

#endif // RKPTP_WORKER_H
