// SPDX-License-Identifier: MIT
#include "fleet/mergemodel.h"

using namespace fleet;

namespace {

const Place kPlace{"site", "server", "default"};
const char *const kWho[] = {"server", "desk-1", "desk-2"};
const char *const kPathNames[] = {"KWX\\Internal0\\IpConfig", "KWX\\Internal1\\IpConfig"};
constexpr int kMostRounds = 400;

std::string keyAt(int path)
{
    return keyOfPath(kPathNames[path]);
}

int pathAt(const std::string &key)
{
    return key == keyAt(0) ? 0 : 1;
}

// Both values name the state, so that one of another state would show.
Document documentOf(int path, int node)
{
    Document document;
    document.path = kPathNames[path];
    document.values["first"] = ops::Value::ofNumber(static_cast<quint32>(node));
    document.values["second"] = ops::Value::ofNumber(static_cast<quint32>(node));
    return document;
}

Documents documentsOf(const MemoryCluster &cluster)
{
    Documents documents;
    const std::string prefix = documentPrefix(kPlace);
    for (const Entry &entry : cluster.below(prefix)) {
        const ops::Outcome<Document> document = readDocument(entry.value);
        if (document)
            documents[entry.key.substr(prefix.size())] = *document;
    }
    return documents;
}

} // namespace

MergeModel::MergeModel(quint64 seed, const Breakage &breakage) : m_random(seed), m_breakage(breakage)
{
    for (int role = 0; role < 2; ++role)
        std::copy(std::begin(kRules[role]), std::end(kRules[role]), std::begin(m_rules[role]));
    if (breakage.situation != Situation::Equal)
        m_rules[static_cast<int>(breakage.role)][static_cast<int>(breakage.situation)] = breakage.action;
    m_deletes = chance(500);
    m_copies = chance(300);
    m_restores = chance(300);
    m_cluster.onPut = [this](const Entry &entry) { share(entry); };
    for (int at = 0; at < kMachines; ++at)
        makeMachine(at);
}

MergeModel::~MergeModel() = default;

int MergeModel::below(int limit)
{
    return static_cast<int>(m_random() % static_cast<quint64>(limit));
}

void MergeModel::wrong(const QString &what)
{
    if (m_wrong.isEmpty())
        m_wrong = what;
}

// ------------------------------------------------------------------------------------------------ machines

void MergeModel::makeMachine(int at)
{
    Machine &machine = m_machines[static_cast<std::size_t>(at)];
    machine.replica = std::make_unique<MemoryReplica>();
    machine.link = std::make_unique<MemoryLink>(m_cluster);
    machine.replica->danger = [this, at] { danger(at, true); };
    machine.replica->busy = [this] { return m_storm && chance(30); };
    machine.replica->onApplied = [this, at](const std::string &key, const Document &document) {
        applied(at, key, document);
    };
    machine.replica->onNoted = [this, at](const std::string &key, const Document &document) {
        noted(at, key, document);
    };
    machine.replica->signer = [this, at](Document *document) { sign(at, document); };
    machine.link->danger = [this, at] { danger(at, true); };
    machine.link->fault = [this] {
        const int fault = m_storm ? below(40) : 100;
        return fault < 3 ? static_cast<MemoryLink::Fault>(fault + 1) : MemoryLink::Fault::None;
    };
    if (m_breakage.break_)
        m_breakage.break_(*machine.replica, *machine.link);
    start(at);
}

void MergeModel::start(int at)
{
    Machine &machine = m_machines[static_cast<std::size_t>(at)];
    Surroundings surroundings;
    surroundings.steadyMs = [this] { return m_nowMs; };
    surroundings.utcMs = [this] { return m_nowMs; };
    surroundings.random = [this](quint32 limit) { return static_cast<quint32>(m_random() % limit); };
    surroundings.log = [](const QByteArray &) {};
    surroundings.wake = [] {};
    const KeeperSettings settings{at == 0 ? Role::Server : Role::Desk, kPlace, kWho[at]};
    machine.keeper =
        std::make_unique<Keeper>(settings, *machine.replica, *machine.link, surroundings, m_rules);
}

void MergeModel::kill(int at)
{
    m_machines[static_cast<std::size_t>(at)].keeper.reset();
}

// Around each step of a keeper: the program may be killed there, and somebody may edit.
void MergeModel::danger(int at, bool mayEdit)
{
    if (!m_storm)
        return;
    if (mayEdit && chance(40))
        edit(at);
    if (chance(25))
        throw Killed();
}

void MergeModel::work(int at)
{
    Machine &machine = m_machines[static_cast<std::size_t>(at)];
    if (!machine.keeper)
        start(at);
    m_putting = at;
    try {
        machine.keeper->work();
    } catch (const Killed &) {
        kill(at);
    }
}

