// SPDX-License-Identifier: MIT
#include "rkcfg.h"

#include "calls.h"
#include "utf8.h"

#include <algorithm>
#include <cstring>

using namespace rkcfg;

namespace {

constexpr int kFound = 0;
constexpr int kAbsent = 1;
constexpr int kUnchanged = 0;
constexpr int kChanged = 1;

constexpr size_t kMaxTextBytes = 1 << 20;

int readText(const StoreAccess &store, const Key &key, char *buffer, uint32_t *size)
{
    int result = kAbsent;
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
        result = kFound;
    });
    return result;
}

// The terminating zero is counted by the caller but not kept: it comes back with every reading.
int writeText(const StoreAccess &store, const Key &key, std::string_view text)
{
    if (!text.empty() && text.back() == '\0')
        text.remove_suffix(1);
    if (text.size() > kMaxTextBytes) {
        store->refuse(key.name, "longer than 1 MiB, not stored");
        return kUnchanged;
    }
    return store->write(key, {Type::Text, text, 0}) ? kChanged : kUnchanged;
}

int readNumber(const StoreAccess &store, const Key &key, uint32_t *number)
{
    int result = kAbsent;
    store->read(key, [&](const Value &value) {
        if (value.type != Type::Number)
            return;
        *number = value.number;
        result = kFound;
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
    const int refused = write != 0 ? kUnchanged : kAbsent;
    return withStore(call, handle, refused, [&](const StoreAccess &store) {
        if (keyPath == nullptr || valueName == nullptr || size == nullptr ||
            (write != 0 && buffer == nullptr)) {
            store->refuse(call, kNullPointer);
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
    const int refused = write != 0 ? kUnchanged : kAbsent;
    return withStore(call, handle, refused, [&](const StoreAccess &store) {
        if (keyPath == nullptr || valueName == nullptr || value == nullptr) {
            store->refuse(call, kNullPointer);
            return refused;
        }
        const Key key{keyPath, valueName};
        if (write == 0)
            return readNumber(store, key, value);
        return store->write(key, {Type::Number, {}, *value}) ? kChanged : kUnchanged;
    });
}

extern "C" int rkCFGSave(void *handle, const char *name, int /*flags*/)
{
    return withStore("rkCFGSave", handle, kFailed,
                     [&](const StoreAccess &store) { return store->save(name); });
}

extern "C" int rkCFGClose(void *handle, int save)
{
    static const char call[] = "rkCFGClose";
    return guarded(call, kFailed, [&] {
        if (handle == RKCFG_DEFAULT_STORE)
            return StoreAccess(handle)->close(save != 0);
        int code = kDone;
        return closeHandle(handle, save != 0, code) ? code : refuse(call, kUnknownHandle, kFailed);
    });
}

extern "C" int rkCFGSetDefaultName(const char *utf8Name)
{
    static const char call[] = "rkCFGSetDefaultName";
    return guarded(call, kFailed, [&] {
        if (utf8Name == nullptr)
            return refuse(call, kNullPointer, kFailed);
        if (!validName(utf8Name))
            return refuse(call, kNotAName, kFailed);
        return StoreAccess(RKCFG_DEFAULT_STORE)->setDefaultName(utf8Name);
    });
}

extern "C" int rkCFGGetDefaultName(char *buffer, uint32_t size)
{
    static const char call[] = "rkCFGGetDefaultName";
    return guarded(call, kFailed, [&] {
        if (buffer == nullptr || size == 0)
            return refuse(call, "no buffer", kFailed);
        const std::string name = StoreAccess(RKCFG_DEFAULT_STORE)->defaultName();
        const size_t bytes = wholeCharacters(name, std::min<size_t>(size - 1, name.size()));
        memcpy(buffer, name.data(), bytes);
        buffer[bytes] = '\0';
        return kDone;
    });
}
