// SPDX-License-Identifier: MIT
//
// View: the ten network fields of the page.
#include "app/corvel.h"
#include "app/dialog/private.h"
#include "theme/lineaddress.h"

#include <QCheckBox>
#include <QLineEdit>

#include <algorithm>

QVector<NetworkField> QCorvelPrivate::networkFields() const
{
    const Side rx = Side::Receive;
    const Side tx = Side::Send;
    // clang-format off
    return {
        // side, field,               address,           text,              use box,             lock box
        {rx, Field::SourceAddress,      q->m_pLineRecSrcAddr, nullptr,           q->m_pCheckRecSrcAddr,  q->m_pCheckLockRecSrcAddr},
        {rx, Field::SourcePort,         nullptr,           q->m_pEditRecSrcPort, q->m_pCheckRecSrcPort,  q->m_pCheckLockRecSrcPort},
        {rx, Field::DestinationAddress, q->m_pLineRecDstAddr, nullptr,           q->m_pCheckRecDstAddr,  q->m_pCheckLockRecDstAddr},
        {rx, Field::DestinationPort,    nullptr,           q->m_pEditRecDstPort, q->m_pCheckRecDstPort,  q->m_pCheckLockRecDstPort},
        {rx, Field::Interface,          q->m_pEditRecIFace,   nullptr,           q->m_pCheckRecDstIFace, q->m_pCheckLockRecDstIFace},
        {tx, Field::SourceAddress,      q->m_pLineSndSrcAddr, nullptr,           q->m_pCheckSndSrcAddr,  q->m_pCheckLockSndSrcAddr},
        {tx, Field::SourcePort,         nullptr,           q->m_pEditSndSrcPort, q->m_pCheckSndSrcPort,  q->m_pCheckLockSndSrcPort},
        {tx, Field::DestinationAddress, q->m_pLineSndDstAddr, nullptr,           q->m_pCheckSndDstAddr,  q->m_pCheckLockSndDstAddr},
        {tx, Field::DestinationPort,    nullptr,           q->m_pEditSndDstPort, q->m_pCheckSndDstPort,  q->m_pCheckLockSndDstPort},
        {tx, Field::Interface,          q->m_pEditSndIFace,   nullptr,           q->m_pCheckSndDstIFace, q->m_pCheckLockSndDstIFace},
    };
    // clang-format on
}

QString NetworkField::value() const
{
    return address ? address->address() : edit->text();
}

void NetworkField::setValue(const QString &value) const
{
    if (address)
        address->setAddress(value);
    else
        edit->setText(value);
}

QWidget *NetworkField::control() const
{
    return address ? static_cast<QWidget *>(address) : edit;
}

const NetworkField &QCorvelPrivate::networkField(Side side, Field field) const
{
    const auto row = std::find_if(fields.cbegin(), fields.cend(), [=](const NetworkField &candidate) {
        return candidate.side == side && candidate.field == field;
    });
    if (row == fields.cend())
        qFatal("field %d is no network field", static_cast<int>(field)); // a neighbour would be overwritten
    return *row;
}
