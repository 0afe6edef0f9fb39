// SPDX-License-Identifier: MIT
//
// A store in memory with what is remembered beside it. It outlives the keeper that uses it, as a file
// outlives a program that is killed.
#ifndef TESTS_FLEET_MEMORYREPLICA_H
#define TESTS_FLEET_MEMORYREPLICA_H

#include "fleet/replica.h"

#include <functional>

class MemoryReplica : public fleet::Replica {
public:
    // Called before and after each transaction: it may throw, as a program may be killed there.
    std::function<void()> danger;
    // Whether a transaction is refused now, as by a busy store.
    std::function<bool()> busy;
    // Told of each path that a transaction changes, with the document it took.
    std::function<void(const std::string &key, const fleet::Document &document)> onApplied;
    // Told of a document that was found to be what the store had when it was decided.
    std::function<void(const std::string &key, const fleet::Document &document)> onNoted;
    // Fills in author and time.
    std::function<void(fleet::Document *document)> signer;

    // Mistakes for tests to find.
    bool compares = true;
    bool keepsConflicts = true;
    bool keepsBases = true;
    bool keepsFlights = true;
    bool torn = false; // values and notes are two transactions

    fleet::Documents values;
    fleet::Memory memory;
    int overruledCount = 0;

    // Somebody else writes.
    void edit(const std::string &key, const fleet::Document &document);

    bool changed() override;
    bool read(fleet::Documents *documents) override;
    bool recall(fleet::Memory *memory) override;
    int overruled() override { return overruledCount; }
    fleet::Applied apply(const fleet::Transaction &transaction) override;
    void sign(const std::vector<fleet::Document *> &documents) override;

private:
    bool fits(const fleet::Transaction &transaction) const;
    void applyValues(const fleet::Step &step);
    void applyNotes(const fleet::Step &step);
    void pass() const;

    bool m_changed = true;
};

#endif
