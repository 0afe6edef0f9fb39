// SPDX-License-Identifier: MIT
#include "ptpprocesses.h"

#include "descriptor.h"
#include "text.h"

#include <algorithm>
#include <cstdio>
#include <dirent.h>
#include <fstream>
#include <memory>
#include <sstream>

namespace rkptp {

namespace {

using rk::Descriptor;

std::vector<pid_t> allProcesses()
{
    std::vector<pid_t> found;
    const std::unique_ptr<DIR, int (*)(DIR *)> entries(opendir("/proc"), closedir);
    while (const dirent *entry = entries ? readdir(entries.get()) : nullptr) {
        const long pid = strtol(entry->d_name, nullptr, 10);
        if (pid > 0)
            found.push_back(static_cast<pid_t>(pid));
    }
    return found;
}

// Not through a stream: reading of a process that ends meanwhile fails, and a stream's buffer throws then.
std::string processFile(pid_t pid, const char *name)
{
    const std::string path = "/proc/" + std::to_string(pid) + "/" + name;
    const Descriptor file(open(path.c_str(), O_RDONLY | O_CLOEXEC));
    std::string text;
    char part[4096];
    ssize_t got = 0;
    while (file.valid() && (got = read(file.get(), part, sizeof part)) > 0)
        text.append(part, static_cast<size_t>(got));
    return text;
}

std::vector<std::string> argumentsOf(pid_t pid)
{
    std::istringstream text(processFile(pid, "cmdline"));
    std::vector<std::string> arguments;
    for (std::string one; std::getline(text, one, '\0');)
        arguments.push_back(one);
    return arguments;
}

uid_t userOf(pid_t pid)
{
    std::istringstream status(processFile(pid, "status"));
    uid_t user = 0;
    for (std::string line; std::getline(status, line);)
        if (line.compare(0, 4, "Uid:") == 0)
            std::istringstream(line.substr(4)) >> user;
    return user;
}

// True for those that cannot be asked as well: they may be in ours.
bool inOurNetwork(pid_t pid)
{
    char theirs[64] = "";
    char own[64] = "";
    const std::string path = "/proc/" + std::to_string(pid) + "/ns/net";
    return readlink(path.c_str(), theirs, sizeof theirs - 1) < 0 ||
           readlink("/proc/self/ns/net", own, sizeof own - 1) < 0 || std::string(theirs) == own;
}

// Empty as well when we may not look.
std::vector<uint64_t> socketsOf(pid_t pid, bool *known = nullptr)
{
    const std::string folder = "/proc/" + std::to_string(pid) + "/fd";
    const std::unique_ptr<DIR, int (*)(DIR *)> entries(opendir(folder.c_str()), closedir);
    std::vector<uint64_t> found;
    if (known)
        *known = entries != nullptr;
    while (const dirent *entry = entries ? readdir(entries.get()) : nullptr) {
        char target[64] = "";
        unsigned long long inode = 0;
        if (readlinkat(dirfd(entries.get()), entry->d_name, target, sizeof target - 1) > 0 &&
            sscanf(target, "socket:[%llu]", &inode) == 1)
            found.push_back(inode);
    }
    return found;
}

bool contains(const std::vector<uint64_t> &list, uint64_t inode)
{
    return std::find(list.begin(), list.end(), inode) != list.end();
}

bool endsWith(const std::string &text, const std::string &end)
{
    return text.size() >= end.size() && text.compare(text.size() - end.size(), end.size(), end) == 0;
}

} // namespace

std::string nameOf(pid_t pid)
{
    return std::string(rk::trimmed(processFile(pid, "comm"))) + " (process " + std::to_string(pid) + ")";
}

pid_t holderOf(uint64_t inode)
{
    for (const pid_t pid : allProcesses())
        if (contains(socketsOf(pid), inode))
            return pid;
    return 0;
}

bool PtpProcess::ours() const
{
    const auto has = [this](auto test) { return std::any_of(arguments.begin(), arguments.end(), test); };
    return has([](const std::string &one) { return one == "--free_running=1"; }) &&
           has([](const std::string &one) {
               return one.compare(0, 14, "--uds_address=") == 0 && one.find("ptp-") != std::string::npos &&
                      endsWith(one, ".ptp4l");
           });
}

std::vector<std::string> PtpProcess::interfaces() const
{
    std::vector<std::string> names;
    for (size_t i = 0; i + 1 < arguments.size(); ++i)
        if (arguments[i] == "-i")
            names.push_back(arguments[i + 1]);
    return names;
}

bool PtpProcess::runsOn(const std::string &interface) const
{
    const std::vector<std::string> named = interfaces();
    return std::find(named.begin(), named.end(), interface) != named.end();
}

bool PtpProcess::holds(uint64_t inode) const
{
    return contains(sockets, inode);
}

std::string PtpProcess::option(const std::string &name) const
{
    const std::string start = "--" + name + "=";
    std::string file;
    for (size_t i = 0; i < arguments.size(); ++i) {
        if (arguments[i].compare(0, start.size(), start) == 0)
            return arguments[i].substr(start.size());
        if (arguments[i] == "-f" && i + 1 < arguments.size())
            file = arguments[i + 1];
    }
    // Not from where the program was started: that folder is not known.
    std::ifstream settings(file.empty() || file[0] != '/' ? std::string("/dev/null") : file);
    for (std::string key, value; settings >> key; std::getline(settings, value))
        if (key == name && settings >> value)
            return value;
    return {};
}

std::vector<PtpProcess> readPtpProcesses()
{
    std::vector<PtpProcess> found;
    for (const pid_t pid : allProcesses()) {
        // The name first: to read a command line may wait for a process that is busy with its memory.
        if (!endsWith(std::string(rk::trimmed(processFile(pid, "comm"))), "ptp4l") || !inOurNetwork(pid))
            continue;
        PtpProcess process{pid, 0, argumentsOf(pid), {}};
        if (process.arguments.empty())
            continue;
        process.user = userOf(pid);
        process.sockets = socketsOf(pid, &process.socketsKnown);
        found.push_back(std::move(process));
    }
    return found;
}

} // namespace rkptp
