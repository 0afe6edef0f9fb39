// SPDX-License-Identifier: MIT
#include "app/view/filenews.h"

#include "app/view/digitgroups.h"

#include <QCoreApplication>
#include <QFileInfo>
#include <QStringList>

namespace FileNews {

namespace {

constexpr int kNameLength = 40;

QString tr(const char *text)
{
    return QCoreApplication::translate("QCorvel", text);
}

// "1 channel", "1,160 values"
QString counted(int number, const char *one, const char *many)
{
    return tr(number == 1 ? one : many).arg(QString::fromLatin1(digitGroups(number)));
}

QString leftOut(const Counts &counts)
{
    struct Reason {
        int number;
        const char *one;
        const char *many;
    };
    const Reason reasons[] = {
        {counts.interfaces, "%1 interface", "%1 interfaces"},
        {counts.unknown, "%1 unknown key", "%1 unknown keys"},
        {counts.beforeSections, "%1 before the first channel", "%1 before the first channel"},
        {counts.locked, "%1 locked", "%1 locked"},
    };
    QStringList words;
    int all = 0;
    for (const Reason &reason : reasons) {
        if (reason.number > 0)
            words.append(counted(reason.number, reason.one, reason.many));
        all += reason.number;
    }
    if (all == 0)
        return QString();
    return counted(all, ", %1 left out: ", ", %1 left out: ") + words.join(QLatin1String(", "));
}

QString channelsAndValues(const Counts &counts)
{
    return counted(counts.channels, "%1 channel", "%1 channels") + QLatin1String(", ") +
           counted(counts.values, "%1 value", "%1 values");
}

} // namespace

QString nameOf(const QString &path)
{
    const QString name = QFileInfo(path).fileName();
    if (name.size() <= kNameLength)
        return name;
    return name.left(kNameLength / 2) + QChar(0x2026) + name.right(kNameLength / 2 - 1);
}

QString loaded(const QString &path, const Counts &counts)
{
    const QString end = counts.endsEarly ? tr("; it ends at a channel below the first one") : QString();
    return tr("Loaded %1: ").arg(nameOf(path)) + channelsAndValues(counts) + leftOut(counts) + end;
}

QString loadedDescription(const QString &path, int channel, const Counts &counts)
{
    return tr("Loaded %1 into channel %2: ").arg(nameOf(path)).arg(channel) +
           counted(counts.values, "%1 value", "%1 values") + leftOut(counts);
}

QString saved(const QString &path, const Counts &counts)
{
    return tr("Saved %1: ").arg(nameOf(path)) + channelsAndValues(counts);
}

QString notLoaded(const QString &path, const QString &reason)
{
    return tr("Nothing loaded from %1: ").arg(nameOf(path)) + reason;
}

QString notSaved(const QString &path, const QString &reason)
{
    return tr("%1 not saved: ").arg(nameOf(path)) + reason;
}

QString loadTakenBack(const QString &path)
{
    return tr("Load of %1 cancelled: everything is as it was before").arg(nameOf(path));
}

QString loadCutShort(const QString &path, const Counts &counts)
{
    return tr("Load of %1 cancelled: these stay loaded: ").arg(nameOf(path)) + channelsAndValues(counts);
}

QString saveCutShort(const QString &path, const Counts &counts)
{
    return tr("Save of %1 cancelled: the file ends after ").arg(nameOf(path)) + channelsAndValues(counts);
}

} // namespace FileNews
