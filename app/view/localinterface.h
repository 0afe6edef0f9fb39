// SPDX-License-Identifier: MIT
#ifndef CORVEL_LOCALINTERFACE_H
#define CORVEL_LOCALINTERFACE_H

#include <QString>

// True when one of this machine's network interfaces, loopback included, has this dotted IPv4 address. Each
// address found is noted in the debug log; when they cannot be read the answer is false.
bool isLocalInterface(const QString &address);

#endif
