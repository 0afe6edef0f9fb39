// SPDX-License-Identifier: MIT
//
// The user's documents directory as the desktop has it.
#ifndef RKOS_USERDIRS_H
#define RKOS_USERDIRS_H

#include <istream>
#include <optional>
#include <string>

namespace rkos {

// The value of `key` in a user-dirs.dirs text, "$HOME" put in; the last valid line wins. Only
// absolute values and such below $HOME count.
std::optional<std::string> userDir(std::istream &text, const std::string &key, const std::string &home);

// $XDG_DOCUMENTS_DIR, else what user-dirs.dirs says, else "Documents" in the home directory; ends
// in "/". It is not created and need not exist.
std::optional<std::string> documentsDir();

} // namespace rkos

#endif // RKOS_USERDIRS_H
