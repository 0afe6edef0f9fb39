// SPDX-License-Identifier: MIT
//
// Eight processes write to the same configurations while a ninth switches the default one all the time. Each
// writer counts its values up: in transactions and through a handle it knows which configuration it writes
// to, with plain calls it is one of them. Nothing that was told as stored may be missing or older, and no
// call may take longer than the library says.
#include "campaign.h"
#include "rkcfg.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <cstring>
#include <new>
#include <sys/mman.h>
#include <sys/wait.h>
#include <vector>

namespace {

constexpr int writerCount = 8;
constexpr int64_t slowestUs = 1100000;
constexpr int stepsPerSave = 20;
const std::array<const char *, 2> configurations = {"default", "van"};
const char *const namePath = "KWX\\Campaign";

// The counts that one writer has been told are stored.
struct Told {
    std::array<uint32_t, 2> transaction{};
    std::array<uint32_t, 2> handle{};
    uint32_t plain = 0;
};

// Seen by all processes.
struct Shared {
    std::array<Told, writerCount> told;
    std::atomic<int64_t> slowestUs{0};
    std::atomic<long> writes{0};
    std::atomic<long> refused{0};
    std::atomic<long> lost{0};
    std::atomic<long> switches{0};
};

Shared *makeShared()
{
    void *const memory =
        mmap(nullptr, sizeof(Shared), PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0);
    if (memory == MAP_FAILED)
        abort();
    return new (memory) Shared;
}

uint32_t get(void *handle, const std::string &name)
{
    uint32_t value = 0;
    rkCFGValueDword(handle, namePath, name.c_str(), &value, 0);
    return value;
}

class Writer {
public:
    Writer(int number, Shared &shared)
        : m_shared(shared), m_told(shared.told[size_t(number)]), m_name(std::to_string(number)),
          m_random(uint32_t(number))
    {
        for (size_t i = 0; i < configurations.size(); ++i)
            m_handles[i] = rkCFGOpen(configurations[i], 0);
    }

    int run(int64_t end)
    {
        for (uint32_t count = 1; campaign::nowUs() < end; ++count) {
            inTransaction(count);
            throughHandle(count);
            plain(count);
            if (count % stepsPerSave == 0)
                timed([] { return rkCFGSave(RKCFG_DEFAULT_STORE, nullptr, 0) == 0; });
        }
        return 0;
    }

private:
    template<typename Call>
    bool timed(Call call)
    {
        const int64_t before = campaign::nowUs();
        const bool done = call();
        const int64_t took = campaign::nowUs() - before;
        int64_t slowest = m_shared.slowestUs;
        while (took > slowest && !m_shared.slowestUs.compare_exchange_weak(slowest, took)) {
        }
        return done;
    }
    bool put(void *handle, const std::string &name, uint32_t value)
    {
        const bool done =
            timed([&] { return rkCFGValueDword(handle, namePath, name.c_str(), &value, 1) != 0; });
        (done ? m_shared.writes : m_shared.refused) += 1;
        return done;
    }
    void expect(bool good, const char *what, uint32_t told, uint32_t found)
    {
        if (good)
            return;
        m_shared.lost += 1;
        printf("writer %s, %s: told %u, found %u\n", m_name.c_str(), what, told, found);
        fflush(stdout);
    }
    // Which configuration it is says a value that nobody changes.
    void inTransaction(uint32_t count)
    {
        if (!timed([] { return rkCFGBegin(RKCFG_DEFAULT_STORE) == 0; })) {
            m_shared.refused += 1;
            return;
        }
        const size_t at = get(RKCFG_DEFAULT_STORE, "which") == 2;
        const uint32_t before = get(RKCFG_DEFAULT_STORE, "transaction " + m_name);
        const bool put1 = put(RKCFG_DEFAULT_STORE, "transaction " + m_name, count);
        const bool put2 = put(RKCFG_DEFAULT_STORE, "transaction again " + m_name, count);
        if (timed([] { return rkCFGEnd(RKCFG_DEFAULT_STORE, 1) == 0; }) && put1 && put2)
            m_told.transaction[at] = count;
        expect(before <= count, "in a transaction", count, before);
    }
    void throughHandle(uint32_t count)
    {
        const size_t at = m_random() % 2;
        if (put(m_handles[at], "handle " + m_name, count))
            m_told.handle[at] = count;
        const uint32_t found = get(m_handles[at], "handle " + m_name);
        expect(found >= m_told.handle[at], "through a handle", m_told.handle[at], found);
        const uint32_t again = get(m_handles[at], "transaction " + m_name);
        expect(again >= m_told.transaction[at], "after a transaction", m_told.transaction[at], again);
    }
    void plain(uint32_t count)
    {
        if (!put(RKCFG_DEFAULT_STORE, "plain " + m_name, count))
            return;
        m_told.plain = count;
        const uint32_t found =
            std::max(get(m_handles[0], "plain " + m_name), get(m_handles[1], "plain " + m_name));
        expect(found == count, "with a plain call", count, found);
    }

