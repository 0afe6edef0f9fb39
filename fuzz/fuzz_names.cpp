// SPDX-License-Identifier: MIT
// Any bytes as the name of a configuration, and as the small file that holds one. A name that is taken is one
// file name, and what the file gives is a name that is taken.
#include "folder.h"
#include "names.h"
#include "rkos.h"

#include <cstdarg>
#include <fcntl.h>
#include <unistd.h>

using namespace rkcfg;

// The log of the library.
extern "C" void ErrOut(const char *, ...) {}

extern "C" int rkOSGetConfigDir(char *buffer)
{
    buffer[0] = 0;
    return 0;
}

namespace {

std::string folder()
{
    static const Folder made;
    return made.path() + '/';
}

void checkName(const std::string &name)
{
    if (!validName(name))
        return;
    require(wellFormed(name), "a name that is no UTF-8");
    require(name.size() <= 64 && name[0] != '.' && name.find('/') == std::string::npos, "name");
    const Paths paths("/folder/", name);
    require(paths.database.rfind('/') == 7 && paths.olderCopy.size() < 255, "path");
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    const std::string text(reinterpret_cast<const char *>(data), size);
    checkName(text);
    const int file =
        open((folder() + "default-config").c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0600);
    require(write(file, data, size) == ssize_t(size), "no file");
    close(file);
    DefaultName name;
    require(validName(name.current(folder())), "default name");
    require(name.current(folder()) == name.current(folder()), "default name changes");
    if (validName(text) && size % 8 == 7) {
        require(name.store(folder(), text), "not stored");
        require(name.current(folder()) == text.substr(0, text.find_first_of("\r\n")), "not read back");
    }
    return 0;
}
