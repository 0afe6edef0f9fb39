// SPDX-License-Identifier: MIT
//
// The power goes at any moment. What a program does to the store's files is written down (journal.h); from
// that the states are made that a disk may be in afterwards, and each is opened. What was told as saved is
// there; what came later is there as a beginning of it; a transaction is there as a whole or not at all.
#include "afterpower.h"
#include "campaign.h"
#include "rkcfg.h"

#include <array>
#include <cstring>
#include <fcntl.h>
#include <fstream>
#include <sys/wait.h>

namespace {

constexpr const char *configuration = "plant";
constexpr const char *place = "PWC\\Values";
constexpr int inTransaction = 5;
constexpr uint32_t eachTransaction = 8;
constexpr uint32_t eachText = 4;
constexpr uint32_t eachName = 24;
constexpr uint32_t names = 3;
constexpr size_t cutsPerLife = 25;

// What the writer tells in the journal: it is saved up to here; this name was to be the default, and is.
enum Told { Saved = 1, Naming, Named };

std::string nameOf(uint64_t number)
{
    return "choice" + std::to_string(number % names);
}

std::string textOf(uint32_t count)
{
    return std::to_string(count) + ':' +
           std::string(count * 2654435761u % 9000, static_cast<char>('a' + count % 26));
}

struct Stored {
    uint32_t one = 0;
    uint32_t two = 0;
    std::array<uint32_t, inTransaction> together{};
    uint32_t text = 0;
    uint32_t usable = 0;
    uint32_t setAside = 0;
    char name[32] = "";
};

uint32_t number(void *store, const std::string &name)
{
    uint32_t value = 0;
    rkCFGValueDword(store, place, name.c_str(), &value, 0);
    return value;
}

bool put(void *store, const std::string &name, uint32_t value)
{
    return rkCFGValueDword(store, place, name.c_str(), &value, 1) != 0;
}

// The number that the text begins with, when the rest of it fits; else one that fits nothing.
uint32_t textNumber(void *store)
{
    std::array<char, 16384> buffer{};
    uint32_t size = buffer.size();
    if (rkCFGValueString(store, place, "text", buffer.data(), &size, 0) != 0)
        return 0;
    const auto count = static_cast<uint32_t>(strtoul(buffer.data(), nullptr, 10));
    return textOf(count) == buffer.data() ? count : UINT32_MAX;
}

Stored storedIn(void *store)
{
    Stored stored;
    stored.one = number(store, "one");
    stored.two = number(store, "two");
    for (size_t i = 0; i < inTransaction; ++i)
        stored.together[i] = number(store, std::to_string(i));
    stored.text = textNumber(store);
    return stored;
}

class Writer {
public:
    Writer() : m_journal(open(getenv("CAMPAIGN_JOURNAL"), O_WRONLY | O_APPEND | O_CLOEXEC)) {}

    int run(long steps)
    {
        m_store = rkCFGOpen(configuration, 1);
        if (m_store == nullptr)
            return 2;
        const uint32_t from = storedIn(m_store).one;
        put(m_store, "two", from); // where the life before it ended between the two
        for (uint32_t count = from + 1; count <= from + steps; ++count)
            step(count);
        // As often as not it just ends.
        return campaign::draw(2) == 0 ? rkCFGClose(m_store, 1) : 0;
    }

private:
    void step(uint32_t count) const
    {
        put(m_store, "one", count);
        put(m_store, "two", count);
        if (count % eachText == 0) {
            const std::string text = textOf(count);
            uint32_t size = static_cast<uint32_t>(text.size()) + 1;
            rkCFGValueString(m_store, place, "text", const_cast<char *>(text.c_str()), &size, 1);
        }
        if (count % eachTransaction == 0 && rkCFGBegin(m_store) == 0) {
            for (int i = 0; i < inTransaction; ++i)
                put(m_store, std::to_string(i), count);
            rkCFGEnd(m_store, 1);
        }
        if (count % eachName == 0)
            choose(count / eachName);
        if (campaign::draw(4) == 0 && rkCFGSave(m_store, nullptr, 0) == 0)
            tell(Saved, count);
    }
    void choose(uint32_t number) const
    {
        tell(Naming, number);
        if (rkCFGSetDefaultName(nameOf(number).c_str()) == 0)
            tell(Named, number);
    }
    void tell(Told sort, uint64_t count) const
    {
        const JournalRecord record{JOURNAL_TOLD, 0, sort, count};
        if (write(m_journal, &record, sizeof record) != ssize_t(sizeof record))
            abort();
    }

