// SPDX-License-Identifier: MIT
#include "statement.h"

namespace rkcfg {

int Statement::prepare(sqlite3 *db, const char *sql)
{
    finalize();
    return sqlite3_prepare_v3(db, sql, -1, SQLITE_PREPARE_PERSISTENT, &m_statement, nullptr);
}

void Statement::finalize()
{
    sqlite3_finalize(m_statement);
    m_statement = nullptr;
    m_failure = SQLITE_OK;
}

void Statement::bind(int column, std::string_view text)
{
    // A null pointer would bind NULL.
    const char *bytes = text.data() != nullptr ? text.data() : "";
    const int code = sqlite3_bind_text64(m_statement, column, bytes, text.size(), SQLITE_STATIC, SQLITE_UTF8);
    m_failure = m_failure == SQLITE_OK ? code : m_failure;
}

void Statement::bindBytes(int column, std::string_view bytes)
{
    const int code = sqlite3_bind_blob64(m_statement, column, bytes.data(), bytes.size(), SQLITE_STATIC);
    m_failure = m_failure == SQLITE_OK ? code : m_failure;
}

void Statement::bind(int column, int64_t number)
{
    const int code = sqlite3_bind_int64(m_statement, column, number);
    m_failure = m_failure == SQLITE_OK ? code : m_failure;
}

void Statement::bind(int column, const Value &value)
{
    if (value.type == Type::Text)
        bind(column, value.text);
    else if (value.type == Type::Number)
        bind(column, static_cast<int64_t>(value.number));
}

int Statement::step()
{
    return m_failure == SQLITE_OK ? sqlite3_step(m_statement) : m_failure;
}

int Statement::run()
{
    const Use use(*this);
    return finished(step());
}

void Statement::reset()
{
    m_failure = SQLITE_OK;
    if (m_statement == nullptr) // which SQLite takes for a reset, but not here
        return;
    // The failure was already told by the step.
    sqlite3_reset(m_statement);
    sqlite3_clear_bindings(m_statement);
}

bool Statement::null(int column) const
{
    return sqlite3_column_type(m_statement, column) == SQLITE_NULL;
}

std::string_view Statement::text(int column) const
{
    const auto *bytes =
        static_cast<const char *>(static_cast<const void *>(sqlite3_column_text(m_statement, column)));
    if (bytes == nullptr)
        return {};
    return {bytes, static_cast<size_t>(sqlite3_column_bytes(m_statement, column))};
}

int64_t Statement::number(int column) const
{
    return sqlite3_column_int64(m_statement, column);
}

Value Statement::value(int column) const
{
    switch (sqlite3_column_type(m_statement, column)) {
    case SQLITE_NULL:
        return {Type::Absent, {}, 0};
    case SQLITE_INTEGER:
        return {Type::Number, {}, static_cast<uint32_t>(number(column))};
    }
    return {Type::Text, text(column), 0};
}

} // namespace rkcfg
