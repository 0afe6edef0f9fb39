// SPDX-License-Identifier: MIT
//
// Numbers that stand for objects. A number is never given twice in the life of the process, so a
// stale, doubled or invented handle finds nothing instead of somebody else's file.
#ifndef RKOS_HANDLETABLE_H
#define RKOS_HANDLETABLE_H

#include <cstdint>
#include <memory>
#include <mutex>
#include <pthread.h>
#include <unordered_map>

namespace rkos {

// The highest byte tells the kinds apart, so that an event's handle is no file's handle.
enum class HandleKind : uint64_t {
    file = 0x46ULL << 56,
    event = 0x45ULL << 56,
};

template<typename Object, HandleKind kind>
class HandleTable {
public:
    // The one table of this kind. It is never destroyed, as threads may still use it during exit.
    static HandleTable &instance()
    {
        static HandleTable *const table = create();
        return *table;
    }

    uint64_t add(std::shared_ptr<Object> object)
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        const uint64_t handle = static_cast<uint64_t>(kind) + ++m_last;
        m_objects.emplace(handle, std::move(object));
        return handle;
    }

    std::shared_ptr<Object> find(uint64_t handle)
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        const auto it = m_objects.find(handle);
        return it == m_objects.end() ? nullptr : it->second;
    }

    // Takes the object out; of two closers only one gets it.
    std::shared_ptr<Object> take(uint64_t handle)
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        const auto it = m_objects.find(handle);
        if (it == m_objects.end())
            return nullptr;
        std::shared_ptr<Object> object = std::move(it->second);
        m_objects.erase(it);
        return object;
    }

private:
    // A fork while another thread is inside must not leave the child a locked table.
    static HandleTable *create()
    {
        s_forked = new HandleTable;
        pthread_atfork([] { s_forked->m_mutex.lock(); }, [] { s_forked->m_mutex.unlock(); },
                       [] { s_forked->m_mutex.unlock(); });
        return s_forked;
    }

    static inline HandleTable *s_forked = nullptr;
    std::mutex m_mutex;
    std::unordered_map<uint64_t, std::shared_ptr<Object>> m_objects;
    uint64_t m_last = 0;
};

} // namespace rkos

#endif // RKOS_HANDLETABLE_H
