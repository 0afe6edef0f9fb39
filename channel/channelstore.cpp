// SPDX-License-Identifier: MIT
#include "channel/channelstore.h"

#include "rkcfg.h"
#include "rkos.h"

#include <cstring>

namespace {

constexpr int kPathSize = 128;
constexpr int kTextSize = 4096;

// A key path as the store wants it: at most 127 bytes and a terminating zero.
struct KeyPath {
    explicit KeyPath(int channel)
    {
        const QByteArray path = channelIpKeyName(channel).toLatin1();
        qstrncpy(bytes, path.constData(), kPathSize);
    }
    char bytes[kPathSize];
};

} // namespace

// Not the macro of rkcfg.h: a site's own library need not have it.
void *defaultStore()
{
    return reinterpret_cast<void *>(static_cast<intptr_t>(-1));
}

QString channelIpKeyName(int channel)
{
    return QStringLiteral("KWX\\Internal%1\\IpConfig").arg(channel);
}

QString cfgValue(const char *name, bool isString, int channel, bool isPort)
{
    if (channel < 0)
        return isString ? QString() : QStringLiteral("0");
    const KeyPath path(channel);
    if (isString) {
        char text[kTextSize] = {};
        quint32 size = kTextSize;
        rkCFGValueString(defaultStore(), path.bytes, name, text, &size, 0);
        text[kTextSize - 1] = 0;
        return QString::fromLatin1(text);
    }
    quint32 number = 0;
    rkCFGValueDword(defaultStore(), path.bytes, name, &number, 0);
    if (isPort)
        windowsSetUdpPortFilter(number, true);
    return QString::number(number);
}

void setCfgValue(const char *name, const QString &value, bool isString, int channel)
{
    if (channel < 0)
        return;
    const KeyPath path(channel);
    if (isString) {
        QByteArray text = value.toUtf8();
        quint32 size = static_cast<quint32>(text.size()) + 1;
        rkCFGValueString(defaultStore(), path.bytes, name, text.data(), &size, 1);
    } else {
        quint32 number = toDword(value);
        rkCFGValueDword(defaultStore(), path.bytes, name, &number, 1);
    }
}

quint32 globalDword(const char *path, const char *name, quint32 fallback)
{
    quint32 number = fallback;
    rkCFGValueDword(defaultStore(), path, name, &number, 0);
    return number;
}

bool setGlobalDword(const char *path, const char *name, quint32 value)
{
    return rkCFGValueDword(defaultStore(), path, name, &value, 1) != 0;
}

bool isTextEmpty(const QString &path, const char *name)
{
    quint32 size = 0;
    const int absent = rkCFGValueString(defaultStore(), path.toLatin1().constData(), name, nullptr, &size, 0);
    return absent != 0 || size <= 1;
}

bool commitStore()
{
    return rkCFGSave(defaultStore(), nullptr, 0) == 0;
}

int channelCount()
{
    // A count above the limit is a damaged store; a list that long would only stop the program. With the
    // sign bit set it is no count at all.
    const quint32 stored = globalDword(StorePath::Config, MachineValue::ChannelCount, 4);
    if (stored <= kMaxChannels)
        return static_cast<int>(stored);
    const int offered = static_cast<qint32>(stored) < 0 ? 0 : kMaxChannels;
    ErrOut("MaxIntChannels %u is not a number of channels; %d are offered", stored, offered);
    return offered;
}

quint32 toDword(const QString &text)
{
    bool ok = false;
    const quint64 number = text.trimmed().toULongLong(&ok, 10);
    return ok ? static_cast<quint32>(number) : 0;
}

int windowsSetUdpPortFilter(quint32 port, bool enable)
{
    Q_UNUSED(port)
    Q_UNUSED(enable)
    return 0;
}
