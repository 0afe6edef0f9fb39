// SPDX-License-Identifier: MIT
//
// The whole store as a second process sees it, for comparing before and after.
#ifndef CORVEL_TEST_SNAPSHOT_H
#define CORVEL_TEST_SNAPSHOT_H

#include "support/store.h"

#include <QMap>
#include <QRegularExpression>

namespace StoreTest {

// "0:ReceiveSourcePort" for a value of channel 0, "path:name" for any other; a text stands in quotes, a
// number does not.
using Snapshot = QMap<QString, QString>;

inline QString shortPath(const QString &path)
{
    static const QRegularExpression channel(QStringLiteral("^KWX\\\\Internal(\\d+)\\\\IpConfig$"));
    const QRegularExpressionMatch match = channel.match(path);
    return match.hasMatch() ? match.captured(1) : path;
}

inline Snapshot snapshot()
{
    static const QRegularExpression command(
        QStringLiteral("^rkcfg set(?:-dword)? -- '([^']*)' '([^']*)' (.*)$"));
    Snapshot values;
    const QString all = QString::fromUtf8(dump());
    for (const QString &line : all.split(QLatin1Char('\n'), Qt::SkipEmptyParts)) {
        const QRegularExpressionMatch match = command.match(line);
        if (!match.hasMatch())
            qFatal("the store's dump is not understood: %s", qPrintable(line));
        values.insert(shortPath(match.captured(1)) + QLatin1Char(':') + match.captured(2), match.captured(3));
    }
    return values;
}

// What is new or different; a value that is gone shows as "gone".
inline Snapshot changes(const Snapshot &before, const Snapshot &after)
{
    Snapshot result;
    for (auto it = after.begin(); it != after.end(); ++it) {
        if (!before.contains(it.key()) || before.value(it.key()) != it.value())
            result.insert(it.key(), it.value());
    }
    for (auto it = before.begin(); it != before.end(); ++it) {
        if (!after.contains(it.key()))
            result.insert(it.key(), QStringLiteral("gone"));
    }
    return result;
}

// The entry of a channel's value.
inline QString channelEntry(int channel, const QByteArray &name)
{
    return QString::number(channel) + QLatin1Char(':') + QString::fromLatin1(name);
}

inline bool isOfChannel(int channel, const QString &entry)
{
    return entry.startsWith(channelEntry(channel, QByteArray()));
}

// All that the first start on an empty store leaves there.
inline Snapshot firstStart()
{
    return {{QStringLiteral("KWX\\Advanced\\AvHAL:nmosoverride"), QStringLiteral("0")},
            {QStringLiteral("KWX\\Advanced\\Debug:NMOSUseLog"), QStringLiteral("0")}};
}

inline QString quoted(const QString &text)
{
    return QLatin1Char('\'') + text + QLatin1Char('\'');
}

} // namespace StoreTest

#endif
