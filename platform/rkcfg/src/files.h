/* SPDX-License-Identifier: MIT */
/*
 * What the store needs from the file system: who a file is, the lock that keeps repair and writing
 * apart, syncs that reach the directory, and whether a directory lies on a network.
 */
#ifndef RKCFG_FILES_H
#define RKCFG_FILES_H

#include "descriptor.h"

#include <cerrno>
#include <ctime>
#include <string>
#include <sys/stat.h>

namespace rkcfg {

using rk::Descriptor;

// What one stat told about a path. Two answers for the same path differ when the file was replaced.
struct FileState {
    bool exists = false;
    int error = 0; // why it does not exist, as errno
    struct stat info {};

    // Not there for sure; a failing disk cannot say so.
    bool missing() const { return !exists && error == ENOENT; }
    bool regular() const { return exists && S_ISREG(info.st_mode); }
    // A regular file with one name only: nobody else's file under a name of ours.
    bool plain() const { return regular() && info.st_nlink == 1; }
    off_t size() const { return exists ? info.st_size : 0; }
    bool sameFile(const FileState &other) const;
    bool sameContent(const FileState &other) const;
};

// Symbolic links are not followed.
FileState fileState(const std::string &path);
FileState fileState(const Descriptor &file);

// Seconds by which the file is older (negative: newer) than a time of day. 0 for a missing file.
double ageSeconds(const FileState &state, const timespec &now);

bool newerThan(const FileState &one, const FileState &other);

// Creates a missing directory 0700 and takes away what group and others may do with ours.
bool makePrivateFolder(const std::string &path);

// Takes away what group and others may do with a file of ours.
void makePrivateFile(const std::string &path, const FileState &state);

// An empty file 0600 in place of whatever lay there.
bool createPrivateFile(const std::string &path);

// All of it, to its end. errno says why not.
bool readable(const std::string &path);

bool syncFile(const std::string &path);
bool syncFolder(const std::string &path);

// A path as a URI that no character of the path can break out of.
std::string fileUri(const std::string &path, const char *query);

// Whether memory cannot be shared through a file of this directory with another machine's processes.
bool onNetwork(const std::string &folder);

/*
 * The lock file of the directory. Writers hold it shared for the moment of a write; whoever makes,
 * repairs or copies a database holds it exclusively. So nobody writes into a file that is being
 * taken away. A crash frees it.
 */
class FolderLock {
public:
    enum class Kind { Shared, Exclusive };
    enum class Outcome { Held, Busy, Unavailable };

    // Opens the lock file when needed and waits at most that long. Unavailable: it cannot be opened
    // (a read-only directory), or the file system knows no such locks.
    Outcome acquire(const std::string &folder, Kind kind, int timeoutMs);
    void release();
    // Closes the file, for another directory or in a forked child.
    void close();

private:
    bool open(const std::string &folder);
    bool stillThere() const;

    Descriptor m_file;
    FileState m_opened;
    std::string m_path;
};

// Holds a FolderLock for a block.
class LockGuard {
public:
    LockGuard(FolderLock &lock, const std::string &folder, FolderLock::Kind kind, int timeoutMs)
        : m_lock(lock), m_outcome(lock.acquire(folder, kind, timeoutMs))
    {
    }
    ~LockGuard()
    {
        if (held())
            m_lock.release();
    }
    LockGuard(const LockGuard &) = delete;
    LockGuard &operator=(const LockGuard &) = delete;

    bool held() const { return m_outcome == FolderLock::Outcome::Held; }
    bool busy() const { return m_outcome == FolderLock::Outcome::Busy; }

private:
    FolderLock &m_lock;
    FolderLock::Outcome m_outcome;
};

} // namespace rkcfg

#endif // RKCFG_FILES_H
