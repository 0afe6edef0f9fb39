// SPDX-License-Identifier: MIT
#include "app/view/fleetnews.h"

#include <QCoreApplication>
#include <QDateTime>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QStringList>

namespace FleetNews {

namespace {

QString tr(const char *text)
{
    return QCoreApplication::translate("QCorvel", text);
}

QString counted(int number, const char *one, const char *many)
{
    return tr(number == 1 ? one : many).arg(number);
}

QString text(const QJsonObject &object, const char *name)
{
    return object.value(QLatin1String(name)).toString();
}

bool flag(const QJsonObject &object, const char *name)
{
    return object.value(QLatin1String(name)).toBool();
}

int number(const QJsonObject &object, const char *name)
{
    return object.value(QLatin1String(name)).toInt();
}

// "13:59", with the day when that is not today.
QString timeOf(const QJsonObject &kept, const char *name)
{
    const QDateTime time = QDateTime::fromString(text(kept, name), Qt::ISODateWithMs).toLocalTime();
    if (!time.isValid())
        return QString();
    const bool today = time.date() == QDate::currentDate();
    return time.toString(today ? QStringLiteral("HH:mm") : QStringLiteral("yyyy-MM-dd HH:mm"));
}

QString waiting(const QJsonObject &kept)
{
    const int edits = number(kept, "waiting");
    return edits > 0 ? counted(edits, "%1 edit waits here", "%1 edits wait here") : QString();
}

QString awayLine(const QJsonObject &kept)
{
    const QString since = timeOf(kept, "since");
    const QString away = since.isEmpty() ? tr("Cluster away") : tr("Cluster away since %1").arg(since);
    const QString edits = waiting(kept);
    return away + QLatin1String(", ") + (edits.isEmpty() ? tr("editing goes on") : edits);
}

QString deskLine(const QJsonObject &kept)
{
    const QString server = text(kept, "server");
    if (flag(kept, "alive"))
        return flag(kept, "inStep") ? tr("%1: in step").arg(server) : waiting(kept);
    const QString seen = timeOf(kept, "seen");
    return seen.isEmpty() ? tr("%1 is away").arg(server)
                          : tr("%1 is away, shown: its state of %2").arg(server, seen);
}

// Of both roles, behind the rest.
QStringList troubles(const QJsonObject &kept)
{
    QStringList lines;
    const QString reason = text(kept, "reason");
    if (flag(kept, "connected") && !reason.isEmpty())
        lines << reason;
    if (const int refused = number(kept, "refused"))
        lines << counted(refused, "%1 part is not shared", "%1 parts are not shared");
    if (const int overruled = number(kept, "overruled"))
        lines << counted(overruled, "%1 of your edits was overruled", "%1 of your edits were overruled");
    return lines;
}

QJsonObject configurationOf(const QJsonObject &status, const QString &configuration)
{
    for (const QJsonValue &kept : status.value(QLatin1String("configurations")).toArray()) {
        if (text(kept.toObject(), "configuration") == configuration)
            return kept.toObject();
    }
    return QJsonObject();
}

} // namespace

QString line(const QByteArray &status, const QString &configuration,
             const std::function<bool(qint64 pid)> &isRunning)
{
    const QJsonObject object = QJsonDocument::fromJson(status).object();
    const QJsonObject kept = configurationOf(object, configuration);
    if (number(object, "format") != 1 || kept.isEmpty())
        return QString();
    if (!isRunning(number(object, "pid")))
        return tr("The fleet service has ended; edits wait here");
    QStringList lines;
    if (!flag(kept, "connected"))
        lines << awayLine(kept);
    else if (text(object, "role") == QLatin1String("desk"))
        lines << deskLine(kept);
    lines << troubles(kept);
    lines.removeAll(QString());
    return lines.join(QLatin1String("; "));
}

} // namespace FleetNews
