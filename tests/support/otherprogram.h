// SPDX-License-Identifier: MIT
//
// Another program on the same store: the command line tool, run to its end.
#ifndef CORVEL_TEST_OTHERPROGRAM_H
#define CORVEL_TEST_OTHERPROGRAM_H

#include "support/snapshot.h"

#include <QProcess>
#include <QtTest>

namespace OtherProgram {

inline void run(const QStringList &arguments)
{
    QProcess process;
    process.start(QStringLiteral(CORVEL_BIN_DIR "/rkcfg"), arguments);
    QVERIFY(process.waitForFinished(60000));
    QCOMPARE(process.exitCode(), 0);
}

inline void set(int channel, const char *name, const QString &text)
{
    run({QStringLiteral("set"), QStringLiteral("--"), channelIpKeyName(channel), QLatin1String(name), text});
}

inline void setNumber(const QString &path, const char *name, quint32 number)
{
    run({QStringLiteral("set-dword"), QStringLiteral("--"), path, QLatin1String(name),
         QString::number(number)});
}

inline void setNumber(int channel, const char *name, quint32 number)
{
    setNumber(channelIpKeyName(channel), name, number);
}

inline void choose(const QString &configuration)
{
    run({QStringLiteral("default"), configuration});
}

// A value of channel 0 as it is stored: a text in quotes, a number without.
inline QString stored(const char *name, int channel = 0)
{
    return StoreTest::snapshot().value(StoreTest::channelEntry(channel, name));
}

} // namespace OtherProgram

#endif
