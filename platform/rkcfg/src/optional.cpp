// SPDX-License-Identifier: MIT
// The optional functions of rkcfg.h. Visitors are called without any lock: they may use the store.
#include "calls.h"
#include "configurations.h"
#include "rkcfg.h"

#include <cstring>

using namespace rkcfg;

namespace {

constexpr size_t kMaxLabelBytes = 200;
constexpr int kUnknown = -1;

void fillValue(const Kept &value, int &type, const char *&text, uint32_t &size, uint32_t &number)
{
    const bool isText = value.type == Type::Text;
    type = static_cast<int>(value.type);
    text = isText ? value.text.c_str() : nullptr;
    size = isText ? static_cast<uint32_t>(value.text.size() + 1) : 0;
    number = value.number;
}

RKCFG_CHANGE toldChange(const Change &change)
{
    RKCFG_CHANGE told{};
    told.size = sizeof told;
    told.id = change.id;
    told.batch = change.batch;
    told.time_us = change.time_us;
    told.program = change.program.c_str();
    told.pid = change.pid;
    told.user = change.user.c_str();
    told.label = change.labelled ? change.label.c_str() : nullptr;
    told.keyPath = change.path.c_str();
    told.valueName = change.name.c_str();
    fillValue(change.before, told.oldType, told.oldText, told.oldSize, told.oldNumber);
    fillValue(change.after, told.newType, told.newText, told.newSize, told.newNumber);
    told.undoes = change.undoes;
    return told;
}

// False when the visitor has seen enough.
bool visitAll(const std::vector<Change> &changes, RKCFG_CHANGE_VISITOR visitor, void *context)
{
    for (const Change &change : changes) {
        const RKCFG_CHANGE told = toldChange(change);
        if (visitor(context, &told) != 0)
            return false;
    }
    return true;
}

bool visitEntry(const Entry &entry, RKCFG_VISITOR visitor, void *context)
{
    const bool isText = entry.type == Type::Text;
    return visitor(context, entry.path.c_str(), entry.name.c_str(), isText ? entry.text.c_str() : nullptr,
                   isText ? static_cast<uint32_t>(entry.text.size() + 1) : 0, entry.number) == 0;
}

} // namespace

extern "C" int rkCFGForEach(void *handle, const char *keyPath, RKCFG_VISITOR visitor, void *context)
{
    static const char call[] = "rkCFGForEach";
    return guarded(call, kFailed, [&] {
        if (visitor == nullptr)
            return refuse(call, kNullPointer, kFailed);
        std::vector<Entry> entries;
        const int code = withStore(call, handle, kFailed, [&](const StoreAccess &store) {
            return store->list(keyPath, entries) ? kDone : kFailed;
        });
        for (const Entry &entry : entries) {
            if (!visitEntry(entry, visitor, context))
                break;
        }
        return code;
    });
}

extern "C" void *rkCFGOpen(const char *utf8Name, int create)
{
    static const char call[] = "rkCFGOpen";
    void *const none = nullptr;
    return guarded(call, none, [&] {
        if (utf8Name == nullptr)
            return refuse(call, kNullPointer, none);
        if (!validName(utf8Name))
            return refuse(call, kNotAName, none);
        return openHandle(utf8Name, create != 0);
    });
}

extern "C" int rkCFGDelete(const char *utf8Name)
{
    static const char call[] = "rkCFGDelete";
    return guarded(call, kFailed, [&] {
        if (utf8Name == nullptr || !validName(utf8Name))
            return refuse(call, kNotAName, kFailed);
        return deleteConfiguration(StoreAccess(RKCFG_DEFAULT_STORE), utf8Name);
    });
}

extern "C" int rkCFGRename(const char *utf8Name, const char *newUtf8Name)
{
    static const char call[] = "rkCFGRename";
    return guarded(call, kFailed, [&] {
        if (utf8Name == nullptr || newUtf8Name == nullptr || !validName(utf8Name) || !validName(newUtf8Name))
            return refuse(call, kNotAName, kFailed);
        return renameConfiguration(StoreAccess(RKCFG_DEFAULT_STORE), utf8Name, newUtf8Name);
    });
}

