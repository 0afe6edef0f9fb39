// SPDX-License-Identifier: MIT
#include "configurations.h"

#include "patience.h"
#include "recovery.h"

namespace rkcfg {

namespace {

Result missing(const Paths &paths)
{
    if (!fileState(paths.database).exists)
        return {SQLITE_NOTFOUND, "there is no configuration " + paths.name};
    return {};
}

// The default configuration stays where it is.
Result inUse(const StoreAccess &store, const Paths &paths)
{
    if (store->defaultName() == paths.name)
        return {SQLITE_MISUSE, paths.name + " is the default configuration"};
    return missing(paths);
}

Result taken(const Paths &target)
{
    if (fileState(target.database).exists)
        return {SQLITE_MISUSE, "there is a configuration " + target.name + " already"};
    return {};
}

// Writers hold the lock for the moment of a write, so nobody is in the middle of one.
template<typename Step>
int alone(const StoreAccess &store, const char *what, const std::string &name, Step step)
{
    const std::string folder = configFolder();
    if (folder.empty())
        return store->report(what, SQLITE_CANTOPEN, "no directory for configurations");
    const Paths paths(folder, name);
    FolderLock lock;
    const LockGuard held(lock, folder, FolderLock::Kind::Exclusive, remainingMs());
    if (!held.held())
        return store->report(what, SQLITE_BUSY, "another process is writing");
    const Result result = step(paths);
    return store->report(what, result.code, result.text);
}

} // namespace

int deleteConfiguration(const StoreAccess &store, const std::string &name)
{
    return alone(store, "deleting", name, [&](const Paths &paths) {
        const Result objection = inUse(store, paths);
        return objection.ok() ? removeStore(paths) : objection;
    });
}

int renameConfiguration(const StoreAccess &store, const std::string &name, const std::string &newName)
{
    return alone(store, "renaming", name, [&](const Paths &paths) {
        const Paths target(paths.folder, newName);
        Result objection = inUse(store, paths);
        if (objection.ok())
            objection = taken(target);
        return objection.ok() ? renameStore(paths, target) : objection;
    });
}

int copyConfiguration(const StoreAccess &store, const std::string &name, const std::string &newName)
{
    return alone(store, "copying", name, [&](const Paths &paths) {
        const Paths target(paths.folder, newName);
        Result objection = missing(paths);
        if (objection.ok())
            objection = taken(target);
        return objection.ok() ? copyStore(paths, target) : objection;
    });
}

} // namespace rkcfg
