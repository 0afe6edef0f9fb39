// SPDX-License-Identifier: MIT
//
// Files by handle. What is opened is a regular file and nothing else: a pipe, device, socket or
// directory is refused before it is touched, and opening never waits.
#include "directories.h"
#include "guard.h"
#include "handletable.h"
#include "linebuffer.h"
#include "rkos.h"

#include <cstring>
#include <fcntl.h>
#include <string>
#include <sys/stat.h>

using namespace rkos;

namespace {

constexpr mode_t kUserFileMode = 0666;
constexpr mode_t kOwnFileMode = 0600;
constexpr mode_t kOthersBits = 0077;

struct File {
    Descriptor fd;
    std::string path;
    bool readable = false;
    bool writable = false;
    bool incomplete = false; // a write failed; already logged
    bool readFailed = false; // a read failed; already logged
    std::mutex mutex;
    LineBuffer lines;
};

using Files = HandleTable<File, HandleKind::file>;

struct Disposition {
    bool create;    // makes a missing file
    bool exclusive; // refuses an existing one
    bool truncate;  // empties an existing one
};

// Index: the disposition's number.
// clang-format off
const Disposition kDispositions[] = {
    // create exclusive truncate
    {false, false, false}, // 0 is none
    {true,  true,  false}, // RKOS_CREATE_NEW
    {true,  false, true},  // RKOS_CREATE_ALWAYS
    {false, false, false}, // RKOS_OPEN_EXISTING
    {true,  false, false}, // RKOS_OPEN_ALWAYS
    {false, false, true},  // RKOS_TRUNCATE_EXISTING
};
// clang-format on

const Disposition *dispositionOf(uint32_t number)
{
    return number >= RKOS_CREATE_NEW && number <= RKOS_TRUNCATE_EXISTING ? &kDispositions[number] : nullptr;
}

// True when the file lies in one of the library's own directories.
bool liesInOwnDirectory(const std::string &path)
{
    const size_t slash = path.rfind('/');
    const std::string parent = slash == std::string::npos ? "." : path.substr(0, slash + 1);
    struct stat info {};
    return stat(parent.c_str(), &info) == 0 && isOwnDirectory(info);
}

int openFlags(uint32_t access, const Disposition &how, bool own)
{
    const bool write = (access & RKOS_GENERIC_WRITE) != 0 || how.truncate;
    const bool read = (access & RKOS_GENERIC_READ) != 0;
    int flags = O_CLOEXEC | O_NONBLOCK | O_NOCTTY;
    flags |= write ? (read ? O_RDWR : O_WRONLY) : O_RDONLY;
    flags |= how.create ? O_CREAT : 0;
    flags |= how.exclusive ? O_EXCL : 0;
    flags |= own ? O_NOFOLLOW : 0;
    return flags;
}

// In our own directories a file that somebody planted (a link, a second name, another owner) is not
// used. A file of ours that others may read is closed to them.
bool acceptOwn(int fd, const struct stat &info, const std::string &path)
{
    if (info.st_uid != geteuid() || info.st_nlink != 1) {
        ErrOut("rkos: %s is not used: it has another owner or a second name", path.c_str());
        return false;
    }
    return (info.st_mode & kOthersBits) == 0 || fchmod(fd, kOwnFileMode) == 0;
}

// An existing path that is no regular file must not even be opened: opening alone has effects on
// some devices.
bool existsAsOther(const std::string &path)
{
    struct stat info {};
    return stat(path.c_str(), &info) == 0 && !S_ISREG(info.st_mode);
}

Descriptor openRegular(const std::string &path, uint32_t access, const Disposition &how)
{
    if (existsAsOther(path))
        return Descriptor();
    const bool own = liesInOwnDirectory(path);
    const int flags = openFlags(access, how, own);
    int opened = -1;
    do {
        opened = open(path.c_str(), flags, own ? kOwnFileMode : kUserFileMode);
    } while (opened < 0 && errno == EINTR);
    Descriptor fd = aboveStandardStreams(Descriptor(opened));
    struct stat info {};
    if (!fd.valid() || fstat(fd.get(), &info) != 0 || !S_ISREG(info.st_mode))
        return Descriptor();
    if (own && !acceptOwn(fd.get(), info, path))
        return Descriptor();
    if (how.truncate && ftruncate(fd.get(), 0) != 0)
        return Descriptor();
    fcntl(fd.get(), F_SETFL, fcntl(fd.get(), F_GETFL) & ~O_NONBLOCK);
    return fd;
}

// One line per file in the log, however many writes fail.
void noteIncomplete(File &file, int error)
{
    if (!file.incomplete)
        ErrOut("rkos: %s is incomplete: %s", file.path.c_str(), strerrordesc_np(error));
    file.incomplete = true;
}

// Writes all of it or fails; returns how much is in the file.
size_t writeAll(File &file, const char *data, size_t length)
{
    const WriteSignalShield shield;
    size_t done = 0;
    if (!file.lines.dropReadAhead(file.fd.get())) {
        noteIncomplete(file, errno);
        return done;
    }
    while (done < length) {
        const ssize_t wrote = ::write(file.fd.get(), data + done, length - done);
        if (wrote < 0 && errno == EINTR)
            continue;
        if (wrote <= 0) {
            noteIncomplete(file, wrote < 0 ? errno : ENOSPC);
            break;
        }
        done += static_cast<size_t>(wrote);
    }
    return done;
}

// Returns how much was written; nothing through a handle that is none or may not write.
size_t writeTo(uint64_t handle, const char *data, size_t length, bool *allowed)
{
    const auto file = Files::instance().find(handle);
    *allowed = file != nullptr && file->writable;
    if (!*allowed)
        return 0;
    const std::lock_guard<std::mutex> lock(file->mutex);
    return writeAll(*file, data, length);
}

uint64_t createFile(const char *path, uint32_t access, uint32_t dispositionNumber)
{
    const Disposition *how = dispositionOf(dispositionNumber);
    const uint32_t readOrWrite = access & (RKOS_GENERIC_READ | RKOS_GENERIC_WRITE);
    const bool mayEmpty = dispositionNumber != RKOS_TRUNCATE_EXISTING || (access & RKOS_GENERIC_WRITE) != 0;
    if (path == nullptr || path[0] == '\0' || how == nullptr || readOrWrite == 0 || !mayEmpty)
        return RKOS_INVALID_HANDLE;
    Descriptor fd = openRegular(path, access, *how);
    if (!fd.valid())
        return RKOS_INVALID_HANDLE;
    auto file = std::make_shared<File>();
    file->fd = std::move(fd);
    file->path = path;
    file->readable = (access & RKOS_GENERIC_READ) != 0;
    file->writable = (access & RKOS_GENERIC_WRITE) != 0;
    return Files::instance().add(std::move(file));
}

bool readLine(File &file, char *buffer, size_t size)
{
    const std::lock_guard<std::mutex> lock(file.mutex);
    const bool got = file.lines.readLine(file.fd.get(), buffer, size);
    const int error = file.lines.error();
    if (error != 0 && !file.readFailed) {
        file.readFailed = true;
        ErrOut("rkos: reading %s failed: %s", file.path.c_str(), strerrordesc_np(error));
    }
    return got;
}

int closeFile(uint64_t handle)
{
    const auto file = Files::instance().take(handle);
    if (file == nullptr)
        return 0;
    const std::lock_guard<std::mutex> lock(file->mutex);
    // Some file systems tell of a full disk only here. EINTR: the descriptor is closed all the same.
    if (::close(file->fd.release()) != 0 && errno != EINTR && file->writable)
        noteIncomplete(*file, errno);
    return file->incomplete ? 0 : 1;
}

} // namespace

