// SPDX-License-Identifier: MIT
// Any bytes as the desktop's list of folders. What is read is absolute, whatever the home directory is.
#include "require.h"
#include "userdirs.h"

#include <cstdint>
#include <sstream>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    const std::string text(reinterpret_cast<const char *>(data), size);
    for (const char *home : {"/home/someone", ""}) {
        std::istringstream stream(text);
        const auto folder = rkos::userDir(stream, "XDG_DOCUMENTS_DIR", home);
        require(!folder || (!folder->empty() && folder->front() == '/'), "folder");
    }
    return 0;
}
