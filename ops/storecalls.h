// SPDX-License-Identifier: MIT
//
// The calls of rkcfg.h that a site's own library may lack, looked up once at run time. A null pointer is a
// call that is not there.
#ifndef CORVEL_OPS_STORECALLS_H
#define CORVEL_OPS_STORECALLS_H

#include "channel/storerecord.h"

#include <cstdint>

namespace ops {

using RowVisitor = int (*)(void *context, const char *keyPath, const char *valueName, const char *text,
                           uint32_t size, uint32_t number);
using ChangeVisitor = int (*)(void *context, const StoreRecord *change);

using NoteVisitor = int (*)(void *context, const char *key, const void *data, uint32_t size);

struct StoreCalls {
    int (*forEach)(void *handle, const char *keyPath, RowVisitor visitor, void *context);
    void *(*open)(const char *utf8Name, int create);
    int (*changed)(void *handle, uint64_t *mark);
    int (*begin)(void *handle);
    int (*end)(void *handle, int keep);
    int (*remove)(void *handle, const char *keyPath, const char *valueName);
    int (*label)(void *handle, const char *utf8Label);
    int (*history)(void *handle, int64_t after, ChangeVisitor visitor, void *context);
    int (*takeBack)(void *handle, int64_t batch, int force, int dryRun, ChangeVisitor conflict, void *context,
                    int64_t *newBatch);
    int (*setNote)(void *handle, const char *owner, const char *key, const void *data, uint32_t size);
    int (*forEachNote)(void *handle, const char *owner, NoteVisitor visitor, void *context);
    int (*deleteConfiguration)(const char *utf8Name);
    int (*renameConfiguration)(const char *utf8Name, const char *newUtf8Name);
};

const StoreCalls &storeCalls();

} // namespace ops

#endif
