// SPDX-License-Identifier: MIT
#include "fake/recorder.h"
#include "fake/real.h"
#include "rkcfg.h"
#include "rkos.h"
#include "rkptp.h"

#include <QCursor>
#include <QFileInfo>
#include <QGuiApplication>

#include <algorithm>
#include <cstdarg>
#include <cstdio>

namespace {

constexpr int kLineBytes = 8192;

struct Notes {
    QByteArrayList calls;
    QByteArrayList reads;
    QByteArrayList fileCalls;
    QByteArray openedEvent;
    int channel = -1;
    int pending = 0;
    int saves = 0;
};

Notes notes;

// The channel of a path, -1 for any other path.
int channelOf(const char *path)
{
    int number = -1;
    return sscanf(path, "KWX\\Internal%d\\IpConfig", &number) == 1 ? number : -1;
}

void noteRead(const char *path, const QByteArray &name)
{
    notes.reads.append((channelOf(path) >= 0 ? QByteArray() : QByteArray(path) + '\\') + name);
}

void noteWrite(const char *path, const char *name, const QByteArray &value)
{
    const int channel = channelOf(path);
    if (channel >= 0)
        notes.channel = channel;
    notes.calls.append((channel >= 0 ? QByteArray() : QByteArray(path) + '\\') + name + '=' + value);
    ++notes.pending;
}

void noteCommit()
{
    notes.pending = 0;
    ++notes.saves;
}

void noteFileCall(const QByteArray &call)
{
    const bool hasWindows = qobject_cast<QGuiApplication *>(QCoreApplication::instance());
    const QCursor *cursor = hasWindows ? QGuiApplication::overrideCursor() : nullptr;
    notes.fileCalls.append(cursor && cursor->shape() == Qt::WaitCursor ? '*' + call : call);
}

} // namespace

void Recorder::clear()
{
    notes = Notes();
}

QByteArrayList Recorder::calls()
{
    return notes.calls;
}

QByteArrayList Recorder::callsOf(const QByteArray &start)
{
    QByteArrayList found;
    for (const QByteArray &call : qAsConst(notes.calls)) {
        if (call.startsWith(start))
            found.append(call);
    }
    return found;
}

QByteArrayList Recorder::reads()
{
    return notes.reads;
}

int Recorder::lastChannel()
{
    return notes.channel;
}

int Recorder::pending()
{
    return notes.pending;
}

int Recorder::saves()
{
    return notes.saves;
}

QByteArrayList Recorder::fileCalls()
{
    return notes.fileCalls;
}

QByteArray Recorder::openedEvent()
{
    return notes.openedEvent;
}

extern "C" {

// ------------------------------------------------------------------------------------------- the store

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
    if (write) {
        noteWrite(keyPath, valueName, QByteArray::number(*value));
        noteFileCall(QByteArray(keyPath) + '\\' + valueName + '=' + QByteArray::number(*value));
    } else {
        noteRead(keyPath, valueName);
    }
    return real(rkCFGValueDword, "rkCFGValueDword")(handle, keyPath, valueName, value, write);
}

int rkCFGSave(void *handle, const char *name, int flags)
{
    notes.calls.append(handle == RKCFG_DEFAULT_STORE && !name && flags == 0 ? "save"
                                                                            : "save of something else");
    noteFileCall("save");
    noteCommit();
    return real(rkCFGSave, "rkCFGSave")(handle, name, flags);
}

int rkCFGClose(void *handle, int save)
{
    notes.calls.append("close " + QByteArray::number(save));
    if (save)
        noteCommit();
    return real(rkCFGClose, "rkCFGClose")(handle, save);
}

int rkCFGSetDefaultName(const char *name)
{
    notes.calls.append(QByteArray("name ").append(name));
    return real(rkCFGSetDefaultName, "rkCFGSetDefaultName")(name);
}

// --------------------------------------------------------------------------------- the log and the files

void ErrOut(const char *format, ...)
{
    char line[kLineBytes];
    va_list arguments;
    va_start(arguments, format);
    vsnprintf(line, sizeof line, format, arguments);
    va_end(arguments);
    notes.calls.append(QByteArray("log ").append(line));
    real(ErrOut, "ErrOut")("%s", line);
}

uint64_t rkOSCreateFile(const char *path, uint32_t access, uint32_t share, void *security,
                        uint32_t disposition, uint32_t attributes, void *templ)
{
    const QByteArray name = QFileInfo(QString::fromUtf8(path)).fileName().toUtf8();
    noteFileCall("create " + name + ' ' + QByteArray::number(access, 16) + ' ' + QByteArray::number(share) +
                 ' ' + QByteArray::number(disposition) + ' ' + QByteArray::number(attributes) +
                 (security || templ ? " and more" : ""));
    return real(rkOSCreateFile, "rkOSCreateFile")(path, access, share, security, disposition, attributes,
                                                  templ);
}

int rkOSCloseFile(uint64_t file)
{
    noteFileCall(file == RKOS_INVALID_HANDLE ? "close nothing" : "close");
    return real(rkOSCloseFile, "rkOSCloseFile")(file);
}

int rkOSfputs(const char *text, uint64_t file)
{
    noteFileCall(QByteArray("put ") + QByteArray(text).left(8).replace('\n', '|'));
    return real(rkOSfputs, "rkOSfputs")(text, file);
}

char *rkOSfgets(char *buffer, int size, uint64_t file)
{
    const bool zeroed = std::all_of(buffer, buffer + size, [](char c) { return c == 0; });
    noteFileCall((zeroed ? "get " : "get into what was there ") + QByteArray::number(size));
    return real(rkOSfgets, "rkOSfgets")(buffer, size, file);
}

int rkOSMakeDir(const char *path, int mode)
{
    noteFileCall("makedir " + QByteArray::number(mode));
    return real(rkOSMakeDir, "rkOSMakeDir")(path, mode);
}

uint64_t rkOSGetMicro(void)
{
    noteFileCall("micro");
    return real(rkOSGetMicro, "rkOSGetMicro")();
}

uint64_t rkOSOpenEvent(uint32_t access, int inherit, const char *name)
{
    notes.openedEvent = QByteArray::number(access, 16) + ' ' + QByteArray::number(inherit) + ' ' + name;
    return real(rkOSOpenEvent, "rkOSOpenEvent")(access, inherit, name);
}

// -------------------------------------------------------------------------------------- the PTP client

PTP_HANDLE rkPTPStart(const char *interfaceAddress)
{
    notes.calls.append(QByteArray("ptp start ").append(interfaceAddress));
    return nullptr;
}

void rkPTPEnd(PTP_HANDLE)
{
    notes.calls.append("ptp end");
}

int rkPTPSetTargetDomain(PTP_HANDLE, uint32_t domain)
{
    notes.calls.append("ptp domain " + QByteArray::number(domain));
    return 0;
}

int rkPTPSetTargetMacAddress(PTP_HANDLE, const char *identity)
{
    notes.calls.append(QByteArray("ptp target ").append(identity));
    return 0;
}

int rkPTPGetGrandmasterID(PTP_HANDLE handle, char *text)
{
    noteFileCall("grandmaster");
    return real(rkPTPGetGrandmasterID, "rkPTPGetGrandmasterID")(handle, text);
}

} // extern "C"
