// SPDX-License-Identifier: MIT
#include "eventsocket.h"

#include "directories.h"
#include "privatefolder.h"

#include <algorithm>
#include <cstring>
#include <ctime>
#include <fcntl.h>
#include <optional>
#include <sys/file.h>
#include <sys/socket.h>
#include <sys/un.h>

namespace rkos {

namespace {

constexpr size_t kMaxNameBytes = 200;
constexpr mode_t kPrivateSocket = 0600;
constexpr mode_t kSharedSocket = 0666; // who may reach it is the directory's matter
constexpr const char *kSystemDirectory = "/run/corvel";
constexpr const char *kLockName = ".lock";
constexpr const char *kNewName = ".new";
constexpr int kLockTries = 400;
constexpr timespec kLockPause = {0, 5000000};

// A socket's address may have 107 bytes only; this names any file in any directory in fewer.
sockaddr_un addressOf(int fd, const char *name)
{
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    const std::string path =
        "/proc/self/fd/" + std::to_string(fd) + (name != nullptr ? "/" : "") + (name != nullptr ? name : "");
    path.copy(address.sun_path, sizeof address.sun_path - 1);
    return address;
}

const sockaddr *generic(const sockaddr_un &address)
{
    const void *pointer = &address;
    return static_cast<const sockaddr *>(pointer);
}

std::optional<EventDirectory> openDirectory(const std::string &path, bool shared)
{
    Descriptor fd =
        aboveStandardStreams(Descriptor(open(path.c_str(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC)));
    struct stat info {};
    if (!fd.valid() || fstat(fd.get(), &info) != 0)
        return std::nullopt;
    const bool trusted = info.st_uid == geteuid() || (shared && info.st_uid == 0);
    if (!trusted || (info.st_mode & S_IWOTH) != 0)
        return std::nullopt;
    EventDirectory directory;
    directory.fd = std::move(fd);
    directory.path = path;
    directory.shared = shared;
    return directory;
}

Descriptor newSocket()
{
    return aboveStandardStreams(Descriptor(socket(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0)));
}

// Waits for the directory's lock, not for ever: its holder may have been stopped.
Descriptor lockDirectory(const EventDirectory &directory)
{
    constexpr int kFlags = O_RDWR | O_CREAT | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC;
    Descriptor lock(openat(directory.fd.get(), kLockName, kFlags, kPrivateSocket));
    for (int tries = 0; lock.valid() && tries < kLockTries; ++tries) {
        if (flock(lock.get(), LOCK_EX | LOCK_NB) == 0)
            return lock;
        nanosleep(&kLockPause, nullptr);
    }
    return Descriptor();
}

// Bound under a passing name and then renamed: the event's name is never without its socket while a
// service lives, may be longer than a socket's address, and takes the place of a dead one in one step.
bool bindUnder(const EventDirectory &directory, const std::string &name, EventSocket *made)
{
    const int at = directory.fd.get();
    const sockaddr_un address = addressOf(at, kNewName);
    unlinkat(at, kNewName, 0);
    made->fd = newSocket();
    // Before the bind this sets what mode the file starts with: closed until it is complete.
    if (!made->fd.valid() || fchmod(made->fd.get(), kPrivateSocket) != 0 ||
        bind(made->fd.get(), generic(address), sizeof address) != 0)
        return false;
    struct stat info {};
    const mode_t mode = directory.shared ? kSharedSocket : kPrivateSocket;
    if (fchmodat(at, kNewName, mode, 0) != 0 || fstatat(at, kNewName, &info, AT_SYMLINK_NOFOLLOW) != 0 ||
        renameat(at, kNewName, at, name.c_str()) != 0)
        return false;
    made->device = info.st_dev;
    made->inode = info.st_ino;
    made->name = name;
    return true;
}

enum class Outcome { made, taken, impossible };

Outcome bindIn(EventDirectory &directory, const std::string &name, EventSocket *made)
{
    // Asked before the lock as well: where we may not write, a living service is still the owner.
    if (connectEvent(directory, name).valid())
        return Outcome::taken;
    const Descriptor lock = lockDirectory(directory);
    if (!lock.valid())
        return Outcome::impossible;
    if (connectEvent(directory, name).valid())
        return Outcome::taken;
    if (!bindUnder(directory, name, made))
        return Outcome::impossible;
    made->directory = std::move(directory.fd);
    return Outcome::made;
}

} // namespace

bool isEventName(const char *name)
{
    if (name == nullptr || name[0] == '\0' || name[0] == '.')
        return false;
    const size_t length = strnlen(name, kMaxNameBytes + 1);
    return length <= kMaxNameBytes && std::all_of(name, name + length, [](char c) {
               const auto byte = static_cast<unsigned char>(c);
               return byte >= 0x20 && byte != 0x7f && byte != '/';
           });
}

std::vector<EventDirectory> eventDirectories()
{
    std::vector<EventDirectory> found;
    if (auto system = openDirectory(kSystemDirectory, true))
        found.push_back(std::move(*system));
    if (const auto runtime = runtimeDir(SIZE_MAX)) {
        const std::string path = *runtime + "events";
        if (rk::makePrivate(path, false)) {
            if (auto own = openDirectory(path, false))
                found.push_back(std::move(*own));
        }
    }
    return found;
}

Descriptor connectEvent(const EventDirectory &directory, const std::string &name)
{
    const Descriptor file(openat(directory.fd.get(), name.c_str(), O_PATH | O_NOFOLLOW | O_CLOEXEC));
    struct stat info {};
    if (!file.valid() || fstat(file.get(), &info) != 0 || !S_ISSOCK(info.st_mode))
        return Descriptor();
    Descriptor socket = newSocket();
    const sockaddr_un address = addressOf(file.get(), nullptr);
    if (!socket.valid() || connect(socket.get(), generic(address), sizeof address) != 0)
        return Descriptor();
    return socket;
}

Descriptor connectEvent(const std::string &name)
{
    for (const EventDirectory &directory : eventDirectories()) {
        Descriptor socket = connectEvent(directory, name);
        if (socket.valid())
            return socket;
    }
    return Descriptor();
}

void EventSocket::unlinkName() const
{
    struct stat info {};
    if (fstatat(directory.get(), name.c_str(), &info, AT_SYMLINK_NOFOLLOW) == 0 && info.st_dev == device &&
        info.st_ino == inode)
        unlinkat(directory.get(), name.c_str(), 0);
}

EventSocket bindEvent(const std::string &name)
{
    for (EventDirectory &directory : eventDirectories()) {
        EventSocket made;
        const Outcome outcome = bindIn(directory, name, &made);
        if (outcome == Outcome::made)
            return made;
        if (outcome == Outcome::taken)
            break;
    }
    return EventSocket();
}

} // namespace rkos
