/* SPDX-License-Identifier: MIT */
/*
 * A prepared statement that ends with its object. All results are SQLite's extended result codes. A
 * failed bind is kept and given by the next step, so that callers look at one code only.
 */
#ifndef RKCFG_STATEMENT_H
#define RKCFG_STATEMENT_H

#include "value.h"

#include <sqlite3.h>

namespace rkcfg {

class Statement {
public:
    Statement() = default;
    ~Statement() { finalize(); }
    Statement(const Statement &) = delete;
    Statement &operator=(const Statement &) = delete;

    int prepare(sqlite3 *db, const char *sql);
    void finalize();
    bool prepared() const { return m_statement != nullptr; }

    // Columns count from 1. A column that is not bound is null.
    void bind(int column, std::string_view text);
    void bind(int column, const char *text) { bind(column, std::string_view(text)); }
    void bind(int column, int64_t number);
    void bindBytes(int column, std::string_view bytes);
    // A text, a number, or null for an absent value.
    void bind(int column, const Value &value);

    // SQLITE_ROW, SQLITE_DONE or a failure.
    int step();
    // For a statement without rows: SQLITE_OK or a failure.
    int run();
    // Ready for the next use, with nothing bound.
    void reset();

    // Columns count from 0; the text lives until the next step or reset.
    bool null(int column) const;
    std::string_view text(int column) const;
    int64_t number(int column) const;
    // By the column's own kind; null is absent.
    Value value(int column) const;

private:
    sqlite3_stmt *m_statement = nullptr;
    int m_failure = SQLITE_OK;
};

// Resets a statement on every way out of a block.
class Use {
public:
    explicit Use(Statement &statement) : m_statement(statement) {}
    ~Use() { m_statement.reset(); }
    Use(const Use &) = delete;
    Use &operator=(const Use &) = delete;

private:
    Statement &m_statement;
};

// SQLITE_OK for the end of rows, everything else as it is.
inline int finished(int code)
{
    return code == SQLITE_DONE ? SQLITE_OK : code;
}

} // namespace rkcfg

#endif // RKCFG_STATEMENT_H
