// SPDX-License-Identifier: MIT
#include "files/fileload.h"

#include "channel/channelstore.h"
#include "channel/elementvalues.h"

void storeSettingsValue(const SettingsValue &value)
{
    if (value.global)
        setGlobalDword(StorePath::AvHal, value.key.constData(), globalSettingsNumber(value.text));
    else
        setCfgValue(value.key.constData(), value.text, value.isString, value.channel);
}

SettingsLoadResult loadSettingsFile(const FileLines &lines, const SettingsLoad &load)
{
    SettingsReader reader;
    SettingsValue value;
    QByteArray line;
    int values = 0;
    int channel = -1;
    while (lines(line)) {
        const SettingsReader::Result result = reader.feed(line, &value);
        if (result == SettingsReader::Result::Stop)
            return {SettingsLoadEnd::SectionBelowTheFirst, values};
        if (result == SettingsReader::Result::Ignored)
            continue;
        const bool isNew = value.channel != channel;
        channel = value.channel;
        if (isNew && load.betweenSections && !load.betweenSections(channel))
            return {SettingsLoadEnd::Stopped, values};
        load.store(value);
        ++values;
    }
    return {SettingsLoadEnd::EndOfFile, values};
}

bool tickedField(SdpTick tick, Field *field)
{
    switch (tick) {
    case SdpTick::None:
        return false;
    case SdpTick::RecDstAddr:
        *field = Field::DestinationAddress;
        return true;
    case SdpTick::RecSrcAddr:
        *field = Field::SourceAddress;
        return true;
    case SdpTick::RecDstPort:
        *field = Field::DestinationPort;
        return true;
    }
    Q_UNREACHABLE();
}

quint32 storeSessionDescription(const QList<SdpStore> &values, const LockBook &book, int channel)
{
    quint32 ticked = 0;
    Field field = Field::Flags;
    for (const SdpStore &value : values) {
        if (isLocked(book, lockName(value.lockName, channel)))
            continue;
        setCfgValue(value.valueName.constData(), value.text, value.isString, channel);
        if (tickedField(value.box, &field))
            ticked |= flagBit(field);
    }
    if (ticked) {
        const quint32 flags = toDword(elementValue(Element::Video, Side::Receive, Field::Flags, channel));
        setElementValue(Element::Video, Side::Receive, Field::Flags, QString::number(flags | ticked),
                        channel);
    }
    return ticked;
}
