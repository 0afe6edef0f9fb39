// SPDX-License-Identifier: MIT
#include "rkcfg.h"

#include "rkos.h"
#include "store.h"
#include "utf8.h"

#include <algorithm>
#include <cstring>
#include <exception>

using rkcfg::Key;
using rkcfg::StoreAccess;
using rkcfg::Type;
using rkcfg::Value;

namespace {

constexpr int found = 0;
constexpr int absent = 1;
constexpr int unchanged = 0;
constexpr int changed = 1;
constexpr int done = 0;
constexpr int failed = 1;

// No exception leaves the library: short memory and the like become the call's failure.
template<typename Body>
int guarded(const char *call, int failure, Body body) noexcept
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

int refuse(const char *call, const char *why, int result)
{
    StoreAccess()->refuse(call, why);
    return result;
}

bool isDefaultStore(const void *handle)
{
    return handle == RKCFG_DEFAULT_STORE;
}

// What is wrong with the arguments that all value calls share, or null.
const char *objection(const void *handle, const char *keyPath, const char *valueName, const void *out)
{
    if (!isDefaultStore(handle))
        return "unknown handle";
    return keyPath == nullptr || valueName == nullptr || out == nullptr ? "null pointer" : nullptr;
}

int readText(const Key &key, char *buffer, uint32_t *size)
{
    int result = absent;
    StoreAccess()->read(key, [&](const Value &value) {
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
int writeText(const Key &key, const char *text, uint32_t size)
{
    const bool terminated = size > 0 && text[size - 1] == '\0';
    Value value;
    value.text = {text, terminated ? size - 1 : size};
    return StoreAccess()->write(key, value) ? changed : unchanged;
}

int readNumber(const Key &key, uint32_t *number)
{
    int result = absent;
    StoreAccess()->read(key, [&](const Value &value) {
        if (value.type != Type::Number)
            return;
        *number = value.number;
        result = found;
    });
    return result;
}

int writeNumber(const Key &key, uint32_t number)
{
    Value value;
    value.type = Type::Number;
    value.number = number;
    return StoreAccess()->write(key, value) ? changed : unchanged;
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
    return guarded(call, write != 0 ? unchanged : absent, [&] {
        const char *why = objection(handle, keyPath, valueName, size);
        if (why == nullptr && write != 0 && buffer == nullptr)
            why = "null pointer";
        if (why != nullptr)
            return refuse(call, why, write != 0 ? unchanged : absent);
        const Key key{keyPath, valueName};
        return write != 0 ? writeText(key, buffer, *size) : readText(key, buffer, size);
    });
}

extern "C" int rkCFGValueDword(void *handle, const char *keyPath, const char *valueName, uint32_t *value,
                               int write)
{
    static const char call[] = "rkCFGValueDword";
    return guarded(call, write != 0 ? unchanged : absent, [&] {
        if (const char *why = objection(handle, keyPath, valueName, value))
            return refuse(call, why, write != 0 ? unchanged : absent);
        const Key key{keyPath, valueName};
        return write != 0 ? writeNumber(key, *value) : readNumber(key, value);
    });
}

extern "C" int rkCFGSave(void *handle, const char *name, int /*flags*/)
{
    static const char call[] = "rkCFGSave";
    return guarded(call, failed, [&] {
        if (!isDefaultStore(handle))
            return refuse(call, "unknown handle", failed);
        return StoreAccess()->save(name);
    });
}

extern "C" int rkCFGClose(void *handle, int save)
{
    static const char call[] = "rkCFGClose";
    return guarded(call, failed, [&] {
        if (!isDefaultStore(handle))
            return refuse(call, "unknown handle", failed);
        return StoreAccess()->close(save != 0);
    });
}

extern "C" int rkCFGSetDefaultName(const char *utf8Name)
{
    static const char call[] = "rkCFGSetDefaultName";
    return guarded(call, failed, [&] {
        if (utf8Name == nullptr)
            return refuse(call, "null pointer", failed);
        if (!rkcfg::validName(utf8Name))
            return refuse(call, "not a name for a configuration", failed);
        return StoreAccess()->setDefaultName(utf8Name);
    });
}

extern "C" int rkCFGGetDefaultName(char *buffer, uint32_t size)
{
    static const char call[] = "rkCFGGetDefaultName";
    return guarded(call, failed, [&] {
        if (buffer == nullptr || size == 0)
            return refuse(call, "no buffer", failed);
        const std::string name = StoreAccess()->defaultName();
        const size_t bytes = wholeCharacters(name, std::min<size_t>(size - 1, name.size()));
        memcpy(buffer, name.data(), bytes);
        buffer[bytes] = '\0';
        return done;
    });
}

extern "C" int rkCFGForEach(void *handle, const char *keyPath, RKCFG_VISITOR visitor, void *context)
{
    static const char call[] = "rkCFGForEach";
    return guarded(call, failed, [&] {
        if (!isDefaultStore(handle) || visitor == nullptr)
            return refuse(call, visitor == nullptr ? "null pointer" : "unknown handle", failed);
        std::vector<rkcfg::Entry> entries;
        if (!StoreAccess()->list(keyPath, entries))
            return failed;
        // Without the lock: the visitor may use the store itself.
        for (const rkcfg::Entry &entry : entries) {
            const bool isText = entry.type == Type::Text;
            if (visitor(context, entry.path.c_str(), entry.name.c_str(),
                        isText ? entry.text.c_str() : nullptr,
                        isText ? static_cast<uint32_t>(entry.text.size() + 1) : 0, entry.number) != 0)
                break;
        }
        return done;
    });
}
