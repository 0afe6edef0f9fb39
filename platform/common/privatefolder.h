// SPDX-License-Identifier: MIT
//
// Where a user's own folders lie, and how one is made that nobody else can reach into. Private to the
// libraries in platform/; each compiles its own copy. The environment is read at every call.
#ifndef CORVEL_PLATFORM_PRIVATEFOLDER_H
#define CORVEL_PLATFORM_PRIVATEFOLDER_H

#include "descriptor.h"

#include <cstdlib>
#include <pwd.h>
#include <string>
#include <sys/stat.h>
#include <vector>

namespace rk {

constexpr mode_t kPrivateFolderMode = 0700;
constexpr mode_t kOthersBits = 0077;

// ---- places ----------------------------------------------------------------------------------------

// An absolute folder from the environment without "/" at its end (but for the root), else empty.
inline std::string folderFromEnvironment(const char *variable)
{
    const char *value = secure_getenv(variable);
    if (value == nullptr || value[0] != '/')
        return {};
    std::string path(value);
    while (path.size() > 1 && path.back() == '/')
        path.pop_back();
    return path;
}

inline std::string homeFromPasswords()
{
    std::vector<char> memory(16384);
    passwd entry{};
    passwd *found = nullptr;
    if (getpwuid_r(geteuid(), &entry, memory.data(), memory.size(), &found) != 0 || found == nullptr)
        return {};
    return entry.pw_dir != nullptr && entry.pw_dir[0] == '/' ? entry.pw_dir : std::string();
}

// $HOME when it is absolute, else the password database's; empty when neither knows one.
inline std::string homeFolder()
{
    const std::string home = folderFromEnvironment("HOME");
    return home.empty() ? homeFromPasswords() : home;
}

// `base` + `tail` ("/corvel"); empty when there is no base.
inline std::string below(const std::string &base, const std::string &tail)
{
    if (base.empty())
        return {};
    return base == "/" ? tail : base + tail;
}

// $variable when it is absolute, else homeFolder() + fallback; without "/" at the end. Empty without a home.
inline std::string baseFolder(const char *variable, const char *fallback)
{
    const std::string set = folderFromEnvironment(variable);
    return set.empty() ? below(homeFolder(), fallback) : set;
}

inline std::string stateFolder()
{
    return below(baseFolder("XDG_STATE_HOME", "/.local/state"), "/corvel");
}

// ---- making them -----------------------------------------------------------------------------------

inline bool isFolder(const std::string &path)
{
    struct stat info {};
    return stat(path.c_str(), &info) == 0 && S_ISDIR(info.st_mode);
}

// Makes path (no "/" at its end) and what is missing above it; only the last one gets `mode`, less the umask.
// True when it is a folder in the end.
inline bool makePath(const std::string &path, mode_t parentMode, mode_t mode)
{
    const auto makeOne = [](const std::string &name, mode_t bits) {
        return mkdir(name.c_str(), bits) == 0 || isFolder(name);
    };
    for (size_t end = path.find('/', 1); end != std::string::npos; end = path.find('/', end + 1)) {
        if (path[end - 1] != '/' && !makeOne(path.substr(0, end), parentMode))
            return false;
    }
    return makeOne(path, mode);
}

// Makes path (no "/" at its end) when missing and opens it. Invalid unless it is a folder of ours, no
// symbolic link, and closed to others in the end. `parents`: also makes what is missing above it.
inline Descriptor openPrivate(const std::string &path, bool parents)
{
    const std::string above = path.substr(0, path.rfind('/'));
    if (parents && !above.empty() && !isFolder(above) &&
        !makePath(above, kPrivateFolderMode, kPrivateFolderMode))
        return Descriptor();
    mkdir(path.c_str(), kPrivateFolderMode);
    Descriptor folder(open(path.c_str(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC));
    struct stat info {};
    if (!folder.valid() || fstat(folder.get(), &info) != 0 || info.st_uid != geteuid())
        return Descriptor();
    if ((info.st_mode & kOthersBits) != 0 && fchmod(folder.get(), kPrivateFolderMode) != 0)
        return Descriptor();
    return folder;
}

inline bool makePrivate(const std::string &path, bool parents)
{
    return openPrivate(path, parents).valid();
}

// ---- the runtime folder ----------------------------------------------------------------------------

// A place for sockets and temporary files; `parents` as for openPrivate.
struct RuntimeFolder {
    std::string path;
    bool parents = false;
};

// The session's folder counts only when it keeps its promise: ours and closed to others.
inline std::string sessionFolder()
{
    const std::string path = folderFromEnvironment("XDG_RUNTIME_DIR");
    struct stat info {};
    const bool safe = !path.empty() && lstat(path.c_str(), &info) == 0 && S_ISDIR(info.st_mode) &&
                      info.st_uid == geteuid() && (info.st_mode & kOthersBits) == 0;
    return safe ? below(path, "/corvel") : std::string();
}

// The one rule for all libraries, best first: closed to others or not used. Each place still has to pass
// openPrivate. The last one lies in the home, so that nobody who occupies our name in the shared places stops
// us.
inline std::vector<RuntimeFolder> runtimeFolders()
{
    const std::string shared = "/corvel-" + std::to_string(geteuid());
    const RuntimeFolder places[] = {
        {sessionFolder(), false},
        {below(folderFromEnvironment("TMPDIR"), shared), false},
        {below("/tmp", shared), false},
        {below(stateFolder(), "/run"), true},
    };
    std::vector<RuntimeFolder> found;
    for (const RuntimeFolder &place : places)
        if (!place.path.empty())
            found.push_back(place);
    return found;
}

} // namespace rk

#endif // CORVEL_PLATFORM_PRIVATEFOLDER_H
