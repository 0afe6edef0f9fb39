// SPDX-License-Identifier: MIT
//
// Changes being put together: what was set so far lies over the configuration as it is, so that a later
// step sees what an earlier one set. Pure; any thread.
#ifndef CORVEL_OPS_DRAFT_H
#define CORVEL_OPS_DRAFT_H

#include "ops/snapshot.h"

#include <map>
#include <utility>

namespace ops {

class Draft {
public:
    // `base` has to live as long as the draft.
    explicit Draft(const Snapshot &base) : m_base(base) {}

    void set(const QByteArray &path, const QByteArray &name, const Value &value);
    void remove(const QByteArray &path, const QByteArray &name);

    // The value with what was set so far.
    std::optional<Value> find(const QByteArray &path, const QByteArray &name) const;
    quint32 number(const QByteArray &path, const QByteArray &name) const;

    const Snapshot &base() const { return m_base; }

    // What really changes, in the store's order.
    Changes changes() const;

private:
    using Key = std::pair<QByteArray, QByteArray>;
    struct Before {
        bool operator()(const Key &left, const Key &right) const
        {
            return compareKeys(left.first, left.second, right.first, right.second) < 0;
        }
    };

    const Snapshot &m_base;
    std::map<Key, std::optional<Value>, Before> m_set;
};

} // namespace ops

#endif
