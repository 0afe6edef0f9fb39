// SPDX-License-Identifier: MIT
#include "files.h"

#include <algorithm>
#include <cerrno>
#include <fcntl.h>
#include <iterator>
#include <sys/file.h>
#include <sys/vfs.h>
#include <unistd.h>

namespace rkcfg {

namespace {

constexpr mode_t kPrivateFolderMode = 0700;
constexpr mode_t kPrivateFileMode = 0600;
constexpr mode_t kOthersBits = 0077;
constexpr mode_t kPermissionBits = 07777;
constexpr int kOpenAttempts = 3;
constexpr long kLockPollNs = 2'000'000;
constexpr const char *kLockName = ".rkcfg-lock";

// File systems whose files other machines may have open, or that promise no shared memory maps.
constexpr unsigned long kNetworkTypes[] = {
    0x6969,     // NFS
    0x517B,     // SMB
    0xFF534D42, // CIFS
    0xFE534D42, // SMB2
    0x73757245, // Coda
    0x5346414F, // AFS
    0x6B414653, // kAFS
    0x564C,     // NCP
    0x01021997, // 9P
    0x00C36400, // Ceph
    0x65735546, // FUSE: sshfs and its like
    0x47504653, // GPFS
    0x0BD00BD0, // Lustre
    0x7461636F, // OCFS2
    0x01161970, // GFS2
};

double seconds(const timespec &time)
{
    return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_nsec) / 1e9;
}

bool equal(const timespec &a, const timespec &b)
{
    return a.tv_sec == b.tv_sec && a.tv_nsec == b.tv_nsec;
}

int openRetrying(const char *path, int flags, mode_t mode = 0)
{
    int fd = -1;
    do
        fd = ::open(path, flags | O_CLOEXEC | O_NONBLOCK, mode);
    while (fd < 0 && errno == EINTR);
    return fd;
}

bool sync(const char *path, int flags)
{
    const Descriptor file(openRetrying(path, flags));
    return file.valid() && fsync(file.get()) == 0;
}

int elapsedMs(const timespec &since)
{
    timespec now{};
    clock_gettime(CLOCK_MONOTONIC, &now);
    return static_cast<int>((seconds(now) - seconds(since)) * 1000);
}

} // namespace

bool FileState::sameFile(const FileState &other) const
{
    return exists == other.exists && info.st_dev == other.info.st_dev && info.st_ino == other.info.st_ino;
}

bool FileState::sameContent(const FileState &other) const
{
    return sameFile(other) && info.st_size == other.info.st_size && equal(info.st_mtim, other.info.st_mtim) &&
           equal(info.st_ctim, other.info.st_ctim);
}

FileState fileState(const std::string &path)
{
    FileState state;
    state.exists = lstat(path.c_str(), &state.info) == 0;
    state.error = state.exists ? 0 : errno;
    return state;
}

FileState fileState(const Descriptor &file)
{
    FileState state;
    state.exists = fstat(file.get(), &state.info) == 0;
    state.error = state.exists ? 0 : errno;
    return state;
}

double ageSeconds(const FileState &state, const timespec &now)
{
    return state.exists ? seconds(now) - seconds(state.info.st_mtim) : 0;
}

bool newerThan(const FileState &one, const FileState &other)
{
    return one.exists && (!other.exists || seconds(one.info.st_mtim) > seconds(other.info.st_mtim));
}

bool makePrivateFolder(const std::string &path)
{
    mkdir(path.c_str(), kPrivateFolderMode);
    // The folder itself may be a link of the user's.
    FileState state;
    state.exists = stat(path.c_str(), &state.info) == 0;
    if (!state.exists || !S_ISDIR(state.info.st_mode))
        return false;
    if ((state.info.st_mode & kOthersBits) != 0 && state.info.st_uid == geteuid())
        return chmod(path.c_str(), state.info.st_mode & kPermissionBits & ~kOthersBits) == 0 ||
               errno == EROFS;
    return true;
}

