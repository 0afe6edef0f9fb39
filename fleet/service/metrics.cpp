// SPDX-License-Identifier: MIT
#include "fleet/service/metrics.h"

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

// What is written here has to come first: how long ago the oldest of it was touched is not known, so the time
// since both sides were last seen equal stands for it.
qint64 lagSeconds(const KeeperStatus &status, qint64 nowMs)
{
    return status.inStep ? 0 : std::max<qint64>(0, nowMs - std::max(status.sinceMs, status.pushedMs)) / 1000;
}

constexpr Figure kFigures[] = {
    // name                         type     help                                              value
    {"corvel_fleet_connected", "gauge", "1 when the cluster answers",
     [](const KeeperStatus &status, qint64) { return qint64(status.connected); }},
    {"corvel_fleet_in_step", "gauge", "1 when the store and the cluster are equal",
     [](const KeeperStatus &status, qint64) { return qint64(status.inStep); }},
    {"corvel_fleet_lag_seconds", "gauge", "How long they have not been, at most", lagSeconds},
    {"corvel_fleet_edits_waiting", "gauge", "Key paths that the cluster does not have yet",
     [](const KeeperStatus &status, qint64) { return qint64(status.waiting); }},
    {"corvel_fleet_conflicts_waiting", "gauge", "Overruled documents that the cluster does not have yet",
     [](const KeeperStatus &status, qint64) { return qint64(status.conflicts); }},
    {"corvel_fleet_overruled", "gauge", "Edits of this machine that were overruled and not looked at",
     [](const KeeperStatus &status, qint64) { return qint64(status.overruled); }},
    {"corvel_fleet_refused", "gauge", "Key paths that cannot be shared or are not taken",
     [](const KeeperStatus &status, qint64) { return qint64(status.refused); }},
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

} // namespace

QByteArray metricsText(const FleetStatus &status, qint64 nowMs)
{
    QByteArray text;
    for (const Figure &figure : kFigures) {
        text += QByteArray("# HELP ") + figure.name + ' ' + figure.help + "\n# TYPE " + figure.name + ' ' +
                figure.type + '\n';
        for (const KeptConfiguration &kept : status.configurations)
            text += line(figure, kept, nowMs);
    }
    return text;
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
