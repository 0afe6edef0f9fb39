// SPDX-License-Identifier: MIT
#include "recovery.h"

#include "logscan.h"
#include "patience.h"
#include "quarantine.h"
#include "rkos.h"
#include "salvage.h"

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <unistd.h>

namespace rkcfg {

namespace {

Result inUse()
{
    return {SQLITE_BUSY, "another process is repairing or copying it"};
}

// Checks a candidate as thoroughly as any database at open.
Result soundCopy(const std::string &path, const Manner &manner, const std::string &target, Journal journal)
{
    Result result;
    const std::unique_ptr<Connection> source = Connection::open(path, {journal}, result);
    if (!source)
        return result;
    if (!createPrivateFile(target))
        return diskRefused("making a file");
    if (const int code = source->copyTo(target); code != SQLITE_OK)
        return {code, source->message(code)};
    Connection::open(target, {manner.journal, true}, result);
    return result;
}

// To SQLite a disk that fails looks like damage of the content. It is none when another read fails as well,
// nor when the copy is sound at the second look.
Result soundAtSecondLook(const std::string &path, const Manner &manner, const std::string &target)
{
    if (!readable(path))
        return diskRefused("reading " + path);
    removeWithSidecars(target);
    return soundCopy(path, manner, target, Journal::Delete);
}

// What a damaged database is replaced by, best first.
enum class Filling { Salvaged, GoodCopy, Nothing };

const char *told(Filling filling)
{
    switch (filling) {
    case Filling::Salvaged:
        return "what was sound of it is in its place";
    case Filling::GoodCopy:
        return "the last good copy is in its place";
    case Filling::Nothing:
        break;
    }
    return "an empty store is in its place";
}

// True when filled. A copy that is missing or damaged by its content is passed over; any other failure
// may be over the next time, so it ends everything instead.
bool fillFromCopy(const Paths &paths, const std::string &fresh, const Manner &manner, Result &result)
{
    for (const std::string &copy : {paths.goodCopy, paths.olderCopy}) {
        const FileState state = fileState(copy);
        if (!state.exists && !state.missing()) {
            result = diskRefused("looking at " + copy);
            return false;
        }
        if (!state.plain() || state.size() == 0)
            continue;
        removeWithSidecars(fresh);
        result = soundCopy(copy, manner, fresh, Journal::Delete);
        if (result.damage())
            result = soundAtSecondLook(copy, manner, fresh);
        if (!result.damage())
            return result.ok();
    }
    result = {};
    return false;
}

Result makeEmpty(const std::string &fresh, const Manner &manner)
{
    removeWithSidecars(fresh);
    return createPrivateFile(fresh) ? Connection::create(fresh, manner) : diskRefused("making a file");
}

// Of a database whose values can be read its own content, unless a good copy is younger or has more: then a
// part of the values is no longer found.
Result fillWithSalvage(const Paths &paths, const std::string &fresh, const Manner &manner, bool &filled)
{
    removeWithSidecars(fresh);
    const Result result = salvage(paths.database, fresh, manner);
    filled = result.ok() && !younger(paths.goodCopy, fresh) && !holdsMore(paths.goodCopy, fresh);
    return result.damage() ? Result() : result;
}

// A database under another name, filled and synced.
Result prepare(const Paths &paths, const std::string &fresh, const Manner &manner, const Result &damage,
               Filling &filling)
{
    bool filled = false;
    filling = Filling::Salvaged;
    Result result = damage.partly ? fillWithSalvage(paths, fresh, manner, filled) : Result();
    if (result.ok() && !filled) {
        filling = Filling::GoodCopy;
        filled = fillFromCopy(paths, fresh, manner, result);
    }
    if (result.ok() && !filled) {
        filling = Filling::Nothing;
        result = makeEmpty(fresh, manner);
    }
    if (result.ok() && !syncFile(fresh))
        result = diskRefused("syncing a file");
    return result;
}

Result replace(const Paths &paths, const Manner &manner, const Result &damage)
{
    const std::string fresh = paths.database + ".new";
    std::string kept;
    Filling filling{};
    Result result = prepare(paths, fresh, manner, damage, filling);
    if (result.ok())
        result = setAside(paths, fresh, kept);
    if (!result.ok()) {
        removeWithSidecars(fresh);
        return result;
    }
    syncFolder(paths.folder);
    ErrOut("rkcfg: %s was damaged (%s); it is kept as %s, %s", paths.database.c_str(), damage.text.c_str(),
           kept.c_str(), told(filling));
    return {};
}

Result make(const Paths &paths, const Manner &manner)
{
    const std::string fresh = paths.database + ".new";
    Result result = makeEmpty(fresh, manner);
    if (result.ok() && !syncFile(fresh))
        result = diskRefused("syncing a file");
    if (result.ok())
        result = putInPlace(paths, fresh);
    if (!result.ok())
        removeWithSidecars(fresh);
    else
        syncFolder(paths.folder);
    return result;
}

std::unique_ptr<Connection> openFile(const Paths &paths, const Manner &manner, const FileState &state,
                                     Result &result)
{
    // SQLite takes the sound beginning of a log and is silent about the rest.
    if (logDamaged(paths.log)) {
        result = {SQLITE_CORRUPT, "its log is damaged", true};
        return nullptr;
    }
    makePrivateFile(paths.database, state);
    return Connection::open(paths.database, manner, result);
}

// Opens the file only when it is one; an empty one is damage, not an empty store.
std::unique_ptr<Connection> tryOpen(const Paths &paths, const Manner &manner, FileState &identity,
                                    Result &result)
{
    identity = fileState(paths.database);
    if (!identity.exists)
        result = {SQLITE_CANTOPEN, strerror(identity.error)};
    else if (!identity.regular())
        result = {SQLITE_CANTOPEN, "not a regular file"};
    else if (identity.size() == 0)
        result = {SQLITE_NOTADB, "the file is empty"};
    else
        return openFile(paths, manner, identity, result);
    return nullptr;
}

Result forgetNotes(const std::string &path, const Manner &manner)
{
    Result result;
    const std::unique_ptr<Connection> connection = Connection::open(path, manner, result);
    const int code = connection ? connection->notes().forgetAll() : SQLITE_OK;
    return code == SQLITE_OK ? result : Result{code, connection->message(code)};
}

Result putCopyInPlace(const Paths &paths, const Paths &target, bool withNotes)
{
    const std::string fresh = target.database + ".new";
    removeWithSidecars(fresh);
    const Journal journal = onNetwork(paths.folder) ? Journal::Delete : Journal::Wal;
    Result result = soundCopy(paths.database, {journal}, fresh, journal);
    if (result.ok() && !withNotes)
        result = forgetNotes(fresh, {journal, true});
    if (result.ok() && !syncFile(fresh))
        result = diskRefused("syncing a file");
    if (result.ok())
        result = putInPlace(target, fresh);
    if (!result.ok())
        removeWithSidecars(fresh);
    return result;
}

bool needsHands(const FileState &identity, const Result &result)
{
    return identity.exists ? result.damage() : identity.missing();
}

// With the directory to ourselves: what another process repaired meanwhile is simply opened.
std::unique_ptr<Connection> repair(const Paths &paths, const Manner &manner, FileState &identity,
                                   Result &result)
{
    std::unique_ptr<Connection> connection = tryOpen(paths, manner, identity, result);
    if (connection || !needsHands(identity, result) || (!identity.exists && !manner.create))
        return connection;
    result = identity.exists ? replace(paths, manner, result) : make(paths, manner);
    return result.ok() ? tryOpen(paths, manner, identity, result) : nullptr;
}

} // namespace

std::unique_ptr<Connection> openConfiguration(const Paths &paths, FolderLock &lock, const Manner &manner,
                                              FileState &identity, Result &result)
{
    {
        const LockGuard shared(lock, paths.folder, FolderLock::Kind::Shared, remainingMs());
        if (shared.busy()) {
            result = inUse();
            return nullptr;
        }
        std::unique_ptr<Connection> connection = tryOpen(paths, manner, identity, result);
        if (connection || !needsHands(identity, result))
            return connection;
    }
    const LockGuard alone(lock, paths.folder, FolderLock::Kind::Exclusive, remainingMs());
    if (alone.held())
        return repair(paths, manner, identity, result);
    // Without the lock nothing is touched.
    result = alone.busy() ? inUse() : diskRefused("locking the directory");
    return nullptr;
}

Result removeStore(const Paths &paths)
{
    if (unlink(paths.database.c_str()) != 0)
        return diskRefused("removing the database");
    removeWithSidecars(paths.database);
    unlink(paths.goodCopy.c_str());
    unlink(paths.olderCopy.c_str());
    return syncFolder(paths.folder) ? Result{} : diskRefused("syncing the directory");
}

Result copyStore(const Paths &paths, const Paths &target)
{
    const Result result = putCopyInPlace(paths, target, false);
    if (!result.ok() || syncFolder(paths.folder))
        return result;
    return diskRefused("syncing the directory");
}

Result renameStore(const Paths &paths, const Paths &target)
{
    const Result result = putCopyInPlace(paths, target, true);
    if (!result.ok())
        return result;
    rename(paths.goodCopy.c_str(), target.goodCopy.c_str());
    rename(paths.olderCopy.c_str(), target.olderCopy.c_str());
    return removeStore(paths);
}

} // namespace rkcfg
