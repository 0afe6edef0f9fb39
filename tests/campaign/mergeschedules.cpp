// SPDX-License-Identifier: MIT
//
// The model of the merge (tests/fleet/mergemodel.h) under many schedules, on all processors. No disk, no
// network: a schedule is its number, and the same everywhere. CORVEL_MODEL_FIRST of test_fleet_model looks
// at one that failed.
#include "campaign.h"
#include "fleet/mergemodel.h"

#include <atomic>
#include <mutex>
#include <thread>
#include <vector>

namespace {

constexpr quint64 kAtOnce = 100; // schedules taken by a thread
constexpr quint64 kTellEvery = 10000;

// The rule that is hardest to notice: nothing gets lost by it, it only makes conflicts that need not be.
Breakage breakage()
{
    if (getenv("CAMPAIGN_BROKEN_RULE") == nullptr)
        return {};
    return {"desk: puts back what the cluster lost", fleet::Role::Desk, fleet::Situation::Gone,
            fleet::Action::Push};
}

class Schedules {
public:
    explicit Schedules(quint64 count) : m_count(count)
    {
        const char *const seed = getenv("CAMPAIGN_SEED");
        m_first = 1 + (seed != nullptr ? strtoull(seed, nullptr, 10) : 0) * 100000000;
    }

    void run()
    {
        std::vector<std::thread> threads;
        for (unsigned i = 0; i < std::max(1u, std::thread::hardware_concurrency()); ++i)
            threads.emplace_back([this] { work(); });
        for (std::thread &thread : threads)
            thread.join();
    }
    quint64 done() const { return m_done; }
    const campaign::Problems &problems() const { return m_problems; }

private:
    void work()
    {
        for (;;) {
            const quint64 from = m_taken.fetch_add(kAtOnce);
            for (quint64 at = from; at < std::min(from + kAtOnce, m_count) && m_wrong < 10; ++at)
                runOne(m_first + at);
            if (from + kAtOnce >= m_count || m_wrong >= 10)
                return;
        }
    }
    void runOne(quint64 seed)
    {
        const QString wrong = MergeModel(seed, m_breakage).run();
        const std::lock_guard<std::mutex> lock(m_mutex);
        if (++m_done % kTellEvery == 0)
            tell();
        if (wrong.isEmpty())
            return;
        ++m_wrong;
        m_problems.add("schedule %llu: %s", static_cast<unsigned long long>(seed), qPrintable(wrong));
    }

    void tell() const
    {
        printf("%llu of %llu\n", static_cast<unsigned long long>(m_done),
               static_cast<unsigned long long>(m_count));
        fflush(stdout);
    }

    const Breakage m_breakage = breakage();
    const quint64 m_count;
    quint64 m_first = 1;
    std::atomic<quint64> m_taken{0};
    std::atomic<quint64> m_done{0};
    std::atomic<int> m_wrong{0};
    std::mutex m_mutex;
    campaign::Problems m_problems;
};

} // namespace

int main()
{
    Schedules schedules(static_cast<quint64>(campaign::amount(1000)));
    const int64_t start = campaign::nowUs();
    schedules.run();
    const double seconds = double(campaign::nowUs() - start) / 1e6;
    return campaign::finish(schedules.problems(), "%llu schedules, %ld wrong, %.0f a second",
                            static_cast<unsigned long long>(schedules.done()), schedules.problems().count(),
                            double(schedules.done()) / seconds);
}
