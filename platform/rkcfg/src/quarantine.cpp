// SPDX-License-Identifier: MIT
#include "quarantine.h"

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <ctime>
#include <fcntl.h>
#include <unistd.h>

namespace rkcfg {

namespace {

constexpr int kMaxQuarantines = 1000;

// The files that SQLite keeps beside a database. A log left beside a new database would be taken for
// its own, so they always leave with the file they belong to.
constexpr const char *kSidecars[] = {"-wal", "-journal"};
constexpr const char *kSharedMemory = "-shm";

bool present(const std::string &path)
{
    struct stat info {};
    return lstat(path.c_str(), &info) == 0;
}

std::string stamp()
{
    const time_t now = time(nullptr);
    tm parts{};
    gmtime_r(&now, &parts);
    char text[32];
    strftime(text, sizeof text, "%Y%m%dT%H%M%SZ", &parts);
    return text;
}

// A name that nothing has, neither as a database nor as a log.
std::string quarantineName(const Paths &paths)
{
    const std::string base = paths.database + ".corrupt-" + stamp();
    std::string name = base;
    for (int n = 2; n < kMaxQuarantines; ++n) {
        bool taken = present(name);
        for (const char *suffix : kSidecars)
            taken = taken || present(name + suffix);
        if (!taken)
            break;
        name = base + '-' + std::to_string(n);
    }
    return name;
}

bool moveIfThere(const std::string &from, const std::string &to)
{
    return rename(from.c_str(), to.c_str()) == 0 || errno == ENOENT;
}

// The log and its like leave first: a crash in between leaves the damaged file in its place, and the
// next start finds it again.
Result moveSidecars(const Paths &paths, const std::string &quarantine)
{
    for (const char *suffix : kSidecars) {
        if (!moveIfThere(paths.database + suffix, quarantine + suffix))
            return diskRefused("moving the log");
    }
    // Only an index of the log, made anew from it.
    if (unlink((paths.database + kSharedMemory).c_str()) != 0 && errno != ENOENT)
        return diskRefused("removing the log's index");
    return {};
}

void returnSidecars(const Paths &paths, const std::string &quarantine)
{
    for (const char *suffix : kSidecars)
        moveIfThere(quarantine + suffix, paths.database + suffix);
}

// A second name first and then the exchange in one step, so that there is always a file; file
// systems without hard links get the two steps.
bool exchange(const Paths &paths, const std::string &fresh, const std::string &quarantine)
{
    const bool linked = link(paths.database.c_str(), quarantine.c_str()) == 0;
    if (!linked && rename(paths.database.c_str(), quarantine.c_str()) != 0)
        return false;
    if (rename(fresh.c_str(), paths.database.c_str()) == 0)
        return true;
    const int reason = errno;
    if (linked)
        unlink(quarantine.c_str());
    else
        rename(quarantine.c_str(), paths.database.c_str());
    errno = reason;
    return false;
}

// Somebody else's file, or one that only seemed to be missing, is not overwritten.
bool renameFreely(const std::string &from, const std::string &to)
{
    if (renameat2(AT_FDCWD, from.c_str(), AT_FDCWD, to.c_str(), RENAME_NOREPLACE) == 0)
        return true;
    // File systems without that kind of renaming.
    return (errno == EINVAL || errno == ENOSYS) && fileState(to).missing() &&
           rename(from.c_str(), to.c_str()) == 0;
}

} // namespace

Result diskRefused(const std::string &what)
{
    const int code = errno == ENOSPC || errno == EDQUOT ? SQLITE_FULL : SQLITE_IOERR;
    return {code, what + ": " + strerror(errno)};
}

Result setAside(const Paths &paths, const std::string &fresh, std::string &kept)
{
    const std::string quarantine = quarantineName(paths);
    Result result = moveSidecars(paths, quarantine);
    if (result.ok() && !exchange(paths, fresh, quarantine))
        result = diskRefused("setting the file aside");
    if (result.ok())
        kept = quarantine;
    else
        returnSidecars(paths, quarantine);
    return result;
}

Result putInPlace(const Paths &paths, const std::string &fresh)
{
    // Left behind by a database that somebody removed by hand.
    Result result = moveSidecars(paths, quarantineName(paths));
    if (result.ok() && !renameFreely(fresh, paths.database))
        return diskRefused("naming a file");
    return result;
}

void removeWithSidecars(const std::string &path)
{
    unlink(path.c_str());
    unlink((path + kSharedMemory).c_str());
    for (const char *suffix : kSidecars)
        unlink((path + suffix).c_str());
}

} // namespace rkcfg
