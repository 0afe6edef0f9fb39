// SPDX-License-Identifier: MIT
//
// Slots, elements: another channel, element or flow is chosen.
#include "app/corvel.h"
#include "app/dialog/private.h"
#include "channel/channelstore.h"

#include <QCheckBox>
#include <QComboBox>
#include <QRadioButton>
#include <QSignalBlocker>

void QCorvel::onChannelSettingChanged(int)
{
    {
        const QSignalBlocker blocker(m_pCheckLockGroup);
        m_pCheckLockGroup->setChecked(false);
    }
    loadData();
}

void QCorvel::onSelectionChanged(bool value)
{
    {
        const QSignalBlocker blocker(m_pCheckLockGroup);
        m_pCheckLockGroup->setChecked(false);
    }
    if (value)
        loadData();
    d->showElementControls();
}

// After a switch no flow is selected, on purpose: the values without a flow number are then the ones
// edited.
void QCorvel::audChanUseSingle(bool single)
{
    {
        const SignalBracket bracket(this);
        d->singleFlow = single;
        m_pAudFlowUseSingle->setChecked(single);
        setCfgValue(ChannelValue::AudioFlowType, single ? QStringLiteral("0") : QStringLiteral("1"), false,
                    d->currentChannel());
        if (single) {
            m_pComboAudFlow->setCurrentIndex(0);
            m_pComboAudFlow->setEnabled(false);
            d->writeAudioTotals(d->comboData(m_pComboAudChan));
        } else {
            m_pComboAudFlow->setEnabled(true);
        }
        commitStore();
        for (QRadioButton *flow : m_pAudFlowSelect) {
            flow->setAutoExclusive(false); // the checked button of an exclusive set cannot be unchecked
            flow->setChecked(false);
            flow->setAutoExclusive(!single);
            flow->setEnabled(!single);
        }
    }
    d->keepNoFlow = true;
    loadData();
    d->keepNoFlow = false;
}
