// SPDX-License-Identifier: MIT
#include "app/view/networkfields.h"

#include "theme/lineaddress.h"

#include <QCheckBox>
#include <QLineEdit>

#include <algorithm>

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

const NetworkField &NetworkFields::at(Side side, Field field) const
{
    const auto row = std::find_if(begin(), end(), [=](const NetworkField &candidate) {
        return candidate.side == side && candidate.field == field;
    });
    if (row == end())
        qFatal("field %d is no network field", static_cast<int>(field));
    return *row;
}

void NetworkFields::showFlags(Side side, quint32 flags) const
{
    for (const FlagBit &row : flagBits())
        at(side, row.field).use->setChecked((flags & row.bit) != 0);
}

quint32 NetworkFields::flags(Side side) const
{
    quint32 flags = 0;
    for (const FlagBit &row : flagBits()) {
        if (at(side, row.field).use->isChecked())
            flags |= row.bit;
    }
    return flags;
}
