// SPDX-License-Identifier: MIT
#include "fleet/pauses.h"

namespace fleet {

namespace {

constexpr int kMostDoublings = 20;

} // namespace

qint64 Pauses::next(qint64 firstMs, qint64 longestMs)
{
    const qint64 pause = qMin(longestMs, firstMs << qMin(m_failures, kMostDoublings));
    ++m_failures;
    return pause / 2 + upTo(pause / 2);
}

} // namespace fleet
