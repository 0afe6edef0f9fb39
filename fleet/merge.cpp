// SPDX-License-Identifier: MIT
#include "fleet/merge.h"

namespace fleet {

// A document that the cluster lost comes back from its server. A desk waits for that: its own copy may be
// older than what the server has by now, and putting it there would look like an edit. What comes back, or
// what a restored cluster has, may lack an edit that only this side has left: so that is kept.
const Rules kRules = {
    // Equal, LocalOnly, RemoteOnly, BothSame, BothDiffer, Gone, Older
    {Action::Nothing, Action::Push, Action::Apply, Action::Note, Action::Overrule, Action::Push,
     Action::Overrule},
    {Action::Nothing, Action::Push, Action::Apply, Action::Note, Action::Yield, Action::Nothing,
     Action::Yield},
};

namespace {

// Whether a side still is where both last agreed. Without a base nothing is known, so a deleted document is
// news; a path that had values and has none now was deleted.
bool unchanged(State side, State base)
{
    return base ? sameContent(side, base) : side == nullptr;
}

Situation withoutRemote(State local, State base)
{
    if (base)
        return Situation::Gone;
    return local && !local->deleted() ? Situation::LocalOnly : Situation::Equal;
}

} // namespace

bool sameContent(State left, State right)
{
    const bool leftEmpty = !left || left->deleted();
    const bool rightEmpty = !right || right->deleted();
    return leftEmpty || rightEmpty ? leftEmpty == rightEmpty : sameState(*left, *right);
}

Situation situationOf(State local, State base, State remote, bool restored)
{
    if (!remote)
        return withoutRemote(local, base);
    const bool remoteMoved = !unchanged(remote, base);
    if (sameContent(local, remote))
        return remoteMoved ? Situation::BothSame : Situation::Equal;
    if (!remoteMoved)
        return Situation::LocalOnly;
    const bool localMoved = base ? !sameContent(local, base) : local && !local->deleted();
    if (localMoved)
        return Situation::BothDiffer;
    return restored && base ? Situation::Older : Situation::RemoteOnly;
}

Action merge(Role role, State local, State base, State remote, bool restored, const Rules &rules)
{
    return rules[static_cast<int>(role)][static_cast<int>(situationOf(local, base, remote, restored))];
}

} // namespace fleet
