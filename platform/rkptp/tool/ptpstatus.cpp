// SPDX-License-Identifier: MIT
// ptpstatus - says in words what the PTP client of the dialog sees.
#include "rkptp.h"

#include <cerrno>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <string>
#include <vector>

#include <getopt.h>
#include <unistd.h>

namespace {

constexpr int exitLocked = 0;
constexpr int exitNotLocked = 1;
constexpr int exitUsage = 2;
constexpr int exitNoClient = 3;

constexpr int tickMs = 100;
constexpr int searchMs = 5000; // how long another domain is given to show a master

struct Options {
    std::string interface = "0.0.0.0";
    unsigned domain = 0;
    std::string grandmaster;
    int seconds = 8;
    bool watch = false;
};

void sleepTick()
{
    const timespec tick{0, tickMs * 1000000L};
    nanosleep(&tick, nullptr);
}

using TextGetter = int (*)(PTP_HANDLE, char *);

std::string textOf(TextGetter getter, PTP_HANDLE handle)
{
    char buffer[RKPTP_TEXT_SIZE] = "";
    getter(handle, buffer);
    return buffer;
}

PTP_HANDLE startClient(const Options &options, unsigned domain)
{
    PTP_HANDLE handle = rkPTPStart(options.interface.c_str());
    rkPTPSetTargetDomain(handle, domain);
    rkPTPSetTargetMacAddress(handle, options.grandmaster.c_str());
    return handle;
}

std::string onInterface(PTP_HANDLE handle)
{
    const std::string address = textOf(rkPTPGetIPAddress, handle);
    return address.empty() ? "on all interfaces" : "on " + address;
}

std::string masterText(PTP_HANDLE handle)
{
    int64_t offset = 0;
    uint64_t seconds = 0;
    uint32_t nanoseconds = 0;
    rkPTPGetOffset_Nano(handle, &offset);
    rkPTPGetTime_Nano(handle, &seconds, &nanoseconds);
    char date[32] = "";
    const auto whole = static_cast<time_t>(seconds);
    tm parts{};
    if (gmtime_r(&whole, &parts))
        strftime(date, sizeof date, "%Y-%m-%d %H:%M:%S", &parts);
    char text[256];
    snprintf(text, sizeof text, "%s (port %s) in domain %s %s, offset %lld ns, PTP time %s.%03u",
             textOf(rkPTPGetGrandmasterID, handle).c_str(), textOf(rkPTPGetSourcePortID, handle).c_str(),
             textOf(rkPTPGetDomain, handle).c_str(), onInterface(handle).c_str(),
             static_cast<long long>(offset), date, static_cast<unsigned>(nanoseconds / 1000000));
    return text;
}

std::string describe(PTP_HANDLE handle, const Options &options)
{
    const std::string domain = "domain " + std::to_string(options.domain);
    switch (rkPTPGetStatus(handle, 0)) {
    case RKPTP_STARTING:
        return "starting";
    case RKPTP_LISTENING:
        return "no master seen in " + domain + " " + onInterface(handle);
    case RKPTP_LOCKED:
        return "locked to " + masterText(handle);
    case RKPTP_OTHER_GRANDMASTER:
        return "another grandmaster than " + options.grandmaster + ": " + masterText(handle);
    case RKPTP_PORT_FAULTY:
        return "link down or interface gone: " + options.interface;
    case RKPTP_SYNC_LOST:
        return "sync lost in " + domain + " " + onInterface(handle) + ": no sync for more than 3 s";
    default:
        return "no client can run for " + options.interface + " in " + domain;
    }
}

// The domains in which plants keep their clocks: the defaults of IEEE 1588, ST 2059-2 and AES67 first.
std::vector<unsigned> otherDomains(unsigned domain)
{
    std::vector<unsigned> others;
    for (unsigned candidate : {0u, 127u, 1u, 2u})
        if (candidate != domain && others.size() < 3)
            others.push_back(candidate);
    return others;
}

bool hasMaster(int status)
{
    return status == RKPTP_LOCKED || status == RKPTP_OTHER_GRANDMASTER;
}

// No master in the domain asked: the usual mistake is the domain, so look for one in the others.
void lookElsewhere(const Options &options)
{
    std::vector<PTP_HANDLE> handles;
    const std::vector<unsigned> domains = otherDomains(options.domain);
    handles.reserve(domains.size());
    for (unsigned domain : domains)
        handles.push_back(startClient(options, domain));
    std::vector<bool> told(domains.size());
    for (int ms = 0; ms < searchMs; ms += tickMs) {
        sleepTick();
        for (size_t i = 0; i < handles.size(); ++i) {
            if (told[i] || !hasMaster(rkPTPGetStatus(handles[i], 0)))
                continue;
            told[i] = true;
            printf("other domain: there is a master %s\n", masterText(handles[i]).c_str());
        }
    }
    for (PTP_HANDLE handle : handles)
        rkPTPEnd(handle);
}

int once(PTP_HANDLE handle, const Options &options)
{
    int status = rkPTPGetStatus(handle, 0);
    for (int ms = 0; ms < options.seconds * 1000 && !hasMaster(status) && status != RKPTP_NO_CLIENT;
         ms += tickMs) {
        sleepTick();
        status = rkPTPGetStatus(handle, 0);
    }
    puts(describe(handle, options).c_str());
    if (status == RKPTP_LISTENING)
        lookElsewhere(options);
    if (status == RKPTP_NO_CLIENT)
        return exitNoClient;
    return status == RKPTP_LOCKED ? exitLocked : exitNotLocked;
}

[[noreturn]] void watch(PTP_HANDLE handle, const Options &options)
{
    constexpr int linesEvery = 10; // ticks, on a terminal where the line is written over
    const bool terminal = isatty(STDOUT_FILENO) != 0;
    int last = RKPTP_NO_CLIENT - 1;
    for (int tick = 0;; ++tick) {
        const int status = rkPTPGetStatus(handle, 0);
        const bool due = terminal ? tick % (linesEvery / 5) == 0 : tick % linesEvery == 0;
        if (due || status != last) {
            printf(terminal ? "\r\033[K%s" : "%s\n", describe(handle, options).c_str());
            // Nobody reads any more: end, as a filter does.
            if (fflush(stdout) != 0)
                exit(exitNotLocked);
        }
        last = status;
        sleepTick();
    }
}

bool readNumber(const char *text, unsigned max, unsigned &number)
{
    char *end = nullptr;
    errno = 0;
    const unsigned long value = strtoul(text, &end, 10);
    if (*text < '0' || *text > '9' || *end || errno != 0 || value > max)
        return false;
    number = static_cast<unsigned>(value);
    return true;
}

void printUsage(FILE *to)
{
    fputs("usage: ptpstatus [-w] [-i address] [-d domain] [-g grandmaster] [-t seconds]\n", to);
}

bool readOptions(int argc, char **argv, Options &options)
{
    unsigned seconds = 0;
    for (int option; (option = getopt(argc, argv, "wi:d:g:t:h")) != -1;) {
        if (option == 'w')
            options.watch = true;
        else if (option == 'i')
            options.interface = optarg;
        else if (option == 'g')
            options.grandmaster = optarg;
        else if (option == 'd' && readNumber(optarg, RKPTP_HIGHEST_DOMAIN, options.domain))
            continue;
        else if (option == 't' && readNumber(optarg, 3600, seconds))
            options.seconds = static_cast<int>(seconds);
        else if (option == 'h') {
            printUsage(stdout);
            exit(0);
        } else
            return false;
    }
    return optind == argc;
}

} // namespace

int main(int argc, char **argv)
{
    Options options;
    if (!readOptions(argc, argv, options)) {
        printUsage(stderr);
        return exitUsage;
    }
    PTP_HANDLE handle = rkPTPStart(options.interface.c_str());
    rkPTPSetTargetDomain(handle, options.domain);
    if (rkPTPSetTargetMacAddress(handle, options.grandmaster.c_str()) == RKPTP_BAD_ARGUMENT) {
        fprintf(stderr, "ptpstatus: not a clock identity: %s\n", options.grandmaster.c_str());
        return exitUsage;
    }
    if (options.watch)
        watch(handle, options);
    const int result = once(handle, options);
    rkPTPEnd(handle);
    return result;
}
