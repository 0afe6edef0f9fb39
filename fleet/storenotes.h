// SPDX-License-Identifier: MIT
//
// What a replica remembers beside the values of its configuration, as notes of the store under one owner:
//   mark            what the rest belongs to (Mark)
//   base/KEY        what both sides last agreed on about a path
//   flight/KEY      what was pushed, until it is known to have arrived
//   conflict/ID     an overruled document that is not in the cluster yet
//   overruled/ID    one of this machine's that is, until somebody has looked at it
// The calls block for as long as the disk takes. One thread at a time.
#ifndef CORVEL_FLEET_STORENOTES_H
#define CORVEL_FLEET_STORENOTES_H

#include "fleet/replica.h"
#include "ops/store.h"

#include <functional>

namespace fleet {

class StoreNotes {
public:
    explicit StoreNotes(const ops::Store &store) : m_handle(store.handle()) {}

    // A site's own library may keep no notes.
    static bool available();

    bool recall(Memory *memory) const;
    // Only what all that belongs to; empty when nothing is remembered or to be read.
    Mark mark() const;
    bool rememberMark(const Mark &mark) const;
    bool rememberStep(const Step &step) const;
    bool forgetUploaded(const std::string &id, const QByteArray &who) const;

    // Documents of this machine that were overruled and nobody has looked at yet: to be uploaded or there.
    bool overruled(const QByteArray &who, std::vector<Conflict> *conflicts) const;
    // Somebody has looked at them.
    bool forgetOverruled() const;
    // For leaving the fleet: nothing but the values remains.
    bool forgetAll() const;

private:
    using Visit = std::function<void(const std::string &key, const std::string &data)>;

    bool set(const std::string &key, const std::string &data) const;
    std::string get(const std::string &key) const;
    bool walk(const Visit &visit) const;
    bool forget(const std::string &prefix) const;

    void *m_handle;
};

} // namespace fleet

#endif
