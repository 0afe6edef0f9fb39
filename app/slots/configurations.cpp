// SPDX-License-Identifier: MIT
//
// Slots, configurations: the named configurations of the store and the switch between them.
#include "channel/configurations.h"
#include "app/dialog/private.h"

#include <QAbstractItemView>
#include <QComboBox>
#include <QEvent>
#include <QSignalBlocker>

void QCorvel::onSetConfig()
{
    if (!m_pConfig)
        return;
    d->finishKeys();
    useConfiguration(m_pConfig->currentData().toString());
    d->noteStore();
    d->watchStore();
    loadData();
}

// Another program may have switched the configuration. Edits go to the one in use, so that is the one to be
// shown; looked after when the window comes to the front, for a store that tells no news of itself.
void QCorvel::followConfig()
{
    if (m_pConfig && !d->namesStore())
        d->takeOver();
}

void QCorvel::changeEvent(QEvent *event)
{
    QDialog::changeEvent(event);
    if (event->type() == QEvent::ActivationChange && isActiveWindow())
        followConfig();
}
