// SPDX-License-Identifier: MIT
//
// Slots, configurations: the named configurations of the store and the switch between them.
#include "channel/configurations.h"
#include "app/dialog/private.h"

#include <QAbstractItemView>
#include <QComboBox>
#include <QEvent>
#include <QSignalBlocker>

// One entry for each configuration on disk. The one in use is always there and selected.
void QCorvel::findConfigs()
{
    QString inUse;
    const QStringList names = configurations(&inUse);
    for (const QString &name : names)
        m_pConfig->addItem(name, name);
    m_pConfig->setCurrentIndex(m_pConfig->findData(inUse));
}

// Nothing is loaded here.
void QCorvelPrivate::listConfigs()
{
    if (!q->m_pConfig)
        return;
    QStringList listed;
    for (int i = 0; i < q->m_pConfig->count(); ++i)
        listed.append(q->m_pConfig->itemText(i));
    if (namesStore() && (q->m_pConfig->view()->isVisible() || listed == configurations()))
        return;
    const QSignalBlocker blocker(q->m_pConfig);
    q->m_pConfig->clear();
    q->findConfigs();
    watchStore();
}

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
