// SPDX-License-Identifier: MIT
//
// A fresh configuration store on disk for one test case, and a look into it past the dialog.
#ifndef CORVEL_TEST_STORE_H
#define CORVEL_TEST_STORE_H

#include "channel/channelstore.h"
#include "rkcfg.h"
#include "rkos.h"

#include <QDir>
#include <QProcess>
#include <QTemporaryDir>
#include <QtTest>

// Points the library at an empty folder of its own; the folder goes with the object.
class FreshStore {
public:
    FreshStore()
    {
        close();
        qputenv("XDG_CONFIG_HOME", m_folder.path().toLocal8Bit());
    }
    ~FreshStore() { close(); }
    QString folder() const { return m_folder.path(); }

private:
    static void close() { rkCFGClose(RKCFG_DEFAULT_STORE, 0); }
    QTemporaryDir m_folder;
};

namespace StoreTest {

inline QString text(int channel, const QByteArray &name)
{
    return cfgValue(name.constData(), true, channel);
}

inline quint32 number(int channel, const QByteArray &name)
{
    return cfgValue(name.constData(), false, channel).toUInt();
}

inline void put(int channel, const QByteArray &name, const QString &value)
{
    setCfgValue(name.constData(), value, true, channel);
}

inline void put(int channel, const QByteArray &name, quint32 value)
{
    setCfgValue(name.constData(), QString::number(value), false, channel);
}

inline bool hasText(const char *path, const char *name)
{
    uint32_t size = 0;
    return rkCFGValueString(RKCFG_DEFAULT_STORE, path, name, nullptr, &size, 0) == 0;
}

inline bool hasNumber(const char *path, const char *name)
{
    uint32_t value = 0;
    return rkCFGValueDword(RKCFG_DEFAULT_STORE, path, name, &value, 0) == 0;
}

// The whole store as a second process sees it, one value a line.
inline QByteArray dump()
{
    QProcess tool;
    tool.start(QStringLiteral(CORVEL_BIN_DIR "/rkcfg"), {QStringLiteral("dump")});
    return tool.waitForFinished() && tool.exitCode() == 0 ? tool.readAllStandardOutput()
                                                          : QByteArrayLiteral("rkcfg dump failed");
}

} // namespace StoreTest

#endif
