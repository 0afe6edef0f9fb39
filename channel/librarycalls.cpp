// SPDX-License-Identifier: MIT
#include "channel/librarycalls.h"

#include <dlfcn.h>

namespace {

template<class Function>
void look(Function *&call, const char *name)
{
    call = reinterpret_cast<Function *>(dlsym(RTLD_DEFAULT, name));
}

LibraryCalls lookAll()
{
    LibraryCalls calls{};
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
    look(calls.note, "rkCFGNote");
    look(calls.forEachNote, "rkCFGForEachNote");
    look(calls.deleteConfiguration, "rkCFGDelete");
    look(calls.renameConfiguration, "rkCFGRename");
    look(calls.copyConfiguration, "rkCFGCopy");
    return calls;
}

} // namespace

const LibraryCalls &libraryCalls()
{
    static const LibraryCalls calls = lookAll();
    return calls;
}
