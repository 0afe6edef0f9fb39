// SPDX-License-Identifier: MIT
//
// What a line edit for a UDP port needs beyond a line edit. It has no validator on purpose: one would keep
// editingFinished() back for the very texts that have to be told about.
#ifndef CORVEL_PORTFIELD_H
#define CORVEL_PORTFIELD_H

#include <QString>

class QLineEdit;

// A click into the field selects all of it, so that typing replaces it. Text that is selected by dragging
// stays as it was dragged.
void selectAllOnClick(QLineEdit *edit);

// A text that is dropped on the field replaces what is there and counts as finished: a drop gives no focus
// that could be lost later. Not for a text that is dragged about inside the field.
void takeDrops(QLineEdit *edit);

// Why the text is no port number, for the user; empty for a number from 0 to 65535, blanks around it do
// not count. It does not say what is stored instead: the owner knows.
QString portProblem(const QString &text);

#endif
