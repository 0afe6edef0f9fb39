// SPDX-License-Identifier: MIT
#include "notes.h"

#include "schema.h"

namespace rkcfg {

namespace {

constexpr const char *kPutSql = "INSERT INTO note (owner, key, data) VALUES (?1, ?2, ?3)"
                                " ON CONFLICT (owner, key) DO UPDATE SET data = excluded.data";
constexpr const char *kRemoveSql = "DELETE FROM note WHERE owner = ?1 AND key = ?2";
constexpr const char *kReadSql = "SELECT key, data FROM note WHERE owner = ?1 AND key = ?2";
constexpr const char *kListSql = "SELECT key, data FROM note WHERE owner = ?1 ORDER BY key";

} // namespace

// A table of that name without our columns: the file's content is at fault.
int Notes::prepare(Statement &statement, const char *sql)
{
    const int code = statement.prepare(m_db, sql);
    return (code & 0xFF) == SQLITE_ERROR ? SQLITE_CORRUPT : code;
}

// A store has no table for notes until its first one.
bool Notes::present()
{
    Statement find;
    const char *sql = "SELECT 1 FROM sqlite_schema WHERE type = 'table' AND name = 'note'";
    return find.prepare(m_db, sql) == SQLITE_OK && find.step() == SQLITE_ROW;
}

int Notes::set(const NoteKey &note, std::string_view data)
{
    if (data.empty() && !present())
        return SQLITE_OK;
    int code = data.empty() ? SQLITE_OK : sqlite3_exec(m_db, kNotesSql, nullptr, nullptr, nullptr);
    Statement statement;
    if (code == SQLITE_OK)
        code = prepare(statement, data.empty() ? kRemoveSql : kPutSql);
    if (code != SQLITE_OK)
        return code;
    statement.bind(1, note.owner);
    statement.bind(2, note.key);
    if (!data.empty())
        statement.bindBytes(3, data);
    return statement.run();
}

int Notes::read(const NoteKey &note, const NoteReader &reader)
{
    Statement statement;
    if (const int code = present() ? prepare(statement, kReadSql) : SQLITE_DONE; code != SQLITE_OK)
        return finished(code);
    statement.bind(1, note.owner);
    statement.bind(2, note.key);
    return rows(statement, reader);
}

int Notes::forEach(const char *owner, const NoteReader &reader)
{
    Statement statement;
    if (const int code = present() ? prepare(statement, kListSql) : SQLITE_DONE; code != SQLITE_OK)
        return finished(code);
    statement.bind(1, owner);
    return rows(statement, reader);
}

int Notes::forgetAll()
{
    return sqlite3_exec(m_db, "DROP TABLE IF EXISTS note", nullptr, nullptr, nullptr);
}

int Notes::rows(Statement &statement, const NoteReader &reader)
{
    int code = SQLITE_OK;
    while ((code = statement.step()) == SQLITE_ROW) {
        const std::string key(statement.text(0));
        reader(key.c_str(), statement.text(1));
    }
    return finished(code);
}

void copyNotes(sqlite3 *db)
{
    Statement find;
    if (find.prepare(db, "SELECT 1 FROM damaged.sqlite_schema WHERE name = 'note'") != SQLITE_OK ||
        find.step() != SQLITE_ROW)
        return;
    // Row by row in one statement: what cannot be read ends it, and what came before it stays.
    sqlite3_exec(db, kNotesSql, nullptr, nullptr, nullptr);
    sqlite3_exec(db, "INSERT OR FAIL INTO main.note SELECT * FROM damaged.note", nullptr, nullptr, nullptr);
}

} // namespace rkcfg
