// SPDX-License-Identifier: MIT
//
// rkevent: waits for a named event as its service would, sets one, or lists what there is.
#include "eventsocket.h"
#include "rkos.h"

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <dirent.h>
#include <fcntl.h>
#include <getopt.h>
#include <memory>
#include <pthread.h>
#include <string>
#include <sys/stat.h>
#include <thread>
#include <vector>

namespace {

enum ExitCode { exitDone = 0, exitNo = 1, exitUsage = 2, exitFailed = 3, exitSignal = 128 };

constexpr const char *kUsage =
    "Usage: rkevent wait NAME [--timeout MS] [--count N]\n"
    "       rkevent set NAME\n"
    "       rkevent list\n"
    "\n"
    "  wait  create the event NAME, print \"waiting\", then a line each time it is set\n"
    "          -t, --timeout MS  give up when it is not set for so many milliseconds\n"
    "          -n, --count N     end after N times (default 1; 0: go on until interrupted)\n"
    "  set   set the event NAME of a service that is running\n"
    "  list  print each event with \"alive\" or \"dead\" and its directory\n"
    "\n"
    "  -h, --help     print this text\n"
    "  -V, --version  print the version\n"
    "\n"
    "Exit status: 0 done, 1 timed out or no service has the event, 2 wrong usage, 3 failed.\n";

struct Options {
    uint32_t timeoutMs = RKOS_INFINITE;
    uint32_t count = 1;
    std::vector<std::string> words;
};

int complain(const std::string &text)
{
    fprintf(stderr, "rkevent: %s\nTry 'rkevent --help'.\n", text.c_str());
    return exitUsage;
}

int say(const char *text)
{
    return fputs(text, stdout) >= 0 && fflush(stdout) == 0 ? exitDone : exitFailed;
}

bool parseNumber(const char *text, uint32_t *number)
{
    char *end = nullptr;
    errno = 0;
    const unsigned long long value = strtoull(text, &end, 10);
    if (text[0] < '0' || text[0] > '9' || *end != '\0' || errno != 0 || value >= RKOS_INFINITE)
        return false;
    *number = static_cast<uint32_t>(value);
    return true;
}

// ---- wait ------------------------------------------------------------------------------------------

std::atomic<int> endingSignal{0};

sigset_t endingSignals()
{
    sigset_t signals;
    sigemptyset(&signals);
    for (const int number : {SIGINT, SIGTERM, SIGHUP})
        sigaddset(&signals, number);
    return signals;
}

// Closing the event takes its name away and ends the wait; just dying would leave a dead name.
void closeOnSignal(uint64_t event)
{
    std::thread([event] {
        const sigset_t signals = endingSignals();
        int number = 0;
        while (sigwait(&signals, &number) != 0) {
        }
        endingSignal = number;
        rkOSCloseEvent(event);
    }).detach();
}

bool printWake(const std::string &name)
{
    char date[64];
    char time[64];
    rkOSGetDateTimeString(date, time, RKOS_TIME_FORMAT_SYSTEM);
    return printf("%s %s %s\n", date, time, name.c_str()) > 0 && fflush(stdout) == 0;
}

int waitLoop(uint64_t event, const std::string &name, const Options &options)
{
    for (uint32_t wakes = 0; options.count == 0 || wakes < options.count; ++wakes) {
        const int result = rkOSWaitEvent(event, options.timeoutMs);
        if (result == RKOS_WAIT_TIMEOUT)
            return exitNo;
        if (result != 0)
            return endingSignal != 0 ? exitSignal + endingSignal : exitFailed;
        if (!printWake(name))
            return exitFailed;
    }
    return exitDone;
}

int waitFor(const std::string &name, const Options &options)
{
    const sigset_t signals = endingSignals();
    pthread_sigmask(SIG_BLOCK, &signals, nullptr);
    const uint64_t event = rkOSCreateEvent(name.c_str());
    if (event == RKOS_INVALID_HANDLE) {
        const bool taken = rkos::connectEvent(name).valid();
        fprintf(stderr, "rkevent: cannot create the event %s: %s\n", name.c_str(),
                taken ? "a running service has it" : "no directory for it can be written to");
        return exitFailed;
    }
    closeOnSignal(event);
    printf("waiting\n");
    fflush(stdout);
    const int result = waitLoop(event, name, options);
    rkOSCloseEvent(event);
    return result;
}

// ---- set -------------------------------------------------------------------------------------------

int setOne(const std::string &name, const Options &)
{
    const uint64_t event = rkOSOpenEvent(RKOS_GENERIC_READ | RKOS_GENERIC_WRITE, 0, name.c_str());
    const bool done = event != RKOS_INVALID_HANDLE && rkOSSetEvent(event) != 0;
    rkOSCloseEvent(event);
    if (!done)
        fprintf(stderr, "rkevent: no running service has the event %s\n", name.c_str());
    return done ? exitDone : exitNo;
}

// ---- list ------------------------------------------------------------------------------------------

bool isSocket(int directory, const char *name)
{
    struct stat info {};
    return fstatat(directory, name, &info, AT_SYMLINK_NOFOLLOW) == 0 && S_ISSOCK(info.st_mode);
}

std::vector<std::string> namesIn(const rkos::EventDirectory &directory)
{
    std::vector<std::string> names;
    const std::unique_ptr<DIR, int (*)(DIR *)> entries(opendir(directory.path.c_str()), closedir);
    while (const dirent *entry = entries ? readdir(entries.get()) : nullptr) {
        if (rkos::isEventName(entry->d_name) && isSocket(directory.fd.get(), entry->d_name))
            names.emplace_back(entry->d_name);
    }
    std::sort(names.begin(), names.end());
    return names;
}

int list()
{
    for (const rkos::EventDirectory &directory : rkos::eventDirectories()) {
        for (const std::string &name : namesIn(directory)) {
            const bool alive = rkos::connectEvent(directory, name).valid();
            printf("%s\t%s\t%s\n", name.c_str(), alive ? "alive" : "dead", directory.path.c_str());
        }
    }
    return fflush(stdout) == 0 ? exitDone : exitFailed;
}

// ---- command line ----------------------------------------------------------------------------------

int run(const Options &options)
{
    if (options.words.empty())
        return complain("a command is missing");
    const std::string &command = options.words[0];
    if (command == "list")
        return options.words.size() == 1 ? list() : complain("list takes no name");
    if (command != "wait" && command != "set")
        return complain("no such command: " + command);
    if (options.words.size() != 2)
        return complain(command + " takes one name");
    const std::string &name = options.words[1];
    if (!rkos::isEventName(name.c_str()))
        return complain("no name for an event (1 to 200 bytes, no \"/\", no \".\" in front): " + name);
    return command == "wait" ? waitFor(name, options) : setOne(name, options);
}

const option kLongOptions[] = {
    {"timeout", required_argument, nullptr, 't'},
    {"count", required_argument, nullptr, 'n'},
    {"help", no_argument, nullptr, 'h'},
    {"version", no_argument, nullptr, 'V'},
    {nullptr, 0, nullptr, 0},
};

} // namespace

int main(int argc, char **argv)
{
    Options options;
    opterr = 0;
    for (int found = 0; (found = getopt_long(argc, argv, "t:n:hV", kLongOptions, nullptr)) != -1;) {
        const bool timeout = found == 't';
        if (found == 'h')
            return say(kUsage);
        if (found == 'V')
            return say("rkevent " RKEVENT_VERSION "\n");
        if (found == '?')
            return complain("wrong option");
        if (!parseNumber(optarg, timeout ? &options.timeoutMs : &options.count))
            return complain(std::string(timeout ? "--timeout" : "--count") + ": no number: " + optarg);
    }
    options.words.assign(argv + optind, argv + argc);
    return run(options);
}
