// SPDX-License-Identifier: MIT
//
// Slots, the fleet: what its service tells of the shown configuration stands in the line of the command
// band. It is read from a file beside the configurations when that folder is touched; no file, no fleet.
#include "app/dialog/private.h"
#include "app/view/fleetnews.h"
#include "channel/storehealth.h"

#include <QFile>
#include <QFileInfo>

#include <cerrno>
#include <csignal>

namespace {

constexpr qint64 kMostBytes = 4 * 1024 * 1024;

QByteArray fleetStatus()
{
    QFile file(QFileInfo(storePath()).path() + QLatin1String("/fleet-status"));
    return file.open(QIODevice::ReadOnly) ? file.read(kMostBytes) : QByteArray();
}

bool isRunning(qint64 pid)
{
    return pid > 0 && (kill(static_cast<pid_t>(pid), 0) == 0 || errno == EPERM);
}

} // namespace

void QCorvelPrivate::showFleet()
{
    const QString configuration = QFileInfo(storePath()).completeBaseName();
    fleetLine = FleetNews::line(fleetStatus(), configuration, isRunning);
    showStandingLines();
}

// A second dialog is told of first.
void QCorvelPrivate::showStandingLines()
{
    QStringList lines{neighbourLine, fleetLine};
    lines.removeAll(QString());
    showStanding(lines.join(QLatin1Char('\n')));
}
