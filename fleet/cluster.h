// SPDX-License-Identifier: MIT
//
// The replicated store as the fleet sees it: keys with values and revisions, transactions that compare before
// they put, a watch, a lease. An interface, so that the merge can be tested against a cluster in memory;
// fleet/etcd has the real one.
//
// Every call blocks until its answer or until the implementation's own time limit (about a second) has
// passed. One Cluster is used from one thread; a WatchSink is called from a thread of the implementation.
#ifndef CORVEL_FLEET_CLUSTER_H
#define CORVEL_FLEET_CLUSTER_H

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

namespace fleet {

// What one transaction may hold: as many keys as the cluster takes unless it is set up otherwise, and less
// than its 1.5 MiB.
constexpr std::size_t kMaxPuts = 128;
constexpr std::size_t kMaxCommitBytes = std::size_t(1024) * 1024;

struct Entry {
    std::string key;
    std::string value; // empty when deleted
    // Of the last change of this key: what Put::expectedRevision compares with.
    std::int64_t modRevision = 0;
    bool deleted = false; // in watch events only
};

// All keys of a prefix at one moment, in the order of their bytes.
struct Range {
    std::vector<Entry> entries;
    // Of the whole cluster at that moment. A watch that shall miss nothing starts at the next one.
    std::int64_t revision = 0;
    // The cluster's identity. When it is another one, or the revision went back, known revisions mean
    // nothing.
    std::uint64_t cluster = 0;
};

struct Put {
    static constexpr std::int64_t kAnyRevision = -1;
    static constexpr std::int64_t kAbsent = 0;

    std::string key;
    std::string value;
    std::int64_t expectedRevision = kAnyRevision;
    bool remove = false;    // delete the key instead
    bool withLease = false; // it goes when this process does: bound to the lease that keepAlive() holds
};

enum class Outcome {
    Done,
    Refused,     // a comparison failed: somebody else was there first, nothing was changed
    Unreachable, // no answer in time, or no member has a leader. A commit may nevertheless have been done
    Denied,      // certificate, user or role do not allow it
    TooLarge,    // more than a transaction or a value may hold
    NoSpace,     // the cluster's quota is used up: it can be read, but not written
    Compacted,   // the revision asked for is no longer kept
};

class WatchSink {
public:
    enum class End { Gone, Compacted, Denied };

    virtual ~WatchSink() = default;
    // The watch stands: everything from its first revision on will come. A range read now closes every gap
    // before it.
    virtual void watching() = 0;
    // All changes of one or more whole transactions, in order; revision is that of the last one.
    virtual void events(const std::vector<Entry> &entries, std::int64_t revision) = 0;
    // The last call. The watch is over; read the range again and watch anew.
    virtual void lost(End why, const std::string &reason) = 0;
};

// A running watch. Deleting it ends it and waits for a call of the sink to return; none comes after that.
class Watch {
public:
    virtual ~Watch() = default;
};

class Cluster {
public:
    virtual ~Cluster() = default;

    // Done, Unreachable or Denied. On failure *range stays as it is.
    virtual Outcome range(const std::string &prefix, Range *range) = 0;
    // The same for one key: none or one entry.
    virtual Outcome get(const std::string &key, Range *range) = 0;
    // All of them or none, and no key twice. *revision (may be null): that of the change, and so of each key
    // put.
    virtual Outcome commit(const std::vector<Put> &puts, std::int64_t *revision) = 0;
    // Everything below the prefix from fromRevision on. Never null; what goes wrong is told through the sink.
    virtual std::unique_ptr<Watch> watch(const std::string &prefix, std::int64_t fromRevision,
                                         WatchSink *sink) = 0;
    // Puts key with a lease of so many seconds, or renews the lease and, when the value is another one, the
    // value. To be called again well before the time is over. After a longer pause it makes a new lease.
    virtual Outcome keepAlive(const std::string &key, const std::string &value, int seconds) = 0;
    // Ends the lease: the keys bound to it go at once.
    virtual Outcome endLease() = 0;
    // Whether the last call that was Unreachable had no connection at all: trying again soon is no load for
    // anybody then.
    virtual bool cutOff() const = 0;
    // One line on what the last call that was not Done failed with.
    virtual std::string reason() const = 0;
};

} // namespace fleet

#endif
