// SPDX-License-Identifier: MIT
#include "fleet/tool/sidebyside.h"

#include <algorithm>
#include <atomic>
#include <thread>
#include <vector>

namespace fleet {

void sideBySide(std::size_t count, std::size_t lanes,
                const std::function<bool(std::size_t at, std::size_t lane)> &work)
{
    std::atomic<std::size_t> next{0};
    std::atomic<bool> stopped{false};
    const auto run = [&](std::size_t lane) {
        for (std::size_t at = 0; !stopped && (at = next++) < count;) {
            if (!work(at, lane))
                stopped = true;
        }
    };
    std::vector<std::thread> threads;
    for (std::size_t lane = 1; lane < std::min(lanes, count); ++lane)
        threads.emplace_back(run, lane);
    run(0);
    for (std::thread &thread : threads)
        thread.join();
}

} // namespace fleet
