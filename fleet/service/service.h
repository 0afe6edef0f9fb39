// SPDX-License-Identifier: MIT
//
// corvel-fleet run: the event loop of the service, from its start to SIGTERM.
#ifndef CORVEL_FLEET_SERVICE_SERVICE_H
#define CORVEL_FLEET_SERVICE_SERVICE_H

#include <QByteArray>

namespace fleet {

// Exit codes of the service.
constexpr int kStopped = 0;
constexpr int kBadConfiguration = 2; // the file, or a file that it names
constexpr int kRefused = 3;          // a desk where an engine is, another service on this store, no notes

// Blocks until the service is told to stop. Needs a QCoreApplication and no other thread yet.
int runService(const QByteArray &configFile);

} // namespace fleet

#endif
