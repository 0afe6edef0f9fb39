// SPDX-License-Identifier: MIT
//
// What the engine knows of one channel, and how it gets it from the configuration store and back.
#ifndef CORVEL_HOST_ENGINESTORE_H
#define CORVEL_HOST_ENGINESTORE_H

#include "app/mediacommand.h"

#include <QMap>
#include <QPair>

// An element's code and its flow, 0 for an element other than audio.
using StreamId = QPair<quint32, int>;

struct EngineChannel {
    quint32 type = 0; // 0: the engine has no such channel
    quint32 clockSource = 0;
    quint32 domain = 0;
    quint32 audioLayout = 0;
    QMap<StreamId, MEDIACMD> streams; // the network settings of each
};

// Reads a channel as the store has it; absent values are empty or 0. Blocks as long as the disk does.
EngineChannel readChannel(int channel);

// Writes it back and makes it durable.
void writeChannel(int channel, const EngineChannel &settings);

#endif