void makePrivateFile(const std::string &path, const FileState &state)
{
    // A failure changes nothing for us: the directory is closed to others anyway.
    if (state.plain() && (state.info.st_mode & kOthersBits) != 0 && state.info.st_uid == geteuid())
        (void)!chmod(path.c_str(), state.info.st_mode & kPermissionBits & ~kOthersBits);
}

bool createPrivateFile(const std::string &path)
{
    if (unlink(path.c_str()) != 0 && errno != ENOENT)
        return false;
    const Descriptor file(
        openRetrying(path.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW, kPrivateFileMode));
    return file.valid();
}

bool readable(const std::string &path)
{
    const Descriptor file(open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOFOLLOW));
    char bytes[16384];
    ssize_t count = file.valid() ? 1 : -1;
    while (count > 0 || (count < 0 && file.valid() && errno == EINTR))
        count = read(file.get(), bytes, sizeof bytes);
    return count == 0;
}

bool syncFile(const std::string &path)
{
    return sync(path.c_str(), O_RDONLY);
}

bool syncFolder(const std::string &path)
{
    return sync(path.c_str(), O_RDONLY | O_DIRECTORY);
}

bool onNetwork(const std::string &folder)
{
    struct statfs info {};
    if (statfs(folder.c_str(), &info) != 0)
        return false;
    const auto type = static_cast<unsigned long>(info.f_type) & 0xFFFFFFFFUL;
    return std::find(std::begin(kNetworkTypes), std::end(kNetworkTypes), type) != std::end(kNetworkTypes);
}

std::string fileUri(const std::string &path, const char *query)
{
    static const char digits[] = "0123456789ABCDEF";
    std::string uri("file:");
    for (const char c : path) {
        const auto byte = static_cast<unsigned char>(c);
        const bool plain = (byte >= 'a' && byte <= 'z') || (byte >= 'A' && byte <= 'Z') ||
                           (byte >= '0' && byte <= '9') || byte == '/' || byte == '.' || byte == '-';
        if (plain)
            uri += c;
        else
            uri.append({'%', digits[byte >> 4], digits[byte & 15]});
    }
    return uri + query;
}

bool FolderLock::open(const std::string &folder)
{
    const std::string path = folder + kLockName;
    if (m_file.valid() && m_path == path)
        return true;
    m_path = path;
    for (int attempt = 0; attempt < kOpenAttempts; ++attempt) {
        m_file = rk::aboveStandardStreams(
            Descriptor(openRetrying(path.c_str(), O_RDWR | O_CREAT | O_NOFOLLOW, kPrivateFileMode)));
        m_opened = fileState(m_file);
        if (m_opened.plain())
            return true;
        m_file.reset();
        // A link or the like under our name keeps nobody apart: away with the name, what is behind it stays.
        const FileState now = fileState(path);
        if (now.exists && (now.plain() || unlink(path.c_str()) != 0))
            break;
    }
    return false;
}

bool FolderLock::stillThere() const
{
    return m_opened.exists && fileState(m_path).sameFile(m_opened);
}

FolderLock::Outcome FolderLock::acquire(const std::string &folder, Kind kind, int timeoutMs)
{
    timespec start{};
    clock_gettime(CLOCK_MONOTONIC, &start);
    const int operation = (kind == Kind::Shared ? LOCK_SH : LOCK_EX) | LOCK_NB;
    for (;;) {
        if (!open(folder))
            return Outcome::Unavailable;
        const bool locked = flock(m_file.get(), operation) == 0;
        if (!locked && errno != EWOULDBLOCK && errno != EINTR)
            return Outcome::Unavailable;
        // Somebody may have removed the file; then it guards nothing, whoever has it locked.
        if (!stillThere()) {
            m_file.reset();
            continue;
        }
        if (locked)
            return Outcome::Held;
        if (elapsedMs(start) >= timeoutMs)
            return Outcome::Busy;
        const timespec pause{0, kLockPollNs};
        nanosleep(&pause, nullptr);
    }
}

void FolderLock::release()
{
    if (m_file.valid())
        flock(m_file.get(), LOCK_UN);
}

void FolderLock::close()
{
    m_file.reset();
}

} // namespace rkcfg
