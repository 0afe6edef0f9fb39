// SPDX-License-Identifier: MIT
//
// What a keeper knows of each path: the store's state, the agreed one, the cluster's; and what follows from
// them. Decides, but does nothing itself. Not for more than one thread.
#ifndef CORVEL_FLEET_BOARD_H
#define CORVEL_FLEET_BOARD_H

#include "fleet/cluster.h"
#include "fleet/merge.h"
#include "fleet/replica.h"

#include <functional>
#include <set>

namespace fleet {

struct Item {
    std::optional<Document> local;
    std::optional<Document> base;
    Flights flights;
    std::optional<Document> remote;
    std::int64_t expected = 0; // the revision that a push has to find
    std::int64_t seen = 0;     // the newest revision that was heard of
    std::uint64_t landed = 0;  // the push that is known to have arrived
    bool gone = false;         // the cluster lost it: what it has next may be older than base
    QByteArray foreign;        // why the cluster's document is not taken
    QByteArray unshared;       // why the store's is not
};

class Board {
public:
    Board(Role role, std::string prefix, const Rules &rules);

    // Called with one line for people when a document is refused.
    void onRefusal(std::function<void(const QByteArray &line)> tell) { m_tell = std::move(tell); }

    void recall(const Memory &memory);
    void setLocal(const Documents &documents);
    void setRemote(const Range &range, bool restored);
    void takeEvent(const Entry &entry);
    // This push has arrived, whatever the cluster has by now.
    void landed(std::uint64_t push);

    // What is going to be pushed or told of as it is here, and names nobody yet.
    Documents unsignedOnes() const;
    // Who left these as they are here. Forgotten when the store has something else.
    void takeSignatures(const Documents &documents);
    // What has to change in the store: nothing when there are no steps.
    Transaction localPart();
    // Takes over what was applied, or keeps in mind what was not.
    void applied(const Transaction &transaction);
    void notApplied(const Transaction &transaction);
    // The documents to be pushed, at most so many.
    Documents pushes(std::size_t most) const;
    // Steps that note these as being on their way.
    std::vector<Step> flightSteps(const Documents &documents, std::uint64_t push) const;
    void pushed(const std::string &key, const Document &document, std::int64_t revision);

    std::int64_t expectedRevision(const std::string &key) const;
    // The server has put back all it has: what is still gone, only desks have left.
    void setServerKept(bool kept);
    // The cluster's memory loss is dealt with.
    void setRestored(bool restored);
    bool restored() const { return m_restored; }
    bool dirty() const { return !m_dirty.empty(); }
    // The cluster lost documents that are here, and whoever may put them back has not done so yet.
    bool gone() const;
    int waiting() const; // paths that the cluster does not have yet as the store has them
    int refused() const;
    const std::map<std::string, Item> &items() const { return m_items; }

private:
    // What follows for each path, so that nobody has to look at all of them each time.
    struct Verdicts {
        std::set<std::string> pushes;
        std::set<std::string> unsignedPushes;
        std::set<std::string> waiting;
        std::set<std::string> refused;
    };

    Item &item(const std::string &key);
    void doubtAll();
    const Verdicts &verdicts() const;
    void tell(const QByteArray &line) const;
    void setRemoteState(const std::string &key, Item &item, const Entry *entry);
    Action actionOf(const Item &item) const;
    void takeRemote(const Item &item, Action action, Step *step) const;
    Document ownState(const std::string &key, const Item &item) const;

    const Role m_role;
    const std::string m_prefix;
    const Rules &m_rules;
    bool m_restored = false;
    bool m_serverKept = false;
    std::map<std::string, Item> m_items;
    std::set<std::string> m_dirty; // paths to be looked at
    Documents m_signed;
    mutable Verdicts m_verdicts;
    mutable std::set<std::string> m_unjudged; // paths whose verdicts may be out of date
    std::function<void(const QByteArray &)> m_tell;
};

} // namespace fleet

#endif
