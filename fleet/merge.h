// SPDX-License-Identifier: MIT
//
// What is to be done about one key path, from three states of it: what the store has (local), what both
// sides last agreed on (base), and what the cluster has (remote). State, not a log of operations: whoever
// differs from base has changed, and deciding twice does no harm. No clock takes part. Pure; any thread.
//
// A state is null (never heard of), a document without values (deleted) or one with values. The unit is the
// whole path: an address of one person with the port of another is a stream that nobody wanted.
#ifndef CORVEL_FLEET_MERGE_H
#define CORVEL_FLEET_MERGE_H

#include "fleet/document.h"

namespace fleet {

// A server keeps what was set on it, a desk takes what the cluster has.
enum class Role { Server, Desk };

enum class Situation {
    Equal,      // nobody has changed anything
    LocalOnly,  // this side has changed it
    RemoteOnly, // the others have
    BothSame,   // both have, and to the same
    BothDiffer, // both have, to different states
    Gone,       // both agreed on something, and the cluster no longer knows it: it lost its memory
    Older,      // as RemoteOnly, but in a cluster that was set up again from an older state
};
constexpr int kSituationCount = 7;

enum class Action {
    Nothing,
    Note,     // take the common state as base
    Push,     // put the local state into the cluster, provided it still has the remote one
    Apply,    // write the remote state into the store, provided it still has the local one
    Overrule, // keep the remote document as a conflict and take it as base: from there a push follows
    Yield,    // apply, and keep the local document as a conflict
};

// One action for each situation, in their order.
using Rules = Action[2][kSituationCount];
extern const Rules kRules;

using State = const Document *;

// restored: the cluster is another one than base was agreed on with, or went back in time.
Situation situationOf(State local, State base, State remote, bool restored);

Action merge(Role role, State local, State base, State remote, bool restored = false,
             const Rules &rules = kRules);

// Null counts as deleted here: there is nothing either way.
bool sameContent(State left, State right);

} // namespace fleet

#endif
