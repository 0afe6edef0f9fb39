// SPDX-License-Identifier: MIT
#include "connection.h"

#include "schema.h"

#include <algorithm>
#include <cstdlib>
#include <iterator>
#include <unistd.h>

namespace rkcfg {

namespace {

constexpr int journalPauseMs = 20;

// clang-format off
constexpr const char *settings[] = {
    "PRAGMA trusted_schema=OFF",
    "PRAGMA cell_size_check=ON",
    "PRAGMA mmap_size=0",
};

constexpr const char *selectSql = "SELECT type, value FROM setting WHERE path = ?1 AND name = ?2";

// A path keeps the case of its first writing, also when a further name joins it.
constexpr const char *upsertSql =
    "INSERT INTO setting (path, name, type, value)"
    " VALUES (coalesce((SELECT path FROM setting WHERE path = ?1 LIMIT 1), ?1), ?2, ?3, ?4)"
    " ON CONFLICT (path, name) DO UPDATE SET type = excluded.type, value = excluded.value"
    " WHERE type IS NOT excluded.type OR value IS NOT excluded.value";

constexpr const char *listSql =
    "SELECT path, name, type, value FROM setting"
    " WHERE ?1 IS NULL OR path = ?1 OR substr(path, 1, length(?1) + 1) = ?1 || '\\' COLLATE NOCASE"
    " ORDER BY path, name";
// clang-format on

int primary(int code)
{
    return code & 0xFF;
}

// Frees a statement for its next use on every way out. The failure was already told by the step.
class Use {
public:
    explicit Use(sqlite3_stmt *statement) : m_statement(statement) {}
    ~Use()
    {
        sqlite3_reset(m_statement);
        sqlite3_clear_bindings(m_statement);
    }
    Use(const Use &) = delete;
    Use &operator=(const Use &) = delete;

private:
    sqlite3_stmt *m_statement;
};

int bindText(sqlite3_stmt *statement, int column, std::string_view text)
{
    // A null pointer would bind NULL.
    const char *bytes = text.data() != nullptr ? text.data() : "";
    return sqlite3_bind_text64(statement, column, bytes, text.size(), SQLITE_STATIC, SQLITE_UTF8);
}

std::string_view columnText(sqlite3_stmt *statement, int column)
{
    const auto *bytes =
        static_cast<const char *>(static_cast<const void *>(sqlite3_column_text(statement, column)));
    if (bytes == nullptr)
        return {};
    return {bytes, static_cast<size_t>(sqlite3_column_bytes(statement, column))};
}

Value columnValue(sqlite3_stmt *statement, int typeColumn)
{
    Value value;
    value.type = static_cast<Type>(sqlite3_column_int(statement, typeColumn));
    if (value.type == Type::Number)
        value.number = static_cast<uint32_t>(sqlite3_column_int64(statement, typeColumn + 1));
    else
        value.text = columnText(statement, typeColumn + 1);
    return value;
}

// A path as a URI that no character of the path can break out of.
std::string fileUri(const std::string &path, const char *query)
{
    static const char digits[] = "0123456789ABCDEF";
    std::string uri("file:");
    for (const char c : path) {
        const auto byte = static_cast<unsigned char>(c);
        const bool plain = (byte >= 'a' && byte <= 'z') || (byte >= 'A' && byte <= 'Z') ||
                           (byte >= '0' && byte <= '9') || byte == '/' || byte == '.' || byte == '-';
        if (plain)
            uri += c;
        else
            uri.append({'%', digits[byte >> 4], digits[byte & 15]});
    }
    return uri + query;
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
    constexpr int refusals[] = {SQLITE_READONLY, SQLITE_CANTOPEN, SQLITE_PERM, SQLITE_FULL};
    constexpr int indexRefusals[] = {SQLITE_IOERR_SHMSIZE, SQLITE_IOERR_SHMOPEN, SQLITE_IOERR_SHMMAP};
    const auto among = [](const auto &codes, int wanted) {
        return std::find(std::begin(codes), std::end(codes), wanted) != std::end(codes);
    };
    return among(refusals, primary(code)) || among(indexRefusals, code);
}

} // namespace

bool Result::damage() const
{
    return primary(code) == SQLITE_CORRUPT || primary(code) == SQLITE_NOTADB;
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
        code = connection.execute(schemaSql);
    if (code == SQLITE_OK)
        code = connection.enterJournalMode();
    return connection.outcome(code);
}

Connection::~Connection()
{
    for (sqlite3_stmt *statement : {m_select, m_upsert, m_list})
        sqlite3_finalize(statement);
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
        nullptr);
    if (code != SQLITE_OK)
        return code;
    // Before anything else: each statement from here on may meet another process.
    setBusyTimeout(m_manner.waitMs);
    return SQLITE_OK;
}

// Nothing is written before the check has passed: a damaged file is kept as it is.
Result Connection::openWriting(const std::string &path)
{
    int code = connect(path, SQLITE_OPEN_READWRITE);
    for (const char *sql : settings) {
        if (code == SQLITE_OK)
            code = execute(sql);
    }
    if (code == SQLITE_OK)
        code = execute(syncSetting(m_manner));
    Result result = code == SQLITE_OK ? check(path) : outcome(code);
    if (result.ok() && sqlite3_db_readonly(m_db, "main") == 1)
        result = {SQLITE_READONLY, "the file cannot be written"};
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
    for (int waitedMs = 0;; waitedMs += journalPauseMs) {
        std::string mode;
        const int code = text(sql, mode);
        if (code == SQLITE_OK && mode == wanted)
            return SQLITE_OK;
        if (code != SQLITE_OK && !Result{code, {}}.busy())
            return code;
        if (waitedMs >= m_manner.waitMs)
            return SQLITE_BUSY;
        usleep(journalPauseMs * 1000);
    }
}

