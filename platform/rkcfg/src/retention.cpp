// SPDX-License-Identifier: MIT
// How long the history reaches back.
#include "history.h"

#include "clock.h"
#include "schema.h"

#include <algorithm>

namespace rkcfg {

namespace {

constexpr int64_t kDefaultChanges = 100000;
constexpr int64_t kDefaultDays = 90;
constexpr int64_t kStepRows = 1000;
constexpr int64_t kDayMicroseconds = int64_t(24) * 3600 * 1'000'000;

// An edit every now and then pays for the look.
constexpr int64_t kLooksPerBound = 1000;
constexpr const char *kBoundSql = "SELECT value FROM setting WHERE path = ?1 AND name = ?2 AND type = 2";
// Two queries, since only a lone min() or max() is looked up instead of counted through.
constexpr const char *kExtentSql = "SELECT (SELECT min(id) FROM history), (SELECT max(id) FROM history),"
                                   " (SELECT time FROM history ORDER BY id LIMIT 1)";
// Of the next rows the first one that is young enough, and the batch that a row belongs to.
constexpr const char *kYoungSql =
    "SELECT coalesce((SELECT id FROM history WHERE id < ?1 AND time >= ?2 ORDER BY id LIMIT 1), ?1)";
constexpr const char *kBatchOfSql = "SELECT coalesce((SELECT batch FROM history WHERE id = ?1), ?1)";
constexpr const char *kDeleteSql = "DELETE FROM history WHERE id < ?1";

int64_t ask(sqlite3 *db, const char *sql, int64_t first, int64_t second, int64_t fallback)
{
    Statement statement;
    if (statement.prepare(db, sql) != SQLITE_OK)
        return fallback;
    statement.bind(1, first);
    if (second != 0)
        statement.bind(2, second);
    return statement.step() == SQLITE_ROW ? statement.number(0) : fallback;
}

int64_t bound(sqlite3 *db, const char *name, int64_t fallback)
{
    Statement statement;
    if (statement.prepare(db, kBoundSql) != SQLITE_OK)
        return fallback;
    statement.bind(1, kBoundsPath);
    statement.bind(2, name);
    return statement.step() == SQLITE_ROW ? statement.number(0) : fallback;
}

} // namespace

History::Extent History::extent()
{
    Extent extent;
    Statement statement;
    if (!present() || statement.prepare(m_db, kExtentSql) != SQLITE_OK || statement.step() != SQLITE_ROW ||
        statement.null(0))
        return extent;
    extent.first = statement.number(0);
    extent.last = statement.number(1);
    extent.oldest_us = statement.number(2);
    return extent;
}

// The newest batch always stays. Some slack keeps the work away from most saves.
int64_t History::surplusEnd()
{
    const Extent now = extent();
    if (now.last == 0)
        return 0;
    const int64_t changes = bound(m_db, "Changes", kDefaultChanges);
    const int64_t limit_us = nowMicroseconds() - bound(m_db, "Days", kDefaultDays) * kDayMicroseconds;
    const bool many = now.last - now.first + 1 > changes + changes / 100;
    const bool old = now.oldest_us < limit_us - kDayMicroseconds;
    int64_t end = many ? now.last - changes + 1 : now.first;
    const int64_t stepEnd = now.first + kStepRows;
    if (old)
        end = std::max(end, ask(m_db, kYoungSql, stepEnd, limit_us, end));
    end = ask(m_db, kBatchOfSql, std::min(end, now.last), 0, now.first);
    return end > now.first ? std::min(end, stepEnd) : 0;
}

bool History::surplus()
{
    if (m_untilLook > 0)
        return false;
    if (surplusEnd() > 0)
        return true;
    m_untilLook = bound(m_db, "Changes", kDefaultChanges) / kLooksPerBound;
    return false;
}

int History::prune()
{
    const int64_t end = surplusEnd();
    Statement statement;
    if (const int code = end > 0 ? statement.prepare(m_db, kDeleteSql) : SQLITE_DONE; code != SQLITE_OK)
        return finished(code);
    statement.bind(1, end);
    return statement.run();
}

} // namespace rkcfg
