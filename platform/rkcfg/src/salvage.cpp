// SPDX-License-Identifier: MIT
#include "salvage.h"

#include "notes.h"

#include <algorithm>
#include <utility>

namespace rkcfg {

namespace {

constexpr int64_t kBlockRows = 100;
constexpr int kMaxMisses = 200;

// A database opened for looking only, and closed without a trace.
class Look {
public:
    explicit Look(const std::string &path)
    {
        if (sqlite3_open_v2(path.c_str(), &m_db, SQLITE_OPEN_READONLY | SQLITE_OPEN_EXRESCODE, nullptr) ==
            SQLITE_OK)
            sqlite3_db_config(m_db, SQLITE_DBCONFIG_NO_CKPT_ON_CLOSE, 1, nullptr);
    }
    ~Look() { sqlite3_close(m_db); }
    Look(const Look &) = delete;
    Look &operator=(const Look &) = delete;

    int64_t ask(const char *sql) const
    {
        Statement statement;
        const bool answered = statement.prepare(m_db, sql) == SQLITE_OK && statement.step() == SQLITE_ROW;
        return answered ? statement.number(0) : -1;
    }

private:
    sqlite3 *m_db = nullptr;
};

std::pair<int64_t, int64_t> ageOf(const std::string &path)
{
    if (!fileState(path).plain())
        return {-1, -1};
    const Look look(path);
    return {look.ask("SELECT max(id) FROM history"), look.ask("SELECT count(*) FROM setting")};
}

// True when it had rows, and all of them could be read.
bool copyBlock(sqlite3 *db, int64_t first)
{
    Statement copy;
    if (copy.prepare(db,
                     "INSERT INTO main.history SELECT * FROM damaged.history WHERE id BETWEEN ?1 AND ?2") !=
        SQLITE_OK)
        return false;
    copy.bind(1, first);
    copy.bind(2, first + kBlockRows - 1);
    return copy.run() == SQLITE_OK && sqlite3_changes(db) > 0;
}

int64_t oldestReadable(sqlite3 *db)
{
    for (const char *sql :
         {"SELECT min(id) FROM damaged.history", "SELECT max(id) - 200000 FROM damaged.history"}) {
        Statement find;
        if (find.prepare(db, sql) == SQLITE_OK && find.step() == SQLITE_ROW)
            return std::max<int64_t>(1, find.number(0));
    }
    return 1;
}

// Block by block: what cannot be read costs its block and no more.
void copyHistory(sqlite3 *db)
{
    // Value by value: SQLite copies the bytes of whole rows otherwise, whatever they hold.
    sqlite3_exec(db,
                 "INSERT OR IGNORE INTO main.writer"
                 " SELECT id, CAST(program AS TEXT), CAST(user AS TEXT) FROM damaged.writer",
                 nullptr, nullptr, nullptr);
    int misses = 0;
    for (int64_t first = oldestReadable(db); misses < kMaxMisses; first += kBlockRows)
        misses = copyBlock(db, first) ? 0 : misses + 1;
}

void copyAround(sqlite3 *db)
{
    copyHistory(db);
    copyNotes(db);
}

} // namespace

Result salvage(const std::string &path, const std::string &fresh, const Manner &manner)
{
    if (!createPrivateFile(fresh))
        return {SQLITE_IOERR, "making a file"};
    if (Result made = Connection::create(fresh, manner); !made.ok())
        return made;
    Result result;
    const std::unique_ptr<Connection> target = Connection::open(fresh, {manner.journal, true}, result);
    if (target)
        result = target->takeOver(path, copyAround);
    // What is damaged still would be set aside at every start.
    return result.ok() ? target->checkAll() : result;
}

bool younger(const std::string &one, const std::string &other)
{
    return ageOf(one) > ageOf(other);
}

bool holdsMore(const std::string &one, const std::string &other)
{
    return ageOf(one).second > ageOf(other).second;
}

} // namespace rkcfg
