// SPDX-License-Identifier: MIT
//
// The version, and the entry points that hand out and make directories.
#include "directories.h"
#include "guard.h"
#include "privatefolder.h"
#include "rkos.h"
#include "userdirs.h"

#include <cstring>

using namespace rkos;

namespace {

// Copies text to a caller's buffer; what does not fit leaves an empty text.
int handOut(const std::optional<std::string> &text, char *buffer, size_t size)
{
    if (buffer == nullptr || size == 0)
        return 0;
    buffer[0] = '\0';
    if (!text || text->size() >= size)
        return 0;
    memcpy(buffer, text->c_str(), text->size() + 1);
    return 1;
}

// 777 reads as 0777: the decimal digits are the octal ones. Nothing for digits that are not octal.
std::optional<mode_t> modeFromDigits(int digits)
{
    if (digits < 0 || digits > 7777)
        return std::nullopt;
    mode_t mode = 0;
    for (int place = 1, shift = 0; place <= 1000; place *= 10, shift += 3) {
        const int digit = digits / place % 10;
        if (digit > 7)
            return std::nullopt;
        mode |= static_cast<mode_t>(digit) << shift;
    }
    return mode;
}

} // namespace

extern "C" const char *rkOSVersion(void)
{
    return "2.0";
}

extern "C" int rkOSGetConfigDir(char *buffer)
{
    return guarded(0, [&] { return handOut(configDir(), buffer, RKOS_PATH_SIZE); });
}

extern "C" int rkOSGetDocumentsDir(char *buffer)
{
    return guarded(0, [&] { return handOut(documentsDir(), buffer, RKOS_PATH_SIZE); });
}

extern "C" int rkOSGetTempPath(char *buffer, uint32_t size)
{
    return guarded(0, [&] { return handOut(runtimeDir(size), buffer, size); });
}

extern "C" int rkOSMakeDir(const char *path, int mode)
{
    return guarded(0, [&] {
        const std::optional<mode_t> permissions = modeFromDigits(mode);
        if (path == nullptr || path[0] == '\0' || !permissions)
            return 0;
        std::string name(path);
        while (name.size() > 1 && name.back() == '/')
            name.pop_back();
        return rk::makePath(name, 0777, *permissions) ? 1 : 0;
    });
}
