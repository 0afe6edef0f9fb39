/* SPDX-License-Identifier: MIT */
/*
 * One configuration of this process: follows the default name, the file behind it and forks, and turns
 * each failure into a result code and at most one log line. Not locked by itself: StoreAccess does that.
 */
#ifndef RKCFG_STORE_H
#define RKCFG_STORE_H

#include "names.h"
#include "patience.h"
#include "takeback.h"

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

// A configuration by its own name, or the default one, whichever that is.
class Store {
public:
    Store() = default;
    explicit Store(std::string name) : m_fixedName(std::move(name)) {}

    // In a child, once after each fork().
    static void forked();
    // At the beginning of each call; startMs: when it was made.
    void beginCall(int64_t startMs) { m_patience.begin(startMs); }
    // Opens the configuration now, making it when it is missing and create says so.
    int open(bool create);
    // True when found; reader sees the value.
    bool read(const Key &key, const Reader &reader);
    // True when the stored value was created, changed or removed (absent).
    bool write(const Key &key, const Value &value);
    bool list(const char *path, std::vector<Entry> &entries);
    // All of these: 0 when done, else an SQLite code.
    int save(const char *name);
    int close(bool save);
    int setDefaultName(const std::string &name);
    int begin();
    int end(bool keep);
    int label(const std::string &text);
    int setNote(const NoteKey &note, std::string_view data);
    int readNote(const NoteKey &note, const NoteReader &reader);
    int listNotes(const char *owner, std::vector<KeptNote> &notes);
    int history(Walk &walk, std::vector<Change> &changes);
    int takeBack(const TakeBackOrder &order, TakeBackResult &result);
    // 0 unchanged, 1 changed by somebody else, -1 cannot be told.
    int changedByOthers(uint64_t &mark);

    std::string defaultName();
    // One log line for a call that cannot be carried out as it was made.
    void refuse(const char *call, const char *why);
    int report(const std::string &what, int code, const std::string &text);

private:
    using Operation = std::function<int(Connection &)>;

    int run(const std::string &what, const Operation &operation);
    int ready();
    void dropAfter(int code);
    int reopen(const std::string &name, Result &result);
    int runWriting(const Operation &operation);
    int writeChanged(const Operation &operation);
    bool holds(Connection &connection, const Key &key, const Value &value, int &code);
    const std::string &wantedName();
    void follow();
    void followFork();
    bool replaced();
    void leave();
    int sync();
    int syncAndTell();
    int finish(bool keep);
    void copyWhenDue();
    void prune(int steps);
    Journal journalOf(const std::string &folder);

    std::string m_fixedName; // empty: the default configuration
    bool m_create = true;
    std::unique_ptr<Connection> m_connection;
    uint32_t m_generation = 0; // another one for each connection of the process
    Paths m_paths;
    FileState m_identity;
    FolderLock m_lock;
    Patience m_patience;
    std::unique_ptr<LockGuard> m_transaction; // held from begin to end
    Batch m_batch;
    Batch m_batchBefore; // as it was when the transaction began
    DefaultName m_defaultName;
    std::string m_folder;
    std::string m_reported;
    bool m_reportedHeld = false; // it was that another process holds the store
    int m_fork = 0;              // the process that the connection belongs to
    bool m_suspect = false;      // something was found damaged: the next opening checks all of the file
    bool m_thorough = false;     // the present one was opened so
    bool m_unsynced = false;     // written by us since the last sync
    bool m_uncopied = false;     // written by us since the last good copy was looked at
    bool m_lostWrite = false;    // a write failed since the last save
    bool m_poisoned = false;     // a write failed since the transaction began
    bool m_saveAtEnd = false;    // a save was asked for inside the transaction
    bool m_writing = false;      // this call asked for a lock for writing
    bool m_wrote = false;        // and had it
    bool m_networkTold = false;
    bool m_readOnlyTold = false;
    bool m_folderSynced = false;
};

} // namespace rkcfg

#endif // RKCFG_STORE_H
