// SPDX-License-Identifier: MIT
//
// Slots, keys: what was typed and not told of yet is stored where it was typed.
#include "app/dialog/private.h"
#include "theme/lineaddress.h"

#include <QLineEdit>

// Keys belong to the place that they were typed in, so they are told of there, though the control that leads
// elsewhere has changed already.
void QCorvelPrivate::finishKeys()
{
    QList<QLineAddress *> waiting;
    for (QLineAddress *address : qAsConst(addresses)) {
        if (address->hasPendingKeys())
            waiting.append(address);
    }
    if (waiting.isEmpty())
        return;
    const Place chosen = place();
    go(shown);
    for (QLineAddress *address : waiting)
        address->finishKeys();
    go(chosen);
}

// A text that is still being typed counts as typed.
void QCorvelPrivate::finishPort()
{
    auto *edit = qobject_cast<QLineEdit *>(fieldInHand(q));
    if (edit)
        emit edit->editingFinished();
}
