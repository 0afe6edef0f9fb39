// SPDX-License-Identifier: MIT
// What changes values, and the transactions round it.
#include "connection.h"

namespace rkcfg {

namespace {

constexpr const char *kInsertSql =
    "INSERT INTO setting (path, name, type, value) VALUES (?1, ?2, ?3, ?4) ON CONFLICT DO NOTHING";

} // namespace

int Connection::begin()
{
    m_askedPath.clear();
    m_wasNew = false;
    return m_readOnly ? SQLITE_READONLY : m_begin.run();
}

int Connection::commit()
{
    return m_commit.run();
}

void Connection::takeBack()
{
    // Some failures have taken it back already.
    if (inTransaction())
        execute("ROLLBACK");
    m_history.forget();
}

int Connection::change(const Key &key, const Value &value, Batch &batch, bool &changed)
{
    changed = false;
    const bool own = !inTransaction();
    const Batch before = own ? batch : Batch();
    if (const int code = own ? begin() : SQLITE_OK; code != SQLITE_OK)
        return code;
    bool other = false;
    int code = m_wasNew ? add(key, value, batch, other) : SQLITE_OK;
    if (code == SQLITE_OK && !other)
        code = replace(key, value, batch, other);
    if (code == SQLITE_OK && own)
        code = commit();
    changed = code == SQLITE_OK && other;
    if (code == SQLITE_OK || !own)
        return code;
    batch = before;
    takeBack();
    return code;
}

// Within a transaction, what follows a new value is most likely new as well: it is stored without a look
// whether it is there.
int Connection::add(const Key &key, const Value &value, Batch &batch, bool &added)
{
    if (value.type == Type::Absent)
        return SQLITE_OK;
    int code = m_insert.prepared() ? SQLITE_OK : m_insert.prepare(m_db, kInsertSql);
    if (code == SQLITE_OK)
        code = spell(key.path);
    const Key own{m_storedPath.c_str(), key.name};
    if (code == SQLITE_OK)
        code = put(m_insert, own, value);
    m_wasNew = added = code == SQLITE_OK && sqlite3_changes(m_db) > 0;
    return added ? m_history.record(own, {Type::Absent, {}, 0}, value, batch) : code;
}

// The value there may be the same, or none.
int Connection::replace(const Key &key, const Value &value, Batch &batch, bool &changed)
{
    Kept stored;
    const int code = read(key, [&](const Value &present) { stored = Kept(present); });
    changed = !(stored.value() == value);
    if (code != SQLITE_OK || !changed)
        return code;
    m_wasNew = stored.value().type == Type::Absent;
    return apply(key, stored.value(), value, batch);
}

// A path keeps the case of its first writing, also when a further name joins it, and the record has the same.
// Within a transaction many values of one path follow each other, so the last answer is kept.
int Connection::spell(const char *path)
{
    if (m_askedPath == path && !m_askedPath.empty())
        return SQLITE_OK;
    m_askedPath.clear();
    const Use use(m_spelling);
    m_spelling.bind(1, path);
    const int code = m_spelling.step();
    if (code != SQLITE_ROW && code != SQLITE_DONE)
        return code;
    m_storedPath = code == SQLITE_ROW ? std::string(m_spelling.text(0)) : path;
    m_askedPath = path;
    return SQLITE_OK;
}

int Connection::apply(const Key &key, const Value &before, const Value &after, Batch &batch)
{
    int code = spell(key.path);
    const Key own{m_storedPath.c_str(), key.name};
    if (code == SQLITE_OK && after.type != Type::Absent)
        code = put(m_upsert, own, after);
    if (code == SQLITE_OK)
        code = m_history.record(own, before, after, batch);
    if (code == SQLITE_OK && after.type == Type::Absent)
        code = remove(own);
    return code;
}

int Connection::put(Statement &statement, const Key &key, const Value &value)
{
    statement.bind(1, key.path);
    statement.bind(2, key.name);
    statement.bind(3, static_cast<int64_t>(value.type));
    statement.bind(4, value);
    return statement.run();
}

int Connection::remove(const Key &key)
{
    m_askedPath.clear(); // it may have been the last value with this path
    m_delete.bind(1, key.path);
    m_delete.bind(2, key.name);
    return m_delete.run();
}

} // namespace rkcfg
