// SPDX-License-Identifier: MIT
//
// Do the network interfaces that a channel names exist on this machine?
#ifndef CORVEL_INTERFACECHECK_H
#define CORVEL_INTERFACECHECK_H

#include "channel/channelkeys.h"

#include <QList>
#include <QString>

// True when this machine has an interface with this address; as rkOSIPExists has it.
bool interfaceExists(const QString &address);

// The same for what is only shown: an answer may be up to a second old. User interface thread.
bool interfaceExistedLately(const QString &address);

// What a message says before the address: "Video IP ". To be translated in the context "QCorvel".
const char *interfaceLabel(Element element);

struct MissingInterface {
    Element element;
    Side side;
    QString address; // as it is stored
};

// The interfaces of the channel that do not exist here, of six: by element, the receive side first. Each is
// asked for on its own, also when two are the same.
QList<MissingInterface> missingInterfaces(int channel);

#endif
