// SPDX-License-Identifier: MIT
//
// Every system call that the store makes fails once, or from then on: which call, which error and which state
// the store is in at the start are drawn. The program that meets the fault does not end by it, whatever it
// was told is stored is there afterwards, no value that was there is lost, and no good copy holds less than
// before.
#include "campaign.h"
#include "rkcfg.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <csignal>
#include <cstring>
#include <fcntl.h>
#include <fstream>
#include <functional>
#include <map>
#include <set>
#include <sqlite3.h>
#include <sstream>
#include <sys/wait.h>
#include <vector>

namespace fs = std::filesystem;

namespace {

constexpr int oldValues = 60;
constexpr int newValues = 6;
constexpr unsigned patienceSeconds = 60;
const char *const path = "KWX\\Internal0";
void *const store = RKCFG_DEFAULT_STORE;

bool put(const std::string &name, uint32_t value)
{
    return rkCFGValueDword(store, path, name.c_str(), &value, 1) != 0;
}

std::string oldName(int i)
{
    return "old " + std::to_string(i);
}

void putOld(int from, int to)
{
    for (int i = from; i < to; ++i)
        put(oldName(i), uint32_t(i) + 1);
}

// ---------------------------------------------------------------------------- the program that meets the
// fault

// Says on standard output what it has been told is stored.
void tell(const std::string &name)
{
    std::printf("%s\n", name.c_str());
    std::fflush(stdout);
}

void putNew(int from, int to)
{
    if (getenv("CAMPAIGN_FORGET") != nullptr)
        tell("new that never was");
    for (int i = from; i < to; ++i) {
        const std::string name = "new " + std::to_string(i);
        if (put(name, uint32_t(i) + 1))
            tell(name);
    }
}

void putTogether()
{
    if (rkCFGBegin(store) != 0)
        return;
    put("together 0", 1);
    put("together 1", 2);
    if (rkCFGEnd(store, 1) == 0) {
        tell("together 0");
        tell("together 1");
    }
}

int meetTheFault()
{
    alarm(patienceSeconds);
    putNew(0, newValues / 2);
    rkCFGSave(store, nullptr, 0);
    putTogether();
    rkCFGClose(store, 1);
    putNew(newValues / 2, newValues);
    rkCFGSave(store, nullptr, 0);
    rkCFGClose(store, 1);
    return 0;
}

// ---------------------------------------------------------------------------------------------- processes

pid_t start(const std::function<int()> &body)
{
    const pid_t child = fork();
    if (child == 0)
        _exit(body());
    return child;
}

// 0 when it ended well; else what wait() says.
int inChild(const std::function<int()> &body)
{
    int status = -1;
    waitpid(start(body), &status, 0);
    return status;
}

// What the library logs; CAMPAIGN_TALK lets it be seen.
void silence()
{
    if (getenv("CAMPAIGN_TALK") == nullptr)
        dup2(open("/dev/null", O_WRONLY | O_CLOEXEC), STDERR_FILENO);
}

// This program again, with the shim, in a home of its own. What it told goes to a file.
int run(const std::string &home, const std::string &variable, const std::string &value,
        const std::string &told)
{
    return inChild([&] {
        setenv("XDG_CONFIG_HOME", home.c_str(), 1);
        setenv("LD_PRELOAD", CAMPAIGN_SHIM, 1);
        setenv(variable.c_str(), value.c_str(), 1);
        const int output = open(told.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0600);
        dup2(output, STDOUT_FILENO);
        silence();
        execl("/proc/self/exe", "faults", "--meet", static_cast<char *>(nullptr));
        return 127;
    });
}

std::set<std::string> linesOf(const std::string &file)
{
    std::set<std::string> lines;
    std::ifstream stream(file);
    for (std::string line; std::getline(stream, line);)
        lines.insert(line);
    return lines;
}

// The names of all values, as a healthy process finds them. "(unreadable)" when it cannot.
std::set<std::string> namesIn(const std::string &home, const std::string &file)
{
    inChild([&] {
        setenv("XDG_CONFIG_HOME", home.c_str(), 1);
        silence();
        std::ofstream out(file);
        const auto visit = [](void *context, const char *, const char *name, const char *, uint32_t,
                              uint32_t) {
            *static_cast<std::ofstream *>(context) << name << '\n';
            return 0;
        };
        // Usable again, too.
        if (rkCFGForEach(store, path, visit, &out) != 0 || !put("afterwards", uint32_t(getpid())))
            out << "(unreadable)\n";
        out.flush();
        return rkCFGClose(store, 1);
    });
    return linesOf(file);
}

// ------------------------------------------------------------------------------------------------ start
// states

void damage(const std::string &file, int seed)
{
    std::mt19937 noise{uint32_t(seed)};
    std::ofstream stream(file, std::ios::binary | std::ios::trunc);
    for (int i = 0; i < 20000; ++i)
        stream.put(char(noise() & 0xff));
}

struct State {
    const char *name;
    int values; // that must be there whatever happens
    std::function<void(const std::string &folder)> make;
};

int fill(int count)
{
    putOld(0, count);
    return rkCFGClose(store, 1);
}

// The present copy becomes the older one of two by being old itself.
void age(const std::string &file)
{
    fs::last_write_time(file, fs::file_time_type::clock::now() - std::chrono::minutes(20));
}

void leaveALog()
{
    inChild([] {
        putOld(0, oldValues);
        rkCFGSave(store, nullptr, 0);
        put("new in the log", 1);
        return kill(getpid(), SIGKILL);
    });
}

void fillTwice(const std::string &folder)
{
    inChild([] { return fill(oldValues); });
    age(folder + "/default.rkcfg.good");
    inChild([] {
        put("second", 1);
        return rkCFGClose(store, 1);
    });
}

const State states[] = {
    {"new", 0, [](const std::string &) {}},
    {"used", oldValues, [](const std::string &) { inChild([] { return fill(oldValues); }); }},
    {"log left behind", oldValues + 1, [](const std::string &) { leaveALog(); }},
    {"damaged", oldValues,
     [](const std::string &folder) {
         inChild([] { return fill(oldValues); });
         damage(folder + "/default.rkcfg", 1);
     }},
    {"damaged twice", oldValues,
     [](const std::string &folder) {
         fillTwice(folder);
         damage(folder + "/default.rkcfg", 1);
         damage(folder + "/default.rkcfg.good", 2);
     }},
};

// ------------------------------------------------------------------------------------------------------
// faults

const char *const calls[] = {"open",   "read",   "write", "fsync", "fdatasync", "ftruncate",
                             "rename", "unlink", "link",  "mmap",  "fcntl",     "flock"};
const char *const shortCall = "short";

struct Kind {
    const char *name;
    std::string code;
    bool lasting; // an interruption that never ends is none
};
const Kind kinds[] = {
    {"EIO", std::to_string(EIO), true},       {"ENOSPC", std::to_string(ENOSPC), true},
    {"EINTR", std::to_string(EINTR), false},  {"EMFILE", std::to_string(EMFILE), true},
    {"EDQUOT", std::to_string(EDQUOT), true}, {shortCall, shortCall, true},
};

using Counts = std::map<std::string, long>;

Counts readCounts(const std::string &file)
{
    Counts counts;
    std::ifstream stream(file);
    std::string name;
    for (long count = 0; stream >> name >> count;)
        counts[name] = count;
    return counts;
}

// The most values that a good copy holds; -1: there is none that can be read.
int bestCopy(const std::string &folder)
{
    int best = -1;
    for (const char *name : {"/default.rkcfg.good", "/default.rkcfg.good-older"}) {
        sqlite3 *db = nullptr;
        const auto count = [](void *result, int, char **columns, char **) {
            *static_cast<int *>(result) = std::max(*static_cast<int *>(result), atoi(columns[0]));
            return 0;
        };
        if (sqlite3_open_v2((folder + name).c_str(), &db, SQLITE_OPEN_READONLY, nullptr) == SQLITE_OK)
            sqlite3_exec(db, "SELECT count(*) FROM setting", count, &best, nullptr);
        sqlite3_close(db);
    }
    return best;
}

class Campaign {
public:
    explicit Campaign(const std::string &root) : m_root(root) { makeTemplates(); }

