// SPDX-License-Identifier: MIT
//
// How long to wait before another try: longer after each failure, and never the same time on two machines,
// so that a cluster that comes back is not run over by all of them at once. Not for more than one thread.
#ifndef CORVEL_FLEET_PAUSES_H
#define CORVEL_FLEET_PAUSES_H

#include <QtGlobal>

#include <functional>

namespace fleet {

// A number below the argument.
using Random = std::function<quint32(quint32 below)>;

class Pauses {
public:
    explicit Pauses(Random random) : m_random(std::move(random)) {}

    // The next pause: between half of it and all of it, doubled each time up to the longest.
    qint64 next(qint64 firstMs, qint64 longestMs);
    void succeeded() { m_failures = 0; }
    // Up to so long.
    qint64 upTo(qint64 ms) const { return m_random(static_cast<quint32>(ms) + 1); }

private:
    Random m_random;
    int m_failures = 0;
};

} // namespace fleet

#endif
