// SPDX-License-Identifier: MIT
//
// Keeps the mouse wheel from changing combo boxes that nobody opened.
#ifndef CORVEL_WHEELGUARD_H
#define CORVEL_WHEELGUARD_H

#include <QObject>

// An event filter for QComboBoxes. A closed one then ignores the wheel, with the focus or without, and the
// turn goes to whatever it stands in. An open list is a window of its own and scrolls as ever.
class WheelGuard : public QObject {
public:
    using QObject::QObject;

    bool eventFilter(QObject *watched, QEvent *event) override;
};

// Guards every combo box that root holds now, in child dialogs as well; the wheel does not move the focus to
// them either. The guard belongs to root.
void guardCombosFromWheel(QWidget *root);

#endif
