// SPDX-License-Identifier: MIT
#include "salvage.h"

#include <algorithm>
#include <utility>

namespace rkcfg {

namespace {

constexpr int64_t blockRows = 200;

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

int copyBlock(sqlite3 *db, int64_t first, int64_t last)
{
    Statement copy;
    if (const int code = copy.prepare(
            db, "INSERT INTO main.history SELECT * FROM damaged.history WHERE id BETWEEN ?1 AND ?2");
        code != SQLITE_OK)
        return code;
    copy.bind(1, first);
    copy.bind(2, last);
    return copy.run();
}

// Block by block from the newest: what cannot be read costs its block and no more.
void copyHistory(sqlite3 *db)
{
    Statement newest;
    if (sqlite3_exec(db, "INSERT INTO main.writer SELECT * FROM damaged.writer", nullptr, nullptr, nullptr) !=
            SQLITE_OK ||
        newest.prepare(db, "SELECT max(id) FROM damaged.history") != SQLITE_OK || newest.step() != SQLITE_ROW)
        return;
    const int64_t end = newest.number(0);
    newest.finalize();
    const int64_t begin = std::max<int64_t>(0, end - 2'000'000);
    for (int64_t last = end; last > begin; last -= blockRows)
        copyBlock(db, last - blockRows + 1, last);
}

} // namespace

Result salvage(const std::string &path, const std::string &fresh, const Manner &manner)
{
    if (!createPrivateFile(fresh))
        return {SQLITE_IOERR, "making a file"};
    if (Result made = Connection::create(fresh, manner); !made.ok())
        return made;
    Result result;
    const std::unique_ptr<Connection> target =
        Connection::open(fresh, {manner.journal, manner.waitMs, true}, result);
    return target ? target->takeOver(path, copyHistory) : result;
}

bool younger(const std::string &one, const std::string &other)
{
    return ageOf(one) > ageOf(other);
}

} // namespace rkcfg
