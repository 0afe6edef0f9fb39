// SPDX-License-Identifier: MIT
//
// Named events. A service owns a datagram socket; a set is one byte in its queue, which the wait
// empties. With the service gone there is no event any more, even when its file is still there.
#include "eventsocket.h"
#include "handletable.h"
#include "rkos.h"

#include <atomic>
#include <poll.h>
#include <sys/socket.h>

using namespace rkos;

namespace {

constexpr uint32_t kForever = 0xFFFFFFFFu;
constexpr int kSignalled = 0;
constexpr int kTimedOut = 1;
constexpr int kFailed = -1;

// More than a socket's queue holds; a bound all the same, as sets may arrive while it is emptied.
constexpr int kMaxDrain = 16384;

struct Event {
    std::string name;
    EventSocket service; // the service's side
    Descriptor setter;   // the other side
    std::mutex setterMutex;
    std::atomic<bool> closed{false};

    bool isService() const { return service.fd.valid(); }
};

using Events = HandleTable<Event, HandleKind::event>;

uint64_t openEvent(const char *name)
{
    if (!isEventName(name))
        return RKOS_INVALID_HANDLE;
    Descriptor socket = connectEvent(name);
    if (!socket.valid())
        return RKOS_INVALID_HANDLE;
    auto event = std::make_shared<Event>();
    event->name = name;
    event->setter = std::move(socket);
    return Events::instance().add(std::move(event));
}

uint64_t createEvent(const char *name)
{
    if (!isEventName(name))
        return RKOS_INVALID_HANDLE;
    EventSocket made = bindEvent(name);
    if (!made.fd.valid())
        return RKOS_INVALID_HANDLE;
    auto event = std::make_shared<Event>();
    event->name = name;
    event->service = std::move(made);
    return Events::instance().add(std::move(event));
}

enum class Sent { done, nobody };

// A full queue means that the event is set already and that its service has yet to take it.
Sent sendByte(const Descriptor &socket)
{
    const char byte = 1;
    ssize_t sent = -1;
    do {
        sent = send(socket.get(), &byte, 1, MSG_DONTWAIT | MSG_NOSIGNAL);
    } while (sent < 0 && errno == EINTR);
    return sent == 1 || errno == EAGAIN || errno == EWOULDBLOCK ? Sent::done : Sent::nobody;
}

// When the service died since the open, its successor of the same name is looked for once.
int setEvent(Event &event)
{
    const std::lock_guard<std::mutex> lock(event.setterMutex);
    if (event.setter.valid() && sendByte(event.setter) == Sent::done)
        return 1;
    event.setter = connectEvent(event.name);
    return event.setter.valid() && sendByte(event.setter) == Sent::done ? 1 : 0;
}

// True when there was something in the queue.
bool drain(const Event &event)
{
    bool any = false;
    for (int i = 0; i < kMaxDrain; ++i) {
        char byte = 0;
        const ssize_t got = recv(event.service.fd.get(), &byte, 1, MSG_DONTWAIT);
        // An empty datagram is no set, and not the end of the queue; a socket that was shut down gives the
        // same.
        const bool empty = got == 0 && !event.closed;
        if (empty || (got < 0 && errno == EINTR))
            continue;
        if (got <= 0)
            break;
        any = true;
    }
    return any;
}

uint64_t nowMs()
{
    timespec now{};
    clock_gettime(CLOCK_MONOTONIC, &now);
    return static_cast<uint64_t>(now.tv_sec) * 1000 + static_cast<uint64_t>(now.tv_nsec) / 1000000;
}

// Rounded up to what poll() takes; a longer wait is made of several.
int pollTimeout(uint32_t milliseconds, uint64_t start)
{
    if (milliseconds == kForever)
        return -1;
    const uint64_t passed = nowMs() - start;
    const uint64_t left = passed < milliseconds ? milliseconds - passed : 0;
    constexpr uint64_t kLongest = 0x7fffffff;
    return static_cast<int>(left < kLongest ? left : kLongest);
}

int waitEvent(const Event &event, uint32_t milliseconds)
{
    const uint64_t start = nowMs();
    while (!event.closed) {
        const int timeout = pollTimeout(milliseconds, start);
        pollfd waiting = {event.service.fd.get(), POLLIN, 0};
        const int ready = poll(&waiting, 1, timeout);
        if (ready < 0 && errno != EINTR)
            return kFailed;
        // Another thread may have been quicker; then the wait goes on.
        if (ready > 0 && drain(event))
            return kSignalled;
        if (ready == 0 && pollTimeout(milliseconds, start) == 0)
            return kTimedOut;
    }
    return kFailed;
}

int closeEvent(uint64_t handle)
{
    const auto event = Events::instance().take(handle);
    if (event == nullptr)
        return 0;
    if (event->isService()) {
        event->service.unlinkName();
        event->closed = true;
        shutdown(event->service.fd.get(), SHUT_RDWR); // wakes who waits
    }
    return 1;
}

} // namespace

extern "C" uint64_t rkOSOpenEvent(uint32_t, int, const char *name)
{
    return guarded(RKOS_INVALID_HANDLE, [&] { return openEvent(name); });
}

extern "C" uint64_t rkOSCreateEvent(const char *name)
{
    return guarded(RKOS_INVALID_HANDLE, [&] { return createEvent(name); });
}

extern "C" int rkOSSetEvent(uint64_t handle)
{
    return guarded(0, [&] {
        const auto event = Events::instance().find(handle);
        return event != nullptr ? setEvent(*event) : 0;
    });
}

extern "C" int rkOSWaitEvent(uint64_t handle, uint32_t milliseconds)
{
    return guarded(kFailed, [&] {
        const auto event = Events::instance().find(handle);
        return event != nullptr && event->isService() ? waitEvent(*event, milliseconds) : kFailed;
    });
}

extern "C" int rkOSCloseEvent(uint64_t handle)
{
    return guarded(0, [&] { return closeEvent(handle); });
}
