/* SPDX-License-Identifier: MIT */
/*
 * One open database: its settings, its check, its prepared statements. All results are SQLite's
 * extended result codes; SQLITE_OK is success.
 */
#ifndef RKCFG_CONNECTION_H
#define RKCFG_CONNECTION_H

#include "files.h"
#include "history.h"
#include "notes.h"

#include <memory>

namespace rkcfg {

enum class Journal { Wal, Delete };

// How a database is to be opened.
struct Manner {
    Journal journal = Journal::Wal;
    bool scratch = false;  // under a temporary name: whoever gives it its name syncs it once before
    bool create = true;    // whether a missing configuration is made
    bool thorough = false; // check what lies beside the settings as well, and all indexes
    bool whole = false;    // check it where that is quick
};

// A result code and what to say about it.
struct Result {
    int code = SQLITE_OK;
    std::string text;
    bool partly = false; // damage that leaves values to be had: of the log, or beside the settings

    bool ok() const { return code == SQLITE_OK; }
    // Whether the file's content is at fault: only then may a file be set aside.
    bool damage() const;
    bool busy() const;
};

class Connection {
public:
    // Opens an existing database, sets it up and checks all of it. Falls back to reading alone where
    // neither file nor directory can be written. A null pointer and the reason in result otherwise.
    static std::unique_ptr<Connection> open(const std::string &path, const Manner &manner, Result &result);

    // Checks all tables, not the settings alone.
    Result checkAll() { return checked("PRAGMA quick_check(1)"); }

    // Counts the values of a database that nobody writes to.
    static Result countValues(const std::string &path, int64_t &count);

    // Fills an empty file with the schema, in its final journal mode. The caller syncs it.
    static Result create(const std::string &path, const Manner &manner);

    ~Connection();
    Connection(const Connection &) = delete;
    Connection &operator=(const Connection &) = delete;

    bool readOnly() const { return m_readOnly; }

    // Calls reader once when the value is there; the text lives for that call only.
    int read(const Key &key, const Reader &reader);
    // Stores a value or removes it (absent), with its record, in one transaction: the one that is open
    // or one of its own. changed: whether something else is stored now.
    int change(const Key &key, const Value &value, Batch &batch, bool &changed);
    // All values in order of path and name; path null or below it (the path itself and "path\...").
    int forEach(const char *path, const Visitor &visitor);

    // A transaction over several calls. Taking back forgets the batch's part in it; the caller does so too.
    int begin();
    int commit();
    void takeBack();
    bool inTransaction() const { return sqlite3_get_autocommit(m_db) == 0; }

    History &history() { return m_history; }
    Notes &notes() { return m_notes; }
    // Another number whenever another process has changed the database since this connection's last look.
    int dataVersion(int64_t &version);

    // Makes the write-ahead log durable, without any lock.
    int sync();
    // Writes a complete, compact copy into an empty file.
    int copyTo(const std::string &path);
    bool empty();
    // Takes all values over from another database, and what rest copies from the one attached as "damaged".
    Result takeOver(const std::string &path, void (*rest)(sqlite3 *db));

    // What SQLite says about a failure.
    std::string message(int code) const;

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
    Result checkWritable(const std::string &path);
    Result checkAround(const char *sql);
    Result checked(const char *sql);
    int execute(const char *sql);
    int apply(const Key &key, const Value &before, const Value &after, Batch &batch);
    int spell(const char *path);
    int add(const Key &key, const Value &value, Batch &batch, bool &added);
    int replace(const Key &key, const Value &value, Batch &batch, bool &changed);
    int put(Statement &statement, const Key &key, const Value &value);
    int remove(const Key &key);
    Result prepareAll();
    Result outcome(int code) const;
    int number(const char *sql, int64_t &value);
    int text(const char *sql, std::string &value);

    const Manner m_manner;
    sqlite3 *m_db = nullptr;
    bool m_readOnly = false;
    History m_history;
    Notes m_notes;
    Statement m_select;
    Statement m_spelling;
    Statement m_insert;
    Statement m_upsert;
    Statement m_delete;
    Statement m_list;
    Statement m_listBelow;
    Statement m_begin;
    Statement m_commit;
    Statement m_dataVersion;
    std::string m_askedPath; // the last one written in this transaction; empty: none
    std::string m_storedPath;
    bool m_wasNew = false; // whether the last value changed in this transaction had not been there
};

} // namespace rkcfg

#endif // RKCFG_CONNECTION_H
