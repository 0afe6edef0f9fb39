// SPDX-License-Identifier: MIT
#include "app/view/combos.h"

#include <QComboBox>

quint32 comboData(const QComboBox *combo)
{
    return combo->currentData().toUInt();
}

void selectData(QComboBox *combo, quint32 value)
{
    for (int index = 0; index < combo->count(); ++index) {
        if (combo->itemData(index).toUInt() == value) {
            combo->setCurrentIndex(index);
            return;
        }
    }
}
