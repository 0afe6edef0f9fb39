// SPDX-License-Identifier: MIT
//
// Keeps one configuration of a store and one prefix of the cluster equal. It waits for nothing itself: its
// owner tells it what was touched, calls work() and calls again when that says so. Time, chance and log are
// given to it, so a test can run a day in a moment. All calls but the wake-up of the watch are one thread's.
#ifndef CORVEL_FLEET_KEEPER_H
#define CORVEL_FLEET_KEEPER_H

#include "fleet/board.h"
#include "fleet/gather.h"
#include "fleet/inbox.h"
#include "fleet/keypath.h"
#include "fleet/pauses.h"
#include "fleet/push.h"

namespace fleet {

struct Surroundings {
    std::function<qint64()> steadyMs;
    std::function<qint64()> utcMs; // for people only: nothing is decided by it
    Random random;
    std::function<void(const QByteArray &line)> log;
    std::function<void()> wake; // any thread: work() has something to do
};

struct KeeperSettings {
    Role role = Role::Server;
    Place place;    // whose configuration is kept
    QByteArray who; // this machine's name, at most kMaxWordBytes of plain text
};

struct KeeperStatus {
    bool connected = false;
    bool inStep = false; // connected, and both sides are equal
    QByteArray reason;   // why not connected
    qint64 sinceMs = 0;  // UTC: connected or away since then
    qint64 behindMs = 0; // UTC: not in step since then; 0: it is
    bool serverAlive = false;
    qint64 serverSeenMs = 0; // UTC: when its sign of life was last there; 0: never
    int waiting = 0;         // paths that the cluster does not have as they are here
    int conflicts = 0;       // overruled documents still to be told to the cluster
    int overruled = 0;       // of this machine's edits, until somebody has looked at them
    int refused = 0;         // paths whose document cannot be shared or is not taken
    qint64 pushedMs = 0;     // UTC: when something last went either way
    qint64 appliedMs = 0;
    QByteArray appliedFrom;
    int storeErrors = 0;       // since the start: times that the store was not to be read or written
    std::int64_t revision = 0; // of the cluster, as far as this side has heard of it; not compared
};

bool operator==(const KeeperStatus &left, const KeeperStatus &right);

class Keeper {
public:
    static constexpr qint64 kStartJitterMs = 2000;
    static constexpr qint64 kResyncMs = 60000; // a range read now and then, whatever the watch says
    static constexpr qint64 kAliveMs = 5000;   // looks for the server's sign of life, at a desk
    static constexpr qint64 kFirstPauseMs = 200;
    static constexpr qint64 kLongestPauseMs = 10000;
    static constexpr qint64 kCutOffPauseMs = 2000; // the longest while there is no connection
    static constexpr qint64 kBusyMs = 50;          // the store was held by another program
    static constexpr qint64 kNotWantedMs = 30000;  // the cluster does not take what is pushed
    static constexpr std::size_t kPushBytes = 512 * 1024;

    Keeper(KeeperSettings settings, Replica &replica, Cluster &cluster, Surroundings surroundings,
           const Rules &rules = kRules);
    ~Keeper();
    Keeper(const Keeper &) = delete;
    Keeper &operator=(const Keeper &) = delete;

    // The files of the store were touched.
    void touched();
    // Somebody has heard that the cluster does not answer: to be looked at now.
    void doubt();
    // Does what is due. Returns the milliseconds after which it wants to be called again at the latest.
    qint64 work();

    KeeperStatus status() const;

private:
    // What goes into the cluster as one transaction.
    struct Parcel {
        Documents documents;
        std::vector<Put> puts;
        Receipt receipt;
    };

    void workOn();
    bool prepare();
    void takeNews();
    void look();
    bool lookDue() const;
    qint64 pause() const;

    void resync();
    bool askReceipt();
    void takeRange(const Range &range);
    bool askKept();
    void tellKept();
    void askAlive();
    void away(const QByteArray &reason);
    void present();
    void unreachable();
    void noteStep();

    bool settle();
    bool apply(Transaction transaction);
    void remember(const Transaction &transaction);
    void sign();

    void push();
    Parcel nextParcel();
    bool launch(const Parcel &parcel);
    void arrived(const Parcel &parcel, std::int64_t revision);
    void uploadConflicts();
    void notTaken(Outcome outcome, std::size_t count);

    const KeeperSettings m_settings;
    Replica &m_replica;
    Cluster &m_cluster;
    const Surroundings m_surroundings;
    Board m_board;
    Inbox m_inbox;
    Gather m_gather;
    Pauses m_pauses;
    std::unique_ptr<Watch> m_watch; // before the inbox goes, the watch goes
    Mark m_mark;
    std::uint64_t m_agreedCluster = 0; // before it lost documents that are still to come back
    std::int64_t m_agreedRevision = 0;
    std::map<std::string, Conflict> m_conflicts;
    KeeperStatus m_status;
    qint64 m_nowMs = 0;
    qint64 m_syncMs = 0;   // when to read the range
    qint64 m_settleMs = 0; // not before: the store was busy
    qint64 m_pushMs = 0;   // not before: the cluster did not want it
    qint64 m_aliveMs = 0;
    qint64 m_seenMs = 0;
    bool m_recalled = false;
    bool m_localKnown = false;
    bool m_localDirty = true; // somebody wrote, and it is not read yet
    bool m_remoteKnown = false;
    bool m_markDirty = false;          // what the remembered states belong to is not stored yet
    bool m_receiptOpen = true;         // whether the last push arrived is not known
    bool m_keptDue = true;             // at a server: the cluster may not know yet that it has everything
    std::size_t m_most = kMaxPuts - 1; // documents in a push: fewer while one was too large
};

} // namespace fleet

#endif