// -------------------------------------------------------------------------------------------------- edits

void MergeModel::edit(int at)
{
    const int path = below(kPaths);
    Machine &machine = m_machines[static_cast<std::size_t>(at)];
    const int present = machine.node[static_cast<std::size_t>(path)];
    const bool something = present != 0 && !m_nodes[static_cast<std::size_t>(present)].deletion;
    if (m_copies && chance(150))
        copyState(at, path);
    else
        makeState(at, path, m_deletes && something && chance(200));
    if (machine.keeper)
        machine.keeper->touched();
}

void MergeModel::makeState(int at, int path, bool deletion)
{
    Machine &machine = m_machines[static_cast<std::size_t>(at)];
    const auto index = static_cast<std::size_t>(path);
    const int node = static_cast<int>(m_nodes.size());
    m_nodes.push_back({path, deletion, {machine.node[index]}});
    const Documents &bases = machine.replica->memory.bases;
    m_nodes.back().agreedOnNothing = bases.count(keyAt(path)) == 0 || bases.at(keyAt(path)).deleted();
    machine.node[index] = node;
    if (deletion) {
        machine.deletion[index] = node;
        meetOtherDeletions(node);
    }
    Document document = documentOf(path, node);
    if (deletion)
        document.values.clear();
    machine.replica->edit(keyAt(path), document);
}

void MergeModel::meetOtherDeletions(int node)
{
    Node &made = m_nodes[static_cast<std::size_t>(node)];
    for (int other = 1; other < node; ++other) {
        Node &before = m_nodes[static_cast<std::size_t>(other)];
        if (before.deletion && before.path == made.path)
            made.met = before.met = true;
    }
}

// Somebody sets by hand what another machine has.
void MergeModel::copyState(int at, int path)
{
    const auto index = static_cast<std::size_t>(path);
    Machine &machine = m_machines[static_cast<std::size_t>(at)];
    const int other = m_machines[static_cast<std::size_t>(below(kMachines))].node[index];
    if (other == 0 || m_nodes[static_cast<std::size_t>(other)].deletion || other == machine.node[index])
        return;
    m_nodes[static_cast<std::size_t>(other)].copiedOver.push_back(machine.node[index]);
    m_nodes[static_cast<std::size_t>(other)].met = true;
    machine.node[index] = other;
    machine.replica->edit(keyAt(path), documentOf(path, other));
}

// A deletion has no values to tell it from another one: its time does.
void MergeModel::sign(int at, Document *document) const
{
    const auto path = static_cast<std::size_t>(pathAt(keyOfPath(document->path)));
    document->by = {kWho[at], "user", "program", 1};
    document->atMs = document->deleted() ? m_machines[static_cast<std::size_t>(at)].deletion[path]
                                         : document->values["first"].number;
}

int MergeModel::nodeOf(const Document &document)
{
    const auto first = document.values.find("first");
    const auto second = document.values.find("second");
    const bool whole = document.values.size() == 2 && first != document.values.end() &&
                       second != document.values.end() && first->second == second->second;
    if (!document.deleted() && !whole)
        wrong(QStringLiteral("a document of two states"));
    const auto node = static_cast<std::size_t>(document.deleted() ? document.atMs : first->second.number);
    if (node >= m_nodes.size() || m_nodes[node].path != pathAt(keyOfPath(document.path)))
        wrong(QStringLiteral("a state from nowhere"));
    return m_wrong.isEmpty() ? static_cast<int>(node) : 0;
}

void MergeModel::applied(int at, const std::string &key, const Document &document)
{
    m_machines[static_cast<std::size_t>(at)].node[static_cast<std::size_t>(pathAt(key))] = nodeOf(document);
}

// What was the same here without having come from there is followed by what follows.
void MergeModel::noted(int at, const std::string &key, const Document &document)
{
    int &present = m_machines[static_cast<std::size_t>(at)].node[static_cast<std::size_t>(pathAt(key))];
    const int node = nodeOf(document);
    if (present == 0)
        present = node;
    if (present != node)
        m_nodes[static_cast<std::size_t>(present)].same.push_back(node);
}

// ----------------------------------------------------------------------------------------------- schedule

QString MergeModel::run()
{
    for (int left = 10 + below(50); left > 0 && m_wrong.isEmpty(); --left)
        step();
    m_storm = false;
    comeToRest();
    if (m_wrong.isEmpty())
        look();
    return m_wrong;
}

void MergeModel::step()
{
    const int at = below(kMachines);
    const int dice = below(100);
    m_nowMs += below(8);
    if (dice < 25)
        edit(at);
    else if (dice < 65)
        work(at);
    else if (dice < 80)
        m_machines[static_cast<std::size_t>(at)].link->deliver(static_cast<std::size_t>(below(4)));
    else if (dice < 90)
        m_nowMs += below(400);
    else
        disturb(at);
}

