// SPDX-License-Identifier: MIT
//
// Slots, elements: another channel, element or flow is chosen and shown, or single-flow mode is switched.
#include "app/dialog/private.h"
#include "app/view/combos.h"
#include "channel/elementvalues.h"

#include <QCheckBox>
#include <QComboBox>
#include <QSignalBlocker>

namespace {

// "lock all" says what was last done to the shown element; another one starts without it.
void uncheckLockAll(QCheckBox *lockAll)
{
    const QSignalBlocker blocker(lockAll);
    lockAll->setChecked(false);
}

void writeSingleFlow(QCorvel *q, bool single, int channel)
{
    q->setCfgValue(ChannelValue::AudioFlowType, single ? QStringLiteral("0") : QStringLiteral("1"), false,
                   channel);
    if (!single)
        return;
    const QString total = QString::number(comboData(q->m_pComboAudChan));
    for (const Side side : sideOrder())
        setElementValue(Element::Audio, side, Field::TotalChannels, total, channel);
}

} // namespace

void QCorvel::onChannelSettingChanged(int)
{
    d->finishKeys();
    uncheckLockAll(m_pCheckLockGroup);
    loadData();
}

void QCorvel::onSelectionChanged(bool value)
{
    d->finishKeys();
    uncheckLockAll(m_pCheckLockGroup);
    if (value)
        loadData();
    d->showElementControls();
}

// After a switch no flow is selected: the values without a flow number are then the ones edited.
void QCorvel::audChanUseSingle(bool single)
{
    d->finishKeys();
    AudioFlows &flows = d->view.flows();
    {
        const SignalBracket bracket(this);
        flows.setSingle(single);
        m_pAudFlowUseSingle->setChecked(single);
        if (single)
            m_pComboAudFlow->setCurrentIndex(0);
        m_pComboAudFlow->setEnabled(!single);
        d->write([&] { writeSingleFlow(this, single, d->channel()); });
        flows.clear();
    }
    flows.setKeepNone(true);
    loadData();
    flows.setKeepNone(false);
}
