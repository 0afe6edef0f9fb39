// SPDX-License-Identifier: MIT
// The readers of documents and of conflicts. What they accept has one spelling: the one that came.
#include "fleet/conflict.h"

#include <cstdlib>

extern "C" int LLVMFuzzerTestOneInput(const unsigned char *data, std::size_t size)
{
    const std::string_view bytes(reinterpret_cast<const char *>(data), size);
    const auto document = fleet::readDocument(bytes);
    const auto again = document ? fleet::writeDocument(*document) : std::string();
    if (document && (!again || *again != bytes))
        abort();
    const auto conflict = fleet::readConflict(bytes);
    const auto repeated = conflict ? fleet::writeConflict(*conflict) : std::string();
    if (conflict && (!repeated || *repeated != bytes || fleet::conflictId(*conflict).empty()))
        abort();
    return 0;
}
