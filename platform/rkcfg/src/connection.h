/* SPDX-License-Identifier: MIT */
/*
 * One open database: its settings, its check, its prepared statements. All results are SQLite's
 * extended result codes; SQLITE_OK is success.
 */
#ifndef RKCFG_CONNECTION_H
#define RKCFG_CONNECTION_H

#include "files.h"

#include <cstdint>
#include <functional>
#include <memory>
#include <sqlite3.h>
#include <string>
#include <string_view>

namespace rkcfg {

enum class Type { Text = 1, Number = 2 };

struct Key {
    const char *path;
    const char *name;
};

// A text is kept without its terminating zero.
struct Value {
    Type type = Type::Text;
    std::string_view text;
    uint32_t number = 0;
};

using Reader = std::function<void(const Value &)>;
using Visitor = std::function<void(const Key &, const Value &)>;

enum class Journal { Wal, Delete };

// How a database is to be opened.
struct Manner {
    Journal journal = Journal::Wal;
    int waitMs = 0;       // how long to wait for another process
    bool scratch = false; // under a temporary name: whoever gives it its name syncs it once before
};

// A result code and what to say about it.
struct Result {
    int code = SQLITE_OK;
    std::string text;

    bool ok() const { return code == SQLITE_OK; }
    // Whether the file's content is at fault: only then may a file be set aside.
    bool damage() const;
    bool busy() const;
};

class Connection {
public:
    // How long a call waits for another writer.
    static constexpr int busyTimeoutMs = 3000;

    // Opens an existing database, sets it up and checks all of it. Falls back to reading alone where
    // neither file nor directory can be written. A null pointer and the reason in result otherwise.
    static std::unique_ptr<Connection> open(const std::string &path, const Manner &manner, Result &result);

    // Fills an empty file with the schema, in its final journal mode. The caller syncs it.
    static Result create(const std::string &path, const Manner &manner);

    ~Connection();
    Connection(const Connection &) = delete;
    Connection &operator=(const Connection &) = delete;

    bool readOnly() const { return m_readOnly; }

    // Calls reader once when the value is there; the text lives for that call only.
    int read(const Key &key, const Reader &reader);
    // One autocommitted statement. changed: whether the stored value is now another one.
    int write(const Key &key, const Value &value, bool &changed);
    // All values in order of path and name; path null or below it (the path itself and "path\...").
    int forEach(const char *path, const Visitor &visitor);
    // Makes the write-ahead log durable, without any lock.
    int sync();
    // Writes a complete, compact copy into an empty file.
    int copyTo(const std::string &path);
    bool empty();

    void setBusyTimeout(int milliseconds);
    // What SQLite says about its last failure.
    std::string message() const;

    // Makes closing touch nothing on disk: in a forked child, or when the file has been replaced.
    void disown();

private:
    explicit Connection(const Manner &manner) : m_manner(manner) {}

    int connect(const std::string &name, int flags);
    int enterJournalMode();
    Result openWriting(const std::string &path);
    Result openReading(const std::string &path);
    Result check(const std::string &path);
    Result checkLength(const std::string &path);
    Result checkHeader();
    int execute(const char *sql);
    int prepare(const char *sql, sqlite3_stmt *&statement);
    Result prepareAll();
    Result outcome(int code) const;
    int number(const char *sql, int64_t &value);
    int text(const char *sql, std::string &value);

    const Manner m_manner;
    sqlite3 *m_db = nullptr;
    sqlite3_stmt *m_select = nullptr;
    sqlite3_stmt *m_upsert = nullptr;
    sqlite3_stmt *m_list = nullptr;
    bool m_readOnly = false;
};

} // namespace rkcfg

#endif // RKCFG_CONNECTION_H
