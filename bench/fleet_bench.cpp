// SPDX-License-Identifier: MIT
//
// The fleet on one machine: how long an edit at a desk takes until it is in the server's store, and what an
// edit at the server costs with the service running and without, in turns:
//
//   build/ci/bench/bin/fleet_bench [TIMES]
#include "bench/measure.h"
#include "campaign/fleetsite.h"

#include <QCoreApplication>

#include <algorithm>

namespace {

constexpr int kTimes = 200;
constexpr int kTurns = 6;
constexpr int kBetweenMs = 20; // a person is slower

double percentile(std::vector<double> values, std::size_t percent)
{
    std::sort(values.begin(), values.end());
    return values.at(std::min(values.size() - 1, values.size() * percent / 100));
}

double oneAcross(FleetSite &site)
{
    site.hand(FleetSite::kServer).await(0, site.lastNumber() + 1);
    const int64_t start = campaign::nowUs();
    site.edit(FleetSite::kDesk, 0);
    site.hand(FleetSite::kServer).seen();
    return double(campaign::nowUs() - start) / 1000;
}

void across(FleetSite &site, int times)
{
    std::vector<double> delays;
    for (int i = 0; i < times; ++i) {
        delays.push_back(oneAcross(site));
        QTest::qWait(kBetweenMs);
    }
    tell("fleet.across.ms", percentile(delays, 50));
    tell("fleet.across.p99", percentile(delays, 99));
}

void local(FleetSite &site, int times)
{
    std::vector<double> with, without;
    for (int turn = 0; turn < kTurns; ++turn) {
        std::vector<double> &took = turn % 2 == 0 ? with : without;
        for (int i = 0; i < times / kTurns * 2; ++i) {
            took.push_back(
                double(site.hand(FleetSite::kServer).editUs(1, 1, quint32(100000 + turn * times + i))) /
                1000);
            QTest::qWait(kBetweenMs);
        }
        if (turn % 2 == 0)
            site.machine(FleetSite::kServer).stop();
        else
            site.machine(FleetSite::kServer).start();
    }
    tell("fleet.edit.ms", percentile(with, 50));
    tell("fleet.edit.peer", percentile(without, 50));
    tell("fleet.edit.ratio", percentile(with, 50) / percentile(without, 50));
}

} // namespace

int main(int argc, char **argv)
{
    const QCoreApplication application(argc, argv);
    const int times = argc > 1 ? QByteArray(argv[1]).toInt() : kTimes;
    campaign::Problems problems;
    FleetSite site(problems);
    if (!site.start())
        return 1;
    across(site, times);
    local(site, times);
    return problems.count() == 0 ? 0 : 1;
}
