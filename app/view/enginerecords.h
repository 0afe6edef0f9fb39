// SPDX-License-Identifier: MIT
//
// View: media commands made of plain values, and an engine's answers taken apart. Nothing is sent here.
#ifndef CORVEL_VIEW_ENGINERECORDS_H
#define CORVEL_VIEW_ENGINERECORDS_H

#include "app/mediacommand.h"
#include "channel/channelkeys.h"

#include <QString>
#include <QVector>

// The audio of a channel as one number: channels of all flows << 16 | channels per flow.
quint32 audioLayout(quint32 flows, quint32 channels);
quint32 layoutChannels(quint32 layout);
// An engine that names no channels per flow means kDefaultAudioChannels.
quint32 layoutFlows(quint32 layout);

// The settings of one side of an element.
struct EngineSettings {
    QString sourceAddress;
    QString destinationAddress;
    QString interfaceAddress;
    quint32 sourcePort = 0;
    quint32 destinationPort = 0;
    quint32 audioLayout = 0;
    quint32 flags = 0;
};

// A command about a channel; everything else is zero.
MEDIACMD engineRecord(quint32 code, int channel);

// Texts are cut to what the record holds.
void putSettings(MEDIACMD &record, const EngineSettings &settings);

// Texts of an answer may fill their array to the end.
EngineSettings settingsOf(const MEDIACMD &answer);

// One network field for every element of the channel: once for video and ancillary data, for each flow of
// audio. A port travels as a number, an address as text.
QVector<MEDIACMD> fieldRecords(int channel, Side side, Field field, const QString &text);

#endif
