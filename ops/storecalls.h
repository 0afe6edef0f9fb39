// SPDX-License-Identifier: MIT
//
// The calls of rkcfg.h that a site's own library may lack, looked up once at run time. A null pointer is a
// call that is not there.
#ifndef CORVEL_OPS_STORECALLS_H
#define CORVEL_OPS_STORECALLS_H

#include <cstdint>

namespace ops {

struct StoreCalls {
    void *(*open)(const char *utf8Name, int create);
    int (*changed)(void *handle, uint64_t *mark);
    int (*begin)(void *handle);
    int (*end)(void *handle, int keep);
    int (*remove)(void *handle, const char *keyPath, const char *valueName);
    int (*label)(void *handle, const char *utf8Label);
    int (*deleteConfiguration)(const char *utf8Name);
    int (*renameConfiguration)(const char *utf8Name, const char *newUtf8Name);
};

const StoreCalls &storeCalls();

} // namespace ops

#endif