extern "C" uint64_t rkOSCreateFile(const char *path, uint32_t access, uint32_t, void *, uint32_t disposition,
                                   uint32_t, void *)
{
    return guarded(RKOS_INVALID_HANDLE, [&] { return createFile(path, access, disposition); });
}

extern "C" char *rkOSfgets(char *buffer, int size, uint64_t handle)
{
    return guarded(static_cast<char *>(nullptr), [&]() -> char * {
        const auto file = Files::instance().find(handle);
        if (buffer == nullptr || size < 2 || file == nullptr || !file->readable)
            return nullptr;
        return readLine(*file, buffer, static_cast<size_t>(size)) ? buffer : nullptr;
    });
}

extern "C" int rkOSfputs(const char *text, uint64_t handle)
{
    return guarded(-1, [&] {
        if (text == nullptr)
            return -1;
        bool allowed = false;
        const size_t length = strlen(text);
        return writeTo(handle, text, length, &allowed) == length && allowed ? 1 : -1;
    });
}

extern "C" int rkOSWriteFile(uint64_t handle, const void *data, uint32_t length, uint32_t *written, void *)
{
    return guarded(0, [&] {
        if (written != nullptr)
            *written = 0;
        if (data == nullptr && length != 0)
            return 0;
        bool allowed = false;
        const size_t done = writeTo(handle, static_cast<const char *>(data), length, &allowed);
        if (written != nullptr)
            *written = static_cast<uint32_t>(done);
        return allowed && done == length ? 1 : 0;
    });
}

extern "C" int rkOSCloseFile(uint64_t handle)
{
    return guarded(0, [&] { return closeFile(handle); });
}

extern "C" int rkOSFileExists(const char *path)
{
    struct stat info {};
    if (path == nullptr || path[0] == '\0')
        return 0;
    return stat(path, &info) == 0 || errno == EOVERFLOW ? 1 : 0;
}
