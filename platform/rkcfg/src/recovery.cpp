// SPDX-License-Identifier: MIT
#include "recovery.h"

#include "rkos.h"

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <fcntl.h>
#include <unistd.h>

namespace rkcfg {

namespace {

constexpr double goodCopySeconds = 600;
constexpr int maxQuarantines = 1000;

// The files that SQLite keeps beside a database. A log left beside a new database would be taken for
// its own, so they always leave with the file they belong to.
constexpr const char *sidecars[] = {"-wal", "-journal"};
constexpr const char *sharedMemory = "-shm";

Result diskRefused(const char *what)
{
    const int code = errno == ENOSPC || errno == EDQUOT ? SQLITE_FULL : SQLITE_IOERR;
    return {code, std::string(what) + ": " + strerror(errno)};
}

Result inUse()
{
    return {SQLITE_BUSY, "another process is repairing or copying it"};
}

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
    for (int n = 2; n < maxQuarantines; ++n) {
        bool taken = present(name);
        for (const char *suffix : sidecars)
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
    for (const char *suffix : sidecars) {
        if (!moveIfThere(paths.database + suffix, quarantine + suffix))
            return diskRefused("moving the log");
    }
    // Only an index of the log, made anew from it.
    if (unlink((paths.database + sharedMemory).c_str()) != 0 && errno != ENOENT)
        return diskRefused("removing the log's index");
    return {};
}

void returnSidecars(const Paths &paths, const std::string &quarantine)
{
    for (const char *suffix : sidecars)
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

void removeWithSidecars(const std::string &path)
{
    unlink(path.c_str());
    unlink((path + sharedMemory).c_str());
    for (const char *suffix : sidecars)
        unlink((path + suffix).c_str());
}

// Checks a candidate as thoroughly as any database at open.
Result soundCopy(const std::string &path, const Manner &manner, const std::string &target, Journal journal)
{
    Result result;
    const std::unique_ptr<Connection> source = Connection::open(path, {journal, manner.waitMs}, result);
    if (!source)
        return result;
    if (!createPrivateFile(target))
        return diskRefused("making a file");
    if (const int code = source->copyTo(target); code != SQLITE_OK)
        return {code, source->message(code)};
    const std::unique_ptr<Connection> copy =
        Connection::open(target, {manner.journal, manner.waitMs, true}, result);
    return result;
}

// A database under another name, filled and synced: from the last good copy, else empty.
Result prepare(const Paths &paths, const std::string &fresh, const Manner &manner, bool useCopy,
               bool &restored)
{
    removeWithSidecars(fresh);
    restored = useCopy && fileState(paths.goodCopy).size() > 0 &&
               soundCopy(paths.goodCopy, manner, fresh, Journal::Delete).ok();
    if (!restored) {
        removeWithSidecars(fresh);
        if (!createPrivateFile(fresh))
            return diskRefused("making a file");
        if (Result made = Connection::create(fresh, manner); !made.ok())
            return made;
    }
    return syncFile(fresh) ? Result{} : diskRefused("syncing a file");
}

Result replace(const Paths &paths, const Manner &manner, const Result &damage)
{
    const std::string fresh = paths.database + ".new";
    const std::string quarantine = quarantineName(paths);
    bool restored = false;
    Result result = prepare(paths, fresh, manner, true, restored);
    if (result.ok())
        result = moveSidecars(paths, quarantine);
    if (result.ok() && !exchange(paths, fresh, quarantine))
        result = diskRefused("setting the file aside");
    if (!result.ok()) {
        returnSidecars(paths, quarantine);
        removeWithSidecars(fresh);
        return result;
    }
    syncFolder(paths.folder);
    ErrOut("rkcfg: %s was damaged (%s); it is kept as %s, %s", paths.database.c_str(), damage.text.c_str(),
           quarantine.c_str(),
           restored ? "the last good copy is in its place" : "an empty store is in its place");
    return {};
}

Result make(const Paths &paths, const Manner &manner)
{
    const std::string fresh = paths.database + ".new";
    bool restored = false;
    Result result = prepare(paths, fresh, manner, false, restored);
    // Left behind by a database that somebody removed by hand.
    if (result.ok())
        result = moveSidecars(paths, quarantineName(paths));
    if (result.ok() && rename(fresh.c_str(), paths.database.c_str()) != 0)
        result = diskRefused("naming a file");
    if (!result.ok())
        removeWithSidecars(fresh);
    else
        syncFolder(paths.folder);
    return result;
}

std::unique_ptr<Connection> openFile(const Paths &paths, const Manner &manner, const FileState &state,
                                     Result &result)
{
    makePrivateFile(paths.database, state);
    return Connection::open(paths.database, manner, result);
}

// Opens the file only when it is one; an empty one is damage, not an empty store.
std::unique_ptr<Connection> tryOpen(const Paths &paths, const Manner &manner, FileState &identity,
                                    Result &result)
{
    identity = fileState(paths.database);
    if (!identity.exists)
        result = {SQLITE_CANTOPEN, "no such file"};
    else if (!identity.regular())
        result = {SQLITE_CANTOPEN, "not a regular file"};
    else if (identity.size() == 0)
        result = {SQLITE_NOTADB, "the file is empty"};
    else
        return openFile(paths, manner, identity, result);
    return nullptr;
}

bool needsHands(const Paths &paths, const FileState &identity, const Result &result)
{
    return identity.exists ? result.damage() : !present(paths.database);
}

// With the directory to ourselves: what another process repaired meanwhile is simply opened.
std::unique_ptr<Connection> repair(const Paths &paths, const Manner &manner, FileState &identity,
                                   Result &result)
{
    std::unique_ptr<Connection> connection = tryOpen(paths, manner, identity, result);
    if (connection || !needsHands(paths, identity, result) || (!identity.exists && !manner.create))
        return connection;
    result = identity.exists ? replace(paths, manner, result) : make(paths, manner);
    return result.ok() ? tryOpen(paths, manner, identity, result) : nullptr;
}

} // namespace

std::unique_ptr<Connection> openConfiguration(const Paths &paths, FolderLock &lock, const Manner &manner,
                                              FileState &identity, Result &result)
{
    {
        const LockGuard shared(lock, paths.folder, FolderLock::Kind::Shared, manner.waitMs);
        if (shared.busy()) {
            result = inUse();
            return nullptr;
        }
        std::unique_ptr<Connection> connection = tryOpen(paths, manner, identity, result);
        if (connection || !needsHands(paths, identity, result))
            return connection;
    }
    const LockGuard alone(lock, paths.folder, FolderLock::Kind::Exclusive, manner.waitMs);
    if (alone.held())
        return repair(paths, manner, identity, result);
    // Without the lock nothing is touched.
    result = alone.busy() ? inUse() : diskRefused("locking the directory");
    return nullptr;
}

bool goodCopyDue(const Paths &paths)
{
    const FileState copy = fileState(paths.goodCopy);
    if (!copy.exists)
        return true;
    timespec now{};
    clock_gettime(CLOCK_REALTIME, &now);
    const double age = ageSeconds(copy, now);
    // A copy from the future tells that the clock was set: it counts as old.
    const bool old = age > goodCopySeconds || age < 0;
    // An empty log was made by opening.
    const FileState log = fileState(paths.log);
    return old && (newerThan(fileState(paths.database), copy) || (log.size() > 0 && newerThan(log, copy)));
}

void keepGoodCopy(const Paths &paths, FolderLock &lock, const FileState &identity, Connection &connection)
{
    const LockGuard alone(lock, paths.folder, FolderLock::Kind::Exclusive, 0);
    if (!alone.held() || connection.readOnly() || connection.empty() ||
        !fileState(paths.database).sameFile(identity))
        return;
    const std::string fresh = paths.goodCopy + ".new";
    if (!createPrivateFile(fresh) || connection.copyTo(fresh) != SQLITE_OK || !syncFile(fresh) ||
        rename(fresh.c_str(), paths.goodCopy.c_str()) != 0)
        unlink(fresh.c_str());
}

Result removeStore(const Paths &paths)
{
    if (unlink(paths.database.c_str()) != 0)
        return diskRefused("removing the database");
    removeWithSidecars(paths.database);
    unlink(paths.goodCopy.c_str());
    return syncFolder(paths.folder) ? Result{} : diskRefused("syncing the directory");
}

Result renameStore(const Paths &paths, const Paths &target)
{
    const std::string fresh = target.database + ".new";
    removeWithSidecars(fresh);
    const Journal journal = onNetwork(paths.folder) ? Journal::Delete : Journal::Wal;
    Result result = soundCopy(paths.database, {journal, 0}, fresh, journal);
    if (result.ok() && !syncFile(fresh))
        result = diskRefused("syncing a file");
    if (result.ok() && rename(fresh.c_str(), target.database.c_str()) != 0)
        result = diskRefused("naming a file");
    if (!result.ok()) {
        removeWithSidecars(fresh);
        return result;
    }
    rename(paths.goodCopy.c_str(), target.goodCopy.c_str());
    return removeStore(paths);
}

} // namespace rkcfg
