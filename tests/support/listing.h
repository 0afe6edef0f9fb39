// SPDX-License-Identifier: MIT
//
// What is in the store, as a second process sees it.
#ifndef CORVEL_TEST_LISTING_H
#define CORVEL_TEST_LISTING_H

#include "support/store.h"

#include <QMap>

namespace StoreTest {

// "path\tname" to value. One entry "rkcfg failed" when the store could not be listed.
using Listing = QMap<QByteArray, QByteArray>;

inline Listing listing()
{
    QProcess tool;
    tool.start(QStringLiteral(CORVEL_BIN_DIR "/rkcfg"), {QStringLiteral("list")});
    Listing all;
    if (!tool.waitForFinished() || tool.exitCode() != 0)
        all["rkcfg failed"] = tool.readAllStandardError();
    const QByteArrayList lines = tool.readAllStandardOutput().split('\n');
    for (const QByteArray &line : lines) {
        const int tab = line.lastIndexOf('\t');
        if (tab > 0)
            all[line.left(tab)] = line.mid(tab + 1);
    }
    return all;
}

inline QByteArray channelEntry(int channel, const QByteArray &name)
{
    return "KWX\\Internal" + QByteArray::number(channel) + "\\IpConfig\t" + name;
}

// The entries that are new, gone or different, each as "path\tname=value" ("gone" without a value).
inline QByteArrayList difference(const Listing &before, const Listing &after)
{
    QByteArrayList found;
    for (auto row = after.cbegin(); row != after.cend(); ++row) {
        if (!before.contains(row.key()) || before[row.key()] != row.value())
            found.append(row.key() + '=' + row.value());
    }
    for (auto row = before.cbegin(); row != before.cend(); ++row) {
        if (!after.contains(row.key()))
            found.append(row.key() + " gone");
    }
    return found;
}

} // namespace StoreTest

#endif
