// SPDX-License-Identifier: MIT
//
// Writers of one store are killed at any moment. What a writer had been told is stored is there afterwards;
// what it wrote is there in the order in which it wrote it; a transaction is there as a whole or not at all.
#include "campaign.h"
#include "rkcfg.h"

#include <array>
#include <csignal>
#include <cstring>
#include <fcntl.h>
#include <sys/wait.h>
#include <vector>

namespace {

constexpr int writerCount = 3;
constexpr int inTransaction = 5;
constexpr int longestLifeUs = 12000;

// What a writer has stored of itself. It counts up: one, then two, then now and then all of the rest at once.
struct Counters {
    uint32_t one = 0;
    uint32_t two = 0;
    std::array<uint32_t, inTransaction> together{};
};
using All = std::array<Counters, writerCount>;

// What it tells through a pipe as soon as a call has returned.
struct Told {
    int writer;
    enum { One, Two, Together, Refused } what;
    uint32_t count;
};

struct Pipe {
    int read = -1;
    int write = -1;
    Pipe()
    {
        int ends[2];
        if (pipe2(ends, O_CLOEXEC) != 0)
            abort();
        read = ends[0];
        write = ends[1];
    }
    ~Pipe()
    {
        close(read);
        close(write);
    }
    Pipe(const Pipe &) = delete;
    Pipe &operator=(const Pipe &) = delete;
};

std::string pathOf(int writer)
{
    return "KWX\\Writer" + std::to_string(writer);
}

uint32_t stored(int writer, const char *name)
{
    uint32_t value = 0;
    rkCFGValueDword(RKCFG_DEFAULT_STORE, pathOf(writer).c_str(), name, &value, 0);
    return value;
}

Counters storedBy(int writer)
{
    Counters counters{stored(writer, "one"), stored(writer, "two"), {}};
    for (int i = 0; i < inTransaction; ++i)
        counters.together[size_t(i)] = stored(writer, std::to_string(i).c_str());
    return counters;
}

class Writer {
public:
    Writer(int number, int pipe) : m_number(number), m_pipe(pipe), m_path(pathOf(number)) {}

    [[noreturn]] void run()
    {
        const Counters before = storedBy(m_number);
        // Where the one before it was killed between the two.
        if (before.two != before.one)
            insist("two", before.one, Told::Two);
        for (uint32_t count = std::max(before.one, before.together[0]) + 1;; ++count) {
            insist("one", count, Told::One);
            insist("two", count, Told::Two);
            if (count % 16 == 0)
                rkCFGSave(RKCFG_DEFAULT_STORE, nullptr, 0);
            if (count % 8 == 0)
                tell(putTogether(count) ? Told::Together : Told::Refused, count);
        }
    }

private:
    bool put(const char *name, uint32_t count) const
    {
        return rkCFGValueDword(RKCFG_DEFAULT_STORE, m_path.c_str(), name, &count, 1) != 0;
    }
    // Again after a refusal, so that the order stays.
    void insist(const char *name, uint32_t count, decltype(Told::what) what) const
    {
        while (!put(name, count)) {
            tell(Told::Refused, count);
            if (stored(m_number, name) == count)
                return;
        }
        tell(what, count);
    }
    bool putTogether(uint32_t count) const
    {
        if (rkCFGBegin(RKCFG_DEFAULT_STORE) != 0)
            return false;
        for (int i = 0; i < inTransaction; ++i)
            put(std::to_string(i).c_str(), count);
        return rkCFGEnd(RKCFG_DEFAULT_STORE, 1) == 0;
    }
    void tell(decltype(Told::what) what, uint32_t count) const
    {
        const Told told{m_number, what, count};
        if (write(m_pipe, &told, sizeof told) != ssize_t(sizeof told))
            _exit(1);
    }

