// SPDX-License-Identifier: MIT
#include "directories.h"

#include "guard.h"

#include <cstdlib>
#include <fcntl.h>
#include <pwd.h>
#include <vector>

namespace rkos {

namespace {

constexpr mode_t privateMode = 0700;
constexpr mode_t permissionBits = 07777;
constexpr mode_t othersBits = 0077;

// An absolute directory from the environment without trailing "/", else empty.
std::string fromEnvironment(const char *variable)
{
    const char *value = secure_getenv(variable);
    if (value == nullptr || value[0] != '/')
        return {};
    std::string path(value);
    while (path.size() > 1 && path.back() == '/')
        path.pop_back();
    return path;
}

std::string homeFromPasswords()
{
    std::vector<char> memory(16384);
    passwd entry{};
    passwd *found = nullptr;
    if (getpwuid_r(geteuid(), &entry, memory.data(), memory.size(), &found) != 0 || found == nullptr)
        return {};
    return entry.pw_dir != nullptr && entry.pw_dir[0] == '/' ? entry.pw_dir : std::string();
}

std::optional<std::string> privateBelow(const std::string &base)
{
    if (base.empty() || !makePrivate(base + "/corvel", true))
        return std::nullopt;
    return base + "/corvel/";
}

std::string stateName()
{
    const std::string base = baseDir("XDG_STATE_HOME", "/.local/state");
    return base.empty() ? base : base + "/corvel";
}

// The session's runtime directory counts only when it keeps its promise: ours and closed to others.
std::string sessionRuntime()
{
    const std::string path = fromEnvironment("XDG_RUNTIME_DIR");
    struct stat info {};
    if (path.empty() || lstat(path.c_str(), &info) != 0 || !S_ISDIR(info.st_mode) ||
        info.st_uid != geteuid() || (info.st_mode & othersBits) != 0)
        return {};
    return path + "/corvel";
}

// Best first. The last one keeps us working when somebody occupies our name in the shared places.
std::vector<std::string> runtimeCandidates()
{
    const std::string shared = "/corvel-" + std::to_string(geteuid());
    std::vector<std::string> names;
    const auto add = [&names](const std::string &base, const std::string &tail) {
        if (!base.empty())
            names.push_back(base == "/" ? tail : base + tail);
    };
    add(sessionRuntime(), "");
    add(fromEnvironment("TMPDIR"), shared);
    add("/tmp", shared);
    add(stateName(), "/run");
    return names;
}

bool isDirectory(const std::string &path)
{
    struct stat info {};
    return stat(path.c_str(), &info) == 0 && S_ISDIR(info.st_mode);
}

bool makeOne(const std::string &path, mode_t mode)
{
    if (mkdir(path.c_str(), mode) == 0)
        return true;
    return isDirectory(path);
}

} // namespace

std::string homeDir()
{
    const std::string home = fromEnvironment("HOME");
    return home.empty() ? homeFromPasswords() : home;
}

std::string baseDir(const char *variable, const char *fallback)
{
    std::string set = fromEnvironment(variable);
    if (!set.empty())
        return set;
    const std::string home = homeDir();
    if (home.empty())
        return {};
    return (home == "/" ? std::string() : home) + fallback;
}

bool makePath(const std::string &path, mode_t parentMode, mode_t mode)
{
    for (size_t end = path.find('/', 1); end != std::string::npos; end = path.find('/', end + 1)) {
        if (path[end - 1] != '/' && !makeOne(path.substr(0, end), parentMode))
            return false;
    }
    return makeOne(path, mode);
}

bool makePrivate(const std::string &path, bool parents)
{
    if (parents) {
        const std::string above = path.substr(0, path.rfind('/'));
        if (!above.empty() && !isDirectory(above) && !makePath(above, privateMode, privateMode))
            return false;
    }
    mkdir(path.c_str(), privateMode);
    const Fd dir(open(path.c_str(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC));
    struct stat info {};
    if (!dir.valid() || fstat(dir.get(), &info) != 0 || info.st_uid != geteuid())
        return false;
    return (info.st_mode & permissionBits & othersBits) == 0 || fchmod(dir.get(), privateMode) == 0;
}

std::optional<std::string> configDir()
{
    return privateBelow(baseDir("XDG_CONFIG_HOME", "/.config"));
}

std::optional<std::string> stateDir()
{
    return privateBelow(baseDir("XDG_STATE_HOME", "/.local/state"));
}

std::optional<std::string> runtimeDir(size_t size)
{
    for (const std::string &name : runtimeCandidates()) {
        const bool parents = name == stateName() + "/run";
        if (name.size() + 1 < size && makePrivate(name, parents))
            return name + "/";
    }
    return std::nullopt;
}

bool isOwnDirectory(const struct stat &directory)
{
    std::vector<std::string> names = runtimeCandidates();
    names.push_back(stateName());
    const std::string config = baseDir("XDG_CONFIG_HOME", "/.config");
    if (!config.empty())
        names.push_back(config + "/corvel");
    for (const std::string &name : names) {
        struct stat info {};
        if (lstat(name.c_str(), &info) == 0 && info.st_dev == directory.st_dev &&
            info.st_ino == directory.st_ino)
            return true;
    }
    return false;
}

} // namespace rkos