Result Connection::check(const std::string &path)
{
    std::string answer;
    const int code = text("PRAGMA quick_check(1)", answer);
    if (code != SQLITE_OK)
        return outcome(code);
    if (answer != "ok") {
        std::replace(answer.begin(), answer.end(), '\n', ' ');
        return {SQLITE_CORRUPT, answer};
    }
    const Result whole = checkLength(path);
    return whole.ok() ? checkHeader() : whole;
}

// SQLite fills a cut last page up with zeros. Only a log beside the file can make that good.
Result Connection::checkLength(const std::string &path)
{
    int64_t pageBytes = 0;
    if (const int code = number("PRAGMA page_size", pageBytes); code != SQLITE_OK)
        return outcome(code);
    if (fileState(path + "-wal").size() == 0 && fileState(path).size() % pageBytes != 0)
        return {SQLITE_CORRUPT, "the last page is cut"};
    return {};
}

// A sound database that is not ours holds nothing for us and is treated as damage: set aside, kept.
// One that a newer version wrote is left where it is.
Result Connection::checkHeader()
{
    int64_t id = 0;
    int64_t version = 0;
    int64_t tables = 0;
    int code = number("PRAGMA application_id", id);
    if (code == SQLITE_OK)
        code = number("PRAGMA user_version", version);
    if (code == SQLITE_OK)
        code = number("SELECT count(*) FROM sqlite_schema WHERE type = 'table' AND name = 'setting'", tables);
    if (code != SQLITE_OK)
        return outcome(code);
    if (id == applicationId && version > schemaVersion)
        return {SQLITE_MISMATCH, "written by a newer version"};
    if (id != applicationId || version != schemaVersion || tables != 1)
        return {SQLITE_CORRUPT, "not a configuration store"};
    return {};
}

int Connection::execute(const char *sql)
{
    return sqlite3_exec(m_db, sql, nullptr, nullptr, nullptr);
}

int Connection::prepare(const char *sql, sqlite3_stmt *&statement)
{
    return sqlite3_prepare_v3(m_db, sql, -1, SQLITE_PREPARE_PERSISTENT, &statement, nullptr);
}

Result Connection::prepareAll()
{
    int code = prepare(selectSql, m_select);
    if (code == SQLITE_OK)
        code = prepare(upsertSql, m_upsert);
    if (code == SQLITE_OK)
        code = prepare(listSql, m_list);
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
    sqlite3_stmt *statement = nullptr;
    int code = prepare(sql, statement);
    if (code == SQLITE_OK)
        code = sqlite3_step(statement);
    if (code == SQLITE_ROW) {
        value = columnText(statement, 0);
        code = SQLITE_DONE;
    }
    sqlite3_finalize(statement);
    return code == SQLITE_DONE ? SQLITE_OK : code;
}

int Connection::read(const Key &key, const Reader &reader)
{
    const Use use(m_select);
    int code = bindText(m_select, 1, key.path);
    if (code == SQLITE_OK)
        code = bindText(m_select, 2, key.name);
    if (code == SQLITE_OK)
        code = sqlite3_step(m_select);
    if (code == SQLITE_ROW) {
        reader(columnValue(m_select, 0));
        code = SQLITE_DONE;
    }
    return code == SQLITE_DONE ? SQLITE_OK : code;
}

int Connection::write(const Key &key, const Value &value, bool &changed)
{
    changed = false;
    if (m_readOnly)
        return SQLITE_READONLY;
    const Use use(m_upsert);
    int code = bindText(m_upsert, 1, key.path);
    if (code == SQLITE_OK)
        code = bindText(m_upsert, 2, key.name);
    if (code == SQLITE_OK)
        code = sqlite3_bind_int(m_upsert, 3, static_cast<int>(value.type));
    if (code == SQLITE_OK)
        code = value.type == Type::Number ? sqlite3_bind_int64(m_upsert, 4, value.number)
                                          : bindText(m_upsert, 4, value.text);
    if (code == SQLITE_OK)
        code = sqlite3_step(m_upsert);
    if (code != SQLITE_DONE)
        return code;
    changed = sqlite3_changes(m_db) > 0;
    return SQLITE_OK;
}

int Connection::forEach(const char *path, const Visitor &visitor)
{
    const Use use(m_list);
    int code = path == nullptr ? SQLITE_OK : bindText(m_list, 1, path);
    if (code != SQLITE_OK)
        return code;
    while ((code = sqlite3_step(m_list)) == SQLITE_ROW) {
        const std::string keyPath(columnText(m_list, 0));
        const std::string name(columnText(m_list, 1));
        visitor({keyPath.c_str(), name.c_str()}, columnValue(m_list, 2));
    }
    return code == SQLITE_DONE ? SQLITE_OK : code;
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
    sqlite3_stmt *statement = nullptr;
    int code = prepare("VACUUM INTO ?1", statement);
    if (code == SQLITE_OK)
        code = bindText(statement, 1, path);
    if (code == SQLITE_OK)
        code = sqlite3_step(statement);
    sqlite3_finalize(statement);
    return code == SQLITE_DONE ? SQLITE_OK : code;
}

bool Connection::empty()
{
    int64_t any = 0;
    return number("SELECT EXISTS (SELECT 1 FROM setting)", any) != SQLITE_OK || any == 0;
}

void Connection::setBusyTimeout(int milliseconds)
{
    sqlite3_busy_timeout(m_db, milliseconds);
}

Result Connection::outcome(int code) const
{
    return {code, code == SQLITE_OK ? std::string() : message()};
}

std::string Connection::message() const
{
    return m_db != nullptr ? sqlite3_errmsg(m_db) : "no memory";
}

} // namespace rkcfg
