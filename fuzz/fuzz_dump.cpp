// SPDX-License-Identifier: MIT
// The reader of dumps. What it accepts has to come back as it was.
#include "ops/dump.h"

#include <cstdlib>

extern "C" int LLVMFuzzerTestOneInput(const unsigned char *data, std::size_t size)
{
    const QByteArray text(reinterpret_cast<const char *>(data), static_cast<int>(size));
    const auto dump = ops::readDump(text);
    if (dump && !ops::readDump(ops::writeDump(*dump)))
        abort();
    return 0;
}
