// SPDX-License-Identifier: MIT
//
// View: the element that is shown, and its values on the screen. Knows no store.
#include "app/corvel.h"
#include "app/dialog/private.h"
#include "channel/channelstore.h"

#include <QCheckBox>
#include <QComboBox>

quint32 QCorvelPrivate::comboData(const QComboBox *combo) const
{
    return combo->currentData().toUInt();
}

int QCorvelPrivate::currentChannel() const
{
    return q->m_pChannel->currentIndex();
}

Element QCorvelPrivate::currentElement() const
{
    if (q->isAnc())
        return Element::Anc;
    return q->isAudio() ? Element::Audio : Element::Video;
}

// Both sides share one combo of channels per flow; the send side is read last and stays.
void QCorvelPrivate::showValue(Side side, Field field, const QString &value)
{
    switch (field) {
    case Field::Flags:
        showFlags(side, toDword(value));
        break;
    case Field::Channels:
        q->selectFromData(q->m_pComboAudChan, toDword(value));
        break;
    case Field::PacketTime:
        q->selectFromData(side == Side::Receive ? q->m_pComboPTimeRx : q->m_pComboPTimeTx, toDword(value));
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

void QCorvelPrivate::showFlags(Side side, quint32 flags)
{
    for (const FlagBit &row : flagBits())
        q->useSetting(networkField(side, row.field).use, flags, row.bit);
}

// What a save writes for one field, as text.
QString QCorvelPrivate::shownValue(Side side, Field field) const
{
    const bool receive = side == Side::Receive;
    switch (field) {
    case Field::Flags:
        return QString::number(shownFlags(side));
    case Field::Channels:
        return QString::number(comboData(q->m_pComboAudChan));
    case Field::PacketTime:
        return QString::number(comboData(receive ? q->m_pComboPTimeRx : q->m_pComboPTimeTx));
    case Field::TotalChannels:
        return QString::number(comboData(q->m_pComboAudFlow) * comboData(q->m_pComboAudChan));
    case Field::SourceAddress:
    case Field::SourcePort:
    case Field::DestinationAddress:
    case Field::DestinationPort:
    case Field::Interface:
        break;
    }
    return networkField(side, field).value();
}

quint32 QCorvelPrivate::shownFlags(Side side) const
{
    quint32 flags = 0;
    for (const FlagBit &row : flagBits()) {
        if (networkField(side, row.field).use->isChecked())
            flags |= row.bit;
    }
    return flags;
}
