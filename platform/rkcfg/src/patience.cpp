// SPDX-License-Identifier: MIT
#include "patience.h"

#include "clock.h"

#include <algorithm>
#include <unistd.h>

namespace rkcfg {

namespace {

constexpr int kPollUs = 2000;
constexpr const char *kFileSystemName = "rkcfg";

int64_t &deadline()
{
    static int64_t deadlineMs = 0;
    return deadlineMs;
}

int sleepAtMost(sqlite3_vfs *, int microseconds)
{
    const int shortened = static_cast<int>(std::min<int64_t>(microseconds, int64_t(remainingMs()) * 1000));
    if (shortened > 0)
        usleep(static_cast<useconds_t>(shortened));
    return shortened;
}

int waitForLock(void *, int)
{
    if (remainingMs() == 0)
        return 0;
    usleep(kPollUs);
    return 1;
}

} // namespace

void setDeadline(int64_t deadlineMs)
{
    deadline() = deadlineMs;
}

int remainingMs()
{
    return static_cast<int>(std::clamp<int64_t>(deadline() - steadyMs(), 0, Patience::kCallMs));
}

const char *hurriedFileSystem()
{
    static sqlite3_vfs fileSystem = [] {
        sqlite3_vfs own = *sqlite3_vfs_find(nullptr);
        own.zName = kFileSystemName;
        own.xSleep = sleepAtMost;
        return own;
    }();
    static const int registered = sqlite3_vfs_register(&fileSystem, 0);
    return registered == SQLITE_OK ? kFileSystemName : nullptr;
}

void waitForLocks(sqlite3 *db)
{
    sqlite3_busy_handler(db, waitForLock, nullptr);
}

void Patience::begin(int64_t startMs)
{
    m_deadlineMs = startMs + kCallMs;
    forReading();
}

void Patience::ended(bool busy, bool writing, bool wrote)
{
    if (busy && deadline() != 0)
        m_spentUntilMs = steadyMs() + kCallMs;
    if (wrote)
        m_spentUntilMs = 0;
    if (busy)
        m_lost = writing && m_lost != Lost::All ? Lost::Writing : Lost::All;
    else if (wrote || m_lost == Lost::All)
        m_lost = Lost::Nothing;
}

bool Patience::isSpent() const
{
    return steadyMs() < m_spentUntilMs;
}

} // namespace rkcfg
