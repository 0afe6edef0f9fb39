// SPDX-License-Identifier: MIT
// The store's part in transactions and in the history of changes.
#include "store.h"

namespace rkcfg {

int Store::begin()
{
    // The disk may take writes again by now.
    if (m_connection && m_connection->readOnly())
        m_connection.reset();
    int code = ready();
    if (code != SQLITE_OK)
        return code;
    if (m_transaction)
        return report("beginning", SQLITE_MISUSE, "a transaction is open");
    m_patience.forWriting();
    // Held to the end: until then nobody takes the file away.
    auto shared =
        std::make_unique<LockGuard>(m_lock, m_paths.folder, FolderLock::Kind::Shared, remainingMs());
    code = shared->busy() ? SQLITE_BUSY : m_connection->begin();
    m_patience.ended(Result{code, {}}.busy(), true, code == SQLITE_OK);
    if (code != SQLITE_OK)
        return report("beginning", code, m_connection->message(code));
    m_transaction = std::move(shared);
    m_batchBefore = m_batch;
    m_poisoned = m_saveAtEnd = false;
    return report("beginning", SQLITE_OK, {});
}

int Store::end(bool keep)
{
    followFork();
    if (!m_transaction)
        return report("ending", SQLITE_MISUSE, "no transaction is open");
    const int code = finish(keep && !m_poisoned);
    const bool lost = keep && m_poisoned;
    m_transaction.reset();
    m_poisoned = false;
    if (m_saveAtEnd)
        m_lostWrite = save(nullptr) != SQLITE_OK;
    return code != SQLITE_OK || lost ? report("ending", code != SQLITE_OK ? code : SQLITE_ABORT,
                                              "nothing of the transaction was stored")
                                     : SQLITE_OK;
}

int Store::finish(bool keep)
{
    int code = keep ? m_connection->commit() : SQLITE_OK;
    if (keep && code == SQLITE_OK) {
        m_batch.end();
        m_unsynced = m_uncopied = true;
        return SQLITE_OK;
    }
    m_connection->takeBack();
    m_batch = m_batchBefore;
    return code;
}

int Store::label(const std::string &text)
{
    if (const int code = ready(); code != SQLITE_OK)
        return code;
    m_batch.end();
    m_batch.label = text;
    return SQLITE_OK;
}

int Store::history(Walk &walk, std::vector<Change> &changes)
{
    return run("reading the history",
               [&](Connection &connection) { return connection.history().read(walk, changes); });
}

int Store::takeBack(const TakeBackOrder &order, TakeBackResult &result)
{
    const bool own = !m_transaction;
    if (const int code = own ? begin() : SQLITE_OK; code != SQLITE_OK)
        return code;
    const std::string label = m_batch.label;
    m_batch.end();
    m_batch.label = label;
    const int code = rkcfg::takeBack(*m_connection, order, m_batch, result);
    m_batch.end();
    m_poisoned = m_poisoned || code != SQLITE_OK;
    if (code != SQLITE_OK)
        report("taking back", code, m_connection->message(code));
    else if (!result.known)
        report("taking back", SQLITE_NOTFOUND, "no such batch");
    const int ended = own ? end(result.newBatch != 0) : SQLITE_OK;
    return code != SQLITE_OK ? code : ended;
}

// Never waits: what cannot be removed now is removed another time.
void Store::prune(int steps)
{
    if (m_connection->readOnly())
        return;
    const LockGuard shared(m_lock, m_paths.folder, FolderLock::Kind::Shared, 0);
    setDeadline(0);
    while (shared.held() && steps-- > 0 && m_connection->history().surplus()) {
        if (m_connection->history().prune() != SQLITE_OK)
            break;
    }
    m_patience.forReading();
}

int Store::changedByOthers(uint64_t &mark)
{
    int64_t version = 0;
    const int code =
        run("looking for changes", [&](Connection &connection) { return connection.dataVersion(version); });
    if (code != SQLITE_OK)
        return -1;
    const uint64_t now = (uint64_t(m_generation) << 32) | static_cast<uint32_t>(version);
    const bool same = now == mark;
    mark = now;
    return same ? 0 : 1;
}

} // namespace rkcfg
