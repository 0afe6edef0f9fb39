// SPDX-License-Identifier: MIT
#include "channel/channelstore.h"

#include "channel/backlog.h"
#include "rkcfg.h"
#include "rkos.h"

#include <cstring>

namespace {

constexpr int kPathSize = 128;
constexpr char kPathFormat[] = "KWX\\Internal%d\\IpConfig";
constexpr int kTextSize = 4096;

// A key path as the store wants it: at most 127 bytes and a terminating zero.
struct KeyPath {
    explicit KeyPath(int channel) { qsnprintf(bytes, kPathSize, kPathFormat, channel); }
    char bytes[kPathSize];
};

using Value = StoreChange::Value;

QString readText(const char *path, const char *name)
{
    if (const Value *kept = keptValue(path, name))
        return QString::fromLatin1(kept->text);
    char text[kTextSize] = {};
    quint32 size = kTextSize;
    rkCFGValueString(defaultStore(), path, name, text, &size, 0);
    text[kTextSize - 1] = 0;
    return QString::fromLatin1(text);
}

void writeText(const char *path, const char *name, QByteArray text)
{
    if (writesAreKept()) {
        keepWrite(path, name, {Value::Type::Text, text, 0});
        return;
    }
    quint32 size = static_cast<quint32>(text.size()) + 1;
    rkCFGValueString(defaultStore(), path, name, text.data(), &size, 1);
}

bool writeNumber(const char *path, const char *name, quint32 number)
{
    if (writesAreKept())
        return keepWrite(path, name, {Value::Type::Number, QByteArray(), number});
    return rkCFGValueDword(defaultStore(), path, name, &number, 1) != 0;
}

} // namespace

// Not the macro of rkcfg.h: a site's own library need not have it.
void *defaultStore()
{
    return reinterpret_cast<void *>(static_cast<intptr_t>(-1));
}

QString channelIpKeyName(int channel)
{
    return QString::asprintf(kPathFormat, channel);
}

QString cfgValue(const char *name, bool isString, int channel, bool isPort)
{
    if (channel < 0)
        return isString ? QString() : QStringLiteral("0");
    const KeyPath path(channel);
    if (isString)
        return readText(path.bytes, name);
    const quint32 number = globalDword(path.bytes, name, 0);
    if (isPort)
        windowsSetUdpPortFilter(number, true);
    return QString::number(number);
}

void setCfgValue(const char *name, const QString &value, bool isString, int channel)
{
    if (channel < 0)
        return;
    const KeyPath path(channel);
    if (isString)
        writeText(path.bytes, name, value.toUtf8());
    else
        writeNumber(path.bytes, name, toDword(value));
}

quint32 globalDword(const char *path, const char *name, quint32 fallback)
{
    if (const Value *kept = keptValue(path, name))
        return kept->type == Value::Type::Number ? kept->number : fallback;
    quint32 number = fallback;
    rkCFGValueDword(defaultStore(), path, name, &number, 0);
    return number;
}

bool setGlobalDword(const char *path, const char *name, quint32 value)
{
    return writeNumber(path, name, value);
}

bool isTextEmpty(const QString &path, const char *name)
{
    const QByteArray keyPath = path.toLatin1();
    if (const Value *kept = keptValue(keyPath.constData(), name))
        return kept->text.isEmpty();
    quint32 size = 0;
    const int absent = rkCFGValueString(defaultStore(), keyPath.constData(), name, nullptr, &size, 0);
    return absent != 0 || size <= 1;
}

bool commitStore()
{
    return writesAreKept() || rkCFGSave(defaultStore(), nullptr, 0) == 0;
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
