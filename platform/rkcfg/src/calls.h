/* SPDX-License-Identifier: MIT */
/* What the functions of rkcfg.h share: results, refusals, and that no exception leaves the library. */
#ifndef RKCFG_CALLS_H
#define RKCFG_CALLS_H

#include "handles.h"
#include "rkos.h"

#include <exception>

namespace rkcfg {

constexpr int kDone = 0;
constexpr int kFailed = 1;

constexpr const char *kUnknownHandle = "unknown handle";
constexpr const char *kNullPointer = "null pointer";
constexpr const char *kNotAName = "not a name for a configuration";

// Short memory and the like become the call's failure.
template<typename Outcome, typename Body>
Outcome guarded(const char *call, Outcome failure, Body body) noexcept
{
    try {
        return body();
    } catch (const std::exception &error) {
        ErrOut("rkcfg: %s: %s", call, error.what());
    } catch (...) {
        ErrOut("rkcfg: %s: unknown failure", call);
    }
    return failure;
}

// One log line, told by the default store whatever the handle was.
void tellRefusal(const char *call, const char *why);

template<typename Outcome>
Outcome refuse(const char *call, const char *why, Outcome outcome)
{
    tellRefusal(call, why);
    return outcome;
}

// A call that fails on unknown handles and hands a known one's store to its body.
template<typename Outcome, typename Body>
Outcome withStore(const char *call, void *handle, Outcome failure, Body body) noexcept
{
    return guarded(call, failure, [&] {
        {
            const StoreAccess store(handle);
            if (store.known())
                return body(store);
        }
        return refuse(call, kUnknownHandle, failure);
    });
}

} // namespace rkcfg

#endif // RKCFG_CALLS_H
