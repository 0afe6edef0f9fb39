// SPDX-License-Identifier: MIT
//
// The calls of rkcfg.h that a site's own library may lack, looked up once at run time. A null pointer is a
// call that is not there.
#ifndef CORVEL_LIBRARYCALLS_H
#define CORVEL_LIBRARYCALLS_H

#include "channel/storerecord.h"

#include <cstdint>

using StoreRowVisitor = int (*)(void *context, const char *keyPath, const char *valueName, const char *text,
                                uint32_t size, uint32_t number);
using StoreRecordVisitor = int (*)(void *context, const StoreRecord *change);

using StoreNoteVisitor = int (*)(void *context, const char *key, const void *data, uint32_t size);

struct LibraryCalls {
    int (*forEach)(void *handle, const char *keyPath, StoreRowVisitor visitor, void *context);
    void *(*open)(const char *utf8Name, int create);
    int (*changed)(void *handle, uint64_t *mark);
    int (*begin)(void *handle);
    int (*end)(void *handle, int keep);
    int (*remove)(void *handle, const char *keyPath, const char *valueName);
    int (*label)(void *handle, const char *utf8Label);
    int (*history)(void *handle, int64_t after, StoreRecordVisitor visitor, void *context);
    int (*takeBack)(void *handle, int64_t batch, int force, int dryRun, StoreRecordVisitor conflict,
                    void *context, int64_t *newBatch);
    int (*setNote)(void *handle, const char *owner, const char *key, const void *data, uint32_t size);
    int (*note)(void *handle, const char *owner, const char *key, void *buffer, uint32_t *size);
    int (*forEachNote)(void *handle, const char *owner, StoreNoteVisitor visitor, void *context);
    int (*deleteConfiguration)(const char *utf8Name);
    int (*renameConfiguration)(const char *utf8Name, const char *newUtf8Name);
    int (*copyConfiguration)(const char *utf8Name, const char *newUtf8Name);
};

const LibraryCalls &libraryCalls();

#endif
