// SPDX-License-Identifier: MIT
#include "fleet/storereplica.h"

#include "channel/librarycalls.h"
#include "fleet/documentjson.h"
#include "fleet/keypath.h"

namespace fleet {

namespace {

constexpr int kMaxLabelBytes = 200;
constexpr const char *kOwnKey = "rkcfg";

bool isOwnKey(const std::string &key)
{
    return key == kOwnKey || key.compare(0, 6, "rkcfg/") == 0;
}

// All that a step tells of the path is spelled as the path it is about, but for the case.
QByteArray pathOf(const Step &step)
{
    for (const std::optional<Document> *document : {&step.expected, &step.values, &step.base}) {
        if (*document)
            return (*document)->path;
    }
    return {};
}

ops::Snapshot snapshotOf(const QByteArray &path, const Values &values)
{
    ops::Snapshot snapshot;
    for (const auto &[name, value] : values)
        snapshot.set(path, name, value);
    return snapshot;
}

// Only the path itself, without those below it.
Values valuesOf(const ops::Snapshot &snapshot, const QByteArray &path)
{
    Values values;
    for (const ops::Row *row : snapshot.rowsOf(path))
        values.emplace(row->name, row->value);
    return values;
}

// Whole characters only.
QByteArray shortLabel(QByteArray label)
{
    while (label.size() > kMaxLabelBytes || !ops::isUtf8(label))
        label.chop(1);
    return label;
}

QByteArray word(const char *text)
{
    const QByteArray bytes(text ? text : "");
    return plainText(bytes, kMaxWordBytes) ? bytes : QByteArray();
}

// Documents by key that still wait for their last change, and how far to go back for it.
struct Unsigned {
    std::map<std::string, Document *> waiting;
    int left = 20000;
};

int signOne(void *context, const StoreRecord *change)
{
    auto &[waiting, left] = *static_cast<Unsigned *>(context);
    const auto found = waiting.find(keyOfPath(change->keyPath));
    if (--left < 0 || found == waiting.end())
        return left < 0 ? 1 : 0;
    Document &document = *found->second;
    document.by.program = word(change->program);
    document.by.user = word(change->user);
    document.by.pid = change->pid;
    document.atMs = change->timeUs / 1000;
    waiting.erase(found);
    return waiting.empty() ? 1 : 0;
}

} // namespace

ops::Outcome<std::unique_ptr<StoreReplica>> StoreReplica::open(const QByteArray &configuration, bool create,
                                                               const QByteArray &who)
{
    if (!StoreNotes::available())
        return ops::refused("this configuration library keeps no notes");
    ops::Outcome<ops::Store> store = ops::Store::open(configuration, create);
    if (!store)
        return store.failure();
    return std::unique_ptr<StoreReplica>(new StoreReplica(std::move(*store), who));
}

StoreReplica::StoreReplica(ops::Store store, QByteArray who)
    : m_store(std::move(store)), m_notes(m_store), m_who(std::move(who))
{
}

// A library that cannot tell has to be read each time.
bool StoreReplica::changed()
{
    return !libraryCalls().changed || libraryCalls().changed(m_store.handle(), &m_seen) != 0;
}

bool StoreReplica::read(Documents *documents)
{
    const ops::Outcome<ops::Snapshot> snapshot = m_store.read();
    if (!snapshot)
        return false;
    Document *last = nullptr;
    for (const ops::Row &row : snapshot->rows()) {
        if (!last || ops::comparePaths(last->path, row.path) != 0) {
            const std::string key = keyOfPath(row.path);
            last = &(*documents)[key];
            last->path = row.path;
        }
        last->values.emplace(row.name, row.value);
    }
    for (auto document = documents->begin(); document != documents->end();)
        document = isOwnKey(document->first) ? documents->erase(document) : std::next(document);
    return true;
}

bool StoreReplica::recall(Memory *memory)
{
    return m_notes.recall(memory);
}

int StoreReplica::overruled()
{
    std::vector<Conflict> conflicts;
    m_notes.overruled(m_who, &conflicts);
    return static_cast<int>(conflicts.size());
}

Applied StoreReplica::apply(const Transaction &transaction)
{
    bool moved = false;
    bool values = false;
    const auto body = [&]() -> ops::Outcome<ops::Done> {
        for (const Step &step : transaction.steps) {
            values = values || step.values;
            if (ops::Outcome<ops::Done> done = applyStep(step, &moved); !done)
                return done;
        }
        return applyNotes(transaction);
    };
    if (!m_store.together(shortLabel(transaction.label), body))
        return moved ? Applied::Moved : Applied::Failed;
    // What is only remembered may be lost with the power: it is then found out again.
    if (values)
        static_cast<void>(m_store.save());
    return Applied::Done;
}

ops::Outcome<ops::Done> StoreReplica::applyStep(const Step &step, bool *moved)
{
    if (!m_notes.rememberStep(step))
        return ops::refused("the store did not take a note");
    if (!step.compare && !step.values)
        return ops::Done();
    const QByteArray path = pathOf(step);
    const ops::Outcome<ops::Snapshot> snapshot = m_store.read(path);
    if (!snapshot)
        return snapshot.failure();
    const Values present = valuesOf(*snapshot, path);
    *moved = step.compare && present != (step.expected ? step.expected->values : Values());
    if (*moved)
        return ops::refused("the store has something else by now");
    if (!step.values)
        return ops::Done();
    for (const ops::Change &change :
         ops::difference(snapshotOf(path, present), snapshotOf(path, step.values->values))) {
        if (ops::Outcome<ops::Done> done = m_store.write(change); !done)
            return done;
    }
    return ops::Done();
}

ops::Outcome<ops::Done> StoreReplica::applyNotes(const Transaction &transaction)
{
    bool done = m_notes.rememberMark(transaction.mark);
    for (const std::string &id : transaction.uploaded)
        done = done && m_notes.forgetUploaded(id, m_who);
    if (!done)
        return ops::refused("the store did not take a note");
    return ops::Done();
}

// The newest changes come first, and what is to be signed was changed a moment ago as a rule.
void StoreReplica::sign(const std::vector<Document *> &documents)
{
    Unsigned unsignedOnes;
    for (Document *document : documents)
        unsignedOnes.waiting.emplace(keyOfPath(document->path), document);
    if (libraryCalls().history && !documents.empty())
        libraryCalls().history(m_store.handle(), -1, signOne, &unsignedOnes);
}

} // namespace fleet
