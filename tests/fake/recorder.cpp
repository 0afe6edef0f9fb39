// SPDX-License-Identifier: MIT
#include "fake/recorder.h"
#include "rkcfg.h"
#include "rkos.h"
#include "rkptp.h"

#include <cstdarg>
#include <cstdio>
#include <dlfcn.h>

namespace {

constexpr int kLineBytes = 8192;

QByteArrayList allCalls;
QByteArrayList allReads;
int channel = -1;

// The real function of this name, from the library behind this program.
template<class Function>
Function *real(Function *, const char *name)
{
    return reinterpret_cast<Function *>(dlsym(RTLD_NEXT, name));
}

void noteRead(const QByteArray &path, const QByteArray &name)
{
    int number = -1;
    const bool ofChannel = sscanf(path.constData(), "KWX\\Internal%d\\IpConfig", &number) == 1;
    allReads.append((ofChannel ? QByteArray() : path + '\\') + name);
}

void noteWrite(const QByteArray &path, const char *name, const QByteArray &value)
{
    int number = -1;
    QByteArray where = path + '\\';
    if (sscanf(path.constData(), "KWX\\Internal%d\\IpConfig", &number) == 1) {
        channel = number;
        where.clear();
    }
    allCalls.append(where + name + '=' + value);
}

} // namespace

QByteArrayList Recorder::reads()
{
    return allReads;
}

QByteArrayList Recorder::calls()
{
    return allCalls;
}

void Recorder::clear()
{
    allCalls.clear();
    allReads.clear();
    channel = -1;
}

QByteArrayList Recorder::callsOf(const QByteArray &start)
{
    QByteArrayList found;
    for (const QByteArray &call : qAsConst(allCalls)) {
        if (call.startsWith(start))
            found.append(call);
    }
    return found;
}

int Recorder::lastChannel()
{
    return channel;
}

extern "C" {

int rkCFGValueString(void *handle, const char *keyPath, const char *valueName, char *buffer, uint32_t *size,
                     int write)
{
    if (write)
        noteWrite(keyPath, valueName, QByteArray(buffer, static_cast<int>(*size) - 1));
    else
        noteRead(keyPath, buffer ? valueName : QByteArray(valueName) + " size");
    return real(rkCFGValueString, "rkCFGValueString")(handle, keyPath, valueName, buffer, size, write);
}

int rkCFGValueDword(void *handle, const char *keyPath, const char *valueName, uint32_t *value, int write)
{
    if (write)
        noteWrite(keyPath, valueName, QByteArray::number(*value));
    else
        noteRead(keyPath, valueName);
    return real(rkCFGValueDword, "rkCFGValueDword")(handle, keyPath, valueName, value, write);
}

int rkCFGSave(void *handle, const char *name, int flags)
{
    allCalls.append(handle == RKCFG_DEFAULT_STORE && !name && flags == 0 ? "save" : "save of something else");
    return real(rkCFGSave, "rkCFGSave")(handle, name, flags);
}

int rkCFGClose(void *handle, int save)
{
    allCalls.append("close " + QByteArray::number(save));
    return real(rkCFGClose, "rkCFGClose")(handle, save);
}

int rkCFGSetDefaultName(const char *name)
{
    allCalls.append(QByteArray("name ").append(name));
    return real(rkCFGSetDefaultName, "rkCFGSetDefaultName")(name);
}

void ErrOut(const char *format, ...)
{
    char line[kLineBytes];
    va_list arguments;
    va_start(arguments, format);
    vsnprintf(line, sizeof line, format, arguments);
    va_end(arguments);
    allCalls.append(QByteArray("log ").append(line));
    real(ErrOut, "ErrOut")("%s", line);
}

PTP_HANDLE rkPTPStart(const char *interfaceAddress)
{
    allCalls.append(QByteArray("ptp start ").append(interfaceAddress));
    return nullptr;
}

void rkPTPEnd(PTP_HANDLE)
{
    allCalls.append("ptp end");
}

int rkPTPSetTargetDomain(PTP_HANDLE, uint32_t domain)
{
    allCalls.append("ptp domain " + QByteArray::number(domain));
    return 0;
}

int rkPTPSetTargetMacAddress(PTP_HANDLE, const char *identity)
{
    allCalls.append(QByteArray("ptp target ").append(identity));
    return 0;
}

} // extern "C"