    int m_journal;
    void *m_store = nullptr;
};

std::vector<std::filesystem::path> asideIn(const std::string &home)
{
    std::vector<std::filesystem::path> found;
    for (const auto &entry : std::filesystem::directory_iterator(home + "/corvel")) {
        if (entry.path().filename().string().find(".corrupt-") != std::string::npos)
            found.push_back(entry.path());
    }
    return found;
}

// In a process of its own: this one never has a store open.
bool readBack(const std::string &home, Stored &stored)
{
    int ends[2];
    if (pipe2(ends, O_CLOEXEC) != 0)
        abort();
    const pid_t child = fork();
    if (child == 0) {
        setenv("XDG_CONFIG_HOME", home.c_str(), 1);
        void *const store = rkCFGOpen(configuration, 1);
        if (store == nullptr)
            _exit(1);
        stored = storedIn(store);
        rkCFGGetDefaultName(stored.name, sizeof stored.name);
        stored.usable =
            put(store, "after", number(store, "after") + 1) && rkCFGSave(store, nullptr, 0) == 0 ? 1 : 0;
        _exit(write(ends[1], &stored, sizeof stored) == ssize_t(sizeof stored) ? 0 : 1);
    }
    close(ends[1]);
    const bool whole = read(ends[0], &stored, sizeof stored) == ssize_t(sizeof stored);
    close(ends[0]);
    int status = -1;
    waitpid(child, &status, 0);
    stored.setAside = static_cast<uint32_t>(asideIn(home).size());
    return whole && status == 0;
}

struct Sums {
    long cuts = 0;
    long lost = 0;
    long disorder = 0;
    long setAside = 0;
};

// Lives of the writer, one after the other, each with the power cut in many places of it.
class Lives {
public:
    explicit Lives(const char *self) : m_self(self) { std::filesystem::create_directories(m_home + folder); }

    void one()
    {
        if (!writeOnce())
            m_problems.add("cut %ld: the writer ended badly", m_sums.cuts);
        const std::vector<campaign::Event> events = campaign::readJournal(m_journal);
        if (events.empty())
            m_problems.add("cut %ld: nothing was written down", m_sums.cuts);
        campaign::Disk disk = std::move(m_disk);
        size_t done = 0;
        // In order, so that one disk does for all of them.
        for (size_t cut = 1; cut <= cutsPerLife && !events.empty(); ++cut) {
            const size_t until = events.size() * cut / cutsPerLife;
            const size_t to = done + static_cast<size_t>(campaign::draw(static_cast<long>(until - done) + 1));
            for (; done < to; ++done)
                disk.take(events[done]);
            powerCut(disk);
        }
        beginAfterwards();
    }
    const Sums &sums() const { return m_sums; }
    const campaign::Problems &problems() const { return m_problems; }

private:
    static constexpr const char *folder = "/corvel";

    bool writeOnce()
    {
        m_disk = {};
        m_disk.fill(m_home + folder);
        std::ofstream(m_journal, std::ios::binary | std::ios::trunc).close();
        const std::string steps = std::to_string(5 + campaign::draw(60));
        const std::string seed = std::to_string(campaign::draw(1000000));
        const pid_t child = fork();
        if (child == 0) {
            setenv("XDG_CONFIG_HOME", m_home.c_str(), 1);
            setenv("CAMPAIGN_JOURNAL", m_journal.c_str(), 1);
            setenv("CAMPAIGN_SEED", seed.c_str(), 1);
            setenv("LD_PRELOAD", CAMPAIGN_SHIM, 1);
            execl(m_self, m_self, "write", steps.c_str(), nullptr);
            _exit(127);
        }
        int status = -1;
        waitpid(child, &status, 0);
        return WIFEXITED(status) && WEXITSTATUS(status) == 0;
    }

