// SPDX-License-Identifier: MIT
//
// What the service tells programs on this machine: the file "fleet-status" beside the configurations, JSON,
// replaced as a whole and only when something is different. The dialog shows it; it needs no network for
// that, and where there is no file there is no fleet. docs/fleet.md describes the format. One thread.
#ifndef CORVEL_FLEET_STATUSFILE_H
#define CORVEL_FLEET_STATUSFILE_H

#include "fleet/keeper.h"

namespace fleet {

struct KeptConfiguration {
    QByteArray configuration; // its name on this machine
    QByteArray server;        // whose settings it holds
    KeeperStatus status;
};

// What a server sees of PTP.
struct PtpSeen {
    QByteArray state;       // a word as that of clockStateWord()
    quint32 domain = 0;     // that is followed, else that is asked for
    QByteArray grandmaster; // that is followed; empty: none
};

struct FleetStatus {
    Role role = Role::Server;
    QByteArray site;
    QByteArray name;
    qint64 pid = 0; // of the service: when it is gone, what the file says is old
    std::vector<KeptConfiguration> configurations;
    // Not in the file: programs on this machine know better.
    std::optional<PtpSeen> ptp;
    int unopened = 0; // configurations that are to be kept, and whose store cannot be opened
};

QByteArray statusText(const FleetStatus &status);

class StatusFile {
public:
    // In the folder of the configurations.
    explicit StatusFile(const QByteArray &folder);

    // False when the disk does not take it; the next call tries again.
    bool write(const FleetStatus &status);
    // At the end of the service, and for leaving the fleet.
    void remove();
    const QByteArray &path() const { return m_path; }

private:
    const QByteArray m_path;
    QByteArray m_written;
};

} // namespace fleet

#endif
