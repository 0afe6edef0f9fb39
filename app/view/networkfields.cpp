// SPDX-License-Identifier: MIT
//
// View: the ten network fields of the page.
#include "app/corvel.h"
#include "theme/lineaddress.h"

#include <QCheckBox>
#include <QLineEdit>

#include <algorithm>

QVector<QCorvel::NetworkField> QCorvel::networkFields() const
{
    const Side rx = Side::Receive;
    const Side tx = Side::Send;
    // clang-format off
    return {
        // side, field,               address,           text,              use box,             lock box
        {rx, Field::SourceAddress,      m_pLineRecSrcAddr, nullptr,           m_pCheckRecSrcAddr,  m_pCheckLockRecSrcAddr},
        {rx, Field::SourcePort,         nullptr,           m_pEditRecSrcPort, m_pCheckRecSrcPort,  m_pCheckLockRecSrcPort},
        {rx, Field::DestinationAddress, m_pLineRecDstAddr, nullptr,           m_pCheckRecDstAddr,  m_pCheckLockRecDstAddr},
        {rx, Field::DestinationPort,    nullptr,           m_pEditRecDstPort, m_pCheckRecDstPort,  m_pCheckLockRecDstPort},
        {rx, Field::Interface,          m_pEditRecIFace,   nullptr,           m_pCheckRecDstIFace, m_pCheckLockRecDstIFace},
        {tx, Field::SourceAddress,      m_pLineSndSrcAddr, nullptr,           m_pCheckSndSrcAddr,  m_pCheckLockSndSrcAddr},
        {tx, Field::SourcePort,         nullptr,           m_pEditSndSrcPort, m_pCheckSndSrcPort,  m_pCheckLockSndSrcPort},
        {tx, Field::DestinationAddress, m_pLineSndDstAddr, nullptr,           m_pCheckSndDstAddr,  m_pCheckLockSndDstAddr},
        {tx, Field::DestinationPort,    nullptr,           m_pEditSndDstPort, m_pCheckSndDstPort,  m_pCheckLockSndDstPort},
        {tx, Field::Interface,          m_pEditSndIFace,   nullptr,           m_pCheckSndDstIFace, m_pCheckLockSndDstIFace},
    };
    // clang-format on
}

QString QCorvel::NetworkField::value() const
{
    return address ? address->address() : edit->text();
}

void QCorvel::NetworkField::setValue(const QString &value) const
{
    if (address)
        address->setAddress(value);
    else
        edit->setText(value);
}

QWidget *QCorvel::NetworkField::control() const
{
    return address ? static_cast<QWidget *>(address) : edit;
}

const QCorvel::NetworkField &QCorvel::networkField(Side side, Field field) const
{
    const auto row = std::find_if(m_fields.cbegin(), m_fields.cend(), [=](const NetworkField &candidate) {
        return candidate.side == side && candidate.field == field;
    });
    if (row == m_fields.cend())
        qFatal("field %d is no network field", static_cast<int>(field)); // a neighbour would be overwritten
    return *row;
}