    Shared &m_shared;
    Told &m_told;
    std::string m_name;
    std::minstd_rand m_random;
    std::array<void *, 2> m_handles{};
};

int switchAllTheTime(int64_t end, Shared &shared)
{
    for (size_t at = 1; campaign::nowUs() < end; at = 1 - at) {
        shared.switches += rkCFGSetDefaultName(configurations[at]) == 0;
        usleep(useconds_t(campaign::draw(50000)));
    }
    return 0;
}

void makeConfigurations()
{
    for (uint32_t i = 0; i < configurations.size(); ++i) {
        void *const handle = rkCFGOpen(configurations[i], 1);
        uint32_t which = i + 1;
        rkCFGValueDword(handle, namePath, "which", &which, 1);
        rkCFGClose(handle, 1);
    }
}

// A fresh process looks at the end.
int checkAll(Shared &shared)
{
    for (size_t at = 0; at < configurations.size(); ++at) {
        void *const handle = rkCFGOpen(configurations[at], 0);
        for (size_t i = 0; i < writerCount; ++i) {
            const Told &told = shared.told[i];
            const std::string name = std::to_string(i);
            const uint32_t transaction = get(handle, "transaction " + name);
            const bool whole = transaction == get(handle, "transaction again " + name);
            shared.lost += transaction < told.transaction[at] || !whole;
            shared.lost += get(handle, "handle " + name) < told.handle[at];
        }
        rkCFGClose(handle, 0);
    }
    return 0;
}

template<typename Body>
pid_t start(Body body)
{
    const pid_t child = fork();
    if (child == 0)
        _exit(body());
    return child;
}

int waitFor(pid_t child)
{
    int status = -1;
    waitpid(child, &status, 0);
    return status;
}

} // namespace

int main()
{
    const campaign::WorkFolder folder;
    setenv("XDG_CONFIG_HOME", folder.path().c_str(), 1);
    Shared &shared = *makeShared();
    campaign::Problems problems;
    waitFor(start([] {
        makeConfigurations();
        return 0;
    }));
    const int64_t end = campaign::nowUs() + campaign::amount(8) * 1000000;
    std::vector<pid_t> processes;
    for (int number = 0; number < writerCount; ++number)
        processes.push_back(start([&shared, number, end] { return Writer(number, shared).run(end); }));
    processes.push_back(start([&shared, end] { return switchAllTheTime(end, shared); }));
    for (const pid_t process : processes) {
        if (waitFor(process) != 0)
            problems.add("a writer ended before its time");
    }
    if (waitFor(start([&shared] { return checkAll(shared); })) != 0)
        problems.add("the store cannot be looked at");
    if (shared.lost > 0)
        problems.add("%ld values are lost", shared.lost.load());
    if (campaign::isLong() && shared.slowestUs > slowestUs)
        problems.add("a call took %.3f s", double(shared.slowestUs) / 1e6);
    return campaign::finish(
        problems, "%ld writes of %d processes, %ld switches, %ld lost, %ld refused, slowest call %.3f s",
        shared.writes.load(), writerCount, shared.switches.load(), shared.lost.load(), shared.refused.load(),
        double(shared.slowestUs) / 1e6);
}
