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

ChannelView::Place ChannelView::place() const
{
    const Element chosen = m_controls.anc->isChecked()     ? Element::Anc
                           : m_controls.audio->isChecked() ? Element::Audio
                                                           : Element::Video;
    return {channel(), m_controls.type->currentIndex(), chosen, m_flows.checked()};
}

void ChannelView::go(const Place &place) const
{
    QRadioButton *const radio = place.element == Element::Anc     ? m_controls.anc
                                : place.element == Element::Audio ? m_controls.audio
                                                                  : m_controls.video;
    m_controls.channel->setCurrentIndex(place.channel);
    m_controls.type->setCurrentIndex(place.type);
    radio->setChecked(true);
    m_flows.setChecked(place.flows);
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
        showText(m_fields.at(side, field), text);
        break;
    case Field::TotalChannels: // shown as the number of flows, which needs the channels per flow as well
        break;
    }
}

void ChannelView::showText(const NetworkField &field, const QString &text) const
{
    if (!m_held.contains(field.control()))
        field.setValue(text);
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
