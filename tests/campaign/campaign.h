/* SPDX-License-Identifier: MIT */
/*
 * What the programs of the campaign share: how much each is to do, where it works, and how it ends. A program
 * takes its amount from the environment (CAMPAIGN_AMOUNT, see tests/campaign/gates), says what went wrong,
 * and ends with one line of figures, which the runner puts into its table.
 */
#ifndef CAMPAIGN_H
#define CAMPAIGN_H

#include <cstdarg>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <filesystem>
#include <random>
#include <string>
#include <unistd.h>

namespace campaign {

inline long amount(long fallback)
{
    const char *const text = getenv("CAMPAIGN_AMOUNT");
    const long number = text != nullptr ? strtol(text, nullptr, 10) : 0;
    return number > 0 ? number : fallback;
}

// The long form has the machine to itself; only there a time is judged.
inline bool isLong()
{
    const char *const form = getenv("CAMPAIGN_FORM");
    return form != nullptr && std::string(form) == "long";
}

inline int64_t nowUs()
{
    timespec now{};
    clock_gettime(CLOCK_MONOTONIC, &now);
    return int64_t(now.tv_sec) * 1000000 + now.tv_nsec / 1000;
}

// The same in every run, unless CAMPAIGN_SEED asks for other ones.
inline std::mt19937 &dice()
{
    static std::mt19937 generator([] {
        const char *const seed = getenv("CAMPAIGN_SEED");
        return seed != nullptr ? uint32_t(strtoul(seed, nullptr, 10)) : 1u;
    }());
    return generator;
}

inline long draw(long below)
{
    return std::uniform_int_distribution<long>(0, below - 1)(dice());
}

// Counts what went wrong, tells the first twenty.
class Problems {
public:
    __attribute__((format(printf, 2, 3))) void add(const char *format, ...)
    {
        constexpr long told = 20;
        if (++m_count > told)
            return;
        va_list arguments;
        va_start(arguments, format);
        vprintf(format, arguments);
        va_end(arguments);
        putchar('\n');
        fflush(stdout);
    }
    long count() const { return m_count; }

private:
    long m_count = 0;
};

// The last line of a program; its result is the program's.
__attribute__((format(printf, 2, 3))) inline int finish(const Problems &problems, const char *format, ...)
{
    va_list arguments;
    va_start(arguments, format);
    printf("figures: ");
    vprintf(format, arguments);
    puts("");
    va_end(arguments);
    return problems.count() == 0 ? 0 : 1;
}

// A folder of its own, in memory where there is room for that: what is tried here is not the disk.
class WorkFolder {
public:
    WorkFolder()
    {
        const char *const temporary = getenv("TMPDIR");
        const std::string fallback = temporary != nullptr ? temporary : "/tmp";
        std::string name = (access("/dev/shm", W_OK) == 0 ? "/dev/shm" : fallback) + "/campaign-XXXXXX";
        if (mkdtemp(name.data()) == nullptr)
            abort();
        m_path = name;
    }
    ~WorkFolder() { std::filesystem::remove_all(m_path); }
    WorkFolder(const WorkFolder &) = delete;
    WorkFolder &operator=(const WorkFolder &) = delete;
    const std::string &path() const { return m_path; }

private:
    std::string m_path;
};

} // namespace campaign

#endif
