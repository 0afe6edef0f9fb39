// SPDX-License-Identifier: MIT
#include "app/view/enginerecords.h"

#include "channel/channelstore.h"

namespace {

template<int Size>
void copyText(char (&target)[Size], const QString &text)
{
    qstrncpy(target, text.toLatin1().constData(), Size);
}

// An answer comes from outside: its text may lack the terminating zero.
template<int Size>
QString textOf(const char (&source)[Size])
{
    return QString::fromLatin1(source, static_cast<int>(qstrnlen(source, Size)));
}

bool isPort(Field field)
{
    return field == Field::SourcePort || field == Field::DestinationPort;
}

} // namespace

quint32 audioLayout(quint32 flows, quint32 channels)
{
    return (flows * channels) << 16 | channels;
}

quint32 layoutChannels(quint32 layout)
{
    return layout & 0xffff;
}

quint32 layoutFlows(quint32 layout)
{
    const quint32 channels = layoutChannels(layout);
    return (layout >> 16) / (channels ? channels : kDefaultAudioChannels);
}

MEDIACMD engineRecord(quint32 code, int channel)
{
    MEDIACMD record;
    record.code = code;
    record.channel = channel;
    return record;
}

void putSettings(MEDIACMD &record, const EngineSettings &settings)
{
    record.sourcePort = settings.sourcePort;
    record.destinationPort = settings.destinationPort;
    record.audioLayout = settings.audioLayout;
    copyText(record.destinationAddress, settings.destinationAddress);
    copyText(record.sourceAddress, settings.sourceAddress);
    copyText(record.interfaceAddress, settings.interfaceAddress);
    record.flags = settings.flags;
}

EngineSettings settingsOf(const MEDIACMD &answer)
{
    EngineSettings settings;
    settings.sourceAddress = textOf(answer.sourceAddress);
    settings.destinationAddress = textOf(answer.destinationAddress);
    settings.interfaceAddress = textOf(answer.interfaceAddress);
    settings.sourcePort = answer.sourcePort;
    settings.destinationPort = answer.destinationPort;
    settings.audioLayout = answer.audioLayout;
    settings.flags = answer.flags;
    return settings;
}

QVector<MEDIACMD> fieldRecords(int channel, Side side, Field field, const QString &text)
{
    QVector<MEDIACMD> records;
    for (const Element element : elementOrder()) {
        const int flows = element == Element::Audio ? kFlowCount : 1;
        for (int flow = 0; flow < flows; ++flow) {
            MEDIACMD record = engineRecord(MediaCode::SetField, channel);
            record.element = elementCode(element, side);
            record.flow = flow;
            record.field = flagBit(field);
            if (isPort(field))
                record.value = toDword(text);
            else
                copyText(record.text, text);
            records.append(record);
        }
    }
    return records;
}