    int m_number;
    int m_pipe;
    std::string m_path;
};

// In a process of its own, so that this one never has the store open when it forks.
bool readBack(All &all)
{
    const Pipe pipe;
    const pid_t child = fork();
    if (child == 0) {
        for (int writer = 0; writer < writerCount; ++writer)
            all[size_t(writer)] = storedBy(writer);
        _exit(write(pipe.write, &all, sizeof all) == ssize_t(sizeof all) ? 0 : 1);
    }
    int status = -1;
    waitpid(child, &status, 0);
    return status == 0 && read(pipe.read, &all, sizeof all) == ssize_t(sizeof all);
}

struct Sums {
    long kills = 0;
    long told = 0;
    long refused = 0;
    long lost = 0;
    long disorder = 0;
};

void killAll(const std::vector<pid_t> &writers, Sums &sums)
{
    for (const pid_t writer : writers) {
        usleep(useconds_t(campaign::draw(longestLifeUs / writerCount)));
        kill(writer, SIGKILL);
        waitpid(writer, nullptr, 0);
        ++sums.kills;
    }
}

// The last that each writer was told.
void listen(int pipe, All &told, Sums &sums)
{
    Told one{};
    while (read(pipe, &one, sizeof one) == ssize_t(sizeof one)) {
        Counters &counters = told[size_t(one.writer)];
        sums.told += one.what != Told::Refused;
        sums.refused += one.what == Told::Refused;
        if (one.what == Told::One)
            counters.one = one.count;
        else if (one.what == Told::Two)
            counters.two = one.count;
        else if (one.what == Told::Together)
            counters.together.fill(one.count);
    }
}

void judge(const All &told, const All &now, Sums &sums, campaign::Problems &problems)
{
    for (size_t i = 0; i < writerCount; ++i) {
        const Counters &t = told[i];
        const Counters &n = now[i];
        const bool lost = n.one < t.one || n.two < t.two || n.together[0] < t.together[0];
        bool disorder = n.two > n.one || n.one > n.two + 1 || n.together[0] > n.two;
        for (const uint32_t other : n.together)
            disorder = disorder || other != n.together[0];
        sums.lost += lost;
        sums.disorder += disorder;
        if (lost || disorder)
            problems.add("kill %ld, writer %zu: told %u %u %u, stored %u %u %u%s", sums.kills, i, t.one,
                         t.two, t.together[0], n.one, n.two, n.together[0], disorder ? ", out of order" : "");
    }
}

long setAside(const std::string &folder)
{
    long count = 0;
    for (const auto &entry : std::filesystem::directory_iterator(folder + "/corvel"))
        count += entry.path().filename().string().find(".corrupt-") != std::string::npos;
    return count;
}

// One round: all write, all are killed one after the other.
void killOnce(All &told, Sums &sums, campaign::Problems &problems)
{
    int readEnd = -1;
    {
        Pipe pipe;
        std::vector<pid_t> writers;
        for (int number = 0; number < writerCount; ++number) {
            writers.push_back(fork());
            if (writers.back() == 0)
                Writer(number, pipe.write).run();
        }
        killAll(writers, sums);
        readEnd = dup(pipe.read);
    }
    listen(readEnd, told, sums);
    close(readEnd);
    All now{};
    if (!readBack(now))
        problems.add("kill %ld: the store cannot be read", sums.kills);
    judge(told, now, sums, problems);
    told = now;
}

} // namespace

int main()
{
    const campaign::WorkFolder folder;
    setenv("XDG_CONFIG_HOME", folder.path().c_str(), 1);
    const long wanted = campaign::amount(300);
    campaign::Problems problems;
    Sums sums;
    All told{};
    while (sums.kills < wanted && problems.count() < 10)
        killOnce(told, sums, problems);
    const long aside = setAside(folder.path());
    if (aside > 0)
        problems.add("%ld databases were set aside as damaged", aside);
    return campaign::finish(problems,
                            "%ld kills, %ld writes told as stored, %ld lost, %ld out of order, %ld refused",
                            sums.kills, sums.told, sums.lost, sums.disorder, sums.refused);
}
