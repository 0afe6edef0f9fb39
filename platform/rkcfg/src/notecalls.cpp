// SPDX-License-Identifier: MIT
// The functions of rkcfg.h that keep notes. The visitor is called without any lock: it may use the store.
#include "calls.h"
#include "names.h"
#include "rkcfg.h"

#include <algorithm>
#include <cstring>

using namespace rkcfg;

namespace {

constexpr size_t maxOwnerBytes = 64;
constexpr size_t maxKeyBytes = 1024;
constexpr size_t maxDataBytes = 1 << 20;
constexpr const char *notANote = "no owner or key, or longer than a note's may be";

bool within(const char *text, size_t bytes)
{
    return text != nullptr && *text != '\0' && strnlen(text, bytes + 1) <= bytes && wellFormed(text);
}

bool sound(const NoteKey &note)
{
    return within(note.owner, maxOwnerBytes) && within(note.key, maxKeyBytes);
}

int visitNotes(const std::vector<KeptNote> &notes, RKCFG_NOTE_VISITOR visitor, void *context)
{
    for (const KeptNote &note : notes) {
        if (visitor(context, note.key.c_str(), note.data.data(), static_cast<uint32_t>(note.data.size())) !=
            0)
            break;
    }
    return done;
}

} // namespace

extern "C" int rkCFGSetNote(void *handle, const char *owner, const char *key, const void *data, uint32_t size)
{
    static const char call[] = "rkCFGSetNote";
    return withStore(call, handle, failed, [&](const StoreAccess &store) {
        const NoteKey note{owner, key};
        const std::string_view bytes(static_cast<const char *>(data), data != nullptr ? size : 0);
        if (sound(note) && bytes.size() <= maxDataBytes)
            return store->setNote(note, bytes);
        store->refuse(call, notANote);
        return failed;
    });
}

extern "C" int rkCFGNote(void *handle, const char *owner, const char *key, void *buffer, uint32_t *size)
{
    static const char call[] = "rkCFGNote";
    return withStore(call, handle, failed, [&](const StoreAccess &store) {
        int result = failed;
        const NoteKey note{owner, key};
        if (!sound(note) || size == nullptr) {
            store->refuse(call, size == nullptr ? nullPointer : notANote);
            return result;
        }
        store->readNote(note, [&](const char *, std::string_view data) {
            const size_t room = buffer != nullptr ? *size : 0;
            if (const size_t bytes = std::min(room, data.size()); bytes > 0)
                memcpy(buffer, data.data(), bytes);
            *size = static_cast<uint32_t>(data.size());
            result = done;
        });
        return result;
    });
}

extern "C" int rkCFGForEachNote(void *handle, const char *owner, RKCFG_NOTE_VISITOR visitor, void *context)
{
    static const char call[] = "rkCFGForEachNote";
    return guarded(call, failed, [&] {
        if (visitor == nullptr || !within(owner, maxOwnerBytes))
            return refuse(call, visitor == nullptr ? nullPointer : notANote, failed);
        std::vector<KeptNote> notes;
        const int code = withStore(call, handle, failed,
                                   [&](const StoreAccess &store) { return store->listNotes(owner, notes); });
        return code == done ? visitNotes(notes, visitor, context) : failed;
    });
}
