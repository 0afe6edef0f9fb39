// SPDX-License-Identifier: MIT
//
// fleethand [CONFIGURATION]: somebody who works with a store, as the gates of the fleet tell it on standard
// input. An edit is what the dialog makes of one: a burst of single values and a save.
//
//   edit CHANNEL COUNT NUMBER   gives so many channels that number  -> "edited MICROSECONDS", of the slowest
//   dump                        what is there                       -> "CHANNEL NUMBER|torn ..." in one line
//   await CHANNEL NUMBER        waits until it is stored            -> "seen"
//   repeats                     what was stored more than once      -> "repeated COUNT"
#include "rkcfg.h"

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <ctime>
#include <map>
#include <set>
#include <string>
#include <unistd.h>

namespace {

constexpr int valueCount = 20;
constexpr useconds_t lookUs = 500;

long long nowUs()
{
    timespec now{};
    clock_gettime(CLOCK_MONOTONIC, &now);
    return now.tv_sec * 1000000LL + now.tv_nsec / 1000;
}

std::string pathOf(long channel)
{
    return "KWX\\Internal" + std::to_string(channel) + "\\IpConfig";
}

std::string nameOf(int value)
{
    return "Value" + std::to_string(value);
}

class Hand {
public:
    explicit Hand(const char *configuration)
        : m_store(configuration != nullptr ? rkCFGOpen(configuration, 0) : RKCFG_DEFAULT_STORE)
    {
    }

    void edit(long channel, long count, uint32_t number)
    {
        long long slowest = 0;
        bool stored = true;
        for (long i = channel; i < channel + count; ++i) {
            const long long start = nowUs();
            stored = store(i, number) && stored;
            slowest = std::max(slowest, nowUs() - start);
        }
        printf(stored ? "edited %lld\n" : "refused %lld\n", slowest);
    }
    void dump()
    {
        m_seen.clear();
        rkCFGForEach(m_store, nullptr, visit, this);
        for (const auto &[channel, numbers] : m_seen) {
            if (numbers.size() == 1)
                printf("%ld %u ", channel, *numbers.begin());
            else
                printf("%ld torn ", channel);
        }
        puts("");
    }
    void await(long channel, uint32_t number)
    {
        uint32_t present = number + 1;
        const std::string path = pathOf(channel);
        const std::string last = nameOf(valueCount - 1);
        while (present != number) {
            usleep(lookUs);
            rkCFGValueDword(m_store, path.c_str(), last.c_str(), &present, 0);
        }
        puts("seen");
    }
    void repeats()
    {
        m_stored.clear();
        rkCFGHistory(m_store, 0, visitChange, this);
        const auto repeated = [](const auto &entry) { return entry.second > 1; };
        printf("repeated %ld\n", long(std::count_if(m_stored.begin(), m_stored.end(), repeated)));
    }

private:
    bool store(long channel, uint32_t number)
    {
        bool stored = true;
        for (int value = 0; value < valueCount; ++value) {
            uint32_t copy = number;
            stored =
                rkCFGValueDword(m_store, pathOf(channel).c_str(), nameOf(value).c_str(), &copy, 1) != 0 &&
                stored;
        }
        return rkCFGSave(m_store, nullptr, 0) == 0 && stored;
    }
    static long channelOf(const char *path)
    {
        long channel = -1;
        return sscanf(path, "KWX\\Internal%ld\\IpConfig", &channel) == 1 ? channel : -1;
    }
    static int visit(void *self, const char *path, const char *, const char *, uint32_t, uint32_t number)
    {
        const long channel = channelOf(path);
        if (channel >= 0)
            static_cast<Hand *>(self)->m_seen[channel].insert(number);
        return 0;
    }
    // Numbers are never used twice, so a value that got one twice was written twice.
    static int visitChange(void *self, const RKCFG_CHANGE *change)
    {
        const bool first = strcmp(change->valueName, "Value0") == 0;
        if (first && change->newType == 2)
            ++static_cast<Hand *>(self)->m_stored[{channelOf(change->keyPath), change->newNumber}];
        return 0;
    }

    void *m_store;
    std::map<long, std::set<uint32_t>> m_seen;
    std::map<std::pair<long, uint32_t>, int> m_stored;
};

} // namespace

int main(int argc, char **argv)
{
    Hand hand(argc > 1 ? argv[1] : nullptr);
    char line[100];
    while (fgets(line, sizeof line, stdin) != nullptr) {
        long channel = 0;
        long count = 0;
        unsigned number = 0;
        if (sscanf(line, "edit %ld %ld %u", &channel, &count, &number) == 3)
            hand.edit(channel, count, number);
        else if (sscanf(line, "await %ld %u", &channel, &number) == 2)
            hand.await(channel, number);
        else if (strncmp(line, "dump", 4) == 0)
            hand.dump();
        else
            hand.repeats();
        fflush(stdout);
    }
    return 0;
}
