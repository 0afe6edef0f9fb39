// SPDX-License-Identifier: MIT
#include "theme/wheelguard.h"

#include <QComboBox>
#include <QEvent>

bool WheelGuard::eventFilter(QObject *watched, QEvent *event)
{
    if (event->type() != QEvent::Wheel || !watched->inherits("QComboBox"))
        return QObject::eventFilter(watched, event);
    // Kept from the combo but not accepted: so it goes on to the parent.
    event->ignore();
    return true;
}

void guardCombosFromWheel(QWidget *root)
{
    auto *guard = new WheelGuard(root);
    for (QComboBox *combo : root->findChildren<QComboBox *>()) {
        combo->installEventFilter(guard);
        // The toolkit gives the focus before any filter is asked.
        if (combo->focusPolicy() == Qt::WheelFocus)
            combo->setFocusPolicy(Qt::StrongFocus);
    }
}
