// SPDX-License-Identifier: MIT
#include "fake/commits.h"

#include "rkcfg.h"

#include <dlfcn.h>

namespace {

int writes = 0;
int committed = 0;

// The function of this name in the library behind this program.
template<class Function>
Function *real(Function *, const char *name)
{
    return reinterpret_cast<Function *>(dlsym(RTLD_NEXT, name));
}

} // namespace

int Commits::pending()
{
    return writes;
}

int Commits::saves()
{
    return committed;
}

void Commits::clear()
{
    writes = 0;
    committed = 0;
}

int rkCFGValueString(void *handle, const char *keyPath, const char *valueName, char *buffer, uint32_t *size,
                     int write)
{
    static const auto function = real(&rkCFGValueString, "rkCFGValueString");
    writes += write;
    return function(handle, keyPath, valueName, buffer, size, write);
}

int rkCFGValueDword(void *handle, const char *keyPath, const char *valueName, uint32_t *value, int write)
{
    static const auto function = real(&rkCFGValueDword, "rkCFGValueDword");
    writes += write;
    return function(handle, keyPath, valueName, value, write);
}

int rkCFGSave(void *handle, const char *name, int flags)
{
    static const auto function = real(&rkCFGSave, "rkCFGSave");
    writes = 0;
    ++committed;
    return function(handle, name, flags);
}

int rkCFGClose(void *handle, int save)
{
    static const auto function = real(&rkCFGClose, "rkCFGClose");
    if (save) {
        writes = 0;
        ++committed;
    }
    return function(handle, save);
}
