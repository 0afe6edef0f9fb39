// SPDX-License-Identifier: MIT
//
// For functions of a test program that stand before those of a library: the library's own.
#ifndef CORVEL_TEST_REAL_H
#define CORVEL_TEST_REAL_H

#include <dlfcn.h>

// The next function of this name behind this program; the first argument only tells its type:
// real(rkCFGSave, "rkCFGSave").
template<class Function>
Function *real(Function *, const char *name)
{
    return reinterpret_cast<Function *>(dlsym(RTLD_NEXT, name));
}

#endif
