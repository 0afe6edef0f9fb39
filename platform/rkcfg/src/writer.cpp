// SPDX-License-Identifier: MIT
#include "writer.h"

#include "names.h"

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <memory>
#include <pwd.h>
#include <unistd.h>
#include <vector>

namespace rkcfg {

namespace {

constexpr const char *kUserList = "/etc/passwd";
constexpr size_t kMaxProgramBytes = 64;
constexpr size_t kLineBytes = 4096;

} // namespace

std::string programName()
{
    std::string name = program_invocation_short_name;
    name.resize(std::min(name.size(), kMaxProgramBytes));
    if (!wellFormed(name))
        std::replace_if(
            name.begin(), name.end(), [](char c) { return static_cast<unsigned char>(c) >= 0x80; }, '?');
    return name;
}

std::string userName()
{
    const uid_t user = geteuid();
    const std::unique_ptr<FILE, int (*)(FILE *)> file(fopen(kUserList, "re"), fclose);
    std::vector<char> line(kLineBytes);
    passwd entry{};
    passwd *found = nullptr;
    while (file && fgetpwent_r(file.get(), &entry, line.data(), line.size(), &found) == 0) {
        if (found->pw_uid == user && wellFormed(found->pw_name))
            return found->pw_name;
    }
    return std::to_string(user);
}

} // namespace rkcfg
