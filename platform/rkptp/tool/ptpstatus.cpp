// SPDX-License-Identifier: MIT
// ptpstatus - says in words what the PTP client of the dialog sees.
#include "words.h"

#include <arpa/inet.h>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <ifaddrs.h>
#include <net/if.h>
#include <netinet/in.h>

#include <getopt.h>
#include <unistd.h>

using namespace ptpstatus;

namespace {

enum ExitCode { exitLocked = 0, exitNotLocked = 1, exitUsage = 2, exitNoClient = 3 };

constexpr int kTickMs = 100;
constexpr int kListenMs = 5000; // twice the usual time between announces, and a little more

constexpr const char *kUsage =
    "Usage: ptpstatus [-awJ] [-i INTERFACE] [-d DOMAIN] [-g GRANDMASTER] [-t SECONDS]\n"
    "\n"
    "  -a, --all              list the masters of all domains, also when locked\n"
    "  -w, --watch            go on until interrupted\n"
    "  -J, --json             one JSON object per line\n"
    "  -i, --interface NAME   name or IPv4 address of the interface (default: all)\n"
    "  -d, --domain N         PTP domain, 0 to 127 (default 0)\n"
    "  -g, --grandmaster ID   the grandmaster that is wanted (default: any)\n"
    "  -t, --timeout SECONDS  how long to wait for a master (default 8)\n"
    "  -h, --help             print this text\n"
    "  -V, --version          print the version\n"
    "\n"
    "Exit status: 0 locked, 1 not locked, 2 wrong usage, 3 no client can run.\n";

struct Options {
    std::string interface = "0.0.0.0";
    unsigned domain = 0;
    std::string grandmaster;
    int seconds = 8;
    bool all = false;
    bool watch = false;
    bool json = false;
};

int complain(int code, const std::string &text)
{
    fprintf(stderr, "ptpstatus: %s\n", text.c_str());
    return code;
}

void sleepTick()
{
    const timespec tick{0, kTickMs * 1000000L};
    nanosleep(&tick, nullptr);
}

bool hasMaster(int status)
{
    return status == RKPTP_LOCKED || status == RKPTP_OTHER_GRANDMASTER;
}

// Prints and tells how it went; whatever is not "locked" has its reason on standard error.
int tell(PTP_HANDLE handle, const Options &options)
{
    const View view = look(handle);
    const std::vector<RKPTP_MASTER> masters = mastersOf(handle);
    if (options.json) {
        puts(asJson(view, masters).c_str());
    } else {
        puts(inWords(view, options.grandmaster).c_str());
        for (const RKPTP_MASTER &master : masters)
            if (options.all || !hasMaster(view.status))
                puts(inWords(master).c_str());
    }
    if (fflush(stdout) != 0)
        return complain(exitNotLocked, "cannot write to standard output");
    if (view.status == RKPTP_LOCKED)
        return exitLocked;
    // Why there is no client the library has told on standard error already.
    return view.status == RKPTP_NO_CLIENT ? exitNoClient : complain(exitNotLocked, view.reason);
}

int once(PTP_HANDLE handle, const Options &options)
{
    int status = rkPTPGetStatus(handle, 0);
    int ms = 0;
    for (; ms < options.seconds * 1000 && !hasMaster(status) && status != RKPTP_NO_CLIENT; ms += kTickMs) {
        sleepTick();
        status = rkPTPGetStatus(handle, 0);
    }
    for (; options.all && ms < kListenMs && status != RKPTP_NO_CLIENT; ms += kTickMs)
        sleepTick();
    return tell(handle, options);
}

std::string watchLine(PTP_HANDLE handle, const Options &options)
{
    const View view = look(handle);
    if (options.json)
        return asJson(view, mastersOf(handle));
    const std::string words = inWords(view, options.grandmaster);
    return hasMaster(view.status) || view.status == RKPTP_NO_CLIENT ? words : words + ": " + view.reason;
}

[[noreturn]] void watch(PTP_HANDLE handle, const Options &options)
{
    constexpr int kLinesEvery = 10; // ticks; on a terminal the line is written over more often
    const bool terminal = isatty(STDOUT_FILENO) != 0 && !options.json;
    int last = RKPTP_NO_CLIENT - 1;
    for (int tick = 0;; ++tick) {
        const int status = rkPTPGetStatus(handle, 0);
        const bool due = terminal ? tick % (kLinesEvery / 5) == 0 : tick % kLinesEvery == 0;
        if (due || status != last) {
            printf(terminal ? "\r\033[K%s" : "%s\n", watchLine(handle, options).c_str());
            // Nobody reads any more: end, as a filter does.
            if (fflush(stdout) != 0)
                exit(exitNotLocked);
        }
        last = status;
        sleepTick();
    }
}

// ---- command line ----------------------------------------------------------------------------------

// The first IPv4 address of an interface with this name; empty when it has none.
std::string addressOfInterface(const std::string &name)
{
    ifaddrs *list = nullptr;
    std::string found;
    if (getifaddrs(&list) != 0)
        return found;
    for (const ifaddrs *entry = list; entry && found.empty(); entry = entry->ifa_next) {
        if (!entry->ifa_addr || entry->ifa_addr->sa_family != AF_INET || name != entry->ifa_name)
            continue;
        char text[INET_ADDRSTRLEN];
        const void *address = entry->ifa_addr;
        if (inet_ntop(AF_INET, &static_cast<const sockaddr_in *>(address)->sin_addr, text, sizeof text))
            found = text;
    }
    freeifaddrs(list);
    return found;
}

// An address stays as it is. 0, or the code to end with.
int resolveInterface(std::string &interface)
{
    in_addr address{};
    if (inet_pton(AF_INET, interface.c_str(), &address) == 1)
        return 0;
    if (if_nametoindex(interface.c_str()) == 0)
        return complain(exitUsage, "neither an IPv4 address nor a network interface: " + interface);
    const std::string found = addressOfInterface(interface);
    if (found.empty())
        return complain(exitNoClient, interface + " has no IPv4 address");
    interface = found;
    return 0;
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

const option kLongOptions[] = {
    {"all", no_argument, nullptr, 'a'},           {"watch", no_argument, nullptr, 'w'},
    {"json", no_argument, nullptr, 'J'},          {"interface", required_argument, nullptr, 'i'},
    {"domain", required_argument, nullptr, 'd'},  {"grandmaster", required_argument, nullptr, 'g'},
    {"timeout", required_argument, nullptr, 't'}, {"help", no_argument, nullptr, 'h'},
    {"version", no_argument, nullptr, 'V'},       {nullptr, 0, nullptr, 0},
};

[[noreturn]] void printAndEnd(const char *text)
{
    exit(fputs(text, stdout) >= 0 && fflush(stdout) == 0 ? 0 : exitNotLocked);
}

bool takeOption(int option, Options &options)
{
    unsigned seconds = 0;
    switch (option) {
    case 'a':
        return options.all = true;
    case 'w':
        return options.watch = true;
    case 'J':
        return options.json = true;
    case 'i':
        options.interface = optarg;
        return true;
    case 'g':
        options.grandmaster = optarg;
        return true;
    case 'd':
        return readNumber(optarg, RKPTP_HIGHEST_DOMAIN, options.domain);
    case 't':
        if (!readNumber(optarg, 3600, seconds))
            return false;
        options.seconds = static_cast<int>(seconds);
        return true;
    case 'h':
        printAndEnd(kUsage);
    case 'V':
        printAndEnd("ptpstatus " PTPSTATUS_VERSION "\n");
    }
    return false;
}

bool readOptions(int argc, char **argv, Options &options)
{
    for (int found = 0; (found = getopt_long(argc, argv, "awJi:d:g:t:hV", kLongOptions, nullptr)) != -1;)
        if (!takeOption(found, options))
            return false;
    return optind == argc;
}

} // namespace

int main(int argc, char **argv)
{
    Options options;
    if (!readOptions(argc, argv, options)) {
        fputs("ptpstatus: wrong options\nTry 'ptpstatus --help'.\n", stderr);
        return exitUsage;
    }
    if (const int code = resolveInterface(options.interface))
        return code;
    PTP_HANDLE handle = rkPTPStart(options.interface.c_str());
    rkPTPSetTargetDomain(handle, options.domain);
    if (rkPTPSetTargetMacAddress(handle, options.grandmaster.c_str()) == RKPTP_BAD_ARGUMENT)
        return complain(exitUsage, "not a clock identity: " + options.grandmaster);
    if (options.watch)
        watch(handle, options);
    mastersOf(handle); // makes the client listen
    const int result = once(handle, options);
    rkPTPEnd(handle);
    return result;
}
