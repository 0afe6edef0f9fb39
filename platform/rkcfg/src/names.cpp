// SPDX-License-Identifier: MIT
#include "names.h"

#include "rkos.h"

#include <cerrno>
#include <cstdio>
#include <fcntl.h>
#include <unistd.h>

namespace rkcfg {

const char *const fallbackName = "default";

namespace {

constexpr size_t maxNameBytes = 64;
constexpr size_t pathBufferSize = 4096;
constexpr const char *defaultFile = "default-config";
constexpr const char *databaseSuffix = ".rkcfg";

struct Sequence {
    size_t length;      // bytes of the whole character, 0: not a first byte
    uint32_t firstBits; // payload of the first byte
    uint32_t smallest;  // below this the character is written too long
};

Sequence sequenceOf(unsigned char first)
{
    if (first < 0x80)
        return {1, first, 0};
    if ((first & 0xE0) == 0xC0)
        return {2, first & 0x1Fu, 0x80};
    if ((first & 0xF0) == 0xE0)
        return {3, first & 0x0Fu, 0x800};
    if ((first & 0xF8) == 0xF0)
        return {4, first & 0x07u, 0x10000};
    return {0, 0, 0};
}

// Takes one character off the text. False when it is not well-formed UTF-8.
bool takeCharacter(std::string_view &text, uint32_t &code)
{
    const Sequence sequence = sequenceOf(static_cast<unsigned char>(text.front()));
    if (sequence.length == 0 || sequence.length > text.size())
        return false;
    code = sequence.firstBits;
    for (size_t i = 1; i < sequence.length; ++i) {
        const auto byte = static_cast<unsigned char>(text[i]);
        if ((byte & 0xC0) != 0x80)
            return false;
        code = (code << 6) | (byte & 0x3Fu);
    }
    text.remove_prefix(sequence.length);
    return code >= sequence.smallest && code <= 0x10FFFF && (code < 0xD800 || code > 0xDFFF);
}

bool allowedCharacter(uint32_t code)
{
    const bool control = code < 0x20 || (code >= 0x7F && code < 0xA0);
    return !control && code != '/';
}

// The first line of the small file, or nothing. Only a regular file is read.
std::string readSmallFile(const std::string &path)
{
    const Descriptor file(open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK));
    struct stat info {};
    if (!file.valid() || fstat(file.get(), &info) != 0 || !S_ISREG(info.st_mode))
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
    uint32_t code = 0;
    while (!text.empty()) {
        if (!takeCharacter(text, code))
            return false;
    }
    return true;
}

bool validName(std::string_view name)
{
    if (name.empty() || name.size() > maxNameBytes || name.front() == '.')
        return false;
    while (!name.empty()) {
        uint32_t code = 0;
        if (!takeCharacter(name, code) || !allowedCharacter(code))
            return false;
    }
    return true;
}

Paths::Paths(const std::string &folderWithSlash, const std::string &configuration)
    : folder(folderWithSlash), name(configuration), database(folder + name + databaseSuffix),
      log(database + "-wal"), goodCopy(database + ".good")
{
}

std::string configFolder()
{
    char buffer[pathBufferSize] = "";
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
    const FileState now = fileState(folder + defaultFile);
    if (folder == m_folder && !m_name.empty() && now.sameContent(m_seen))
        return m_name;
    std::string name = now.exists ? readSmallFile(folder + defaultFile) : fallbackName;
    if (!validName(name)) {
        ErrOut("rkcfg: %s%s holds no usable name, taking \"%s\"", folder.c_str(), defaultFile, fallbackName);
        name = fallbackName;
    }
    m_folder = folder;
    m_name = name;
    m_seen = now;
    return m_name;
}

bool DefaultName::store(const std::string &folder, const std::string &name)
{
    const std::string path = folder + defaultFile;
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
