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

// $HOME when it is absolute, else the password database's; empty when neither knows one.
std::string homeDir();

// $variable when it is absolute, else homeDir() + fallback; without "/" at the end. Empty without a home.
std::string baseDir(const char *variable, const char *fallback);

// Made when missing. Nothing when they cannot be made or are not ours.
std::optional<std::string> configDir();
std::optional<std::string> stateDir();

// For sockets and temporary files; the first place that is safe and whose name has fewer than `size` bytes.
std::optional<std::string> runtimeDir(size_t size);

// Where runtimeDir() may have been found: true when `directory` (as stat sees it) is one of ours, in
// which no file may be a link or belong to somebody else.
bool isOwnDirectory(const struct stat &directory);

// Makes path (no "/" at its end) when missing and checks that it is a directory of ours, no symbolic
// link, closed to others. `parents`: also makes what is missing above it.
bool makePrivate(const std::string &path, bool parents);

// Makes path and what is missing above it with the permissions 0777 less the umask; only the last
// one gets `mode`. True when it is a directory in the end.
bool makePath(const std::string &path, mode_t parentMode, mode_t mode);

} // namespace rkos

#endif // RKOS_DIRECTORIES_H
