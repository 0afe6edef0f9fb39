// SPDX-License-Identifier: MIT
//
// The same work on many things, several at a time.
#ifndef CORVEL_FLEET_TOOL_SIDEBYSIDE_H
#define CORVEL_FLEET_TOOL_SIDEBYSIDE_H

#include <cstddef>
#include <functional>

namespace fleet {

// Calls work(at, lane) for each `at` below count, in their order, in as many threads as there are lanes;
// calls of one lane come one after the other. When one of them returns false no more are begun. Returns when
// all that were begun have ended. One lane: in the caller's own thread.
void sideBySide(std::size_t count, std::size_t lanes,
                const std::function<bool(std::size_t at, std::size_t lane)> &work);

} // namespace fleet

#endif
