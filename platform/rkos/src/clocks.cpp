// SPDX-License-Identifier: MIT
//
// The microsecond counter, the hardware time and date and time texts.
#include "ethtool.h"
#include "guard.h"
#include "rkos.h"
#include "routes.h"

#include <atomic>
#include <cstring>
#include <ctime>
#include <fcntl.h>
#include <fstream>
#include <limits>
#include <mutex>
#include <string>

using namespace rkos;

namespace {

constexpr uint64_t kNanosPerSecond = 1000000000;
constexpr uint64_t kNanosPerMicro = 1000;
constexpr uint64_t kSecondsPerDay = 86400;
constexpr size_t kTextSize = 64;

uint64_t nanosOf(const timespec &time)
{
    return static_cast<uint64_t>(time.tv_sec) * kNanosPerSecond + static_cast<uint64_t>(time.tv_nsec);
}

uint64_t nanosOf(clockid_t clock)
{
    timespec now{};
    return clock_gettime(clock, &now) == 0 ? nanosOf(now) : 0;
}

// ---- hardware clock ------------------------------------------------------------------------------

// The number of the hardware clock behind a network interface; negative when it has none.
int hardwareClockOf(const std::string &interface)
{
    const auto info = rk::timestampingOf(interface);
    return info ? info->phc_index : -1;
}

// The kernel's clock id of an open clock device.
clockid_t clockOfDevice(int fd)
{
    constexpr unsigned kDeviceClock = 3;
    return static_cast<clockid_t>((~static_cast<unsigned>(fd) << 3) | kDeviceClock);
}

// Opens a clock device that can be read, for the rest of the process; CLOCK_TAI when it cannot.
clockid_t openHardwareClock(int number)
{
    if (number < 0)
        return CLOCK_TAI;
    const std::string path = "/dev/ptp" + std::to_string(number);
    Descriptor fd =
        aboveStandardStreams(Descriptor(open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY)));
    timespec now{};
    if (!fd.valid() || clock_gettime(clockOfDevice(fd.get()), &now) != 0)
        return CLOCK_TAI;
    return clockOfDevice(fd.release());
}

clockid_t chooseClock()
{
    std::ifstream table("/proc/net/route");
    const clockid_t routed = openHardwareClock(hardwareClockOf(defaultRouteInterface(table)));
    return routed != CLOCK_TAI ? routed : openHardwareClock(0);
}

// ---- texts ---------------------------------------------------------------------------------------

struct CivilDate {
    uint64_t year;
    unsigned month;
    unsigned day;
};

// Days since 1970-01-01 to the Gregorian date. Counted from 1 March of year 0, so that the leap day
// is the last of its year; 400 years repeat. Good for every 64-bit number of seconds.
CivilDate dateOf(uint64_t days)
{
    constexpr uint64_t kDaysTo1970 = 719468;
    constexpr uint64_t kDaysIn400Years = 146097;
    const uint64_t shifted = days + kDaysTo1970;
    const uint64_t era = shifted / kDaysIn400Years;
    const auto dayOfEra = static_cast<unsigned>(shifted % kDaysIn400Years);
    const unsigned yearOfEra = (dayOfEra - dayOfEra / 1460 + dayOfEra / 36524 - dayOfEra / 146096) / 365;
    const unsigned dayOfYear = dayOfEra - (365 * yearOfEra + yearOfEra / 4 - yearOfEra / 100);
    const unsigned fromMarch = (5 * dayOfYear + 2) / 153;
    const unsigned day = dayOfYear - (153 * fromMarch + 2) / 5 + 1;
    const unsigned month = fromMarch < 10 ? fromMarch + 3 : fromMarch - 9;
    return {era * 400 + yearOfEra + (month <= 2 ? 1 : 0), month, day};
}

// Appends a number with leading zeros; returns the place behind it.
char *putNumber(char *to, uint64_t number, unsigned digits)
{
    char reversed[20];
    unsigned count = 0;
    for (; number != 0 || count < digits; number /= 10)
        reversed[count++] = static_cast<char>('0' + number % 10);
    while (count > 0)
        *to++ = reversed[--count];
    return to;
}

void putDate(char *to, uint64_t seconds)
{
    const CivilDate date = dateOf(seconds / kSecondsPerDay);
    to = putNumber(to, date.year, 4);
    *to++ = '-';
    to = putNumber(to, date.month, 2);
    *to++ = '-';
    to = putNumber(to, date.day, 2);
    *to = '\0';
}

void putTime(char *to, uint64_t seconds, uint32_t nanoseconds, uint32_t flags)
{
    const uint64_t ofDay = seconds % kSecondsPerDay;
    to = putNumber(to, ofDay / 3600, 2);
    *to++ = ':';
    to = putNumber(to, ofDay / 60 % 60, 2);
    *to++ = ':';
    to = putNumber(to, ofDay % 60, 2);
    if ((flags & (RKOS_TIME_NANO | RKOS_TIME_MILLI)) != 0)
        *to++ = '.';
    if ((flags & RKOS_TIME_NANO) != 0)
        to = putNumber(to, nanoseconds, 9);
    else if ((flags & RKOS_TIME_MILLI) != 0)
        to = putNumber(to, nanoseconds / 1000000, 3);
    *to = '\0';
}

static_assert(sizeof "584554051223-11-09" <= kTextSize, "the latest date fits a caller's buffer");

} // namespace

extern "C" uint64_t rkOSGetMicro(void)
{
    // Wall clock at the first call, boot clock from there on: a step of the wall clock neither
    // repeats a number nor makes a hole.
    static const uint64_t start = nanosOf(CLOCK_REALTIME) - nanosOf(CLOCK_BOOTTIME);
    static std::atomic<uint64_t> last{0};
    uint64_t now = (start + nanosOf(CLOCK_BOOTTIME)) / kNanosPerMicro;
    uint64_t before = last.load();
    do {
        if (now <= before)
            now = before + 1;
    } while (!last.compare_exchange_weak(before, now));
    return now;
}

extern "C" uint64_t rkOSGetTimePTPNano(void)
{
    return guarded(uint64_t{0}, [] {
        static const clockid_t clock = chooseClock();
        timespec now{};
        if (clock_gettime(clock, &now) == 0)
            return nanosOf(now);
        // The device is gone. CLOCK_TAI equals the wall clock as long as nobody told the kernel the
        // TAI offset, so there is no third case.
        return nanosOf(CLOCK_TAI);
    });
}

extern "C" int rkOSGetEpochDateTimeString(uint64_t seconds, char *date, char *time, uint32_t nanoseconds,
                                          uint32_t flags)
{
    const uint64_t carry = nanoseconds / kNanosPerSecond;
    const uint64_t room = std::numeric_limits<uint64_t>::max() - seconds;
    seconds += carry < room ? carry : room;
    if (date != nullptr)
        putDate(date, seconds);
    if (time != nullptr)
        putTime(time, seconds, nanoseconds % kNanosPerSecond, flags);
    return date != nullptr || time != nullptr ? 1 : 0;
}

extern "C" int rkOSGetDateTimeString(char *date, char *time, uint32_t flags)
{
    timespec now{};
    clock_gettime(CLOCK_REALTIME, &now);
    return rkOSGetEpochDateTimeString(static_cast<uint64_t>(now.tv_sec), date, time,
                                      static_cast<uint32_t>(now.tv_nsec), flags);
}
