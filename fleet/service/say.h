// SPDX-License-Identifier: MIT
//
// One line to the log of this user and to standard error, where the system's journal reads. Any thread.
#ifndef CORVEL_FLEET_SERVICE_SAY_H
#define CORVEL_FLEET_SERVICE_SAY_H

#include <QByteArray>

namespace fleet {

void say(const QByteArray &line);

} // namespace fleet

#endif
