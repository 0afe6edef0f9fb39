// SPDX-License-Identifier: MIT
#include "ops/configurations.h"

#include "channel/configurations.h"
#include "channel/librarycalls.h"
#include "ops/jsontext.h"
#include "ops/store.h"
#include "ops/suggest.h"
#include "rkcfg.h"
#include "rkos.h"

#include <QDir>
#include <QFileInfo>

#include <algorithm>

namespace ops {

namespace {

constexpr int kLongestName = 64;
constexpr char kAnyPath[] = "KWX";

// What rkcfg.h says of a name.
Outcome<Done> checkNewName(const QByteArray &name)
{
    const auto control = [](char c) { return static_cast<unsigned char>(c) < 0x20 || c == 0x7f; };
    const bool fits = !name.isEmpty() && name.size() <= kLongestName && !name.startsWith('.') &&
                      !name.contains('/') && isUtf8(name) && std::none_of(name.begin(), name.end(), control);
    if (!fits)
        return wrong("a configuration's name has 1 to 64 bytes of UTF-8, no /, no control character and no . "
                     "in front");
    if (hasConfiguration(name))
        return wrong("there is a configuration \"" + name + "\" already");
    return Done();
}

Outcome<Done> checkPair(const QByteArray &from, const QByteArray &to)
{
    return hasConfiguration(from) ? checkNewName(to) : noSuchConfiguration(from);
}

// The one that the server uses has to stay, under its name.
Outcome<Done> checkSpare(const QByteArray &name)
{
    if (!hasConfiguration(name))
        return noSuchConfiguration(name);
    if (name == defaultConfiguration())
        return wrong('"' + name + "\" is in use; choose another one first (corvelctl config use)");
    return Done();
}

template<class Call, class... Names>
Outcome<Done> tell(Call *call, const char *what, const QByteArray &name, const Names &...others)
{
    if (call && call(name.constData(), others.constData()...) == 0)
        return Done();
    return refused('"' + name + "\" could not be " + what);
}

// A copy that could not be filled is none.
Outcome<Done> fillCopy(const QByteArray &from, const QByteArray &to, const Snapshot &values)
{
    Outcome<Store> target = Store::open(to, true);
    if (!target)
        return target.failure();
    const Outcome<Done> filled = target->apply(difference(Snapshot(), values), "copy of " + from);
    if (!filled && libraryCalls().deleteConfiguration)
        libraryCalls().deleteConfiguration(to.constData());
    return filled;
}

// For a library that cannot copy by itself.
Outcome<Done> copyValues(const QByteArray &from, const QByteArray &to)
{
    const Outcome<Store> source = Store::open(from);
    if (!source)
        return source.failure();
    const Outcome<Snapshot> values = source->read();
    return values ? fillCopy(from, to, *values) : values.failure();
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

// Without listing the others: a desk has thousands.
bool hasConfiguration(const QByteArray &name)
{
    if (name == defaultConfiguration())
        return true;
    char folder[RKOS_PATH_SIZE] = "";
    rkOSGetConfigDir(folder);
    const bool possible = !name.isEmpty() && !name.startsWith('.') && !name.contains('/');
    const QByteArray file = QByteArray(folder) + name + kConfigurationSuffix;
    return possible && QFileInfo(QFile::decodeName(file)).isFile();
}

Failure noSuchConfiguration(const QByteArray &name)
{
    return wrong("there is no configuration \"" + name + '"' + didYouMean(name, configurationNames()));
}

Outcome<Done> newConfiguration(const QByteArray &name, Doing doing)
{
    const Outcome<Done> checked = checkNewName(name);
    if (!checked || doing == Doing::Check)
        return checked;
    const Outcome<Store> made = Store::open(name, true);
    return made ? Outcome<Done>(Done()) : made.failure();
}

Outcome<Done> copyConfiguration(const QByteArray &from, const QByteArray &to, Doing doing)
{
    const Outcome<Done> checked = checkPair(from, to);
    if (!checked || doing == Doing::Check)
        return checked;
    if (!libraryCalls().copyConfiguration)
        return copyValues(from, to);
    // The default configuration has no file before somebody reads it.
    const Outcome<Snapshot> read = from == defaultConfiguration() ? Store().read(kAnyPath) : Snapshot();
    if (!read)
        return read.failure();
    return tell(libraryCalls().copyConfiguration, "copied", from, to);
}

Outcome<Done> renameConfiguration(const QByteArray &from, const QByteArray &to, Doing doing)
{
    Outcome<Done> checked = checkPair(from, to);
    if (checked)
        checked = checkSpare(from);
    if (!checked || doing == Doing::Check)
        return checked;
    return tell(libraryCalls().renameConfiguration, "renamed", from, to);
}

Outcome<Done> deleteConfiguration(const QByteArray &name, Doing doing)
{
    const Outcome<Done> checked = checkSpare(name);
    if (!checked || doing == Doing::Check)
        return checked;
    return tell(libraryCalls().deleteConfiguration, "deleted", name);
}

Outcome<Done> useConfiguration(const QByteArray &name, Doing doing)
{
    if (!hasConfiguration(name))
        return noSuchConfiguration(name);
    if (doing == Doing::Check)
        return Done();
    return tell(rkCFGSetDefaultName, "made the server's configuration", name);
}

} // namespace ops
