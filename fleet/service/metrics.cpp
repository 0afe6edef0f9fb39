// SPDX-License-Identifier: MIT
#include "fleet/service/metrics.h"

#include "channel/clockstate.h"

#include <QTcpSocket>

namespace fleet {

namespace {

constexpr int kLongestRequest = 8192;

struct Figure {
    const char *name;
    const char *type;
    const char *help;
    qint64 (*value)(const KeeperStatus &status, qint64 nowMs);
};

qint64 lagSeconds(const KeeperStatus &status, qint64 nowMs)
{
    return status.behindMs == 0 ? 0 : std::max<qint64>(0, nowMs - status.behindMs) / 1000;
}

constexpr Figure kFigures[] = {
    // name                         type     help                                              value
    {"corvel_fleet_connected", "gauge", "1 when the cluster answers",
     [](const KeeperStatus &status, qint64) { return qint64(status.connected); }},
    {"corvel_fleet_in_step", "gauge", "1 when the store and the cluster are equal",
     [](const KeeperStatus &status, qint64) { return qint64(status.inStep); }},
    {"corvel_fleet_lag_seconds", "gauge", "How long they have not been, as far as the service knows",
     lagSeconds},
    {"corvel_fleet_edits_waiting", "gauge", "Key paths that the cluster does not have yet",
     [](const KeeperStatus &status, qint64) { return qint64(status.waiting); }},
    {"corvel_fleet_conflicts_waiting", "gauge", "Overruled documents that the cluster does not have yet",
     [](const KeeperStatus &status, qint64) { return qint64(status.conflicts); }},
    {"corvel_fleet_overruled", "gauge", "Edits of this machine that were overruled and not looked at",
     [](const KeeperStatus &status, qint64) { return qint64(status.overruled); }},
    {"corvel_fleet_refused", "gauge", "Key paths that cannot be shared or are not taken",
     [](const KeeperStatus &status, qint64) { return qint64(status.refused); }},
    {"corvel_fleet_store_errors_total", "counter",
     "Times that the store could not be read or written, or was held by another program",
     [](const KeeperStatus &status, qint64) { return qint64(status.storeErrors); }},
    {"corvel_fleet_server_alive", "gauge", "At a desk: 1 when the server's service lives",
     [](const KeeperStatus &status, qint64) { return qint64(status.serverAlive); }},
};

QByteArray label(const QByteArray &text)
{
    return QByteArray(text).replace('\\', "\\\\").replace('"', "\\\"").replace('\n', "\\n");
}

QByteArray line(const Figure &figure, const KeptConfiguration &kept, qint64 nowMs)
{
    return QByteArray(figure.name) + "{server=\"" + label(kept.server) + "\",configuration=\"" +
           label(kept.configuration) + "\"} " + QByteArray::number(figure.value(kept.status, nowMs)) + '\n';
}

QByteArray head(const char *name, const char *type, const char *help)
{
    return QByteArray("# HELP ") + name + ' ' + help + "\n# TYPE " + name + ' ' + type + '\n';
}

// Of a server that has a channel with a clock from PTP.
QByteArray ptpText(const FleetStatus &status)
{
    if (!status.ptp || status.ptp->state == clockStateWord(ClockState::NoPtp))
        return QByteArray();
    const PtpSeen &ptp = *status.ptp;
    const QByteArray server = "{server=\"" + label(status.name) + '"';
    const bool locked = ptp.state == clockStateWord(ClockState::Locked);
    return head("corvel_fleet_ptp_locked", "gauge",
                "1 when the clock follows the PTP master that is asked for") +
           "corvel_fleet_ptp_locked" + server + "} " + (locked ? "1\n" : "0\n") +
           head("corvel_fleet_ptp_state", "gauge", "1, with what is seen of PTP as labels") +
           "corvel_fleet_ptp_state" + server + ",state=\"" + label(ptp.state) + "\",domain=\"" +
           QByteArray::number(ptp.domain) + "\",grandmaster=\"" + label(ptp.grandmaster) + "\"} 1\n";
}

} // namespace

QByteArray metricsText(const FleetStatus &status, qint64 nowMs)
{
    QByteArray text;
    for (const Figure &figure : kFigures) {
        text += head(figure.name, figure.type, figure.help);
        for (const KeptConfiguration &kept : status.configurations)
            text += line(figure, kept, nowMs);
    }
    return text + head("corvel_fleet_unopened", "gauge", "Configurations whose store cannot be opened") +
           "corvel_fleet_unopened " + QByteArray::number(status.unopened) + '\n' + ptpText(status);
}

Metrics::Metrics(Text text) : m_text(std::move(text))
{
    QObject::connect(&m_server, &QTcpServer::newConnection, &m_server, [this] {
        while (QTcpSocket *socket = m_server.nextPendingConnection()) {
            QObject::connect(socket, &QTcpSocket::disconnected, socket, &QObject::deleteLater);
            QObject::connect(socket, &QTcpSocket::readyRead, &m_server, [this, socket] { answer(socket); });
        }
    });
}

bool Metrics::listen(int port)
{
    return m_server.listen(QHostAddress::LocalHost, static_cast<quint16>(port));
}

// One request, one answer, and the connection ends.
void Metrics::answer(QTcpSocket *socket) const
{
    const QByteArray request = socket->peek(kLongestRequest);
    if (!request.contains("\r\n\r\n") && request.size() < kLongestRequest)
        return;
    socket->readAll();
    const bool wanted = request.startsWith("GET /metrics ");
    const QByteArray text = wanted ? m_text() : QByteArray("see /metrics\n");
    socket->write(QByteArray("HTTP/1.1 ") + (wanted ? "200 OK" : "404 Not Found") +
                  "\r\nContent-Type: text/plain; version=0.0.4\r\nConnection: close\r\nContent-Length: " +
                  QByteArray::number(text.size()) + "\r\n\r\n" + text);
    socket->disconnectFromHost();
}

} // namespace fleet