    void powerCut(const campaign::Disk &disk)
    {
        std::filesystem::remove_all(m_after);
        disk.leave(m_after + folder);
        ++m_sums.cuts;
        m_now = {};
        if (!readBack(m_after, m_now))
            m_problems.add("cut %ld: the store cannot be read", m_sums.cuts);
        judge(disk);
    }

    // The last cut's store, as it was repaired and saved, is what the next life begins with. Somebody has
    // taken away what was set aside.
    void beginAfterwards()
    {
        for (const auto &path : asideIn(m_after))
            std::filesystem::remove(path);
        std::filesystem::remove_all(m_home);
        std::filesystem::rename(m_after, m_home);
        m_before = m_now;
    }

    // What is written every so often: the last time up to the last save, in this life or before it.
    uint32_t due(uint32_t saved, uint32_t each, uint32_t before) const
    {
        const uint32_t last = saved / each * each;
        return last > m_before.one ? last : before;
    }

    bool named(const campaign::Disk &disk) const
    {
        const uint64_t is = disk.told(Named);
        bool fits = is == 0 && strcmp(m_now.name, m_before.name) == 0;
        for (uint64_t may = is > 0 ? is : disk.told(Naming); may > 0 && may <= disk.told(Naming); ++may)
            fits = fits || nameOf(may) == m_now.name;
        return fits;
    }

    void judge(const campaign::Disk &disk)
    {
        const Stored &now = m_now;
        const uint32_t saved = std::max(static_cast<uint32_t>(disk.told(Saved)), m_before.one);
        const bool lost = now.one < saved ||
                          now.two < std::max(static_cast<uint32_t>(disk.told(Saved)), m_before.two) ||
                          now.text < due(saved, eachText, m_before.text) ||
                          now.together[0] < due(saved, eachTransaction, m_before.together[0]);
        bool disorder =
            now.two > now.one || now.one > now.two + 1 || now.text > now.two || now.together[0] > now.two;
        for (const uint32_t other : now.together)
            disorder = disorder || other != now.together[0];
        m_sums.lost += lost || !named(disk);
        m_sums.disorder += disorder;
        m_sums.setAside += now.setAside > 0;
        if (lost || disorder || !named(disk) || now.usable == 0)
            m_problems.add("cut %ld: saved %u, stored %u %u %u, text %u, default \"%s\"%s%s%s%s", m_sums.cuts,
                           saved, now.one, now.two, now.together[0], now.text, now.name, lost ? ", lost" : "",
                           disorder ? ", out of order" : "", named(disk) ? "" : ", not the name",
                           now.usable != 0 ? "" : ", not usable");
    }

    campaign::WorkFolder m_work;
    std::string m_home = m_work.path() + "/home";
    std::string m_after = m_work.path() + "/after";
    std::string m_journal = m_work.path() + "/journal";
    const char *m_self;
    campaign::Disk m_disk;
    Stored m_before = unused();
    Stored m_now;
    Sums m_sums;
    campaign::Problems m_problems;

    static Stored unused()
    {
        Stored stored;
        strcpy(stored.name, "default");
        return stored;
    }
};

} // namespace

int main(int argc, char **argv)
{
    if (argc == 3 && strcmp(argv[1], "write") == 0)
        return Writer().run(strtol(argv[2], nullptr, 10));
    const long wanted = campaign::amount(300);
    Lives lives("/proc/self/exe");
    while (lives.sums().cuts < wanted && lives.problems().count() < 10)
        lives.one();
    const Sums &sums = lives.sums();
    return campaign::finish(lives.problems(),
                            "power cut %ld times, %ld lost, %ld out of order, %ld databases set aside",
                            sums.cuts, sums.lost, sums.disorder, sums.setAside);
}
