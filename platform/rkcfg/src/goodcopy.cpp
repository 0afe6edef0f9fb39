// SPDX-License-Identifier: MIT
#include "goodcopy.h"

#include "quarantine.h"

#include <cerrno>
#include <cstdio>
#include <unistd.h>

namespace rkcfg {

namespace {

constexpr double kGoodCopySeconds = 600;

// How many values a copy holds. What is damaged, or no copy of ours, counts as none.
Result countValues(const std::string &path, int64_t &count)
{
    count = -1;
    const FileState state = fileState(path);
    if (!state.exists && !state.missing())
        return diskRefused("looking at " + path);
    Result result = state.plain() ? Connection::countValues(path, count) : Result();
    if (result.ok() || result.damage())
        return {};
    return result;
}

// The present copy becomes the older one unless it holds less: so no run of bad luck empties both.
Result rotate(const Paths &paths)
{
    int64_t present = 0;
    int64_t older = 0;
    Result result = countValues(paths.goodCopy, present);
    if (result.ok())
        result = countValues(paths.olderCopy, older);
    const bool worth = present > 0 && present >= older;
    if (result.ok() && worth && rename(paths.goodCopy.c_str(), paths.olderCopy.c_str()) != 0)
        return diskRefused("renaming the good copy");
    return result;
}

} // namespace

bool goodCopyDue(const Paths &paths)
{
    const FileState copy = fileState(paths.goodCopy);
    if (!copy.exists)
        return true;
    timespec now{};
    clock_gettime(CLOCK_REALTIME, &now);
    const double age = ageSeconds(copy, now);
    // A copy from the future tells that the clock was set: it counts as old.
    const bool old = age > kGoodCopySeconds || age < 0;
    // An empty log was made by opening.
    const FileState log = fileState(paths.log);
    return old && (newerThan(fileState(paths.database), copy) || (log.size() > 0 && newerThan(log, copy)));
}

int keepGoodCopy(const Paths &paths, FolderLock &lock, const FileState &identity, Connection &connection)
{
    const LockGuard alone(lock, paths.folder, FolderLock::Kind::Exclusive, 0);
    if (!alone.held() || connection.readOnly() || connection.empty() ||
        !fileState(paths.database).sameFile(identity))
        return SQLITE_OK;
    const std::string fresh = paths.goodCopy + ".new";
    const int code = createPrivateFile(fresh) ? connection.copyTo(fresh) : SQLITE_IOERR;
    if (code != SQLITE_OK || !syncFile(fresh) || !rotate(paths).ok() ||
        rename(fresh.c_str(), paths.goodCopy.c_str()) != 0)
        unlink(fresh.c_str());
    return code;
}

} // namespace rkcfg
