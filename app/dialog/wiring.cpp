// SPDX-License-Identifier: MIT
//
// Class floor: connecting and disconnecting, counted. The list itself is made in app/connections.cpp.
#include "app/dialog/private.h"

void QCorvel::connectSignals()
{
    d->wiring.connectAll();
}

void QCorvel::disconnectSignals()
{
    d->wiring.disconnectAll();
}
