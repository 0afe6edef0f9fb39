// SPDX-License-Identifier: MIT
//
// View: combo boxes whose entries carry a number as their item data.
#ifndef CORVEL_VIEW_COMBOS_H
#define CORVEL_VIEW_COMBOS_H

#include <QtGlobal>

class QComboBox;

// The number of the chosen entry; 0 when none is chosen.
quint32 comboData(const QComboBox *combo);

// Chooses the first entry with this number; without one the choice stays as it was.
void selectData(QComboBox *combo, quint32 value);

#endif
