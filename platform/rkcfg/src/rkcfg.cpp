// SPDX-License-Identifier: MIT
#include "rkcfg.h"

#include "calls.h"
#include "utf8.h"

#include <algorithm>
#include <cstring>

using namespace rkcfg;

namespace {

constexpr int found = 0;
constexpr int absent = 1;
constexpr int unchanged = 0;
constexpr int changed = 1;

constexpr size_t maxTextBytes = 1 << 20;

int readText(const StoreAccess &store, const Key &key, char *buffer, uint32_t *size)
{
    int result = absent;
    store->read(key, [&](const Value &value) {
        if (value.type != Type::Text)
            return;
        const size_t room = buffer != nullptr ? *size : 0;
        const size_t bytes = std::min(room, value.text.size());
        if (bytes > 0)
            memcpy(buffer, value.text.data(), bytes);
        if (room > bytes)
            buffer[bytes] = '\0';
        *size = static_cast<uint32_t>(value.text.size() + 1);
        result = found;
    });
    return result;
}

// The terminating zero is counted by the caller but not kept: it comes back with every reading.
int writeText(const StoreAccess &store, const Key &key, std::string_view text)
{
    if (!text.empty() && text.back() == '\0')
        text.remove_suffix(1);
    if (text.size() > maxTextBytes) {
        store->refuse(key.name, "longer than 1 MiB, not stored");
        return unchanged;
    }
    return store->write(key, {Type::Text, text, 0}) ? changed : unchanged;
}

int readNumber(const StoreAccess &store, const Key &key, uint32_t *number)
{
    int result = absent;
    store->read(key, [&](const Value &value) {
        if (value.type != Type::Number)
            return;
        *number = value.number;
        result = found;
    });
    return result;
}

// A cut text ends before the character that does not fit.
size_t wholeCharacters(const std::string &text, size_t bytes)
{
    while (bytes > 0 && bytes < text.size() && rk::isContinuation(text[bytes]))
        --bytes;
    return bytes;
}

} // namespace

extern "C" int rkCFGValueString(void *handle, const char *keyPath, const char *valueName, char *buffer,
                                uint32_t *size, int write)
{
    static const char call[] = "rkCFGValueString";
    const int refused = write != 0 ? unchanged : absent;
    return withStore(call, handle, refused, [&](const StoreAccess &store) {
        if (keyPath == nullptr || valueName == nullptr || size == nullptr ||
            (write != 0 && buffer == nullptr)) {
            store->refuse(call, nullPointer);
            return refused;
        }
        const Key key{keyPath, valueName};
        return write != 0 ? writeText(store, key, {buffer, *size}) : readText(store, key, buffer, size);
    });
}

extern "C" int rkCFGValueDword(void *handle, const char *keyPath, const char *valueName, uint32_t *value,
                               int write)
{
    static const char call[] = "rkCFGValueDword";
    const int refused = write != 0 ? unchanged : absent;
    return withStore(call, handle, refused, [&](const StoreAccess &store) {
        if (keyPath == nullptr || valueName == nullptr || value == nullptr) {
            store->refuse(call, nullPointer);
            return refused;
        }
        const Key key{keyPath, valueName};
        if (write == 0)
            return readNumber(store, key, value);
        return store->write(key, {Type::Number, {}, *value}) ? changed : unchanged;
    });
}

extern "C" int rkCFGSave(void *handle, const char *name, int /*flags*/)
{
    return withStore("rkCFGSave", handle, failed,
                     [&](const StoreAccess &store) { return store->save(name); });
}

extern "C" int rkCFGClose(void *handle, int save)
{
    static const char call[] = "rkCFGClose";
    return guarded(call, failed, [&] {
        if (handle == RKCFG_DEFAULT_STORE)
            return StoreAccess(handle)->close(save != 0);
        int code = done;
        return closeHandle(handle, save != 0, code) ? code : refuse(call, unknownHandle, failed);
    });
}

extern "C" int rkCFGSetDefaultName(const char *utf8Name)
{
    static const char call[] = "rkCFGSetDefaultName";
    return guarded(call, failed, [&] {
        if (utf8Name == nullptr)
            return refuse(call, nullPointer, failed);
        if (!validName(utf8Name))
            return refuse(call, notAName, failed);
        return StoreAccess(RKCFG_DEFAULT_STORE)->setDefaultName(utf8Name);
    });
}

extern "C" int rkCFGGetDefaultName(char *buffer, uint32_t size)
{
    static const char call[] = "rkCFGGetDefaultName";
    return guarded(call, failed, [&] {
        if (buffer == nullptr || size == 0)
            return refuse(call, "no buffer", failed);
        const std::string name = StoreAccess(RKCFG_DEFAULT_STORE)->defaultName();
        const size_t bytes = wholeCharacters(name, std::min<size_t>(size - 1, name.size()));
        memcpy(buffer, name.data(), bytes);
        buffer[bytes] = '\0';
        return done;
    });
}
