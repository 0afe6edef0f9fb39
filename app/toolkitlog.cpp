// SPDX-License-Identifier: MIT
#include "app/toolkitlog.h"

#include "rkos.h"

#include <QByteArray>
#include <QString>
#include <QtGlobal>

#include <atomic>
#include <csignal>
#include <cstdio>

namespace {

std::atomic<bool> started{false};

const char *kindOf(QtMsgType type)
{
    switch (type) {
    case QtDebugMsg:
        return "debug";
    case QtInfoMsg:
        return "info";
    case QtWarningMsg:
        return "warning";
    case QtCriticalMsg:
        return "error";
    case QtFatalMsg:
        return "fatal";
    }
    return "message";
}

void logMessage(QtMsgType type, const QMessageLogContext &, const QString &message)
{
    const QByteArray text = message.toUtf8();
    ErrOut("toolkit %s: %s", kindOf(type), text.constData());
    if (!started || type == QtFatalMsg)
        fprintf(stderr, "corvel: %s\n", text.constData());
}

} // namespace

void logToolkitMessages()
{
    signal(SIGPIPE, SIG_IGN);
    qInstallMessageHandler(logMessage);
}

void toolkitStarted()
{
    started = true;
}
