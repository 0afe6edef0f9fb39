// SPDX-License-Identifier: MIT
//
// What a settings file stores, as the program would store it, in a map instead of the store.
#ifndef CORVEL_TESTS_SETTINGSTEXT_H
#define CORVEL_TESTS_SETTINGSTEXT_H

#include "files/sdptext.h"
#include "files/settingsfile.h"

#include <QMap>

struct ReadSettings {
    QMap<QString, QString> values; // "channel/name" to what a read would give back
    QStringList order;             // names as they came
    bool stopped = false;
    quint32 global = 0;
};

inline QString storedForm(const SettingsValue &value)
{
    return value.isString ? value.text : QString::number(settingsNumber(value.text));
}

inline ReadSettings readSettingsText(const QByteArray &text)
{
    ReadSettings result;
    TextLines lines(text);
    QByteArray line;
    if (!lines.next(line) || !isSettingsSignature(line))
        return result;
    SettingsReader reader;
    SettingsValue value;
    while (!result.stopped && lines.next(line)) {
        const SettingsReader::Result kind = reader.feed(line, &value);
        result.stopped = kind == SettingsReader::Result::Stop;
        if (kind != SettingsReader::Result::Value)
            continue;
        const QString key = QString::fromUtf8(value.key);
        result.order << key;
        if (value.global)
            result.global = globalSettingsNumber(value.text);
        else
            result.values[QString::number(value.channel) + QLatin1Char('/') + key] = storedForm(value);
    }
    return result;
}

#endif
