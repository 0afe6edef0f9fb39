// SPDX-License-Identifier: MIT
//
// What a configuration of this machine is in the fleet, as its own store remembers it. Blocks for as long as
// the disk takes.
#ifndef CORVEL_FLEET_SERVICE_MARKS_H
#define CORVEL_FLEET_SERVICE_MARKS_H

#include <QByteArray>

#include <optional>

namespace fleet {

struct KeptAs {
    bool desk = false;
    QByteArray server;
    QByteArray configuration; // there
};

// Nothing when the configuration has no part in a fleet, or does not exist.
std::optional<KeptAs> keptAs(const QByteArray &configuration);

// The server's configuration that the desk's copy with the server's name is of; empty when there is none.
QByteArray keptConfigurationOf(const QByteArray &server);

// True for a configuration that has values and is no copy of the fleet's: a desk must not take it for one.
bool isOwn(const QByteArray &configuration);

} // namespace fleet

#endif
