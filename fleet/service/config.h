// SPDX-License-Identifier: MIT
//
// corvel-fleet.conf: who this machine is in the fleet, where the cluster is, what is shared or followed. An
// INI file, read once; every key is explained in packaging/fleet/corvel-fleet.conf. Any thread.
#ifndef CORVEL_FLEET_SERVICE_CONFIG_H
#define CORVEL_FLEET_SERVICE_CONFIG_H

#include "fleet/merge.h"
#include "ops/outcome.h"

#include <QByteArrayList>

namespace fleet {

struct Config {
    Role role = Role::Server;
    QByteArray site;
    QByteArray name;
    QByteArrayList endpoints; // "host:port"
    QByteArray authorityFile, certificateFile, keyFile;
    QByteArrayList configurations; // of a server: shared besides the default one
    QByteArrayList follow;         // of a desk: names of servers, with * and ?
    int metricsPort = 0;           // 0: none

    bool isDesk() const { return role == Role::Desk; }
    bool follows(const QByteArray &server) const;
};

// A failure names the file and the line: "corvel-fleet.conf:7: endpoints: ...".
ops::Outcome<Config> readConfig(const QByteArray &file);
ops::Outcome<Config> parseConfig(const QByteArray &text, const QByteArray &file);

// The file of this user, else the machine's; the user's where there is neither.
QByteArray usualConfigFile();

} // namespace fleet

#endif
