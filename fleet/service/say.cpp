// SPDX-License-Identifier: MIT
#include "fleet/service/say.h"

#include "ops/findings.h"
#include "rkos.h"

#include <cstdio>

namespace fleet {

void say(const QByteArray &line)
{
    ErrOut("%s", line.constData());
    std::fprintf(stderr, "corvel-fleet: %s\n", ops::printable(line).constData());
}

} // namespace fleet
