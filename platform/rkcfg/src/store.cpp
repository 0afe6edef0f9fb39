// SPDX-License-Identifier: MIT
#include "store.h"

#include "goodcopy.h"
#include "recovery.h"
#include "rkos.h"

#include <pthread.h>
#include <unistd.h>
#include <utility>

namespace rkcfg {

namespace {

constexpr int kAttempts = 3;
constexpr int kStepsAtOpen = 5;

// Counted instead of asking for the process id, which is a system call with each of ours.
int forks = 0;

// Another number for each connection, so that a mark taken with one never fits the next.
uint32_t nextGeneration()
{
    static uint32_t generation = 0;
    return ++generation;
}

} // namespace

void Store::forked()
{
    ++forks;
}

int Store::open(bool create)
{
    m_create = create;
    const int code = ready();
    m_create = false;
    return code;
}

bool Store::read(const Key &key, const Reader &reader)
{
    bool found = false;
    run("reading", [&](Connection &connection) {
        return connection.read(key, [&](const Value &value) {
            found = true;
            reader(value);
        });
    });
    return found;
}

bool Store::write(const Key &key, const Value &value)
{
    bool changed = false;
    runWriting([&](Connection &connection) {
        int result = SQLITE_OK;
        // Inside a transaction looking first would save nothing.
        if (!m_transaction && (holds(connection, key, value, result) || result != SQLITE_OK))
            return result;
        return writeChanged([&](Connection &sound) { return sound.change(key, value, m_batch, changed); });
    });
    return changed;
}

int Store::runWriting(const Operation &operation)
{
    // The disk may take writes again by now.
    if (m_connection && m_connection->readOnly())
        m_connection.reset();
    const int code = run("writing", operation);
    m_lostWrite = m_lostWrite || code != SQLITE_OK;
    m_poisoned = m_poisoned || code != SQLITE_OK;
    return code;
}

bool Store::holds(Connection &connection, const Key &key, const Value &value, int &code)
{
    bool same = value.type == Type::Absent;
    code = connection.read(key, [&](const Value &stored) { same = stored == value; });
    return same;
}

// While the lock is held nobody takes the file away, so what is written stays in the store.
int Store::writeChanged(const Operation &operation)
{
    if (m_transaction)
        return operation(*m_connection);
    m_writing = true;
    m_patience.forWriting();
    const LockGuard shared(m_lock, m_paths.folder, FolderLock::Kind::Shared, remainingMs());
    if (shared.busy())
        return SQLITE_BUSY;
    if (replaced())
        return SQLITE_READONLY_DBMOVED;
    const int code = operation(*m_connection);
    m_wrote = code == SQLITE_OK;
    m_unsynced = m_unsynced || code == SQLITE_OK;
    m_uncopied = m_uncopied || code == SQLITE_OK;
    return code;
}

bool Store::list(const char *path, std::vector<Entry> &entries)
{
    const int code = run("listing", [&](Connection &connection) {
        entries.clear();
        return connection.forEach(path, [&](const Key &key, const Value &value) {
            entries.push_back({key.path, key.name, value.type, std::string(value.text), value.number});
        });
    });
    return code == SQLITE_OK;
}

// Tries again on a fresh connection when the file turned out to be damaged or replaced: opening
// checks and repairs it.
int Store::run(const std::string &what, const Operation &operation)
{
    int code = SQLITE_OK;
    m_writing = m_wrote = false;
    for (int attempt = 0; attempt < kAttempts; ++attempt) {
        m_patience.forReading();
        code = ready();
        if (code != SQLITE_OK)
            return code;
        code = operation(*m_connection);
        if (m_transaction || (code != SQLITE_READONLY_DBMOVED && !Result{code, {}}.damage()))
            break;
        m_suspect = m_suspect || code != SQLITE_READONLY_DBMOVED;
        m_connection->disown();
        m_connection.reset();
    }
    m_patience.ended(Result{code, {}}.busy(), m_writing, m_wrote);
    if (code == SQLITE_OK && m_reportedHeld && !m_wrote)
        return code; // what is held can be read: nothing new
    if (code == SQLITE_OK)
        return report(what, SQLITE_OK, {});
    report(what, code, m_connection ? m_connection->message(code) : sqlite3_errstr(code));
    dropAfter(code);
    return code;
}

// A lock that could not be given back would keep this connection, and every other one, busy for good.
void Store::dropAfter(int code)
{
    if ((code & 0xFF) != SQLITE_IOERR || !m_connection || m_transaction)
        return;
    m_connection->disown();
    m_connection.reset();
}

int Store::ready()
{
    followFork();
    follow();
    if (m_connection)
        return SQLITE_OK;
    m_folder = configFolder();
    if (m_folder.empty())
        return report("opening", SQLITE_CANTOPEN, "no directory for configurations");
    Result result;
    const int code = reopen(wantedName(), result);
    m_patience.ended(result.busy(), false, false);
    if (code != SQLITE_OK)
        return report("opening", result.code, result.text);
    return SQLITE_OK;
}

const std::string &Store::wantedName()
{
    return m_fixedName.empty() ? m_defaultName.current(m_folder) : m_fixedName;
}

// Stays on the old connection when the new one cannot be had.
int Store::reopen(const std::string &name, Result &result)
{
    const Paths paths(m_folder, name);
    FileState identity;
    const Manner manner{journalOf(m_folder), false, m_create, m_suspect, true};
    std::unique_ptr<Connection> connection = openConfiguration(paths, m_lock, manner, identity, result);
    if (!connection) {
        result.text = paths.database + ": " + result.text;
        return result.code;
    }
    leave();
    m_paths = paths;
    m_connection = std::move(connection);
    m_thorough = std::exchange(m_suspect, false);
    m_generation = nextGeneration();
    m_batch.end();
    m_batch.writer = 0;
    m_identity = identity;
    m_folderSynced = false;
    if (m_connection->readOnly() && !m_readOnlyTold)
        ErrOut("rkcfg: %s can only be read", m_paths.database.c_str());
    m_readOnlyTold = m_connection->readOnly();
    prune(kStepsAtOpen);
    copyWhenDue();
    return SQLITE_OK;
}

// A child has none of its parent's file locks. It lets go of the inherited connection without
// touching the disk and opens its own.
void Store::followFork()
{
    if (m_fork == forks)
        return;
    m_fork = forks;
    m_transaction.reset();
    if (m_connection)
        m_connection->disown();
    m_connection.reset();
    // The inherited lock file is one with the parent's: its locks would not keep the two apart.
    m_lock.close();
    m_unsynced = m_uncopied = m_lostWrite = false;
}

void Store::follow()
{
    // A transaction ends where it began.
    if (!m_connection || m_transaction)
        return;
    if (m_suspect || wantedName() != m_paths.name || replaced())
        leave();
}

// Also true for a file that got shorter: ours only ever grows, so somebody else's hand was on it.
bool Store::replaced()
{
    const FileState now = fileState(m_paths.database);
    if (!now.sameFile(m_identity) || now.size() < m_identity.size())
        return true;
    // Without a part in the log another process' writes are seen by opening anew.
    if (m_connection->readOnly() && (!now.sameContent(m_identity) || fileState(m_paths.log).size() > 0))
        return true;
    m_identity = now;
    return false;
}

void Store::leave()
{
    if (!m_connection)
        return;
    if (m_unsynced)
        syncAndTell();
    // Closing the last connection tidies the log up by its name. That must be our log still.
    const LockGuard shared(m_lock, m_paths.folder, FolderLock::Kind::Shared, 0);
    if (!shared.held() || replaced())
        m_connection->disown();
    m_connection.reset();
}

int Store::sync()
{
    const int code = m_connection->sync();
    if (code == SQLITE_OK && !m_folderSynced)
        m_folderSynced = syncFolder(m_paths.folder);
    m_unsynced = m_unsynced && code != SQLITE_OK;
    return code;
}

int Store::syncAndTell()
{
    const int code = sync();
    return report("saving", code, m_connection->message(code));
}

int Store::save(const char *name)
{
    int code = ready();
    if (code != SQLITE_OK)
        return code;
    if (name != nullptr && m_paths.name != name)
        return report("saving", SQLITE_NOTFOUND, "only the handle's own configuration can be saved");
    m_saveAtEnd = m_transaction != nullptr;
    if (m_saveAtEnd)
        return SQLITE_OK;
    m_batch.end();
    code = syncAndTell();
    if (m_uncopied) {
        prune(1);
        copyWhenDue();
    }
    // What a failed write left out is not durable, so the save that was to cover it says so once.
    if (code == SQLITE_OK && m_lostWrite)
        code = SQLITE_IOERR;
    m_lostWrite = false;
    return code;
}

int Store::close(bool save)
{
    followFork();
    if (m_transaction)
        end(false);
    int code = SQLITE_OK;
    if (m_connection && save)
        code = this->save(nullptr);
    leave();
    m_lock.close();
    m_defaultName.forget();
    m_reported.clear();
    m_batch = {};
    m_lostWrite = false;
    return code;
}

int Store::setDefaultName(const std::string &name)
{
    followFork();
    if (m_transaction)
        return report("switching", SQLITE_MISUSE, "a transaction is open");
    m_folder = configFolder();
    if (m_folder.empty())
        return report("switching", SQLITE_CANTOPEN, "no directory for configurations");
    Result result;
    if (reopen(name, result) != SQLITE_OK)
        return report("switching", result.code, result.text);
    if (!m_defaultName.store(m_folder, name))
        return report("switching", SQLITE_IOERR, "the default name cannot be stored");
    return report("switching", SQLITE_OK, {});
}

// A transaction stays where it began, and whoever is inside must be able to tell where that is.
std::string Store::defaultName()
{
    followFork();
    if (m_transaction)
        return m_paths.name;
    const std::string folder = m_connection ? m_folder : configFolder();
    return folder.empty() ? kFallbackName : m_defaultName.current(folder);
}

// At open, and at a save after a change.
void Store::copyWhenDue()
{
    m_uncopied = false;
    if (goodCopyDue(m_paths))
        m_suspect =
            Result{keepGoodCopy(m_paths, m_lock, m_identity, *m_connection), {}}.damage() && !m_thorough;
}

Journal Store::journalOf(const std::string &folder)
{
    if (!onNetwork(folder))
        return Journal::Wal;
    if (!m_networkTold)
        ErrOut("rkcfg: %s lies on a network, working without a write-ahead log", folder.c_str());
    m_networkTold = true;
    return Journal::Delete;
}

// The same failure again is not told again until something worked.
int Store::report(const std::string &what, int code, const std::string &text)
{
    m_reportedHeld = Result{code, {}}.busy();
    if (code == SQLITE_OK) {
        m_reported.clear();
        return code;
    }
    const std::string line = what + " failed: " + text + " (" + std::to_string(code) + ')';
    if (line != m_reported)
        ErrOut("rkcfg: %s", line.c_str());
    m_reported = line;
    return code;
}

void Store::refuse(const char *call, const char *why)
{
    report(call, SQLITE_MISUSE, why);
}

} // namespace rkcfg
