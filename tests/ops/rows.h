// SPDX-License-Identifier: MIT
//
// Short forms for the tests of ops/.
#ifndef TESTS_OPS_ROWS_H
#define TESTS_OPS_ROWS_H

#include "ops/place.h"
#include "ops/snapshot.h"

#include <QtTest>

inline QByteArray channel(int number)
{
    return ops::channelPath(number);
}

inline ops::Value text(const char *bytes)
{
    return ops::Value::ofText(bytes);
}

inline ops::Value number(quint32 value)
{
    return ops::Value::ofNumber(value);
}

// "KWX\A n \"x\"|..." for whole lists of changes in one comparison.
inline QByteArray told(const std::optional<ops::Value> &value)
{
    if (!value)
        return "-";
    return value->isText ? '"' + value->text + '"' : QByteArray::number(value->number);
}

inline QByteArray told(const ops::Changes &changes)
{
    QByteArrayList lines;
    for (const ops::Change &change : changes)
        lines.append(change.path + ' ' + change.name + ' ' + told(change.before) + " > " +
                     told(change.after));
    return lines.join('|');
}

#endif
