// SPDX-License-Identifier: MIT
//
// One configuration of the store: read as a whole, written as one transaction and one batch of the history.
// The calls block for as long as the disk takes. Use an object from one thread at a time.
#ifndef CORVEL_OPS_STORE_H
#define CORVEL_OPS_STORE_H

#include "ops/outcome.h"
#include "ops/snapshot.h"

#include <functional>

namespace ops {

// What is to change, seen from the values as they are. Asked at most once for each change; may fail.
using Plan = std::function<Outcome<Changes>(const Snapshot &)>;

class Store {
public:
    // The default configuration of the server.
    Store();
    // A named one, without making it anybody's default. It must exist unless `create` is set.
    static Outcome<Store> open(const QByteArray &name, bool create = false);

    Store(Store &&other) noexcept;
    Store &operator=(Store &&other) noexcept;
    ~Store();

    // For the calls of rkcfg.h.
    void *handle() const { return m_handle; }

    // Everything there is, or one path and those below it; sees one moment.
    Outcome<Snapshot> read(const QByteArray &path = QByteArray()) const;

    // Reads everything, has the plan made and makes its changes true, as one transaction: all of them
    // durably, or none, and nobody else's change comes in between. The batch gets the label (UTF-8, at most
    // 200 bytes, empty: none). Returns what was changed; no change is no batch. Others wait meanwhile, so a
    // plan asks nobody and prints nothing.
    Outcome<Changes> change(const Plan &plan, const QByteArray &label);

    // The same with changes that are made already: what they say about the value before is not looked at.
    Outcome<Done> apply(const Changes &changes, const QByteArray &label);

    // All that body writes is one transaction and one batch of the history, or nothing when it fails. It is
    // durable after save().
    Outcome<Done> together(const QByteArray &label, const std::function<Outcome<Done>()> &body);
    // One change, for a body.
    Outcome<Done> write(const Change &change);

    // What was written so far survives a power cut.
    Outcome<Done> save();

private:
    explicit Store(void *handle) : m_handle(handle) {}
    Outcome<Done> writeAll(const Changes &changes, const QByteArray &label);

    void *m_handle;
};

// Another process is writing, or the store cannot be written.
Failure storeBusy();

} // namespace ops

#endif
