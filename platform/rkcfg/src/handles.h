/* SPDX-License-Identifier: MIT */
/* The stores of this process: the default one and those behind handles, used one call at a time. */
#ifndef RKCFG_HANDLES_H
#define RKCFG_HANDLES_H

#include "store.h"

#include <mutex>

namespace rkcfg {

// Exclusive use of all stores for a block. fork() waits for it, so a child never inherits a store in
// the middle of a call.
class StoreAccess {
public:
    explicit StoreAccess(void *handle);
    ~StoreAccess() = default;
    StoreAccess(const StoreAccess &) = delete;
    StoreAccess &operator=(const StoreAccess &) = delete;

    // False for a handle that nobody gave.
    bool known() const { return m_store != nullptr; }
    Store *operator->() const { return m_store; }

private:
    StoreAccess(void *handle, int64_t startMs);

    std::unique_lock<std::mutex> m_held;
    Store *m_store;
};

// A new handle for a named configuration, or null when it cannot be opened.
void *openHandle(const std::string &name, bool create);
// Whether a handle was given by openHandle and is not closed.
bool closeHandle(void *handle, bool save, int &code);

} // namespace rkcfg

#endif // RKCFG_HANDLES_H