    void one()
    {
        const size_t state = size_t(campaign::draw(std::size(states)));
        const Kind &kind = kinds[campaign::draw(std::size(kinds))];
        const std::string call = drawCall(state, kind);
        const long number = 1 + campaign::draw(m_counts[state][call]);
        const bool lasting = kind.lasting && campaign::draw(3) == 0;
        one(state, call + ':' + std::to_string(number) + ':' + kind.code + (lasting ? "::on" : ""));
    }
    void one(size_t state, const std::string &fault)
    {
        const std::string what = std::to_string(state) + ' ' + fault + " (" + states[state].name + ')';
        fresh(state);
        const int before = bestCopy(m_folder);
        const int status = run(m_home, "CAMPAIGN_FAULT", fault, m_root + "/told");
        judge(states[state], what, status, before);
        ++m_runs;
    }
    int finish() const
    {
        return campaign::finish(
            m_problems, "%ld runs with a fault, %ld ended by it, %ld values lost, %ld good copies made worse",
            m_runs, m_ended, m_lost, m_worse);
    }
    long problems() const { return m_problems.count(); }

private:
    void makeTemplates()
    {
        for (size_t i = 0; i < std::size(states); ++i) {
            const std::string home = m_root + "/state" + std::to_string(i);
            fs::create_directories(home + "/corvel");
            fs::permissions(home + "/corvel", fs::perms::owner_all);
            setenv("XDG_CONFIG_HOME", home.c_str(), 1);
            states[i].make(home + "/corvel");
            fresh(i);
            const std::string counts = m_root + "/counts";
            if (run(m_home, "CAMPAIGN_COUNTS", counts, m_root + "/told") != 0)
                m_problems.add("%s: fails without a fault", states[i].name);
            m_counts.push_back(readCounts(counts));
        }
    }
    // One that this state makes, and that can go wrong in this way.
    std::string drawCall(size_t state, const Kind &kind)
    {
        for (;;) {
            const std::string call = kind.name == shortCall ? calls[1 + campaign::draw(2)]
                                                            : calls[campaign::draw(std::size(calls))];
            if (m_counts[state][call] > 0)
                return call;
        }
    }
    void fresh(size_t state)
    {
        m_home = m_root + "/home";
        m_folder = m_home + "/corvel";
        fs::remove_all(m_home);
        fs::copy(m_root + "/state" + std::to_string(state), m_home, fs::copy_options::recursive);
        fs::permissions(m_folder, fs::perms::owner_all);
    }
    void judge(const State &state, const std::string &what, int status, int before)
    {
        if (status != 0) {
            ++m_ended;
            m_problems.add("%s: ended with %s %d", what.c_str(), WIFSIGNALED(status) ? "signal" : "code",
                           WIFSIGNALED(status) ? WTERMSIG(status) : WEXITSTATUS(status));
        }
        const int after = bestCopy(m_folder);
        if (after < before) {
            ++m_worse;
            m_problems.add("%s: good copies had %d values, now %d", what.c_str(), before, after);
        }
        const std::set<std::string> told = linesOf(m_root + "/told");
        const std::set<std::string> now = namesIn(m_home, m_root + "/now");
        judgeValues(state, what, told, now);
    }
    void judgeValues(const State &state, const std::string &what, const std::set<std::string> &told,
                     const std::set<std::string> &now)
    {
        long lost = now.count("(unreadable)") != 0;
        if (lost != 0)
            m_problems.add("%s: the store cannot be used afterwards", what.c_str());
        std::vector<std::string> missing;
        std::set_difference(told.begin(), told.end(), now.begin(), now.end(), std::back_inserter(missing));
        for (const std::string &name : missing)
            m_problems.add("%s: \"%s\" was told as stored and is not there", what.c_str(), name.c_str());
        lost += long(missing.size());
        const long old = std::count_if(now.begin(), now.end(), [](const std::string &name) {
            return name.rfind("old ", 0) == 0 || name == "new in the log";
        });
        if (old < state.values)
            m_problems.add("%s: %ld of %d old values are there", what.c_str(), old, state.values);
        m_lost += lost + std::max(0L, state.values - old);
    }

    std::string m_root;
    std::string m_home;
    std::string m_folder;
    std::vector<Counts> m_counts;
    campaign::Problems m_problems;
    long m_runs = 0;
    long m_ended = 0;
    long m_lost = 0;
    long m_worse = 0;
};

} // namespace

// faults [STATE FAULT]: one case, as a run before has told it, instead of many.
int main(int argc, char **argv)
{
    if (argc > 1 && strcmp(argv[1], "--meet") == 0)
        return meetTheFault();
    const campaign::WorkFolder folder;
    Campaign faults(folder.path());
    if (argc > 2)
        faults.one(size_t(atoi(argv[1])), argv[2]);
    const long wanted = argc > 2 ? 0 : campaign::amount(300);
    for (long run = 0; run < wanted && faults.problems() < 50; ++run)
        faults.one();
    return faults.finish();
}
