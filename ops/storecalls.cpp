// SPDX-License-Identifier: MIT
#include "ops/storecalls.h"

#include <dlfcn.h>

namespace ops {

namespace {

template<class Function>
void look(Function *&call, const char *name)
{
    call = reinterpret_cast<Function *>(dlsym(RTLD_DEFAULT, name));
}

StoreCalls lookAll()
{
    StoreCalls calls{};
    look(calls.forEach, "rkCFGForEach");
    look(calls.open, "rkCFGOpen");
    look(calls.changed, "rkCFGChanged");
    look(calls.begin, "rkCFGBegin");
    look(calls.end, "rkCFGEnd");
    look(calls.remove, "rkCFGRemove");
    look(calls.label, "rkCFGLabel");
    look(calls.history, "rkCFGHistory");
    look(calls.takeBack, "rkCFGTakeBack");
    look(calls.setNote, "rkCFGSetNote");
    look(calls.forEachNote, "rkCFGForEachNote");
    look(calls.deleteConfiguration, "rkCFGDelete");
    look(calls.renameConfiguration, "rkCFGRename");
    return calls;
}

} // namespace

const StoreCalls &storeCalls()
{
    static const StoreCalls calls = lookAll();
    return calls;
}

} // namespace ops
