// SPDX-License-Identifier: MIT
//
// View: the element that is shown, and its values on the screen. Knows no store.
#include "app/corvel.h"
#include "channel/channelstore.h"

#include <QCheckBox>
#include <QComboBox>

quint32 QCorvel::comboData(const QComboBox *combo) const
{
    return combo->currentData().toUInt();
}

int QCorvel::currentChannel() const
{
    return m_pChannel->currentIndex();
}

Element QCorvel::currentElement() const
{
    if (isAnc())
        return Element::Anc;
    return isAudio() ? Element::Audio : Element::Video;
}

// Both sides share one combo of channels per flow; the send side is read last and stays.
void QCorvel::showValue(Side side, Field field, const QString &value)
{
    switch (field) {
    case Field::Flags:
        showFlags(side, toDword(value));
        break;
    case Field::Channels:
        selectFromData(m_pComboAudChan, toDword(value));
        break;
    case Field::PacketTime:
        selectFromData(side == Side::Receive ? m_pComboPTimeRx : m_pComboPTimeTx, toDword(value));
        break;
    case Field::SourceAddress:
    case Field::SourcePort:
    case Field::DestinationAddress:
    case Field::DestinationPort:
    case Field::Interface:
        networkField(side, field).setValue(value);
        break;
    case Field::TotalChannels: // shown as the number of flows, by loadFlowCount
        break;
    }
}

void QCorvel::showFlags(Side side, quint32 flags)
{
    for (const FlagBit &row : flagBits())
        useSetting(networkField(side, row.field).use, flags, row.bit);
}

// What a save writes for one field, as text.
QString QCorvel::shownValue(Side side, Field field) const
{
    const bool receive = side == Side::Receive;
    switch (field) {
    case Field::Flags:
        return QString::number(shownFlags(side));
    case Field::Channels:
        return QString::number(comboData(m_pComboAudChan));
    case Field::PacketTime:
        return QString::number(comboData(receive ? m_pComboPTimeRx : m_pComboPTimeTx));
    case Field::TotalChannels:
        return QString::number(comboData(m_pComboAudFlow) * comboData(m_pComboAudChan));
    case Field::SourceAddress:
    case Field::SourcePort:
    case Field::DestinationAddress:
    case Field::DestinationPort:
    case Field::Interface:
        break;
    }
    return networkField(side, field).value();
}

quint32 QCorvel::shownFlags(Side side) const
{
    quint32 flags = 0;
    for (const FlagBit &row : flagBits()) {
        if (networkField(side, row.field).use->isChecked())
            flags |= row.bit;
    }
    return flags;
}
