// SPDX-License-Identifier: MIT
#include "ops/configurations.h"

#include "channel/configurations.h"
#include "ops/store.h"
#include "ops/storecalls.h"
#include "ops/suggest.h"
#include "rkcfg.h"
#include "rkos.h"

#include <QDir>

#include <algorithm>

namespace ops {

namespace {

constexpr int kLongestName = 64;

// What rkcfg.h says of a name.
Outcome<Done> checkNewName(const QByteArray &name)
{
    const auto control = [](char c) { return static_cast<unsigned char>(c) < 0x20 || c == 0x7f; };
    const bool fits = !name.isEmpty() && name.size() <= kLongestName && !name.startsWith('.') &&
                      !name.contains('/') && std::none_of(name.begin(), name.end(), control);
    if (!fits)
        return wrong(
            "a configuration's name has 1 to 64 bytes, no /, no control character and no . in front");
    if (hasConfiguration(name))
        return wrong("there is a configuration \"" + name + "\" already");
    return Done();
}

} // namespace

QByteArray defaultConfiguration()
{
    char name[128] = "";
    rkCFGGetDefaultName(name, sizeof name);
    return name;
}

QByteArrayList configurationNames()
{
    char folder[RKOS_PATH_SIZE] = "";
    rkOSGetConfigDir(folder);
    QByteArrayList names{defaultConfiguration()};
    const QString suffix = QLatin1String(kConfigurationSuffix);
    const QStringList files =
        QDir(QFile::decodeName(folder)).entryList({QLatin1Char('*') + suffix}, QDir::Files);
    for (const QString &file : files)
        names.append(QFile::encodeName(file.chopped(suffix.size())));
    std::sort(names.begin(), names.end());
    names.erase(std::unique(names.begin(), names.end()), names.end());
    return names;
}

bool hasConfiguration(const QByteArray &name)
{
    return configurationNames().contains(name);
}

Failure noSuchConfiguration(const QByteArray &name)
{
    return wrong("there is no configuration \"" + name + '"' + didYouMean(name, configurationNames()));
}

Outcome<Done> newConfiguration(const QByteArray &name)
{
    const Outcome<Done> checked = checkNewName(name);
    if (!checked)
        return checked;
    const Outcome<Store> made = Store::open(name, true);
    if (!made)
        return made.failure();
    return Done();
}

Outcome<Done> copyConfiguration(const QByteArray &from, const QByteArray &to)
{
    if (!hasConfiguration(from))
        return noSuchConfiguration(from);
    const Outcome<Done> checked = checkNewName(to);
    if (!checked)
        return checked;
    const Outcome<Store> source = Store::open(from);
    if (!source)
        return source.failure();
    const Outcome<Snapshot> values = source->read();
    if (!values)
        return values.failure();
    Outcome<Store> target = Store::open(to, true);
    if (!target)
        return target.failure();
    return target->apply(difference(Snapshot(), *values), "copy of " + from);
}

Outcome<Done> renameConfiguration(const QByteArray &from, const QByteArray &to)
{
    if (!hasConfiguration(from))
        return noSuchConfiguration(from);
    const Outcome<Done> checked = checkNewName(to);
    if (!checked)
        return checked;
    if (from == defaultConfiguration())
        return wrong("\"" + from + "\" is in use; choose another one first (corvelctl config use)");
    const auto call = storeCalls().renameConfiguration;
    if (!call || call(from.constData(), to.constData()) != 0)
        return refused("\"" + from + "\" could not be renamed");
    return Done();
}

Outcome<Done> deleteConfiguration(const QByteArray &name)
{
    if (!hasConfiguration(name))
        return noSuchConfiguration(name);
    if (name == defaultConfiguration())
        return wrong("\"" + name + "\" is in use; choose another one first (corvelctl config use)");
    const auto call = storeCalls().deleteConfiguration;
    if (!call || call(name.constData()) != 0)
        return refused("\"" + name + "\" could not be deleted");
    return Done();
}

Outcome<Done> useConfiguration(const QByteArray &name)
{
    if (!hasConfiguration(name))
        return noSuchConfiguration(name);
    if (rkCFGSetDefaultName(name.constData()) != 0)
        return refused("\"" + name + "\" could not be made the server's configuration");
    return Done();
}

} // namespace ops
