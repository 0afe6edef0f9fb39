// SPDX-License-Identifier: MIT
#include "enginestore.h"

#include "channel/channelkeys.h"
#include "rkcfg.h"

#include <cstring>

namespace {

const Element kElements[] = {Element::Video, Element::Audio, Element::Anc};
const Side kSides[] = {Side::Receive, Side::Send};

struct TextMember {
    Field field;
    char (MEDIACMD::*text)[64];
};

struct NumberMember {
    Field field;
    quint32 MEDIACMD::*number;
};

// clang-format off
const TextMember kTexts[] = {
    {Field::SourceAddress,      &MEDIACMD::sourceAddress},
    {Field::DestinationAddress, &MEDIACMD::destinationAddress},
    {Field::Interface,          &MEDIACMD::interfaceAddress},
};

const NumberMember kNumbers[] = {
    {Field::SourcePort,      &MEDIACMD::sourcePort},
    {Field::DestinationPort, &MEDIACMD::destinationPort},
    {Field::Flags,           &MEDIACMD::flags},
};
// clang-format on

// One value at a time, read or written through the same call.
class ChannelAccess {
public:
    ChannelAccess(int channel, bool write)
        : m_path("KWX\\Internal" + QByteArray::number(channel) + "\\IpConfig"), m_write(write)
    {
    }
    void number(const QByteArray &name, quint32 &value) const
    {
        rkCFGValueDword(RKCFG_DEFAULT_STORE, m_path.constData(), name.constData(), &value, m_write);
    }
    void text(const QByteArray &name, char (&value)[64]) const
    {
        uint32_t size = sizeof value;
        if (m_write)
            size = static_cast<uint32_t>(strlen(value)) + 1;
        rkCFGValueString(RKCFG_DEFAULT_STORE, m_path.constData(), name.constData(), value, &size, m_write);
        value[sizeof value - 1] = '\0';
    }

private:
    QByteArray m_path;
    int m_write;
};

void passStream(const ChannelAccess &access, Element element, Side side, int flow, MEDIACMD &stream)
{
    const QByteArray suffix = QByteArray::number(flow);
    for (const TextMember &row : kTexts)
        access.text(valueName(*findChannelKey(element, side, row.field), suffix), stream.*row.text);
    for (const NumberMember &row : kNumbers)
        access.number(valueName(*findChannelKey(element, side, row.field), suffix), stream.*row.number);
}

// Total and per flow are two values in the store and one word in a command.
void passAudioLayout(const ChannelAccess &access, quint32 &layout)
{
    for (const Side side : kSides) {
        quint32 total = layout >> 16;
        quint32 channels = layout & 0xffff;
        access.number(findChannelKey(Element::Audio, side, Field::TotalChannels)->name, total);
        access.number(findChannelKey(Element::Audio, side, Field::Channels)->name, channels);
        layout = total << 16 | channels;
    }
}

void passChannel(const ChannelAccess &access, EngineChannel &settings)
{
    access.number(ChannelValue::VideoType, settings.type);
    access.number(ChannelValue::ClockType, settings.clockSource);
    access.number(ChannelValue::ClockDomain, settings.domain);
    passAudioLayout(access, settings.audioLayout);
    for (const Element element : kElements) {
        for (const Side side : kSides) {
            const int flows = element == Element::Audio ? kFlowCount : 1;
            for (int flow = 0; flow < flows; ++flow)
                passStream(access, element, side, flow, settings.streams[{elementCode(element, side), flow}]);
        }
    }
}

} // namespace

EngineChannel readChannel(int channel)
{
    EngineChannel settings;
    passChannel(ChannelAccess(channel, false), settings);
    return settings;
}

void writeChannel(int channel, const EngineChannel &settings)
{
    EngineChannel copy = settings;
    passChannel(ChannelAccess(channel, true), copy);
    rkCFGSave(RKCFG_DEFAULT_STORE, nullptr, 0);
}
