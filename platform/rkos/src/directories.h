// SPDX-License-Identifier: MIT
//
// The library's own directories. Each is private (0700, ours, no symbolic link) and each name
// returned ends in "/". The environment is read at every call.
#ifndef RKOS_DIRECTORIES_H
#define RKOS_DIRECTORIES_H

#include <optional>
#include <string>
#include <sys/stat.h>

namespace rkos {

// Made when missing. Nothing when they cannot be made or are not ours.
std::optional<std::string> configDir();
std::optional<std::string> stateDir();

// For sockets and temporary files; the first place that is safe and whose name has fewer than `size` bytes.
std::optional<std::string> runtimeDir(size_t size);

// Where runtimeDir() may have been found: true when `directory` (as stat sees it) is one of ours, in
// which no file may be a link or belong to somebody else.
bool isOwnDirectory(const struct stat &directory);

} // namespace rkos

#endif // RKOS_DIRECTORIES_H
