// SPDX-License-Identifier: MIT
#include "app/view/channelview.h"

#include "app/view/combos.h"
#include "channel/channelstore.h"

#include <QComboBox>
#include <QRadioButton>

ChannelView::ChannelView(const Controls &controls, const NetworkFields &fields, const AudioFlows &flows)
    : m_controls(controls), m_fields(fields), m_flows(flows)
{
}

int ChannelView::channel() const
{
    return m_controls.channel->currentIndex();
}

bool ChannelView::isType(quint32 type) const
{
    return comboData(m_controls.type) == type;
}

bool ChannelView::isMultiType(quint32 type)
{
    return type == ChannelType::Smpte2110 || type == ChannelType::ClockDomainOwner;
}

bool ChannelView::isMultiType() const
{
    return isMultiType(comboData(m_controls.type));
}

bool ChannelView::isVideo() const
{
    return !isMultiType() || m_controls.video->isChecked();
}

bool ChannelView::isAudio() const
{
    return isMultiType() && m_controls.audio->isChecked();
}

bool ChannelView::isAnc() const
{
    return isMultiType() && m_controls.anc->isChecked();
}

Element ChannelView::element() const
{
    if (isAnc())
        return Element::Anc;
    return isAudio() ? Element::Audio : Element::Video;
}

void ChannelView::show(Side side, Field field, const QString &text)
{
    switch (field) {
    case Field::Flags:
        m_fields.showFlags(side, toDword(text));
        break;
    case Field::Channels:
        selectData(m_controls.audioChannels, toDword(text));
        break;
    case Field::PacketTime:
        selectData(packetTime(side), toDword(text));
        break;
    case Field::SourceAddress:
    case Field::SourcePort:
    case Field::DestinationAddress:
    case Field::DestinationPort:
    case Field::Interface:
        m_fields.at(side, field).setValue(text);
        break;
    case Field::TotalChannels: // shown as the number of flows, which needs the channels per flow as well
        break;
    }
}

QString ChannelView::value(Side side, Field field) const
{
    const quint32 channels = comboData(m_controls.audioChannels);
    switch (field) {
    case Field::Flags:
        return QString::number(m_fields.flags(side));
    case Field::Channels:
        return QString::number(channels);
    case Field::PacketTime:
        return QString::number(comboData(packetTime(side)));
    case Field::TotalChannels:
        return QString::number(comboData(m_controls.audioFlows) * channels);
    case Field::SourceAddress:
    case Field::SourcePort:
    case Field::DestinationAddress:
    case Field::DestinationPort:
    case Field::Interface:
        break;
    }
    return m_fields.at(side, field).value();
}

QComboBox *ChannelView::packetTime(Side side) const
{
    return side == Side::Receive ? m_controls.receivePacketTime : m_controls.sendPacketTime;
}
