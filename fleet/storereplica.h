// SPDX-License-Identifier: MIT
//
// A replica that is a configuration of the store on this machine. What the store keeps for itself (paths
// below "rkcfg") is not part of it.
#ifndef CORVEL_FLEET_STOREREPLICA_H
#define CORVEL_FLEET_STOREREPLICA_H

#include "fleet/storenotes.h"

#include <memory>

namespace fleet {

class StoreReplica : public Replica {
public:
    // By its name, also the default one: a replica stays with its configuration when another one becomes the
    // default. who is this machine's name in the fleet.
    static ops::Outcome<std::unique_ptr<StoreReplica>> open(const QByteArray &configuration, bool create,
                                                            const QByteArray &who);

    bool changed() override;
    bool read(Documents *documents) override;
    bool recall(Memory *memory) override;
    int overruled() override;
    Applied apply(const Transaction &transaction) override;
    void sign(const std::vector<Document *> &documents) override;

private:
    StoreReplica(ops::Store store, QByteArray who);

    ops::Outcome<ops::Done> applyStep(const Step &step, bool *moved);
    ops::Outcome<ops::Done> applyNotes(const Transaction &transaction);

    ops::Store m_store;
    StoreNotes m_notes;
    const QByteArray m_who;
    std::uint64_t m_seen = 0; // what the store's changes are counted from
};

} // namespace fleet

#endif
