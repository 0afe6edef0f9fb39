/* SPDX-License-Identifier: MIT */
/* Who writes: this process's program and user, as they stand in the history. */
#ifndef RKCFG_WRITER_H
#define RKCFG_WRITER_H

#include <string>

namespace rkcfg {

// The program's name without its folder, as well-formed UTF-8.
std::string programName();

// The effective user's name in the machine's own list, else the user id in decimal. A directory
// service is not asked on purpose: it may be far away, and a write must not wait for it.
std::string userName();

} // namespace rkcfg

#endif // RKCFG_WRITER_H
