// SPDX-License-Identifier: MIT
#include "logfile.h"

#include "directories.h"

#include <climits>
#include <fcntl.h>
#include <poll.h>
#include <sys/file.h>
#include <sys/socket.h>

namespace rkos {

namespace {

constexpr mode_t kLogMode = 0600;

ssize_t writeOnce(int fd, const std::string &text)
{
    ssize_t wrote = -1;
    do {
        wrote = ::write(fd, text.data(), text.size());
    } while (wrote < 0 && errno == EINTR);
    return wrote;
}

// For a pipe or terminal of another user, which cannot be opened anew. A pipe that has room takes PIPE_BUF
// bytes at once; a longer line loses its end.
bool writeWhenRoom(int fd, const std::string &line)
{
    pollfd room = {fd, POLLOUT, 0};
    if (poll(&room, 1, 0) != 1 || (room.revents & (POLLOUT | POLLERR | POLLNVAL)) != POLLOUT)
        return false;
    if (line.size() <= PIPE_BUF)
        return writeOnce(fd, line) == static_cast<ssize_t>(line.size());
    return writeOnce(fd, line.substr(0, PIPE_BUF - 1) + "\n") == PIPE_BUF;
}

// A second name was planted, and leads to somebody's file or out of our directory.
bool hasOneName(const struct stat &info)
{
    return info.st_nlink == 1;
}

bool sameFile(const struct stat &info, dev_t device, ino_t inode)
{
    return S_ISREG(info.st_mode) && info.st_dev == device && info.st_ino == inode;
}

} // namespace

void LogFile::setName(const std::string &name)
{
    // Not closed when the number has meanwhile become another file's.
    struct stat info {};
    if (m_fd.valid() && (fstat(m_fd.get(), &info) != 0 || !sameFile(info, m_device, m_inode)))
        m_fd.release();
    m_fd = Descriptor();
    m_name = name;
    m_torn = false;
}

// True while our descriptor is still the file that carries the name: nobody rotated it away, removed
// it or closed our descriptor behind our back.
bool LogFile::isCurrent() const
{
    struct stat ours {};
    struct stat named {};
    return m_fd.valid() && fstat(m_fd.get(), &ours) == 0 && sameFile(ours, m_device, m_inode) &&
           hasOneName(ours) && lstat((m_directory + m_name + ".log").c_str(), &named) == 0 &&
           sameFile(named, m_device, m_inode);
}

bool LogFile::openIn(const std::string &directory)
{
    constexpr int kFlags = O_WRONLY | O_APPEND | O_CREAT | O_NOFOLLOW | O_NONBLOCK | O_NOCTTY | O_CLOEXEC;
    Descriptor fd =
        aboveStandardStreams(Descriptor(open((directory + m_name + ".log").c_str(), kFlags, kLogMode)));
    struct stat info {};
    if (!fd.valid() || fstat(fd.get(), &info) != 0 || !S_ISREG(info.st_mode) || info.st_uid != geteuid() ||
        !hasOneName(info))
        return false;
    if ((info.st_mode & 07777) != kLogMode && fchmod(fd.get(), kLogMode) != 0)
        return false;
    m_fd = std::move(fd);
    m_directory = directory;
    m_device = info.st_dev;
    m_inode = info.st_ino;
    return true;
}

bool LogFile::ready()
{
    if (isCurrent())
        return true;
    setName(std::string(m_name));
    const auto directory = stateDir();
    if (!directory)
        return false;
    leaveSecondName(*directory);
    return openIn(*directory);
}

void LogFile::shiftNames(int directory) const
{
    const std::string name = m_name + ".log";
    for (int number = kKeptLogs; number > 0; --number) {
        const std::string from = number == 1 ? name : name + "." + std::to_string(number - 1);
        const std::string to = name + "." + std::to_string(number);
        renameat(directory, from.c_str(), directory, to.c_str());
    }
}

// A log that is known under a second name as well is left to that, unchanged, as if it were full.
void LogFile::leaveSecondName(const std::string &path) const
{
    const Descriptor directory(open(path.c_str(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC));
    const std::string name = m_name + ".log";
    struct stat info {};
    const auto isLinked = [&] {
        return fstatat(directory.get(), name.c_str(), &info, AT_SYMLINK_NOFOLLOW) == 0 &&
               S_ISREG(info.st_mode) && !hasOneName(info);
    };
    if (directory.valid() && isLinked() && flock(directory.get(), LOCK_EX | LOCK_NB) == 0 && isLinked())
        shiftNames(directory.get());
}

// One process rotates at a time; who finds the lock taken goes on writing to the old file. Under the
// lock the name is looked at again, as another process may just have been here.
void LogFile::rotate()
{
    const Descriptor directory(open(m_directory.c_str(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC));
    if (!directory.valid() || flock(directory.get(), LOCK_EX | LOCK_NB) != 0)
        return;
    if (isCurrent())
        shiftNames(directory.get());
    ready();
}

bool LogFile::append(const std::string &line)
{
    if (m_name.empty() || !ready())
        return false;
    struct stat info {};
    if (fstat(m_fd.get(), &info) == 0 && info.st_size > 0 &&
        info.st_size + static_cast<off_t>(line.size()) > kMaxLogBytes)
        rotate();
    if (!m_fd.valid())
        return false;
    const std::string text = m_torn ? "\n" + line : line;
    const WriteSignalShield shield;
    const ssize_t wrote = writeOnce(m_fd.get(), text);
    if (wrote > 0)
        m_torn = wrote != static_cast<ssize_t>(text.size());
    return wrote == static_cast<ssize_t>(text.size());
}

bool writeToStandardError(const std::string &line)
{
    const WriteSignalShield shield;
    const auto size = static_cast<ssize_t>(line.size());
    struct stat info {};
    if (fstat(STDERR_FILENO, &info) != 0)
        return false;
    if (S_ISREG(info.st_mode))
        return writeOnce(STDERR_FILENO, line) == size;
    if (S_ISSOCK(info.st_mode))
        return send(STDERR_FILENO, line.data(), line.size(), MSG_DONTWAIT | MSG_NOSIGNAL) == size;
    // A pipe or terminal: a descriptor of our own, as "do not wait" on the shared one would change it
    // for everybody who writes to it.
    const Descriptor own(open("/proc/self/fd/2", O_WRONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC));
    if (!own.valid() && (errno == EACCES || errno == ENOENT))
        return writeWhenRoom(STDERR_FILENO, line);
    return own.valid() && writeOnce(own.get(), line) == size;
}

} // namespace rkos
