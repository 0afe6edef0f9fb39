// SPDX-License-Identifier: MIT
#include "fleet/board.h"

#include "fleet/keypath.h"

#include <algorithm>

namespace fleet {

namespace {

constexpr std::size_t kMostFlights = 4;

State stateOf(const std::optional<Document> &document)
{
    return document ? &*document : nullptr;
}

// The very document, not just an equal state.
bool identical(const Document &left, const Document &right)
{
    return sameState(left, right) && left.by.who == right.by.who && left.by.user == right.by.user &&
           left.by.program == right.by.program && left.by.pid == right.by.pid && left.atMs == right.atMs;
}

// Of our documents the one that has arrived: everything since then was built on it.
const Document *landedOf(const Item &item)
{
    const auto landed = [&](const Flight &flight) { return flight.push == item.landed; };
    const auto found = std::find_if(item.flights.begin(), item.flights.end(), landed);
    return found != item.flights.end() ? &found->document : nullptr;
}

void noteLanding(Item &item)
{
    for (const Flight &flight : item.flights) {
        if (item.remote && identical(flight.document, *item.remote))
            item.landed = flight.push;
    }
}

State agreedOf(const Item &item)
{
    const Document *landed = landedOf(item);
    return landed ? landed : stateOf(item.base);
}

// With room for the longest author.
QByteArray whyNotShared(const Document &document)
{
    Document longest = document;
    longest.by.who = longest.by.user = longest.by.program = QByteArray(kMaxWordBytes, 'x');
    const ops::Outcome<std::string> text = writeDocument(longest);
    return text ? QByteArray() : text.failure().text;
}

QByteArray joined(const std::set<QByteArray> &names)
{
    QByteArray text;
    for (const QByteArray &name : names)
        text += (text.isEmpty() ? "from " : ", ") + name;
    return text;
}

} // namespace

Board::Board(Role role, std::string prefix, const Rules &rules)
    : m_role(role), m_prefix(std::move(prefix)), m_rules(rules)
{
}

Item &Board::item(const std::string &key)
{
    m_dirty.insert(key);
    m_unjudged.insert(key);
    return m_items[key];
}

void Board::doubtAll()
{
    for (const auto &[key, known] : m_items)
        m_unjudged.insert(key);
}

// ------------------------------------------------------------------------------------------- what is heard

void Board::recall(const Memory &memory)
{
    for (const auto &[key, document] : memory.bases)
        item(key).base = document;
    for (const auto &[key, flights] : memory.flights)
        item(key).flights = flights;
}

void Board::setLocal(const Documents &documents)
{
    for (const auto &[key, document] : m_signed)
        m_unjudged.insert(key);
    m_signed.clear();
    for (auto &[key, known] : m_items) {
        if (known.local && documents.count(key) == 0)
            item(key).local.reset();
    }
    for (const auto &[key, document] : documents) {
        const auto known = m_items.find(key);
        if (known != m_items.end() && known->second.local && sameState(*known->second.local, document))
            continue;
        Item &changed = item(key);
        changed.local = document;
        changed.unshared = whyNotShared(document);
        if (!changed.unshared.isEmpty())
            tell(document.path + " is not shared: " + changed.unshared);
    }
}

void Board::tell(const QByteArray &line) const
{
    if (m_tell)
        m_tell(line);
}

void Board::setRemote(const Range &range, bool restored)
{
    m_restored = m_restored || restored;
    std::map<std::string, const Entry *> entries;
    for (const Entry &entry : range.entries) {
        if (entry.key.compare(0, m_prefix.size(), m_prefix) == 0)
            entries[entry.key.substr(m_prefix.size())] = &entry;
    }
    for (const auto &[key, entry] : entries)
        item(key);
    for (auto &[key, known] : m_items) {
        const auto entry = entries.find(key);
        setRemoteState(key, known, entry != entries.end() ? entry->second : nullptr);
        known.seen = range.revision;
        m_dirty.insert(key);
    }
    doubtAll();
}

// An event from before the last range read is old news.
void Board::takeEvent(const Entry &entry)
{
    if (entry.key.compare(0, m_prefix.size(), m_prefix) != 0)
        return;
    const std::string key = entry.key.substr(m_prefix.size());
    const auto known = m_items.find(key);
    if (known != m_items.end() && entry.modRevision <= known->second.seen)
        return;
    Item &changed = item(key);
    setRemoteState(key, changed, entry.deleted ? nullptr : &entry);
    changed.seen = entry.modRevision;
}

// A document that is not to be trusted stays where it is: neither taken nor written over.
void Board::setRemoteState(const std::string &key, Item &item, const Entry *entry)
{
    const bool news = entry && (m_restored || entry->modRevision != item.expected);
    item.expected = entry ? entry->modRevision : Put::kAbsent;
    if (!entry) {
        item.gone = item.gone || (m_restored && agreedOf(item));
        item.remote.reset();
        item.foreign.clear();
    }
    if (!news)
        return;
    const ops::Outcome<Document> document = readDocument(entry->value);
    item.foreign = document ? QByteArray() : document.failure().text;
    if (document && keyOfPath(document->path) != key)
        item.foreign = "its path belongs to another key";
    if (!item.foreign.isEmpty())
        return tell(QByteArray::fromStdString(entry->key) + " is refused: " + item.foreign);
    item.remote = *document;
    noteLanding(item);
}

void Board::landed(std::uint64_t push)
{
    for (auto &[key, known] : m_items) {
        for (const Flight &flight : known.flights)
            known.landed = flight.push == push ? push : known.landed;
        m_dirty.insert(key);
    }
    doubtAll();
}

void Board::pushed(const std::string &key, const Document &document, std::int64_t revision)
{
    Item &known = item(key);
    known.remote = document;
    known.expected = known.seen = revision;
    noteLanding(known);
}

// ----------------------------------------------------------------------------------------- what follows

Action Board::actionOf(const Item &item) const
{
    if (!item.foreign.isEmpty() || !item.unshared.isEmpty())
        return Action::Nothing;
    const State agreed = agreedOf(item);
    // Only desks have it left: a deletion as well, or somebody's older copy would come back and stay.
    if (m_serverKept && item.gone && !item.remote) {
        const bool something = !sameContent(stateOf(item.local), agreed) || !sameContent(agreed, nullptr);
        const auto situation = something ? Situation::LocalOnly : Situation::Equal;
        return m_rules[static_cast<int>(m_role)][static_cast<int>(situation)];
    }
    return merge(m_role, stateOf(item.local), agreed, stateOf(item.remote), m_restored || item.gone, m_rules);
}

Documents Board::unsignedOnes() const
{
    Documents documents;
    std::set<std::string> keys = m_dirty;
    keys.insert(verdicts().unsignedPushes.begin(), verdicts().unsignedPushes.end());
    for (const std::string &key : keys) {
        const Item &known = m_items.at(key);
        const Action action = actionOf(known);
        if (action != Action::Push && action != Action::Overrule && action != Action::Yield)
            continue;
        Document own = ownState(key, known);
        if (own.by.who.isEmpty())
            documents.emplace(key, std::move(own));
    }
    return documents;
}

void Board::takeSignatures(const Documents &documents)
{
    for (const auto &[key, document] : documents) {
        m_signed[key] = document;
        m_unjudged.insert(key);
    }
}

Transaction Board::localPart()
{
    Transaction transaction;
    std::set<QByteArray> authors;
    for (const std::string &key : m_dirty) {
        Item &known = m_items[key];
        m_unjudged.insert(key);
        known.gone = known.gone && !(known.remote && sameContent(stateOf(known.remote), agreedOf(known)));
        Step step;
        step.key = key;
        if (const Document *landed = landedOf(known))
            step.base = *landed;
        takeRemote(known, actionOf(known), &step);
        if (step.values)
            authors.insert(step.values->by.who);
        if (!step.base)
            continue;
        // What is still on its way compares with a revision that is over.
        if (!known.flights.empty())
            step.flights = Flights();
        transaction.steps.push_back(std::move(step));
    }
    m_dirty.clear();
    transaction.label = joined(authors);
    return transaction;
}

void Board::takeRemote(const Item &item, Action action, Step *step) const
{
    if (action == Action::Nothing || action == Action::Push)
        return;
    step->base = item.remote;
    step->compare = action != Action::Note;
    step->expected = item.local;
    if (action == Action::Apply || action == Action::Yield)
        step->values = item.remote;
    if (action != Action::Overrule && action != Action::Yield)
        return;
    const Document own = ownState(step->key, item);
    step->conflict = action == Action::Yield ? Conflict{own, item.remote->by, item.remote->atMs}
                                             : Conflict{*item.remote, own.by, own.atMs};
}

// What the store has, as a document: a path that has no values any more was deleted. What nobody has changed
// here is still its author's.
Document Board::ownState(const std::string &key, const Item &item) const
{
    const State agreed = agreedOf(item);
    if (agreed && sameContent(stateOf(item.local), agreed))
        return *agreed;
    const auto known = m_signed.find(key);
    if (known != m_signed.end() && sameContent(stateOf(item.local), &known->second))
        return known->second;
    if (item.local)
        return *item.local;
    Document deleted;
    if (agreed || item.remote)
        deleted.path = agreed ? agreed->path : item.remote->path;
    return deleted;
}

void Board::applied(const Transaction &transaction)
{
    for (const Step &step : transaction.steps) {
        Item &known = item(step.key);
        if (step.values && step.values->deleted())
            known.local.reset();
        else if (step.values)
            known.local = step.values;
        if (step.base)
            known.base = step.base;
        if (step.flights)
            known.flights = *step.flights;
        const bool back = step.base && known.remote && sameState(*step.base, *known.remote);
        known.gone = known.gone && !back; // a push that had landed before it got lost says nothing
    }
}

void Board::notApplied(const Transaction &transaction)
{
    for (const Step &step : transaction.steps)
        m_dirty.insert(step.key);
}

// Earlier ones are kept: what the network held back may arrive late, as long as nothing else did.
std::vector<Step> Board::flightSteps(const Documents &documents, std::uint64_t push) const
{
    std::vector<Step> steps;
    for (const auto &[key, document] : documents) {
        const auto known = m_items.find(key);
        Step step;
        step.key = key;
        step.flights = known != m_items.end() ? known->second.flights : Flights();
        step.flights->push_back({push, document});
        if (step.flights->size() > kMostFlights)
            step.flights->erase(step.flights->begin());
        steps.push_back(std::move(step));
    }
    return steps;
}

const Board::Verdicts &Board::verdicts() const
{
    const auto put = [](std::set<std::string> *keys, const std::string &key, bool holds) {
        if (holds)
            keys->insert(key);
        else
            keys->erase(key);
    };
    for (const std::string &key : m_unjudged) {
        const Item &known = m_items.at(key);
        const bool equal = sameContent(stateOf(known.local), stateOf(known.remote));
        const bool push = actionOf(known) == Action::Push;
        put(&m_verdicts.pushes, key, push);
        put(&m_verdicts.unsignedPushes, key, push && ownState(key, known).by.who.isEmpty());
        put(&m_verdicts.waiting, key, !equal && known.foreign.isEmpty());
        put(&m_verdicts.refused, key, !known.foreign.isEmpty() || !known.unshared.isEmpty());
    }
    m_unjudged.clear();
    return m_verdicts;
}

Documents Board::pushes(std::size_t most) const
{
    Documents documents;
    for (const std::string &key : verdicts().pushes) {
        if (documents.size() == most)
            break;
        documents.emplace(key, ownState(key, m_items.at(key)));
    }
    return documents;
}

std::int64_t Board::expectedRevision(const std::string &key) const
{
    const auto known = m_items.find(key);
    return known != m_items.end() ? known->second.expected : Put::kAbsent;
}

void Board::setServerKept(bool kept)
{
    m_serverKept = kept;
    doubtAll();
}

void Board::setRestored(bool restored)
{
    if (restored != m_restored)
        doubtAll();
    m_restored = restored;
}

bool Board::gone() const
{
    const auto isGone = [](const auto &known) { return known.second.gone; };
    return std::any_of(m_items.begin(), m_items.end(), isGone);
}

int Board::waiting() const
{
    return static_cast<int>(verdicts().waiting.size());
}

int Board::refused() const
{
    return static_cast<int>(verdicts().refused.size());
}

} // namespace fleet
