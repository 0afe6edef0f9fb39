// SPDX-License-Identifier: MIT
// The texts a user types for a clock: identity and interface address. What is read is read again from what is
// written.
#include "identity.h"
#include "interfaces.h"

#include <cstdlib>

using namespace rkptp;

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    const std::string text(reinterpret_cast<const char *>(data), size);
    if (const auto id = parseIdentity(text)) {
        const bool known = *id != ClockId();
        if (known && parseIdentity(formatIdentity(*id)) != id)
            abort();
        if (parseIdentity(formatForPtp4l(*id)) != id)
            abort();
        if (formatPortId({*id, 65535}).size() >= 64)
            abort();
    }
    if (const auto address = parseAddress(text.c_str()))
        if (parseAddress(formatAddress(*address).c_str()) != address)
            abort();
    return 0;
}
