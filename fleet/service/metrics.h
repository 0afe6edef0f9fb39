// SPDX-License-Identifier: MIT
//
// The service's figures for Prometheus: text at http://127.0.0.1:PORT/metrics. docs/fleet.md names them.
// Belongs to the thread that made it and needs its event loop.
#ifndef CORVEL_FLEET_SERVICE_METRICS_H
#define CORVEL_FLEET_SERVICE_METRICS_H

#include "fleet/statusfile.h"

#include <QTcpServer>

#include <functional>

namespace fleet {

QByteArray metricsText(const FleetStatus &status, qint64 nowMs);

class Metrics {
public:
    using Text = std::function<QByteArray()>;

    explicit Metrics(Text text);

    // On the loopback interface only. False when the port cannot be had.
    bool listen(int port);

private:
    void answer(QTcpSocket *socket) const;

    const Text m_text;
    QTcpServer m_server;
};

} // namespace fleet

#endif
