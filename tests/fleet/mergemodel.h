// SPDX-License-Identifier: MIT
//
// A server, two desks and a cluster in one thread, driven by chance: edits and deletions at any moment, also
// in the middle of a call, programs that are killed at any step, calls without an answer or done too late,
// watches that lag and end, compaction, a cluster that is set up again from an older state. The keepers are
// the real ones. At the end, when all is well again, what has to hold is looked at. A seed gives a schedule.
#ifndef TESTS_FLEET_MERGEMODEL_H
#define TESTS_FLEET_MERGEMODEL_H

#include "fleet/keeper.h"
#include "fleet/memorycluster.h"
#include "fleet/memoryreplica.h"

#include <QString>

#include <array>
#include <random>

// What is made wrong on purpose, to see whether the model notices.
struct Breakage {
    const char *name = "";
    fleet::Role role = fleet::Role::Server; // whose rule
    fleet::Situation situation = fleet::Situation::Equal;
    fleet::Action action = fleet::Action::Nothing;           // Equal and Nothing: the rules as they are
    void (*break_)(MemoryReplica &, MemoryLink &) = nullptr; // or something else
};

class MergeModel {
public:
    MergeModel(quint64 seed, const Breakage &breakage);
    ~MergeModel();

    // Empty when everything holds, else what does not.
    QString run();

private:
    static constexpr int kMachines = 3; // the first is the server
    static constexpr int kPaths = 2;

    struct Machine {
        std::unique_ptr<MemoryReplica> replica;
        std::unique_ptr<MemoryLink> link;
        std::unique_ptr<fleet::Keeper> keeper;
        std::array<int, kPaths> node{};     // the state that each path has
        std::array<int, kPaths> deletion{}; // the last deletion that was made here
    };

    // A state that somebody made, and what it was made of.
    struct Node {
        int path = 0;
        bool deletion = false;
        std::vector<int> parents;
        std::vector<int> copiedOver{}; // what gave way to it where it was set by hand a second time
        std::vector<int> same{};       // equal states that were made elsewhere
        bool shared = false;           // was in the cluster
        bool agreedOnNothing = false;  // its maker with the others, or on a deletion, when it was made
        // Made a second time by somebody who did not have what it was made of: a state set by hand that
        // another has, a deletion on both sides. So what it was made of may have been overruled, though it
        // stands.
        bool met = false;
    };

    struct Killed {};

    int below(int limit);
    bool chance(int permille) { return below(1000) < permille; }
    void wrong(const QString &what);
    void makeMachine(int at);
    void start(int at);
    void kill(int at);
    void danger(int at, bool mayEdit);

    void step();
    void disturb(int at);
    void edit(int at);
    void makeState(int at, int path, bool deletion);
    void meetOtherDeletions(int node);
    void copyState(int at, int path);
    void work(int at);
    void restoreCluster();
    void keepConflicts();

    void comeToRest();
    bool atRest() const;
    void look();
    void lookAtPath(int path, const fleet::Documents &cluster);
    void lookAtConflicts(int path, int stands);
    void coverDeletions(int path, std::vector<bool> &covered) const;
    bool stoodForByAnother(int deletion, const std::vector<bool> &covered) const;
    bool unheard(int deletion) const;
    void share(const fleet::Entry &entry);
    void lookAtPuttingBack(int path, int node);
    void lookForLosses(int path, std::vector<bool> covered);
    enum class Follow {
        All,     // whatever became part of a state in one way or another
        Parents, // what its maker had before
        Certain, // only as long as nobody else made the same without having had that
    };
    void cover(int node, std::vector<bool> &covered, Follow follow = Follow::All) const;
    int nodeOf(const fleet::Document &document);
    void applied(int at, const std::string &key, const fleet::Document &document);
    void noted(int at, const std::string &key, const fleet::Document &document);
    void sign(int at, fleet::Document *document) const;

    std::mt19937_64 m_random;
    const Breakage &m_breakage;
    fleet::Action m_rules[2][fleet::kSituationCount];
    qint64 m_nowMs = 1000;
    MemoryCluster m_cluster;
    std::optional<MemoryCluster> m_snapshot;
    std::array<Machine, kMachines> m_machines;
    std::vector<Node> m_nodes{1}; // node 0: nothing was ever there
    std::map<std::string, fleet::Conflict> m_conflicts;
    bool m_storm = true;    // things go wrong
    bool m_deletes = true;  // somebody also deletes
    bool m_restores = true; // the cluster goes back to an older state
    bool m_copies = true;   // somebody sets what another has
    bool m_wasRestored = false;
    std::array<bool, kPaths> m_lost{}; // the cluster was set up again without the path
    int m_putting = 0;                 // who speaks to the cluster at the moment
    QString m_wrong;
};

#endif
