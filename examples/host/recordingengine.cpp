// SPDX-License-Identifier: MIT
#include "recordingengine.h"

#include <cstring>

namespace {

constexpr quint32 kSmpte2110 = 1;

// Copies what both sides of a settings command carry.
void copySettings(const MEDIACMD &from, MEDIACMD &to)
{
    to.sourcePort = from.sourcePort;
    to.destinationPort = from.destinationPort;
    to.flags = from.flags;
    memcpy(to.sourceAddress, from.sourceAddress, sizeof to.sourceAddress);
    memcpy(to.destinationAddress, from.destinationAddress, sizeof to.destinationAddress);
    memcpy(to.interfaceAddress, from.interfaceAddress, sizeof to.interfaceAddress);
}

// One locked field; its number is the bit it has in the flags.
void copyField(const MEDIACMD &from, MEDIACMD &to)
{
    switch (from.field) {
    case 1:
        to.sourcePort = from.value;
        break;
    case 2:
        to.destinationPort = from.value;
        break;
    case 4:
        memcpy(to.sourceAddress, from.text, sizeof to.sourceAddress);
        break;
    case 8:
        memcpy(to.destinationAddress, from.text, sizeof to.destinationAddress);
        break;
    case 16:
        memcpy(to.interfaceAddress, from.text, sizeof to.interfaceAddress);
        break;
    }
}

QString describe(const MEDIACMD &command, int mode)
{
    const auto hex = [](quint32 number) { return QString::number(number, 16); };
    QString line = QStringLiteral("%1 %2 channel %3")
                       .arg(mode == MediaMode::Ask ? QStringLiteral("asks") : QStringLiteral("tells"))
                       .arg(command.code)
                       .arg(command.channel);
    if (command.element)
        line += QStringLiteral(" element 0x%1 flow %2").arg(hex(command.element)).arg(command.flow);
    switch (command.code) {
    case MediaCode::SetType:
        return line + QStringLiteral(" type %1 layout 0x%2").arg(command.type).arg(hex(command.audioLayout));
    case MediaCode::SetClock:
        return line +
               QStringLiteral(" clock 0x%1 domain %2").arg(hex(command.clockSource)).arg(command.domain);
    case MediaCode::SetField:
        return line + QStringLiteral(" field %1 value %2 text %3")
                          .arg(command.field)
                          .arg(command.value)
                          .arg(QLatin1String(command.text));
    case MediaCode::ReceiveFinal:
    case MediaCode::ReceiveSettings:
    case MediaCode::TransmitSettings:
        return line + QStringLiteral(" from %1:%2 to %3:%4 interface %5 flags 0x%6 layout 0x%7")
                          .arg(QLatin1String(command.sourceAddress))
                          .arg(command.sourcePort)
                          .arg(QLatin1String(command.destinationAddress))
                          .arg(command.destinationPort)
                          .arg(QLatin1String(command.interfaceAddress), hex(command.flags),
                               hex(command.audioLayout));
    }
    return line;
}

} // namespace

RecordingEngine::RecordingEngine(int channels)
{
    for (int channel = 0; channel < channels; ++channel) {
        EngineChannel &opened = m_channels[channel];
        opened = readChannel(channel);
        if (opened.type == 0)
            opened.type = kSmpte2110; // never set up before
    }
    setMediaHook([this](MEDIACMD *command, int mode) { return handle(command, mode); });
}

RecordingEngine::~RecordingEngine()
{
    setMediaHook({});
}

int RecordingEngine::handle(MEDIACMD *command, int mode)
{
    m_record.append(describe(*command, mode));
    emit recorded(m_record.last());
    const auto found = m_channels.find(command->channel);
    if (found == m_channels.end())
        return 0; // the question stays unanswered: no type
    if (mode == MediaMode::Ask)
        return answer(*found, command);
    if (!change(*found, *command))
        return 0;
    m_changed.insert(command->channel);
    return 1;
}

bool RecordingEngine::answer(const EngineChannel &channel, MEDIACMD *command) const
{
    switch (command->code) {
    case MediaCode::GetConfig:
        command->type = channel.type;
        command->clockSource = channel.clockSource;
        command->domain = channel.domain;
        return true;
    case MediaCode::GetSettings:
        command->audioLayout = channel.audioLayout;
        copySettings(channel.streams.value({command->element, command->flow}), *command);
        return true;
    }
    return false;
}

bool RecordingEngine::change(EngineChannel &channel, const MEDIACMD &command)
{
    const StreamId stream(command.element, command.flow);
    switch (command.code) {
    case MediaCode::SetType:
        channel.type = command.type;
        return true;
    case MediaCode::ReceiveFinal:
    case MediaCode::ReceiveSettings:
    case MediaCode::TransmitSettings:
        channel.audioLayout = command.audioLayout;
        copySettings(command, channel.streams[stream]);
        return true;
    case MediaCode::SetField:
        copyField(command, channel.streams[stream]);
        return true;
    case MediaCode::SetClock:
        channel.clockSource = command.clockSource;
        channel.domain = command.domain;
        return true;
    }
    return false; // a real engine would read its media again when told to
}

void RecordingEngine::keep()
{
    for (const int channel : qAsConst(m_changed))
        writeChannel(channel, m_channels.value(channel));
    m_changed.clear();
}

QStringList RecordingEngine::urls(int channel) const
{
    QStringList urls;
    const EngineChannel opened = m_channels.value(channel);
    for (const MEDIACMD &stream : opened.streams) {
        const QString group = QLatin1String(stream.destinationAddress);
        if (!group.isEmpty() && stream.destinationPort != 0)
            urls.append(QStringLiteral("rtp://%1:%2").arg(group).arg(stream.destinationPort));
    }
    return urls;
}
