// SPDX-License-Identifier: MIT
#include "ptpclient.h"

#include <cstdarg>
#include <cstdio>
#include <mutex>
#include <utility>

namespace {

std::mutex logMutex;
QByteArrayList logLines;

} // namespace

// Instead of the log of rkos: the dynamic linker finds this one first.
extern "C" __attribute__((format(printf, 1, 2), visibility("default"))) void ErrOut(const char *format, ...)
{
    char text[1000];
    va_list arguments;
    va_start(arguments, format);
    vsnprintf(text, sizeof text, format, arguments);
    va_end(arguments);
    const std::lock_guard<std::mutex> lock(logMutex);
    logLines.append(text);
}

QByteArrayList takeLog()
{
    const std::lock_guard<std::mutex> lock(logMutex);
    return std::exchange(logLines, {});
}
