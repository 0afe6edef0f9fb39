// SPDX-License-Identifier: MIT
//
// Loaded before a Qt program: when the program's first window has been painted, tells how long that took
// and, when asked to, ends the program. The time of the program's start comes in CORVEL_BENCH_START_NS
// (CLOCK_MONOTONIC); the answer goes to file descriptor 3 as nanoseconds.
#include <QBackingStore>

#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <dlfcn.h>
#include <unistd.h>

void QBackingStore::flush(const QRegion &region, QWindow *window, const QPoint &offset)
{
    using Flush = void (*)(QBackingStore *, const QRegion &, QWindow *, const QPoint &);
    static const Flush real =
        reinterpret_cast<Flush>(dlsym(RTLD_NEXT, "_ZN13QBackingStore5flushERK7QRegionP7QWindowRK6QPoint"));
    real(this, region, window, offset);
    static bool told = false;
    const char *start = getenv("CORVEL_BENCH_START_NS");
    if (told || !start)
        return;
    told = true;
    timespec now = {};
    clock_gettime(CLOCK_MONOTONIC, &now);
    dprintf(3, "%lld\n", now.tv_sec * 1000000000LL + now.tv_nsec - atoll(start));
    if (getenv("CORVEL_BENCH_END"))
        _exit(0);
}
