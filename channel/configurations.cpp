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

QStringList configurations()
{
    char folder[kPathBytes] = {};
    rkOSGetConfigDir(folder);
    const QString inUse = configurationInUse();
    const QString suffix = QLatin1String(kConfigurationSuffix);
    QStringList names;
    const QDir dir(QString::fromUtf8(folder));
    for (const QString &file : dir.entryList({QLatin1Char('*') + suffix}, QDir::Files, QDir::Name))
        names.append(file.left(file.size() - suffix.size()));
    if (!inUse.isEmpty() && !names.contains(inUse))
        names.prepend(inUse);
    return names;
}

void useConfiguration(const QString &name)
{
    rkCFGClose(defaultStore(), 1);
    rkCFGSetDefaultName(name.toUtf8().constData());
}
