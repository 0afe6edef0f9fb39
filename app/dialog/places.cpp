// SPDX-License-Identifier: MIT
//
// Class floor, places: what the shown values belong to, and going there without loading anything.
#include "app/dialog/private.h"

#include <QCheckBox>
#include <QComboBox>
#include <QPushButton>
#include <QSignalBlocker>
#include <QStackedLayout>

QString QCorvelPrivate::shownConfiguration() const
{
    return q->m_pConfig ? q->m_pConfig->currentData().toString() : QString();
}

QCorvelPrivate::Place QCorvelPrivate::place() const
{
    return {view.place(), shownConfiguration()};
}

void QCorvelPrivate::go(const Place &place)
{
    const SignalBracket bracket(q);
    view.go(place.view);
    if (!q->m_pConfig)
        return;
    const QSignalBlocker blocker(q->m_pConfig);
    q->m_pConfig->setCurrentIndex(q->m_pConfig->findData(place.configuration));
}

// Only what others changed, and what another configuration has: after "Save File" the box stays checked
// although the override has ended.
void QCorvelPrivate::followSwitches(quint32 value)
{
    const bool changed = value != nmosOverride;
    const bool isOtherStore = takingOver || shown.configuration != shownConfiguration();
    nmosOverride = value;
    if (!changed || !isOtherStore || view.held().contains(q->m_pNmosOverride))
        return;
    q->m_pNmosOverride->setChecked(value != 0);
    q->m_pSwapLayout->setCurrentIndex(value != 0 ? 0 : 1);
    q->m_pCmdLoad->setEnabled(value != 0);
}
