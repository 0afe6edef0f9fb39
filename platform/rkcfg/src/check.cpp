// SPDX-License-Identifier: MIT
// What is looked at before a database counts as ours and sound.
#include "connection.h"

#include "schema.h"

#include <algorithm>
#include <cerrno>
#include <fcntl.h>
#include <unistd.h>

namespace rkcfg {

namespace {

// Programs of the next versions; any other number is damage.
constexpr int64_t kNewestVersion = kSchemaVersion + 8;

// A store up to this size is looked at as a whole each time it is opened; some milliseconds.
constexpr off_t kCheckedWhole = 1 << 20;

constexpr off_t kWriteVersionOffset = 18;
constexpr unsigned char kNewestWriteVersion = 2;

// Of what lies beside the settings: whether it is there, and what its columns have to be.
struct Shape {
    const char *count;
    const char *columns;
};

constexpr Shape kShapes[] = {
    {"SELECT count(*) FROM sqlite_schema WHERE name IN ('history', 'writer')",
     "SELECT h.id, h.batch, h.time, h.pid, h.path, h.name, h.old_value, h.new_value, h.label, h.undoes,"
     " w.program, w.user FROM history AS h JOIN writer AS w ON w.id = h.writer"},
    {"SELECT count(*) FROM sqlite_schema WHERE name = 'note'", "SELECT id, owner, key, data FROM note"},
};

// A number there that SQLite does not know makes it refuse to write, as if the disk did.
bool writeVersionUnknown(const std::string &path)
{
    const Descriptor file(open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOFOLLOW));
    unsigned char version = 0;
    return file.valid() && pread(file.get(), &version, 1, kWriteVersionOffset) == 1 &&
           (version == 0 || version > kNewestWriteVersion);
}

} // namespace

Result Connection::check(const std::string &path)
{
    // The settings first: they may be sound when something else is not.
    Result result = checked("PRAGMA integrity_check('setting')");
    if (result.ok())
        result = checkLength(path);
    if (result.ok())
        result = checkHeader();
    // A long history would make each start slow. But only the look at all of it finds pages that nothing
    // leads to.
    if (result.ok() && m_manner.thorough)
        result = checkAround("PRAGMA integrity_check(1)");
    else if (result.ok() && m_manner.whole && fileState(path).size() <= kCheckedWhole)
        result = checkAround("PRAGMA quick_check(1)");
    return result;
}

Result Connection::checked(const char *sql)
{
    std::string answer;
    const int code = text(sql, answer);
    if (code != SQLITE_OK)
        return outcome(code);
    std::replace(answer.begin(), answer.end(), '\n', ' ');
    return answer == "ok" ? Result() : Result{SQLITE_CORRUPT, answer};
}

// The settings are sound when this is asked for.
Result Connection::checkAround(const char *sql)
{
    Result result = checked(sql);
    for (const Shape &shape : kShapes) {
        int64_t tables = 0;
        Statement columns;
        int code = result.ok() ? number(shape.count, tables) : SQLITE_OK;
        if (code == SQLITE_OK && tables > 0)
            code = columns.prepare(m_db, shape.columns);
        if (code == SQLITE_ERROR)
            result = {SQLITE_CORRUPT, message(code)};
    }
    result.partly = result.damage();
    return result;
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
    std::string encoding;
    int code = number("PRAGMA application_id", id);
    if (code == SQLITE_OK)
        code = number("PRAGMA user_version", version);
    if (code == SQLITE_OK)
        code = text("PRAGMA encoding", encoding);
    if (code == SQLITE_OK)
        code = number("SELECT count(*) FROM sqlite_schema WHERE type = 'table' AND name = 'setting'", tables);
    if (code != SQLITE_OK)
        return outcome(code);
    if (id == kApplicationId && version > kSchemaVersion && version <= kNewestVersion)
        return {SQLITE_MISMATCH, "written by a newer version"};
    if (id != kApplicationId || version != kSchemaVersion || tables != 1 || encoding != "UTF-8")
        return {SQLITE_CORRUPT, "not a configuration store"};
    return {};
}

Result Connection::checkWritable(const std::string &path)
{
    const bool readOnly = sqlite3_db_readonly(m_db, "main") == 1;
    if (readOnly && writeVersionUnknown(path))
        return {SQLITE_CORRUPT, "unknown write version"};
    if (readOnly)
        return {SQLITE_READONLY, "the file cannot be written"};
    if (fileState(path).info.st_nlink > 1)
        return {SQLITE_CANTOPEN, "the file has a second name (a hard link)"};
    return {};
}

Result Connection::countValues(const std::string &path, int64_t &count)
{
    Connection connection(Manner{});
    int code = connection.connect(path, SQLITE_OPEN_READONLY);
    if (code == SQLITE_OK)
        code = connection.number("SELECT count(*) FROM setting", count);
    return connection.outcome((code & 0xFF) == SQLITE_ERROR ? SQLITE_CORRUPT : code);
}

} // namespace rkcfg
