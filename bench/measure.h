// SPDX-License-Identifier: MIT
//
// What a process has used so far, from /proc; and how a benchmark tells its figures.
#ifndef CORVEL_BENCH_MEASURE_H
#define CORVEL_BENCH_MEASURE_H

#include <QFile>
#include <QList>

#include <cstdio>
#include <sys/types.h>
#include <unistd.h>

// A line that bench/report reads.
inline void tell(const QByteArray &key, double value)
{
    printf("= %s %.6g\n", key.constData(), value);
    fflush(stdout);
}

// Processor time of all its threads, in seconds (steps of a clock tick); 0 when it is gone.
inline double cpuSeconds(pid_t pid)
{
    QFile stat(QStringLiteral("/proc/%1/stat").arg(pid));
    if (!stat.open(QIODevice::ReadOnly))
        return 0;
    const QByteArray text = stat.readAll();
    const QList<QByteArray> fields = text.mid(text.lastIndexOf(')') + 2).split(' ');
    return (fields.value(11).toDouble() + fields.value(12).toDouble()) / sysconf(_SC_CLK_TCK);
}

// Anonymous memory in KiB; 0 when it is gone.
inline double anonKiB(pid_t pid)
{
    QFile status(QStringLiteral("/proc/%1/status").arg(pid));
    if (!status.open(QIODevice::ReadOnly))
        return 0;
    for (const QByteArray &line : status.readAll().split('\n')) {
        if (line.startsWith("RssAnon:"))
            return line.mid(8).simplified().split(' ').value(0).toDouble();
    }
    return 0;
}

#endif
