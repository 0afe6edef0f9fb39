// SPDX-License-Identifier: MIT
#include "history.h"

#include "clock.h"
#include "schema.h"
#include "writer.h"

#include <string>
#include <strings.h>
#include <unistd.h>

namespace rkcfg {

namespace {

constexpr int64_t kPageRows = 500;

// Without an id the row gets the one after the largest. The first row of a batch has to know it.
constexpr const char *kInsertSql =
    "INSERT INTO history (id, batch, time, writer, pid, path, name, old_value, new_value, label, undoes)"
    " VALUES (?11, ?1, ?2, ?3, ?4, ?5, ?6, ?7, ?8, ?9, ?10)";
constexpr const char *kNextSql = "SELECT coalesce(max(id), 0) + 1 FROM history";

#define RKCFG_CHANGE_ROWS                                                                                    \
    "SELECT h.id, h.batch, h.time, w.program, h.pid, w.user, f.label, h.path, h.name, h.old_value,"          \
    " h.new_value, f.undoes FROM history AS h LEFT JOIN writer AS w ON w.id = h.writer"                      \
    " LEFT JOIN history AS f ON f.id = h.batch"

constexpr const char *kForwardSql =
    RKCFG_CHANGE_ROWS " WHERE h.id > ?1 AND h.id <= ?2 ORDER BY h.id LIMIT ?3";
constexpr const char *kBackwardSql =
    RKCFG_CHANGE_ROWS " WHERE h.id < ?1 AND h.id >= ?2 ORDER BY h.id DESC LIMIT ?3";
constexpr const char *kBatchSql = RKCFG_CHANGE_ROWS " WHERE h.id >= ?1 AND h.batch = ?1 ORDER BY h.id";

#undef RKCFG_CHANGE_ROWS

Change changeOf(const Statement &row)
{
    Change change;
    change.id = row.number(0);
    change.batch = row.number(1);
    change.time_us = row.number(2);
    change.program = row.text(3);
    change.pid = static_cast<uint32_t>(row.number(4));
    change.user = row.text(5);
    change.labelled = !row.null(6);
    change.label = row.text(6);
    change.path = row.text(7);
    change.name = row.text(8);
    change.before = Kept(row.value(9));
    change.after = Kept(row.value(10));
    change.undoes = row.number(11);
    return change;
}

// Tables of these names without our columns: the content is at fault.
int asContent(int code)
{
    return (code & 0xFF) == SQLITE_ERROR ? SQLITE_CORRUPT : code;
}

} // namespace

void History::forget()
{
    m_insert.finalize();
    m_next.finalize();
}

int History::make()
{
    if (m_insert.prepared())
        return SQLITE_OK;
    int code = sqlite3_exec(m_db, kHistorySql, nullptr, nullptr, nullptr);
    if (code == SQLITE_OK)
        code = m_insert.prepare(m_db, kInsertSql);
    if (code == SQLITE_OK)
        code = m_next.prepare(m_db, kNextSql);
    return asContent(code);
}

int History::nextId(int64_t &id)
{
    const Use use(m_next);
    const int code = m_next.step();
    id = code == SQLITE_ROW ? m_next.number(0) : 0;
    return code == SQLITE_ROW ? SQLITE_OK : code;
}

int History::findWriter(Batch &batch)
{
    if (batch.writer != 0)
        return SQLITE_OK;
    batch.pid = getpid(); // a child opens the store anew, and looks for its writer
    const std::string program = programName();
    const std::string user = userName();
    Statement insert;
    int code = insert.prepare(m_db, "INSERT OR IGNORE INTO writer (program, user) VALUES (?1, ?2)");
    if (code != SQLITE_OK)
        return asContent(code);
    insert.bind(1, program);
    insert.bind(2, user);
    code = insert.run();
    Statement find;
    if (code == SQLITE_OK)
        code = find.prepare(m_db, "SELECT id FROM writer WHERE program = ?1 AND user = ?2");
    if (code != SQLITE_OK)
        return asContent(code);
    find.bind(1, program);
    find.bind(2, user);
    code = find.step();
    batch.writer = code == SQLITE_ROW ? find.number(0) : 0;
    return code == SQLITE_ROW ? SQLITE_OK : code;
}

int History::record(const Key &key, const Value &before, const Value &after, Batch &batch)
{
    int code = make();
    if (code == SQLITE_OK)
        code = findWriter(batch);
    int64_t id = batch.id;
    const bool first = id == 0;
    if (code == SQLITE_OK && first)
        code = nextId(id);
    if (code != SQLITE_OK)
        return code;
    --m_untilLook;
    if (strcasecmp(key.path, kBoundsPath) == 0)
        m_untilLook = 0;
    bind(key, before, after, batch);
    m_insert.bind(1, id);
    if (first)
        m_insert.bind(11, id);
    code = m_insert.run();
    if (code == SQLITE_OK && first)
        batch.begin(id);
    return asContent(code);
}

// Label and undoes stand in the batch's first row.
void History::bind(const Key &key, const Value &before, const Value &after, const Batch &batch)
{
    m_insert.bind(2, nowMicroseconds());
    m_insert.bind(3, batch.writer);
    m_insert.bind(4, batch.pid);
    m_insert.bind(5, key.path);
    m_insert.bind(6, key.name);
    m_insert.bind(7, before);
    m_insert.bind(8, after);
    if (batch.id == 0 && !batch.label.empty())
        m_insert.bind(9, batch.label);
    if (batch.id == 0 && batch.undoes != 0)
        m_insert.bind(10, batch.undoes);
}

// A store from before history has none until its next change.
bool History::present()
{
    Statement find;
    const char *sql = "SELECT 1 FROM sqlite_schema WHERE type = 'table' AND name = 'history'";
    return find.prepare(m_db, sql) == SQLITE_OK && find.step() == SQLITE_ROW;
}

void History::begin(Walk &walk)
{
    const Extent now = extent();
    walk.end = walk.newestFirst ? now.first : now.last;
    if (walk.newestFirst)
        walk.position = now.last + 1;
}

int History::read(Walk &walk, std::vector<Change> &changes)
{
    changes.clear();
    if (!present())
        return SQLITE_OK;
    if (walk.end < 0)
        begin(walk);
    Statement page;
    int code = page.prepare(m_db, walk.newestFirst ? kBackwardSql : kForwardSql);
    if (code != SQLITE_OK)
        return asContent(code);
    page.bind(1, walk.position);
    page.bind(2, walk.end);
    page.bind(3, kPageRows);
    code = rows(page, changes);
    if (!changes.empty())
        walk.position = changes.back().id;
    return code;
}

int History::readBatch(int64_t batch, std::vector<Change> &changes)
{
    changes.clear();
    if (!present())
        return SQLITE_OK;
    Statement find;
    if (const int code = find.prepare(m_db, kBatchSql); code != SQLITE_OK)
        return asContent(code);
    find.bind(1, batch);
    const int code = rows(find, changes);
    if (!changes.empty() && changes.front().id != batch)
        changes.clear();
    return code;
}

int History::rows(Statement &statement, std::vector<Change> &changes)
{
    int code = SQLITE_OK;
    while ((code = statement.step()) == SQLITE_ROW)
        changes.push_back(changeOf(statement));
    return finished(code);
}

} // namespace rkcfg
