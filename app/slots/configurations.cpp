// SPDX-License-Identifier: MIT
//
// Slots, configurations: the named configurations of the store and the switch between them.
#include "channel/configurations.h"
#include "app/corvel.h"

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

void QCorvel::onSetConfig()
{
    if (!m_pConfig)
        return;
    useConfiguration(m_pConfig->currentData().toString());
    loadData();
}

// Another program may have switched the configuration. Edits go to the one in use, so that is the one to
// be shown; looked after when the window comes to the front.
void QCorvel::followConfig()
{
    if (!m_pConfig)
        return;
    const QString inUse = configurationInUse();
    if (inUse.isEmpty() || inUse == m_pConfig->currentData().toString())
        return;
    {
        const QSignalBlocker blocker(m_pConfig);
        m_pConfig->clear();
        findConfigs();
    }
    loadData();
}

void QCorvel::changeEvent(QEvent *event)
{
    QDialog::changeEvent(event);
    if (event->type() == QEvent::ActivationChange && isActiveWindow())
        followConfig();
}
