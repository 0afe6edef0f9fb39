// SPDX-License-Identifier: MIT
#include "guard.h"
#include "logfile.h"
#include "logtext.h"
#include "rkos.h"

#include <atomic>
#include <cstdarg>
#include <cstdio>
#include <cstring>
#include <mutex>
#include <pthread.h>

using namespace rkos;

namespace {

// Longer than a message may be, so that a cut is noticed.
constexpr size_t kFormatBytes = kMaxMessageBytes + 512;
constexpr size_t kMaxNameBytes = 100;

struct Log {
    std::mutex mutex;
    LogFile file;
};

// Lines that found no place; told of when there is place again.
std::atomic<unsigned long> lostLines{0};

// A line that is written while this thread writes one (from a signal handler, say) is only counted.
thread_local bool writing = false;

// Never destroyed: other threads may log while the process ends.
Log &theLog()
{
    static Log *const log = [] {
        static Log *made = new Log;
        pthread_atfork([] { made->mutex.lock(); }, [] { made->mutex.unlock(); },
                       [] { made->mutex.unlock(); });
        return made;
    }();
    return *log;
}

class WritingMark {
public:
    WritingMark() { writing = true; }
    WritingMark(const WritingMark &) = delete;
    WritingMark &operator=(const WritingMark &) = delete;
    ~WritingMark() { writing = false; }
};

bool put(Log &log, std::string_view text)
{
    const std::string line = logLine(text);
    return log.file.append(line) || writeToStandardError(line);
}

int writeText(const std::string &text)
{
    Log &log = theLog();
    const std::lock_guard<std::mutex> lock(log.mutex);
    const unsigned long lost = lostLines.load();
    if (lost > 0 && put(log, std::to_string(lost) + " log lines were lost here"))
        lostLines -= lost;
    if (!put(log, text))
        ++lostLines;
    return 0;
}

bool isUsableName(const char *name)
{
    const size_t length = strlen(name);
    return length <= kMaxNameBytes && name[0] != '.' && strchr(name, '/') == nullptr && logText(name) == name;
}

int setFileName(const char *name)
{
    const bool none = name == nullptr || name[0] == '\0';
    if (!none && !isUsableName(name))
        return writeText(logText(std::string("rkos: no name for a log file: ") + name));
    Log &log = theLog();
    const std::lock_guard<std::mutex> lock(log.mutex);
    log.file.setName(none ? "" : name);
    return 0;
}

} // namespace

extern "C" void ErrLogSetFileName(const char *name)
{
    const ErrnoKeeper keep;
    if (writing)
        return;
    const WritingMark mark;
    guarded(0, [&] { return setFileName(name); });
}

extern "C" void ErrOut(const char *format, ...)
{
    const ErrnoKeeper keep;
    if (format == nullptr)
        return;
    if (writing) {
        ++lostLines;
        return;
    }
    const WritingMark mark;
    char message[kFormatBytes];
    va_list arguments;
    va_start(arguments, format);
    const int length = vsnprintf(message, sizeof message, format, arguments);
    va_end(arguments);
    guarded(0, [&] {
        // A format that cannot be carried out (a wide character there is no text for) is logged as it stands.
        const std::string text = logText(length < 0 ? format : message);
        return text.empty() ? 0 : writeText(text);
    });
}
