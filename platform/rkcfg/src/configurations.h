/* SPDX-License-Identifier: MIT */
/* Deleting, renaming and copying whole configurations. */
#ifndef RKCFG_CONFIGURATIONS_H
#define RKCFG_CONFIGURATIONS_H

#include "handles.h"

namespace rkcfg {

// All: 0 when done. The default store tells what went wrong.
int deleteConfiguration(const StoreAccess &store, const std::string &name);
int renameConfiguration(const StoreAccess &store, const std::string &name, const std::string &newName);
int copyConfiguration(const StoreAccess &store, const std::string &name, const std::string &newName);

} // namespace rkcfg

#endif // RKCFG_CONFIGURATIONS_H
