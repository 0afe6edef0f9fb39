// SPDX-License-Identifier: MIT
#include "directories.h"

#include "privatefolder.h"

namespace rkos {

namespace {

std::string configName()
{
    return rk::below(rk::baseFolder("XDG_CONFIG_HOME", "/.config"), "/corvel");
}

std::optional<std::string> madePrivate(const std::string &path)
{
    if (path.empty() || !rk::makePrivate(path, true))
        return std::nullopt;
    return path + "/";
}

} // namespace

std::optional<std::string> configDir()
{
    return madePrivate(configName());
}

std::optional<std::string> stateDir()
{
    return madePrivate(rk::stateFolder());
}

std::optional<std::string> runtimeDir(size_t size)
{
    for (const rk::RuntimeFolder &place : rk::runtimeFolders()) {
        if (place.path.size() + 1 < size && rk::makePrivate(place.path, place.parents))
            return place.path + "/";
    }
    return std::nullopt;
}

bool isOwnDirectory(const struct stat &directory)
{
    std::vector<std::string> names = {rk::stateFolder(), configName()};
    for (const rk::RuntimeFolder &place : rk::runtimeFolders())
        names.push_back(place.path);
    for (const std::string &name : names) {
        struct stat info {};
        if (lstat(name.c_str(), &info) == 0 && info.st_dev == directory.st_dev &&
            info.st_ino == directory.st_ino)
            return true;
    }
    return false;
}

} // namespace rkos