void MergeModel::disturb(int at)
{
    MemoryLink &link = *m_machines[static_cast<std::size_t>(at)].link;
    m_putting = at;
    const int dice = below(m_restores ? 160 : 92);
    if (dice < 25)
        link.cut = !link.cut;
    else if (dice < 40)
        link.breakWatch(WatchSink::End::Gone);
    else if (dice < 50)
        m_cluster.compact();
    else if (dice < 70)
        link.arriveLate();
    else if (dice < 85)
        kill(at);
    else if (dice < 92)
        m_nowMs += 70000;
    else if (!m_snapshot)
        m_snapshot = m_cluster;
    else
        restoreCluster();
}

// What the cluster had been told of overruled documents goes with it: that is its loss, not the merge's.
void MergeModel::restoreCluster()
{
    keepConflicts();
    const std::uint64_t identity = m_cluster.identity + 1;
    m_cluster = *m_snapshot;
    m_cluster.identity = identity;
    m_cluster.compact();
    m_wasRestored = true;
    for (int path = 0; path < kPaths; ++path)
        m_lost[static_cast<std::size_t>(path)] =
            m_cluster.entries.count(documentPrefix(kPlace) + keyAt(path)) == 0;
    for (Machine &machine : m_machines) {
        machine.link->forgetLate();
        machine.link->breakWatch(WatchSink::End::Gone);
    }
}

void MergeModel::keepConflicts()
{
    for (const Entry &entry : m_cluster.below(conflictPrefix(kPlace))) {
        const ops::Outcome<Conflict> conflict = readConflict(entry.value);
        if (conflict)
            m_conflicts.emplace(conflictId(*conflict), *conflict);
        else
            wrong(QStringLiteral("a conflict that cannot be read"));
    }
}

void MergeModel::comeToRest()
{
    for (m_putting = 0; m_putting < kMachines; ++m_putting) {
        MemoryLink &link = *m_machines[static_cast<std::size_t>(m_putting)].link;
        link.cut = false;
        link.arriveLate();
    }
    int calm = 0;
    for (int round = 0; round < kMostRounds && calm < 8 && m_wrong.isEmpty(); ++round) {
        const std::int64_t before = m_cluster.revision;
        m_nowMs += round % 8 == 7 ? 100000 : 40;
        for (int at = 0; at < kMachines; ++at) {
            m_machines[static_cast<std::size_t>(at)].link->deliver();
            work(at);
        }
        calm = before == m_cluster.revision && atRest() ? calm + 1 : 0;
    }
    if (calm == 0)
        wrong(QStringLiteral("never comes to rest"));
}

bool MergeModel::atRest() const
{
    for (const Machine &machine : m_machines) {
        if (!machine.keeper || !machine.keeper->status().inStep)
            return false;
    }
    return true;
}

// -------------------------------------------------------------------------------------- what has to hold

void MergeModel::look()
{
    keepConflicts();
    const Documents cluster = documentsOf(m_cluster);
    for (int path = 0; path < kPaths && m_wrong.isEmpty(); ++path)
        lookAtPath(path, cluster);
}

void MergeModel::lookAtPath(int path, const Documents &cluster)
{
    const std::string key = keyAt(path);
    const auto remote = cluster.find(key);
    const State state = remote != cluster.end() ? &remote->second : nullptr;
    lookAtConflicts(path, state ? nodeOf(*state) : 0);
    for (Machine &machine : m_machines) {
        const auto local = machine.replica->values.find(key);
        if (!sameContent(local != machine.replica->values.end() ? &local->second : nullptr, state))
            return wrong(QStringLiteral("not equal"));
        if (!machine.replica->memory.conflicts.empty())
            return wrong(QStringLiteral("a conflict that was not told"));
        const auto base = machine.replica->memory.bases.find(key);
        if (!sameContent(base != machine.replica->memory.bases.end() ? &base->second : nullptr, state))
            return wrong(QStringLiteral("what both agree on was not noted"));
    }
    lookForLosses(path, std::vector<bool>(m_nodes.size()));
}

// A server's own edit stands, and what is part of what stands was not overruled. That a cluster which was set
// up again has older states is not their fault: there a conflict may tell of what is part of newer ones.
void MergeModel::lookAtConflicts(int path, int stands)
{
    std::vector<bool> alive(m_nodes.size());
    cover(stands, alive, Follow::Certain);
    for (const auto &[id, conflict] : m_conflicts) {
        const int node = nodeOf(conflict.overruled);
        const Node &overruled = m_nodes[static_cast<std::size_t>(node)];
        if (overruled.path != path || m_wasRestored)
            continue;
        if (conflict.overruled.by.who == kWho[0])
            wrong(QStringLiteral("a server's edit was overruled"));
        if (alive[static_cast<std::size_t>(node)] && !overruled.met)
            wrong(QStringLiteral("a conflict about what was not lost"));
    }
}

