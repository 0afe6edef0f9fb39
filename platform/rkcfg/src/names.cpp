// SPDX-License-Identifier: MIT
#include "names.h"

#include "rkos.h"
#include "utf8.h"

#include <cerrno>
#include <cstdio>
#include <fcntl.h>
#include <unistd.h>

namespace rkcfg {

const char *const kFallbackName = "default";

namespace {

constexpr size_t kMaxNameBytes = 64;
constexpr size_t kPathBufferSize = 4096;
constexpr const char *kDefaultFile = "default-config";
constexpr const char *kDatabaseSuffix = ".rkcfg";

bool allowedCharacter(uint32_t code)
{
    const bool control = code < 0x20 || (code >= 0x7F && code < 0xA0);
    return !control && code != '/';
}

// The first line of the small file, or nothing. Only a plain file is read.
std::string readSmallFile(const std::string &path)
{
    const Descriptor file(open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOFOLLOW));
    if (!file.valid() || !fileState(file).plain())
        return {};
    char text[256];
    ssize_t count = 0;
    do
        count = read(file.get(), text, sizeof text);
    while (count < 0 && errno == EINTR);
    const std::string line(text, count > 0 ? static_cast<size_t>(count) : 0);
    return line.substr(0, line.find_first_of("\r\n"));
}

bool writeAll(int fd, std::string_view text)
{
    while (!text.empty()) {
        const ssize_t count = write(fd, text.data(), text.size());
        if (count < 0 && errno != EINTR)
            return false;
        if (count > 0)
            text.remove_prefix(static_cast<size_t>(count));
    }
    return true;
}

bool writeSynced(const std::string &path, std::string_view text)
{
    if (!createPrivateFile(path))
        return false;
    const Descriptor file(open(path.c_str(), O_WRONLY | O_CLOEXEC | O_NOFOLLOW));
    return file.valid() && writeAll(file.get(), text) && fsync(file.get()) == 0;
}

} // namespace

bool wellFormed(std::string_view text)
{
    while (!text.empty()) {
        const rk::Character character = rk::firstCharacter(text);
        if (character.length == 0)
            return false;
        text.remove_prefix(character.length);
    }
    return true;
}

bool validName(std::string_view name)
{
    if (name.empty() || name.size() > kMaxNameBytes || name.front() == '.')
        return false;
    while (!name.empty()) {
        const rk::Character character = rk::firstCharacter(name);
        if (character.length == 0 || !allowedCharacter(character.code))
            return false;
        name.remove_prefix(character.length);
    }
    return true;
}

Paths::Paths(const std::string &folderWithSlash, const std::string &configuration)
    : folder(folderWithSlash), name(configuration), database(folder + name + kDatabaseSuffix),
      log(database + "-wal"), goodCopy(database + ".good"), olderCopy(goodCopy + "-older")
{
}

std::string configFolder()
{
    char buffer[kPathBufferSize] = "";
    rkOSGetConfigDir(buffer);
    buffer[sizeof buffer - 1] = '\0';
    std::string folder(buffer);
    // The path decides, not the result code: other makers' libraries use either sense.
    if (folder.empty() || folder.front() != '/' || !makePrivateFolder(folder))
        return {};
    if (folder.back() != '/')
        folder += '/';
    return folder;
}

const std::string &DefaultName::current(const std::string &folder)
{
    const FileState now = fileState(folder + kDefaultFile);
    if (folder == m_folder && !m_name.empty() && now.sameContent(m_seen))
        return m_name;
    std::string name = now.exists ? readSmallFile(folder + kDefaultFile) : kFallbackName;
    if (!validName(name)) {
        ErrOut("rkcfg: %s%s holds no usable name, taking \"%s\"", folder.c_str(), kDefaultFile,
               kFallbackName);
        name = kFallbackName;
    }
    m_folder = folder;
    m_name = name;
    m_seen = now;
    return m_name;
}

bool DefaultName::store(const std::string &folder, const std::string &name)
{
    const std::string path = folder + kDefaultFile;
    const std::string fresh = path + ".new-" + std::to_string(getpid());
    if (!writeSynced(fresh, name + '\n') || rename(fresh.c_str(), path.c_str()) != 0) {
        unlink(fresh.c_str());
        return false;
    }
    return syncFolder(folder);
}

void DefaultName::forget()
{
    m_name.clear();
}

} // namespace rkcfg
