// SPDX-License-Identifier: MIT
// The functions of rkcfg.h that keep notes. The visitor is called without any lock: it may use the store.
#include "calls.h"
#include "names.h"
#include "rkcfg.h"

#include <algorithm>
#include <cstring>

using namespace rkcfg;

namespace {

constexpr size_t kMaxOwnerBytes = 64;
constexpr size_t kMaxKeyBytes = 1024;
constexpr size_t kMaxDataBytes = 1 << 20;
constexpr const char *kNotANote = "no owner or key, or longer than a note's may be";

bool within(const char *text, size_t bytes)
{
    return text != nullptr && *text != '\0' && strnlen(text, bytes + 1) <= bytes && wellFormed(text);
}

bool sound(const NoteKey &note)
{
    return within(note.owner, kMaxOwnerBytes) && within(note.key, kMaxKeyBytes);
}

int visitNotes(const std::vector<KeptNote> &notes, RKCFG_NOTE_VISITOR visitor, void *context)
{
    for (const KeptNote &note : notes) {
        if (visitor(context, note.key.c_str(), note.data.data(), static_cast<uint32_t>(note.data.size())) !=
            0)
            break;
    }
    return kDone;
}

} // namespace

extern "C" int rkCFGSetNote(void *handle, const char *owner, const char *key, const void *data, uint32_t size)
{
    static const char call[] = "rkCFGSetNote";
    return withStore(call, handle, kFailed, [&](const StoreAccess &store) {
        const NoteKey note{owner, key};
        const std::string_view bytes(static_cast<const char *>(data), data != nullptr ? size : 0);
        if (sound(note) && bytes.size() <= kMaxDataBytes)
            return store->setNote(note, bytes);
        store->refuse(call, kNotANote);
        return kFailed;
    });
}

extern "C" int rkCFGNote(void *handle, const char *owner, const char *key, void *buffer, uint32_t *size)
{
    static const char call[] = "rkCFGNote";
    return withStore(call, handle, kFailed, [&](const StoreAccess &store) {
        int result = kFailed;
        const NoteKey note{owner, key};
        if (!sound(note) || size == nullptr) {
            store->refuse(call, size == nullptr ? kNullPointer : kNotANote);
            return result;
        }
        store->readNote(note, [&](const char *, std::string_view data) {
            const size_t room = buffer != nullptr ? *size : 0;
            if (const size_t bytes = std::min(room, data.size()); bytes > 0)
                memcpy(buffer, data.data(), bytes);
            *size = static_cast<uint32_t>(data.size());
            result = kDone;
        });
        return result;
    });
}

extern "C" int rkCFGForEachNote(void *handle, const char *owner, RKCFG_NOTE_VISITOR visitor, void *context)
{
    static const char call[] = "rkCFGForEachNote";
    return guarded(call, kFailed, [&] {
        if (visitor == nullptr || !within(owner, kMaxOwnerBytes))
            return refuse(call, visitor == nullptr ? kNullPointer : kNotANote, kFailed);
        std::vector<KeptNote> notes;
        const int code = withStore(call, handle, kFailed,
                                   [&](const StoreAccess &store) { return store->listNotes(owner, notes); });
        return code == kDone ? visitNotes(notes, visitor, context) : kFailed;
    });
}
