// SPDX-License-Identifier: MIT
//
// RecordingEngine: stands in for a record and playback engine. It sits behind the dialog's hook, keeps
// the settings of its channels, answers questions from them and writes down every command it gets.
#ifndef CORVEL_HOST_RECORDINGENGINE_H
#define CORVEL_HOST_RECORDINGENGINE_H

#include "enginestore.h"

#include <QMap>
#include <QObject>
#include <QSet>
#include <QStringList>

class RecordingEngine : public QObject {
    Q_OBJECT

public:
    // Opens the channels 0 to channels - 1 as the store has them and puts itself behind the hook, until it
    // is destroyed. One engine at a time. Has to live longer than any dialog.
    explicit RecordingEngine(int channels);
    ~RecordingEngine() override;

    // Every command since the start or the last clear(), one line each.
    QStringList record() const { return m_record; }
    void clear() { m_record.clear(); }

    // The engine's settings of a channel; a type of 0 for one that it does not have.
    EngineChannel channel(int channel) const { return m_channels.value(channel); }

    // Makes what the dialog told it permanent: for a dialog that closed with "Done".
    void keep();

    // Where the channel sends to and listens, one "rtp://group:port" per stream that has a group.
    QStringList urls(int channel) const;

signals:
    void recorded(const QString &line);

private:
    int handle(MEDIACMD *command, int mode);
    bool answer(const EngineChannel &channel, MEDIACMD *command) const;
    bool change(EngineChannel &channel, const MEDIACMD &command);

    QMap<int, EngineChannel> m_channels;
    QSet<int> m_changed; // channels whose settings the store does not have
    QStringList m_record;
};

#endif
