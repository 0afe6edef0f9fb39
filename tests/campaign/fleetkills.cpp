// SPDX-License-Identifier: MIT
//
// The services of a server and a desk are killed (kill -9) at any moment around an edit, in turn or both.
// Each edit arrives on both sides, and no store gets one twice. CAMPAIGN_DEAF: a break, a service that was
// killed is not started again.
#include "fleetsite.h"

namespace {

constexpr int kLongestMs = 40; // by then an edit is usually across
constexpr int kChannels = 8;

void killOnce(FleetSite &site, int side)
{
    const int channel = static_cast<int>(campaign::draw(kChannels));
    site.edit(side, channel);
    QTest::qWait(static_cast<int>(campaign::draw(kLongestMs)));
    site.machine(side).kill();
    if (getenv("CAMPAIGN_DEAF") == nullptr)
        site.machine(side).start();
}

int run(FleetSite &site, campaign::Problems &problems)
{
    const long wanted = campaign::amount(5);
    long kills = 0;
    while (kills < wanted && problems.count() == 0) {
        killOnce(site, static_cast<int>(kills % 2));
        ++kills;
        // The other side may only edit what it has: else the two edits would be a conflict, as they should.
        site.untilEqual("a kill");
    }
    site.untilEqual("the last kill");
    const long conflicts = site.conflicts().size();
    const int repeats = site.hand(FleetSite::kServer).repeats() + site.hand(FleetSite::kDesk).repeats();
    if (repeats > 0)
        problems.add("%d values were stored twice", repeats);
    if (conflicts > 0)
        problems.add("%ld conflicts about edits that followed each other", conflicts);
    return campaign::finish(problems, "%ld kills, %ld edits, 0 lost, %d stored twice, %ld needless conflicts",
                            kills, site.edits(), repeats, conflicts);
}

} // namespace

int main(int argc, char **argv)
{
    return onSite(argc, argv, run);
}
