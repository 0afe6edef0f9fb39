// SPDX-License-Identifier: MIT
#include "fleet/memoryreplica.h"

#include "fleet/merge.h"

using namespace fleet;

void MemoryReplica::pass() const
{
    if (danger)
        danger();
}

void MemoryReplica::edit(const std::string &key, const Document &document)
{
    if (document.deleted())
        values.erase(key);
    else
        values[key] = document;
    m_changed = true;
}

bool MemoryReplica::changed()
{
    return std::exchange(m_changed, false);
}

bool MemoryReplica::read(Documents *documents)
{
    *documents = values;
    return true;
}

bool MemoryReplica::recall(Memory *kept)
{
    *kept = memory;
    m_changed = true; // a program that starts has seen nothing
    return true;
}

bool MemoryReplica::fits(const Transaction &transaction) const
{
    for (const Step &step : transaction.steps) {
        const auto present = values.find(step.key);
        const Values &now = present != values.end() ? present->second.values : Values();
        if (compares && step.compare && now != (step.expected ? step.expected->values : Values()))
            return false;
    }
    return true;
}

Applied MemoryReplica::apply(const Transaction &transaction)
{
    pass();
    if (busy && busy())
        return Applied::Failed;
    if (!fits(transaction))
        return Applied::Moved;
    for (const Step &step : transaction.steps)
        applyValues(step);
    if (torn)
        pass();
    for (const Step &step : transaction.steps)
        applyNotes(step);
    for (const std::string &id : transaction.uploaded)
        memory.conflicts.erase(id);
    memory.mark = transaction.mark;
    pass();
    return Applied::Done;
}

void MemoryReplica::applyValues(const Step &step)
{
    if (!step.values)
        return;
    if (step.values->deleted())
        values.erase(step.key);
    else
        values[step.key] = {step.values->path, {}, 0, step.values->values};
    if (onApplied)
        onApplied(step.key, *step.values);
}

void MemoryReplica::applyNotes(const Step &step)
{
    if (step.base && keepsBases)
        memory.bases[step.key] = *step.base;
    const Document *expected = step.expected ? &*step.expected : nullptr;
    if (onNoted && step.base && !step.values && sameContent(expected, &*step.base))
        onNoted(step.key, *step.base);
    if (step.flights && keepsFlights)
        memory.flights[step.key] = *step.flights;
    if (step.conflict && keepsConflicts)
        memory.conflicts.emplace(conflictId(*step.conflict), *step.conflict);
}

void MemoryReplica::sign(const std::vector<Document *> &documents)
{
    for (Document *document : documents) {
        if (signer)
            signer(document);
    }
}
