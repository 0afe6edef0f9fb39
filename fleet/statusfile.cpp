// SPDX-License-Identifier: MIT
#include "fleet/statusfile.h"

#include "fleet/documentjson.h"

#include <QFile>

#include <nlohmann/json.hpp>

namespace fleet {

namespace {

ops::Json timeOrNothing(qint64 atMs)
{
    return atMs > 0 ? ops::Json(timeText(atMs).toStdString()) : ops::Json();
}

ops::Json configurationJson(const KeptConfiguration &kept)
{
    const KeeperStatus &status = kept.status;
    return {{"configuration", ops::jsonText(kept.configuration)},
            {"server", ops::jsonText(kept.server)},
            {"connected", status.connected},
            {"inStep", status.inStep},
            {"since", timeOrNothing(status.sinceMs)},
            {"reason", ops::jsonText(status.reason)},
            {"alive", status.serverAlive},
            {"seen", timeOrNothing(status.serverSeenMs)},
            {"waiting", status.waiting},
            {"conflicts", status.conflicts},
            {"overruled", status.overruled},
            {"refused", status.refused},
            {"pushed", timeOrNothing(status.pushedMs)},
            {"applied", timeOrNothing(status.appliedMs)},
            {"appliedFrom", ops::jsonText(status.appliedFrom)}};
}

} // namespace

QByteArray statusText(const FleetStatus &status)
{
    ops::Json json = {{"format", 1},
                      {"role", status.role == Role::Desk ? "desk" : "server"},
                      {"site", ops::jsonText(status.site)},
                      {"name", ops::jsonText(status.name)},
                      {"pid", status.pid},
                      {"configurations", ops::Json::array()}};
    for (const KeptConfiguration &kept : status.configurations)
        json["configurations"].push_back(configurationJson(kept));
    return QByteArray::fromStdString(json.dump()) + '\n';
}

StatusFile::StatusFile(const QByteArray &folder) : m_path(folder + "/fleet-status") {}

bool StatusFile::write(const FleetStatus &status)
{
    const QByteArray text = statusText(status);
    if (text == m_written)
        return true;
    // No sync: it is of no use after a power cut, and would make others wait for the disk.
    const QByteArray anew = m_path + ".new";
    QFile file(QFile::decodeName(anew));
    const bool written = file.open(QIODevice::WriteOnly) &&
                         file.setPermissions(QFileDevice::ReadOwner | QFileDevice::WriteOwner) &&
                         file.write(text) == text.size() && file.flush();
    file.close();
    if (!written || rename(anew.constData(), m_path.constData()) != 0)
        return false;
    m_written = text;
    return true;
}

void StatusFile::remove()
{
    QFile::remove(QFile::decodeName(m_path));
    m_written.clear();
}

} // namespace fleet
