// SPDX-License-Identifier: MIT
#include "runfolder.h"

#include "privatefolder.h"

#include <cstdlib>
#include <dirent.h>
#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>
#include <vector>

namespace rkptp {

namespace {

constexpr const char *kLockName = "lock";
// "/ptp-XXXXXX/" and the name of a socket in it.
constexpr size_t kRoomForNames = 40;

// For when every name that is ours by rule is taken or cannot be made: names that nobody can take beforehand.
constexpr const char *kLastResort = "/tmp";

// Longer paths do not fit a socket's address.
bool hasRoom(const std::string &parent)
{
    return parent.size() + kRoomForNames <= sizeof(sockaddr_un::sun_path);
}

std::vector<std::string> entriesOf(int folder)
{
    std::vector<std::string> names;
    DIR *stream = fdopendir(fcntl(folder, F_DUPFD_CLOEXEC, 0));
    if (!stream)
        return names;
    rewinddir(stream);
    while (const dirent *entry = readdir(stream))
        if (entry->d_name[0] != '.')
            names.emplace_back(entry->d_name);
    closedir(stream);
    return names;
}

bool ownedByUs(int fd)
{
    struct stat info {};
    return fstat(fd, &info) == 0 && info.st_uid == geteuid();
}

// A folder in which others may make names, but not move or remove ours.
Descriptor openShared(const char *path)
{
    Descriptor folder(open(path, O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    struct stat info {};
    const bool safe = folder.valid() && fstat(folder.get(), &info) == 0 && (info.st_mode & S_ISVTX) != 0;
    return safe ? std::move(folder) : Descriptor();
}

void removeFolder(int parent, const std::string &name)
{
    const Descriptor folder(openat(parent, name.c_str(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC));
    // In /tmp there may be others' folders of such a name, and root could empty them.
    if (!folder.valid() || !ownedByUs(folder.get()))
        return;
    for (const std::string &entry : entriesOf(folder.get()))
        unlinkat(folder.get(), entry.c_str(), 0);
    unlinkat(parent, name.c_str(), AT_REMOVEDIR);
}

// A folder whose lock can be taken was left behind by a process that was killed.
void sweep(int parent, const std::string &prefix)
{
    for (const std::string &name : entriesOf(parent)) {
        if (name.compare(0, prefix.size(), prefix) != 0)
            continue;
        const Descriptor lock(
            openat(parent, (name + "/" + kLockName).c_str(), O_RDWR | O_NOFOLLOW | O_CLOEXEC | O_NONBLOCK));
        if (lock.valid() && flock(lock.get(), LOCK_EX | LOCK_NB) == 0)
            removeFolder(parent, name);
    }
}

// Makes and takes the lock file; fails when another process swept the folder in between.
Descriptor takeLock(const std::string &folder)
{
    Descriptor lock(
        open((folder + "/" + kLockName).c_str(), O_RDWR | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, 0600));
    struct stat info {};
    if (!lock.valid() || flock(lock.get(), LOCK_EX | LOCK_NB) != 0 || fstat(lock.get(), &info) != 0 ||
        info.st_nlink == 0)
        return Descriptor();
    return lock;
}

} // namespace

bool RunFolder::prepareIn(const Descriptor &parent, const std::string &path, const char *prefix)
{
    constexpr int kTries = 3;
    if (!parent.valid() || !hasRoom(path))
        return false;
    sweep(parent.get(), prefix);
    for (int i = 0; i < kTries && !m_lock.valid(); ++i) {
        m_path = path + "/" + prefix + "XXXXXX";
        if (!mkdtemp(m_path.data()))
            return false;
        m_lock = takeLock(m_path);
    }
    return m_lock.valid();
}

bool RunFolder::prepare()
{
    // Still there? A cleaner of temporary files may have taken it.
    if (m_lock.valid() && access(m_path.c_str(), W_OK) == 0)
        return true;
    m_lock.reset();
    for (const rk::RuntimeFolder &place : rk::runtimeFolders())
        if (prepareIn(rk::openPrivate(place.path, place.parents), place.path, "ptp-"))
            return true;
    return prepareIn(openShared(kLastResort), kLastResort, "corvel-ptp-");
}

void RunFolder::remove()
{
    if (!m_lock.valid())
        return;
    const size_t slash = m_path.rfind('/');
    const Descriptor parent(open(m_path.substr(0, slash).c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    if (parent.valid())
        removeFolder(parent.get(), m_path.substr(slash + 1));
    m_lock.reset();
}

} // namespace rkptp
