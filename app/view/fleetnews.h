// SPDX-License-Identifier: MIT
//
// View: what the file "fleet-status" of the fleet's service says of one configuration, in words. The service
// writes it beside the configurations; docs/fleet.md has its format. Texts only; any thread.
#ifndef CORVEL_VIEW_FLEETNEWS_H
#define CORVEL_VIEW_FLEETNEWS_H

#include <QByteArray>
#include <QString>

#include <functional>

namespace FleetNews {

// Empty when there is nothing to say: no such file, a configuration that is not kept, a server in step.
// isRunning tells whether a process lives: what a service that is gone wrote is old.
QString line(const QByteArray &status, const QString &configuration,
             const std::function<bool(qint64 pid)> &isRunning);

} // namespace FleetNews

#endif
