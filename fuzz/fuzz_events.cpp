// SPDX-License-Identifier: MIT
// Names of events, and datagrams that somebody else sends to the socket of one: whatever they hold, the
// service wakes once when there was any and waits on when there was none.
#include "eventsocket.h"
#include "folder.h"
#include "rkos.h"

#include <cstring>
#include <string>
#include <sys/socket.h>

using namespace rkos;

namespace {

uint64_t service()
{
    static const Folder folder;
    static const uint64_t made = [] {
        setenv("XDG_RUNTIME_DIR", folder.path().c_str(), 1);
        return rkOSCreateEvent("fuzzed");
    }();
    return made;
}

// What stands between line ends is one datagram each. The number of those that were sent.
int sendAll(const Descriptor &socket, const char *data, size_t size)
{
    int sent = 0;
    while (size > 0) {
        const void *const end = memchr(data, '\n', size);
        const size_t length = end != nullptr ? size_t(static_cast<const char *>(end) - data) : size;
        sent += ::send(socket.get(), data, length, MSG_DONTWAIT | MSG_NOSIGNAL) >= 0 && length > 0;
        const size_t taken = end != nullptr ? length + 1 : size;
        data += taken;
        size -= taken;
    }
    return sent;
}

void checkName(const std::string &name)
{
    if (!isEventName(name.c_str()))
        return;
    const size_t length = strlen(name.c_str());
    require(length >= 1 && length <= 200 && name[0] != '.', "name");
    require(name.substr(0, length).find_first_of("/\n\t\x7f") == std::string::npos, "character of a name");
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    const char *const text = reinterpret_cast<const char *>(data);
    require(service() != RKOS_INVALID_HANDLE, "no service");
    checkName(std::string(text, size));
    static const Descriptor socket = connectEvent("fuzzed");
    const bool any = sendAll(socket, text, size) > 0;
    require(rkOSWaitEvent(service(), 0) == (any ? 0 : RKOS_WAIT_TIMEOUT), "wake");
    require(rkOSWaitEvent(service(), 0) == RKOS_WAIT_TIMEOUT, "second wake");
    return 0;
}
