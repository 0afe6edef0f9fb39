/* SPDX-License-Identifier: MIT */
/*
 * The process's one store: follows the default name, the file behind it and forks, and turns each
 * failure into a result code and at most one log line. Not locked by itself: StoreAccess does that.
 */
#ifndef RKCFG_STORE_H
#define RKCFG_STORE_H

#include "connection.h"
#include "names.h"

#include <mutex>
#include <sys/types.h>
#include <vector>

namespace rkcfg {

// One value taken out of the store, for callers that must not be called back under the lock.
struct Entry {
    std::string path;
    std::string name;
    Type type;
    std::string text;
    uint32_t number;
};

class Store {
public:
    // True when found; reader sees the value.
    bool read(const Key &key, const Reader &reader);
    // True when the stored value was created or changed.
    bool write(const Key &key, const Value &value);
    bool list(const char *path, std::vector<Entry> &entries);
    // All of these: 0 when done, else an SQLite code.
    int save(const char *name);
    int close(bool save);
    int setDefaultName(const std::string &name);

    std::string defaultName();
    // One log line for a call that cannot be carried out as it was made.
    void refuse(const char *call, const char *why);

private:
    using Operation = std::function<int(Connection &)>;

    int run(const std::string &what, const Operation &operation);
    int ready();
    int reopen(const std::string &name, Result &result);
    int writeChanged(const Key &key, const Value &value, bool &changed);
    bool holds(Connection &connection, const Key &key, const Value &value, int &code);
    void follow();
    void followFork();
    bool replaced();
    void leave();
    int sync();
    void copyWhenDue();
    int patienceMs() const;
    void adjustPatience(int code);
    Journal journalOf(const std::string &folder);
    int report(const std::string &what, int code, const std::string &text);

    std::unique_ptr<Connection> m_connection;
    Paths m_paths;
    FileState m_identity;
    FolderLock m_lock;
    DefaultName m_defaultName;
    std::string m_folder;
    std::string m_reported;
    pid_t m_pid = 0;
    bool m_unsynced = false;  // written by us since the last sync
    bool m_uncopied = false;  // written by us since the last good copy was looked at
    bool m_lostWrite = false; // a write failed since the last save
    bool m_impatient = false; // the last call waited in vain for another writer
    bool m_networkTold = false;
    bool m_readOnlyTold = false;
    bool m_folderSynced = false;
};

// Exclusive use of the process's store for a block. fork() waits for it, so a child never inherits
// a store in the middle of a call.
class StoreAccess {
public:
    StoreAccess();
    ~StoreAccess() = default;
    StoreAccess(const StoreAccess &) = delete;
    StoreAccess &operator=(const StoreAccess &) = delete;

    Store *operator->() const;

private:
    std::unique_lock<std::mutex> m_held;
};

} // namespace rkcfg

#endif // RKCFG_STORE_H
