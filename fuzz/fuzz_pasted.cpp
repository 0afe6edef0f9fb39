// SPDX-License-Identifier: MIT
// Any text that was pasted or dropped. What is taken is an address, stands in the text, and is taken again
// alone.
#include "require.h"
#include "theme/addresstext.h"

#include <arpa/inet.h>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    const QString text = QString::fromUtf8(reinterpret_cast<const char *>(data), int(size));
    const QString found = addressInText(text);
    if (found.isEmpty())
        return 0;
    in_addr address{};
    require(inet_pton(AF_INET, found.toLatin1().constData(), &address) == 1, "no address");
    require(text.contains(found), "not in the text");
    require(addressInText(found) == found, "not taken alone");
    return 0;
}
