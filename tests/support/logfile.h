// SPDX-License-Identifier: MIT
//
// The log of this process, read back. Call startLog once before the first line.
#ifndef CORVEL_TEST_LOGFILE_H
#define CORVEL_TEST_LOGFILE_H

#include "rkos.h"

#include <QByteArray>
#include <QFile>
#include <QString>

namespace LogTest {

inline QString logPath()
{
    return QString::fromLocal8Bit(qgetenv("XDG_STATE_HOME")) + QStringLiteral("/corvel/corvel.log");
}

// Lines go to the file from now on; the folder is the test's own.
inline void startLog()
{
    ErrLogSetFileName("corvel");
    QFile::remove(logPath());
}

inline QByteArray logText()
{
    QFile file(logPath());
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

} // namespace LogTest

#endif
