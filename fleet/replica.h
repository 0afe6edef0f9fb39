// SPDX-License-Identifier: MIT
//
// The local side: one configuration of a store, with what is remembered beside its values. An interface, so
// that the merge can be tested with stores in memory; fleet/storereplica.h has the real one. Calls block for
// as long as the disk takes. One thread at a time.
#ifndef CORVEL_FLEET_REPLICA_H
#define CORVEL_FLEET_REPLICA_H

#include "fleet/conflict.h"
#include "fleet/document.h"

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <vector>

namespace fleet {

// By their keys (keyOfPath).
using Documents = std::map<std::string, Document>;

// What the remembered states belong to. With another place or role they mean nothing; with another cluster,
// or one that went back in time, its states may be older than ours.
struct Mark {
    std::string place; // role and prefix
    std::uint64_t cluster = 0;
    std::int64_t revision = 0;
    std::uint64_t pushes = 0; // counts on with each push
    std::string receipt;      // what the last push left in the cluster, see fleet/push.h
};

// A document on its way, with the number of its push.
struct Flight {
    std::uint64_t push = 0;
    Document document;
};
using Flights = std::vector<Flight>; // of one path, oldest first

// Everything that is remembered.
struct Memory {
    Mark mark;
    Documents bases;                           // what both sides last agreed on
    std::map<std::string, Flights> flights;    // pushed, without knowing yet whether they arrived
    std::map<std::string, Conflict> conflicts; // by id: not yet in the cluster
};

// What happens to one path in a transaction. What is not set stays as it is.
struct Step {
    std::string key;
    std::optional<Document> values; // the state that the path is to have
    std::optional<Document> base;
    std::optional<Flights> flights;
    std::optional<Conflict> conflict;
    bool compare = false;             // refuse everything unless the store still has `expected`
    std::optional<Document> expected; // nothing: no values
};

struct Transaction {
    QByteArray label; // of its batch in the history, when values change
    std::vector<Step> steps;
    std::vector<std::string> uploaded; // conflicts that are in the cluster now
    Mark mark;
};

enum class Applied {
    Done,
    Moved,  // the store no longer has what was expected: nothing was changed
    Failed, // busy, full, read-only: nothing was changed
};

class Replica {
public:
    virtual ~Replica() = default;

    // Whether anybody else may have written since the last call; true at the first. Cheap.
    virtual bool changed() = 0;
    // All paths with values. Neither authors nor times are filled in. False when the store cannot be read.
    virtual bool read(Documents *documents) = 0;
    virtual bool recall(Memory *memory) = 0;
    // How many documents of this machine were overruled that nobody has looked at yet.
    virtual int overruled() = 0;
    // All of it or nothing.
    virtual Applied apply(const Transaction &transaction) = 0;
    // Fills in who changed these paths last, and when, as far as the store knows; `who` is left alone.
    virtual void sign(const std::vector<Document *> &documents) = 0;
};

} // namespace fleet

#endif
