// SPDX-License-Identifier: MIT
#include "handles.h"

#include "clock.h"
#include "rkcfg.h"

#include <map>
#include <pthread.h>

namespace rkcfg {

namespace {

// A number, not an address: a handle that was closed never becomes another one's.
constexpr intptr_t kFirstHandle = 0x10000;

struct Stores {
    std::mutex mutex;
    Store defaultStore;
    std::map<void *, std::unique_ptr<Store>> named;
    intptr_t next = kFirstHandle;
};

// Lives as long as the process on purpose: calls from other objects' destructors still find it.
Stores &theStores()
{
    static Stores &stores = *new Stores;
    return stores;
}

// fork() waits for the call that is under way, so a child never inherits one half done.
std::mutex &forkSafeMutex()
{
    static const int watching =
        pthread_atfork([] { theStores().mutex.lock(); }, [] { theStores().mutex.unlock(); },
                       [] {
                           Store::forked();
                           theStores().mutex.unlock();
                       });
    (void)watching;
    return theStores().mutex;
}

Store *find(void *handle)
{
    if (handle == RKCFG_DEFAULT_STORE)
        return &theStores().defaultStore;
    const auto at = theStores().named.find(handle);
    return at == theStores().named.end() ? nullptr : at->second.get();
}

} // namespace

// The time of a call runs while it waits for its turn, too.
StoreAccess::StoreAccess(void *handle) : StoreAccess(handle, steadyMs()) {}

StoreAccess::StoreAccess(void *handle, int64_t startMs) : m_held(forkSafeMutex()), m_store(find(handle))
{
    if (m_store != nullptr)
        m_store->beginCall(startMs);
}

void *openHandle(const std::string &name, bool create)
{
    const int64_t startMs = steadyMs();
    const std::lock_guard<std::mutex> held(forkSafeMutex());
    auto store = std::make_unique<Store>(name);
    store->beginCall(startMs);
    if (store->open(create) != 0)
        return nullptr;
    Stores &stores = theStores();
    void *const handle = reinterpret_cast<void *>(stores.next++);
    stores.named.emplace(handle, std::move(store));
    return handle;
}

bool closeHandle(void *handle, bool save, int &code)
{
    const int64_t startMs = steadyMs();
    const std::lock_guard<std::mutex> held(forkSafeMutex());
    Store *const store = find(handle);
    if (store == nullptr)
        return false;
    store->beginCall(startMs);
    code = store->close(save);
    theStores().named.erase(handle);
    return true;
}

} // namespace rkcfg
