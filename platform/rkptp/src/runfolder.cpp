// SPDX-License-Identifier: MIT
#include "runfolder.h"

#include <cstdlib>
#include <cstring>
#include <dirent.h>
#include <fcntl.h>
#include <memory>
#include <sys/file.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>
#include <vector>

namespace rkptp {

namespace {

constexpr const char *prefix = "ptp-";
constexpr const char *lockName = "lock";
// "/ptp-XXXXXX/" and the name of a socket in it.
constexpr size_t roomForNames = 40;

Fd openFolder(const std::string &path)
{
    return Fd(open(path.c_str(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC));
}

bool ownedByUs(int fd)
{
    struct stat info {};
    return fstat(fd, &info) == 0 && info.st_uid == geteuid();
}

// The folder made or found, ours and closed to everybody else. Never through a symbolic link.
Fd privateFolder(const std::string &path)
{
    if (path.size() + roomForNames > sizeof(sockaddr_un::sun_path))
        return Fd();
    mkdir(path.c_str(), 0700);
    Fd folder = openFolder(path);
    if (!folder.valid() || !ownedByUs(folder.get()) || fchmod(folder.get(), 0700) != 0)
        return Fd();
    return folder;
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

void removeFolder(int parent, const std::string &name)
{
    const Fd folder(openat(parent, name.c_str(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC));
    if (!folder.valid())
        return;
    for (const std::string &entry : entriesOf(folder.get()))
        unlinkat(folder.get(), entry.c_str(), 0);
    unlinkat(parent, name.c_str(), AT_REMOVEDIR);
}

// A folder whose lock can be taken was left behind by a process that was killed.
void sweep(int parent)
{
    for (const std::string &name : entriesOf(parent)) {
        if (name.compare(0, strlen(prefix), prefix) != 0)
            continue;
        const Fd lock(
            openat(parent, (name + "/" + lockName).c_str(), O_RDWR | O_NOFOLLOW | O_CLOEXEC | O_NONBLOCK));
        if (lock.valid() && flock(lock.get(), LOCK_EX | LOCK_NB) == 0)
            removeFolder(parent, name);
    }
}

// Makes and takes the lock file; fails when another process swept the folder in between.
Fd takeLock(const std::string &folder)
{
    Fd lock(
        open((folder + "/" + lockName).c_str(), O_RDWR | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, 0600));
    struct stat info {};
    if (!lock.valid() || flock(lock.get(), LOCK_EX | LOCK_NB) != 0 || fstat(lock.get(), &info) != 0 ||
        info.st_nlink == 0)
        return Fd();
    return lock;
}

std::string runtimeFolder()
{
    const char *runtime = getenv("XDG_RUNTIME_DIR");
    if (!runtime || runtime[0] != '/')
        return {};
    const Fd folder(open(runtime, O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    return folder.valid() && ownedByUs(folder.get()) ? std::string(runtime) + "/corvel" : std::string();
}

} // namespace

bool RunFolder::prepareBelow(const std::string &parent)
{
    constexpr int tries = 3;
    const Fd folder = privateFolder(parent);
    if (!folder.valid())
        return false;
    sweep(folder.get());
    for (int i = 0; i < tries && !m_lock.valid(); ++i) {
        m_path = parent + "/" + prefix + "XXXXXX";
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
    const std::string runtime = runtimeFolder();
    if (!runtime.empty() && prepareBelow(runtime))
        return true;
    return prepareBelow("/tmp/corvel-" + std::to_string(geteuid()));
}

void RunFolder::remove()
{
    if (!m_lock.valid())
        return;
    const size_t slash = m_path.rfind('/');
    const Fd parent = openFolder(m_path.substr(0, slash));
    if (parent.valid())
        removeFolder(parent.get(), m_path.substr(slash + 1));
    m_lock.reset();
}

} // namespace rkptp
