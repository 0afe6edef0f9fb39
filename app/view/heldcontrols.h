// SPDX-License-Identifier: MIT
//
// View: controls that keep what the user gave them while everything else is shown anew.
#ifndef CORVEL_VIEW_HELDCONTROLS_H
#define CORVEL_VIEW_HELDCONTROLS_H

#include <QList>
#include <QPointer>
#include <QVariant>

class QWidget;

class HeldControls {
public:
    // Holds a line edit, an address, a combo box, a check box or a radio button with what it shows now. Null
    // and what is held already are ignored, and so is a text that the user did not change.
    void hold(QObject *control);

    // A load leaves held line edits and addresses alone: setting them would move the cursor.
    bool contains(const QObject *control) const;

    // Gives the boxes and combos back what they had. They stay held.
    void putBack() const;
    void release() { m_rows.clear(); }

private:
    struct Row {
        QPointer<QObject> control;
        QVariant value;
    };
    QList<Row> m_rows;
};

// The line edit or address of the window that has the focus and was typed in since it was last shown or
// settled; null when there is none. Whether the window is in front does not count.
QWidget *fieldInHand(const QWidget *window);

// What was typed in the window so far is stored, but not what was typed in its child dialogs. An address
// stays in hand until the focus leaves it.
void settleFields(const QWidget *window);

#endif
