// SPDX-License-Identifier: MIT
//
// A change of the store in whole words, as somebody reads it who has the dialog before him: "Receive
// Destination Address, channel 2 Video, 239.1.1.1 ← 239.1.1.2". Names and values that nobody here knows
// come out as they stand in the store. Pure; any thread.
#ifndef CORVEL_OPS_CHANGEWORDS_H
#define CORVEL_OPS_CHANGEWORDS_H

#include "ops/snapshot.h"

#include <QString>

namespace ops {

// "Receive Destination Address"
QString nameInWords(const QByteArray &path, const QByteArray &name);

// "channel 2 Audio 3", "channel 2", "server", or the path.
QString placeInWords(const QByteArray &path, const QByteArray &name);

// "Receive Destination Address, channel 2 Video and 3 more": one key of several.
QString keysInWords(const QByteArray &path, const QByteArray &name, int more);

// What was there stands on the left: it is what taking the change back puts there again.
QString changeInWords(const Change &change);

} // namespace ops

#endif
