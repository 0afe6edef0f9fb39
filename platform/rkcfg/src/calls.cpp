// SPDX-License-Identifier: MIT
#include "calls.h"

#include "rkcfg.h"

namespace rkcfg {

void tellRefusal(const char *call, const char *why)
{
    StoreAccess(RKCFG_DEFAULT_STORE)->refuse(call, why);
}

} // namespace rkcfg
