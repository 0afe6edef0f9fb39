// SPDX-License-Identifier: MIT
#include "userdirs.h"

#include "privatefolder.h"

#include <cstdlib>
#include <fstream>
#include <sys/stat.h>

namespace rkos {

namespace {

constexpr int kMaxLines = 1000;

std::string skipBlanks(const std::string &text, size_t from)
{
    const size_t start = text.find_first_not_of(" \t", from);
    return start == std::string::npos ? std::string() : text.substr(start);
}

// The text between quotes with its backslashes resolved; nothing without a closing quote.
std::optional<std::string> unquoted(const std::string &text)
{
    std::string value;
    if (text.empty() || text[0] != '"')
        return std::nullopt;
    for (size_t i = 1; i < text.size(); ++i) {
        if (text[i] == '"')
            return value;
        if (text[i] == '\\' && ++i == text.size())
            break;
        value += text[i];
    }
    return std::nullopt;
}

std::optional<std::string> resolved(const std::string &value, const std::string &home)
{
    static const std::string variable = "$HOME";
    if (value.compare(0, variable.size(), variable) == 0) {
        const std::string rest = value.substr(variable.size());
        if (!rest.empty() && rest[0] != '/')
            return std::nullopt;
        return home.empty() ? std::nullopt : std::make_optional(home + rest);
    }
    return !value.empty() && value[0] == '/' ? std::make_optional(value) : std::nullopt;
}

std::string withSlash(std::string path)
{
    while (!path.empty() && path.back() == '/')
        path.pop_back();
    return path + "/";
}

bool isRegular(const std::string &path)
{
    struct stat info {};
    return stat(path.c_str(), &info) == 0 && S_ISREG(info.st_mode);
}

} // namespace

std::optional<std::string> userDir(std::istream &text, const std::string &key, const std::string &home)
{
    std::optional<std::string> found;
    std::string line;
    for (int n = 0; n < kMaxLines && std::getline(text, line); ++n) {
        const std::string entry = skipBlanks(line, 0);
        if (entry.compare(0, key.size(), key) != 0)
            continue;
        const std::string after = skipBlanks(entry, key.size());
        if (after.empty() || after[0] != '=')
            continue;
        if (const auto value = unquoted(skipBlanks(after, 1))) {
            if (auto path = resolved(*value, home))
                found = std::move(path);
        }
    }
    return found;
}

std::optional<std::string> documentsDir()
{
    const char *set = secure_getenv("XDG_DOCUMENTS_DIR");
    if (set != nullptr && set[0] == '/')
        return withSlash(set);
    const std::string home = rk::homeFolder();
    const std::string list = rk::baseFolder("XDG_CONFIG_HOME", "/.config") + "/user-dirs.dirs";
    if (isRegular(list)) {
        std::ifstream file(list);
        if (auto path = userDir(file, "XDG_DOCUMENTS_DIR", home))
            return withSlash(*path);
    }
    return home.empty() ? std::nullopt : std::make_optional(withSlash(home) + "Documents/");
}

} // namespace rkos
