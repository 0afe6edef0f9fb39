// SPDX-License-Identifier: MIT
//
// Slots, configurations: the named configurations of the store and the switch between them.
#include "channel/configurations.h"
#include "app/dialog/private.h"

#include <QAbstractItemView>
#include <QComboBox>
#include <QEvent>
#include <QSignalBlocker>

namespace {

constexpr int kTellSeconds = 10;

// The store has refused the one that was chosen: the header names the one in use again.
void nameTheOneInUse(QCorvelPrivate *d)
{
    const QString chosen = d->shownConfiguration();
    d->listConfigs();
    d->tell(QCorvel::tr("The configuration %1 cannot be used; %2 stays").arg(chosen, d->shownConfiguration()),
            kTellSeconds);
}

} // namespace

void QCorvel::onSetConfig()
{
    if (!m_pConfig)
        return;
    d->finishKeys();
    useConfiguration(m_pConfig->currentData().toString());
    if (!d->namesStore())
        nameTheOneInUse(d.get());
    d->noteStore();
    d->watchStore();
    loadData();
    d->followNode();
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
