// SPDX-License-Identifier: MIT
//
// The lock book: which network fields of which channel are locked. A locked field holds one value for all
// elements of its channel, so a lock has the name of the video value, with the channel number behind it.
// The book itself belongs to the caller; nothing of it is stored. No function here blocks.
#ifndef CORVEL_LOCKBOOK_H
#define CORVEL_LOCKBOOK_H

#include "channel/channelkeys.h"

#include <QByteArray>
#include <QMap>
#include <QString>

using LockBook = QMap<QString, bool>;

// The name of a lock: "ReceiveSourceIp0". The second form takes the video value's name.
QString lockName(Side side, Field field, int channel);
QString lockName(const QByteArray &videoValueName, int channel);

// A lock that was never written is open. Asking writes nothing.
bool isLocked(const LockBook &book, const QString &name);
bool isLocked(const LockBook &book, Side side, Field field, int channel);

void setLocked(LockBook &book, Side side, Field field, int channel, bool locked);

// Locks both interfaces of the channels 0 to channels - 1, which is how a dialog starts: a machine's
// elements normally share their network interfaces.
void lockInterfaces(LockBook &book, int channels);

#endif
