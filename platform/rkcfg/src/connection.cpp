// SPDX-License-Identifier: MIT
#include "connection.h"

#include "pathorder.h"
#include "patience.h"
#include "schema.h"

#include <algorithm>
#include <cstdlib>
#include <iterator>
#include <unistd.h>
#include <utility>

namespace rkcfg {

namespace {

constexpr int kJournalPauseMs = 20;

// clang-format off
constexpr const char *kSettings[] = {
    "PRAGMA trusted_schema=OFF",
    "PRAGMA cell_size_check=ON",
    "PRAGMA mmap_size=0",
    "PRAGMA secure_delete=OFF",
    "PRAGMA cache_spill=OFF",
};

constexpr const char *kSelectSql = "SELECT value FROM setting WHERE path = ?1 AND name = ?2";

constexpr const char *kSpellingSql = "SELECT path FROM setting WHERE path = ?1 LIMIT 1";

constexpr const char *kUpsertSql =
    "INSERT INTO setting (path, name, type, value) VALUES (?1, ?2, ?3, ?4)"
    " ON CONFLICT (path, name) DO UPDATE SET type = excluded.type, value = excluded.value"
    " WHERE type IS NOT excluded.type OR value IS NOT excluded.value";

constexpr const char *kDeleteSql = "DELETE FROM setting WHERE path = ?1 AND name = ?2";

constexpr const char *kListSql = "SELECT path, name, value FROM setting ORDER BY path, name";

// Behind "\\" comes "]": between the two bounds the index finds what is below, and a few neighbours.
constexpr const char *kListBelowSql =
    "SELECT path, name, value FROM setting WHERE path >= ?1 AND path < ?1 || ']'"
    " AND (path = ?1 OR substr(path, 1, length(?1) + 1) = ?1 || '\\' COLLATE NOCASE)"
    " ORDER BY path, name";
// clang-format on

int primary(int code)
{
    return code & 0xFF;
}

// With a log one sync at rkCFGSave is enough; without, each commit has to be whole by itself.
const char *syncSetting(const Manner &manner)
{
    if (manner.scratch)
        return "PRAGMA synchronous=OFF";
    return manner.journal == Journal::Wal ? "PRAGMA synchronous=NORMAL" : "PRAGMA synchronous=FULL";
}

// Nothing can be written: the file, or not even a log and its index beside it.
bool refusesWriting(int code)
{
    constexpr int kRefusals[] = {SQLITE_READONLY, SQLITE_CANTOPEN, SQLITE_PERM, SQLITE_FULL};
    constexpr int kIndexRefusals[] = {SQLITE_IOERR_SHMSIZE, SQLITE_IOERR_SHMOPEN, SQLITE_IOERR_SHMMAP};
    const auto among = [](const auto &codes, int wanted) {
        return std::find(std::begin(codes), std::end(codes), wanted) != std::end(codes);
    };
    return among(kRefusals, primary(code)) || among(kIndexRefusals, code);
}

} // namespace

bool Result::damage() const
{
    // What we write fits the tables, so one that refuses it has lost its order.
    return primary(code) == SQLITE_CORRUPT || primary(code) == SQLITE_NOTADB ||
           primary(code) == SQLITE_CONSTRAINT;
}

bool Result::busy() const
{
    return primary(code) == SQLITE_BUSY || primary(code) == SQLITE_LOCKED || primary(code) == SQLITE_PROTOCOL;
}

std::unique_ptr<Connection> Connection::open(const std::string &path, const Manner &manner, Result &result)
{
    std::unique_ptr<Connection> connection(new Connection(manner));
    result = connection->openWriting(path);
    if (refusesWriting(result.code) && fileState(path + "-wal").size() == 0) {
        connection->disown();
        connection.reset(new Connection(manner));
        result = connection->openReading(path);
    }
    if (result.ok())
        result = connection->prepareAll();
    if (result.ok())
        return connection;
    // All our statements are sound, so whatever makes one of them wrong is in the file.
    if (primary(result.code) == SQLITE_ERROR || primary(result.code) == SQLITE_TOOBIG)
        result.code = SQLITE_CORRUPT;
    // A file that is going to be set aside must not be written to while it is let go.
    connection->disown();
    return nullptr;
}

Result Connection::create(const std::string &path, const Manner &manner)
{
    Connection connection(manner);
    int code = connection.connect(path, SQLITE_OPEN_READWRITE);
    if (code == SQLITE_OK)
        code = connection.execute("PRAGMA synchronous=OFF");
    if (code == SQLITE_OK)
        code = connection.execute(kSchemaSql);
    if (code == SQLITE_OK)
        code = connection.execute(kHistorySql);
    if (code == SQLITE_OK)
        code = connection.enterJournalMode();
    return connection.outcome(code);
}

Connection::~Connection()
{
    m_history.forget();
    for (Statement *statement : {&m_select, &m_spelling, &m_insert, &m_upsert, &m_delete, &m_list,
                                 &m_listBelow, &m_begin, &m_commit, &m_dataVersion})
        statement->finalize();
    sqlite3_close(m_db);
}

void Connection::disown()
{
    if (m_db != nullptr)
        sqlite3_db_config(m_db, SQLITE_DBCONFIG_NO_CKPT_ON_CLOSE, 1, nullptr);
}

int Connection::connect(const std::string &name, int flags)
{
    const int code = sqlite3_open_v2(
        name.c_str(), &m_db, flags | SQLITE_OPEN_NOMUTEX | SQLITE_OPEN_PRIVATECACHE | SQLITE_OPEN_EXRESCODE,
        hurriedFileSystem());
    if (code != SQLITE_OK)
        return code;
    // Before anything else: each statement from here on may meet another process.
    waitForLocks(m_db);
    return hastenPathOrder(m_db);
}

// Nothing is written before the check has passed: a damaged file is kept as it is.
Result Connection::openWriting(const std::string &path)
{
    int code = connect(path, SQLITE_OPEN_READWRITE);
    for (const char *sql : kSettings) {
        if (code == SQLITE_OK)
            code = execute(sql);
    }
    if (code == SQLITE_OK)
        code = execute(syncSetting(m_manner));
    Result result = code == SQLITE_OK ? check(path) : outcome(code);
    if (result.ok())
        result = checkWritable(path);
    if (result.ok())
        result = outcome(enterJournalMode());
    return result;
}

// Where nothing can be written there is no log either, so the file alone is the truth.
Result Connection::openReading(const std::string &path)
{
    m_readOnly = true;
    int code = connect(fileUri(path, "?immutable=1"), SQLITE_OPEN_READONLY | SQLITE_OPEN_URI);
    if (code == SQLITE_OK)
        code = execute("PRAGMA trusted_schema=OFF");
    return code == SQLITE_OK ? check(path) : outcome(code);
}

// The change of mode wants the file for itself and does not use the busy handler: several processes
// may start at the same moment, so it is tried again.
int Connection::enterJournalMode()
{
    const char *wanted = m_manner.journal == Journal::Wal ? "wal" : "delete";
    const char *sql =
        m_manner.journal == Journal::Wal ? "PRAGMA journal_mode=WAL" : "PRAGMA journal_mode=DELETE";
    for (;;) {
        std::string mode;
        const int code = text(sql, mode);
        if (code == SQLITE_OK && mode == wanted)
            return SQLITE_OK;
        if (code != SQLITE_OK && !Result{code, {}}.busy())
            return code;
        if (remainingMs() == 0)
            return SQLITE_BUSY;
        usleep(kJournalPauseMs * 1000);
    }
}

int Connection::execute(const char *sql)
{
    return sqlite3_exec(m_db, sql, nullptr, nullptr, nullptr);
}

Result Connection::prepareAll()
{
    const std::pair<Statement *, const char *> statements[] = {
        {&m_select, kSelectSql},       {&m_spelling, kSpellingSql}, {&m_upsert, kUpsertSql},
        {&m_delete, kDeleteSql},       {&m_list, kListSql},         {&m_listBelow, kListBelowSql},
        {&m_begin, "BEGIN IMMEDIATE"}, {&m_commit, "COMMIT"},       {&m_dataVersion, "PRAGMA data_version"},
    };
    int code = SQLITE_OK;
    for (const auto &[statement, sql] : statements) {
        if (code == SQLITE_OK)
            code = statement->prepare(m_db, sql);
    }
    m_history.attach(m_db);
    m_notes.attach(m_db);
    // A table of ours without our columns: the file's content is at fault.
    return outcome(primary(code) == SQLITE_ERROR ? SQLITE_CORRUPT : code);
}

int Connection::number(const char *sql, int64_t &value)
{
    std::string digits;
    const int code = text(sql, digits);
    value = code == SQLITE_OK ? strtoll(digits.c_str(), nullptr, 10) : 0;
    return code;
}

int Connection::text(const char *sql, std::string &value)
{
    Statement statement;
    if (const int code = statement.prepare(m_db, sql); code != SQLITE_OK)
        return code;
    const int code = statement.step();
    if (code != SQLITE_ROW)
        return finished(code);
    value = statement.text(0);
    return SQLITE_OK;
}

int Connection::read(const Key &key, const Reader &reader)
{
    const Use use(m_select);
    m_select.bind(1, key.path);
    m_select.bind(2, key.name);
    const int code = m_select.step();
    if (code != SQLITE_ROW)
        return finished(code);
    reader(m_select.value(0));
    return SQLITE_OK;
}

int Connection::forEach(const char *path, const Visitor &visitor)
{
    Statement &list = path != nullptr ? m_listBelow : m_list;
    const Use use(list);
    if (path != nullptr)
        list.bind(1, path);
    int code = SQLITE_OK;
    while ((code = list.step()) == SQLITE_ROW) {
        const std::string keyPath(list.text(0));
        const std::string name(list.text(1));
        visitor({keyPath.c_str(), name.c_str()}, list.value(2));
    }
    return finished(code);
}

int Connection::dataVersion(int64_t &version)
{
    const Use use(m_dataVersion);
    const int code = m_dataVersion.step();
    if (code != SQLITE_ROW)
        return finished(code);
    version = m_dataVersion.number(0);
    return SQLITE_OK;
}

int Connection::sync()
{
    if (m_readOnly)
        return SQLITE_READONLY;
    sqlite3_file *log = nullptr;
    if (const int code = sqlite3_file_control(m_db, "main", SQLITE_FCNTL_JOURNAL_POINTER, &log);
        code != SQLITE_OK)
        return code;
    // Without a log each commit was synced by itself and no journal is open.
    if (log == nullptr || log->pMethods == nullptr)
        return SQLITE_OK;
    return log->pMethods->xSync(log, SQLITE_SYNC_NORMAL);
}

int Connection::copyTo(const std::string &path)
{
    Statement statement;
    if (const int code = statement.prepare(m_db, "VACUUM INTO ?1"); code != SQLITE_OK)
        return code;
    statement.bind(1, path);
    return statement.run();
}

Result Connection::takeOver(const std::string &path, void (*rest)(sqlite3 *db))
{
    // Its log must not be tidied into a file that is going to be set aside.
    sqlite3_db_config(m_db, SQLITE_DBCONFIG_NO_CKPT_ON_CLOSE, 1, nullptr);
    Statement attach;
    int code = attach.prepare(m_db, "ATTACH ?1 AS damaged");
    if (code != SQLITE_OK)
        return outcome(code);
    attach.bind(1, path);
    code = attach.run();
    if (code == SQLITE_OK)
        code = execute("INSERT INTO main.setting SELECT * FROM damaged.setting");
    if (code == SQLITE_OK) {
        // Piece by piece: what meets damage cannot be committed.
        rest(m_db);
        code = execute("DETACH damaged; PRAGMA wal_checkpoint(TRUNCATE)");
    }
    return outcome(primary(code) == SQLITE_ERROR ? SQLITE_CORRUPT : code);
}

bool Connection::empty()
{
    int64_t any = 0;
    return number("SELECT EXISTS (SELECT 1 FROM setting)", any) != SQLITE_OK || any == 0;
}

Result Connection::outcome(int code) const
{
    return {code, code == SQLITE_OK ? std::string() : message(code)};
}

// A transaction that was taken back since leaves the code but not the text.
std::string Connection::message(int code) const
{
    return m_db != nullptr && sqlite3_extended_errcode(m_db) == code ? sqlite3_errmsg(m_db)
                                                                     : sqlite3_errstr(code);
}

} // namespace rkcfg