extern "C" int rkCFGCopy(const char *utf8Name, const char *newUtf8Name)
{
    static const char call[] = "rkCFGCopy";
    return guarded(call, kFailed, [&] {
        if (utf8Name == nullptr || newUtf8Name == nullptr || !validName(utf8Name) || !validName(newUtf8Name))
            return refuse(call, kNotAName, kFailed);
        return copyConfiguration(StoreAccess(RKCFG_DEFAULT_STORE), utf8Name, newUtf8Name);
    });
}

extern "C" int rkCFGChanged(void *handle, uint64_t *mark)
{
    static const char call[] = "rkCFGChanged";
    return withStore(call, handle, kUnknown, [&](const StoreAccess &store) {
        if (mark != nullptr)
            return store->changedByOthers(*mark);
        store->refuse(call, kNullPointer);
        return kUnknown;
    });
}

extern "C" int rkCFGBegin(void *handle)
{
    return withStore("rkCFGBegin", handle, kFailed, [](const StoreAccess &store) { return store->begin(); });
}

extern "C" int rkCFGEnd(void *handle, int keep)
{
    return withStore("rkCFGEnd", handle, kFailed,
                     [&](const StoreAccess &store) { return store->end(keep != 0); });
}

extern "C" int rkCFGRemove(void *handle, const char *keyPath, const char *valueName)
{
    static const char call[] = "rkCFGRemove";
    return withStore(call, handle, 0, [&](const StoreAccess &store) {
        if (keyPath != nullptr && valueName != nullptr)
            return store->write({keyPath, valueName}, {Type::Absent, {}, 0}) ? 1 : 0;
        store->refuse(call, kNullPointer);
        return 0;
    });
}

extern "C" int rkCFGLabel(void *handle, const char *utf8Label)
{
    static const char call[] = "rkCFGLabel";
    return withStore(call, handle, kFailed, [&](const StoreAccess &store) {
        const std::string label(utf8Label != nullptr ? utf8Label : "");
        if (label.size() <= kMaxLabelBytes && wellFormed(label))
            return store->label(label);
        store->refuse(call, "not a label: more than 200 bytes or no UTF-8");
        return kFailed;
    });
}

extern "C" int rkCFGHistory(void *handle, int64_t after, RKCFG_CHANGE_VISITOR visitor, void *context)
{
    static const char call[] = "rkCFGHistory";
    return guarded(call, kFailed, [&] {
        if (visitor == nullptr || after < -1)
            return refuse(call, visitor == nullptr ? kNullPointer : "no such position", kFailed);
        Walk walk;
        walk.newestFirst = after < 0;
        walk.position = after;
        std::vector<Change> changes;
        do {
            const int code = withStore(call, handle, kFailed, [&](const StoreAccess &store) {
                return store->history(walk, changes);
            });
            if (code != kDone)
                return kFailed;
        } while (visitAll(changes, visitor, context) && !changes.empty());
        return kDone;
    });
}

extern "C" int rkCFGTakeBack(void *handle, int64_t batch, int force, int dryRun,
                             RKCFG_CHANGE_VISITOR conflict, void *context, int64_t *newBatch)
{
    static const char call[] = "rkCFGTakeBack";
    return guarded(call, kUnknown, [&] {
        TakeBackResult result;
        const int code = withStore(call, handle, kFailed, [&](const StoreAccess &store) {
            return store->takeBack({batch, force != 0, dryRun != 0}, result);
        });
        if (code != kDone || !result.known)
            return kUnknown;
        if (newBatch != nullptr)
            *newBatch = result.newBatch;
        if (conflict != nullptr)
            visitAll(result.conflicts, conflict, context);
        return force != 0 ? 0 : static_cast<int>(result.conflicts.size());
    });
}

extern "C" const char *rkCFGVersion(void)
{
    return "2.2";
}
