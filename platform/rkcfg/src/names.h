/* SPDX-License-Identifier: MIT */
/* Names of configurations, the files that belong to one, and the small file that holds the default name. */
#ifndef RKCFG_NAMES_H
#define RKCFG_NAMES_H

#include "files.h"

#include <string>
#include <string_view>

namespace rkcfg {

// The default configuration where nobody chose one.
extern const char *const kFallbackName;

// Whether all of it is UTF-8 as it should be.
bool wellFormed(std::string_view text);

// 1 to 64 bytes of well-formed UTF-8 without '/', without control characters, not beginning with '.'.
bool validName(std::string_view name);

// All paths of one configuration.
struct Paths {
    Paths() = default;
    Paths(const std::string &folderWithSlash, const std::string &configuration);

    std::string folder; // ends in "/"
    std::string name;
    std::string database;  // <name>.rkcfg
    std::string log;       // <name>.rkcfg-wal
    std::string goodCopy;  // <name>.rkcfg.good
    std::string olderCopy; // <name>.rkcfg.good-older
};

// The directory of all configurations, made when missing, ending in "/". Empty when there is none.
std::string configFolder();

// The small file "default-config": one line with the default configuration's name.
class DefaultName {
public:
    // The name that holds now. Costs one stat while the file stays as it was.
    const std::string &current(const std::string &folder);
    // Replaces the file by a synced one. False when the disk refuses.
    bool store(const std::string &folder, const std::string &name);
    // Forgets what was read, for another directory.
    void forget();

private:
    std::string m_folder;
    std::string m_name;
    FileState m_seen;
};

} // namespace rkcfg

#endif // RKCFG_NAMES_H
