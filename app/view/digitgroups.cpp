// SPDX-License-Identifier: MIT
#include "app/view/digitgroups.h"

QByteArray digitGroups(qint64 number)
{
    // Negated as unsigned, so that the smallest number has a magnitude too.
    const quint64 magnitude = number < 0 ? 0 - static_cast<quint64>(number) : static_cast<quint64>(number);
    QByteArray digits = QByteArray::number(magnitude);
    for (int at = digits.size() - 3; at > 0; at -= 3)
        digits.insert(at, ',');
    return number < 0 ? '-' + digits : digits;
}
