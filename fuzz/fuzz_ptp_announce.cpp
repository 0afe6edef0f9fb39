// SPDX-License-Identifier: MIT
// Lines of the listening launcher and the announce messages in them: whatever the network sends.
#include "announce.h"

#include <cstdlib>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    const std::string_view text(reinterpret_cast<const char *>(data), size);
    rkptp::parseAnnounce(data, size);
    rkptp::MasterList list;
    const auto master = rkptp::parseHeardLine(text);
    if (!master)
        return 0;
    list.hear(*master);
    if (list.sorted().size() != 1)
        abort();
    return 0;
}