// Each state that somebody made is what there is now, or became it by further edits, or was kept as a
// conflict, or became one that was. What was made and deleted at one machine before anybody else heard of it
// left nothing to tell of.
void MergeModel::lookForLosses(int path, std::vector<bool> covered)
{
    for (const Machine &machine : m_machines)
        cover(machine.node[static_cast<std::size_t>(path)], covered);
    for (const auto &[id, conflict] : m_conflicts) {
        if (pathAt(keyOfPath(conflict.overruled.path)) == path)
            cover(nodeOf(conflict.overruled), covered);
    }
    coverDeletions(path, covered);
    for (std::size_t node = 1; node < m_nodes.size(); ++node) {
        if (m_nodes[node].path == path && !covered[node])
            wrong(QStringLiteral("an edit was lost"));
    }
}

// One deletion is like another: where one is kept, whoever else deleted the path got what they wanted; but
// not by one that they had known of and edited away.
void MergeModel::coverDeletions(int path, std::vector<bool> &covered) const
{
    for (std::size_t node = 1; node < m_nodes.size(); ++node) {
        const Node &made = m_nodes[node];
        if (made.path != path || !made.deletion || covered[node])
            continue;
        if (unheard(static_cast<int>(node)) || stoodForByAnother(static_cast<int>(node), covered))
            cover(static_cast<int>(node), covered);
    }
}

bool MergeModel::stoodForByAnother(int deletion, const std::vector<bool> &covered) const
{
    std::vector<bool> before(m_nodes.size());
    cover(deletion, before, Follow::Parents);
    for (std::size_t node = 1; node < m_nodes.size(); ++node) {
        const Node &other = m_nodes[node];
        if (!covered[node] || before[node] || other.path != m_nodes[static_cast<std::size_t>(deletion)].path)
            continue;
        const Node &parent = m_nodes[static_cast<std::size_t>(other.parents.front())];
        if (other.deletion || parent.deletion)
            return true;
    }
    return false;
}

// It only took back what nobody else knew: what the others had heard of last was nothing, or a deletion as
// well. Of a state that was set by hand as another has it, nobody can tell from whom they heard of it.
bool MergeModel::unheard(int deletion) const
{
    if (m_nodes[static_cast<std::size_t>(deletion)].agreedOnNothing)
        return true;
    int before = m_nodes[static_cast<std::size_t>(deletion)].parents.front();
    for (; before != 0; before = m_nodes[static_cast<std::size_t>(before)].parents.front()) {
        const Node &made = m_nodes[static_cast<std::size_t>(before)];
        if (made.shared || !made.copiedOver.empty())
            return made.deletion || !made.copiedOver.empty();
    }
    return true;
}

void MergeModel::share(const Entry &entry)
{
    const ops::Outcome<Document> document = readDocument(entry.value);
    if (!document || entry.key.find("/servers/") == std::string::npos)
        return;
    const int node = nodeOf(*document);
    m_nodes[static_cast<std::size_t>(node)].shared = true;
    lookAtPuttingBack(pathAt(keyOfPath(document->path)), node);
}

// What the cluster lost comes back from the server, if it has it: a desk's copy may be older.
void MergeModel::lookAtPuttingBack(int path, int node)
{
    const auto index = static_cast<std::size_t>(path);
    const int servers = m_machines[0].node[index];
    std::vector<bool> before(m_nodes.size());
    cover(servers, before, Follow::Certain);
    const bool older = node != servers && before[static_cast<std::size_t>(node)];
    const MemoryReplica &replica = *m_machines[static_cast<std::size_t>(m_putting)].replica;
    const bool agreed =
        replica.memory.bases.count(keyAt(path)) > 0; // else it never heard that it had arrived
    if (m_lost[index] && m_putting != 0 && agreed && older && !m_nodes[static_cast<std::size_t>(node)].met)
        wrong(QStringLiteral("a desk put back what the server has newer"));
    m_lost[index] = false;
}

// A node and all that it was made of.
void MergeModel::cover(int node, std::vector<bool> &covered, Follow follow) const
{
    if (covered[static_cast<std::size_t>(node)])
        return;
    covered[static_cast<std::size_t>(node)] = true;
    const Node &made = m_nodes[static_cast<std::size_t>(node)];
    const bool all = follow == Follow::All;
    for (const int parent : follow == Follow::Certain && made.met ? std::vector<int>() : made.parents)
        cover(parent, covered, follow);
    for (const int other : all ? made.copiedOver : std::vector<int>())
        cover(other, covered, follow);
    for (const int other : all ? made.same : std::vector<int>())
        cover(other, covered, follow);
}
