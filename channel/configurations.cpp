// SPDX-License-Identifier: MIT
#include "channel/configurations.h"

#include "channel/channelstore.h"
#include "rkcfg.h"
#include "rkos.h"

#include <QDir>

namespace {

constexpr int kPathBytes = 4096;
constexpr int kNameBytes = 256;

} // namespace

QString configurationInUse()
{
    char name[kNameBytes] = {};
    rkCFGGetDefaultName(name, sizeof name);
    return QString::fromUtf8(name);
}

QStringList configurations(QString *inUse)
{
    char folder[kPathBytes] = {};
    rkOSGetConfigDir(folder);
    const QString current = configurationInUse();
    const QString suffix = QLatin1String(kConfigurationSuffix);
    QStringList names;
    const QDir dir(QString::fromUtf8(folder));
    for (const QString &file : dir.entryList({QLatin1Char('*') + suffix}, QDir::Files, QDir::Name))
        names.append(file.left(file.size() - suffix.size()));
    if (!current.isEmpty() && !names.contains(current))
        names.prepend(current);
    if (inUse)
        *inUse = current;
    return names;
}

void useConfiguration(const QString &name)
{
    rkCFGClose(defaultStore(), 1);
    rkCFGSetDefaultName(name.toUtf8().constData());
}
