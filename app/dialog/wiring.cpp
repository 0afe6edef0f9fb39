// SPDX-License-Identifier: MIT
//
// Class floor: which control runs which slot. One list, applied by connectSignals and undone by
// disconnectSignals. The two nest: only the outermost pair touches the connections.
#include "app/corvel.h"
#include "app/dialog/private.h"
#include "theme/lineaddress.h"

#include <QCheckBox>
#include <QComboBox>
#include <QLineEdit>
#include <QRadioButton>

namespace {

template<class Sender, class Signal, class Slot>
void link(bool on, Sender *sender, Signal signal, QCorvel *receiver, Slot slot)
{
    if (on)
        QObject::connect(sender, signal, receiver, slot, Qt::UniqueConnection);
    else
        QObject::disconnect(sender, signal, receiver, slot);
}

} // namespace

void QCorvel::connectSignals()
{
    d->signalDepth = qMax(0, d->signalDepth - 1);
    if (d->signalDepth == 0)
        d->wire(true);
}

void QCorvel::disconnectSignals()
{
    if (d->signalDepth++ == 0)
        d->wire(false);
}

void QCorvelPrivate::wire(bool on)
{
    const auto toggled = &QAbstractButton::toggled;
    const auto chosen = qOverload<int>(&QComboBox::currentIndexChanged);
    const auto edited = &QLineEdit::editingFinished;
    const auto setting = qOverload<>(&QCorvel::onSettingChanged);
    const auto settingInt = qOverload<int>(&QCorvel::onSettingChanged);
    const auto settingBool = qOverload<bool>(&QCorvel::onSettingChanged);

    link(on, q->m_pNmosOverride, toggled, q, &QCorvel::onBoardSettingChanged);
    link(on, q->m_pNmosOutLog, toggled, q, &QCorvel::toggleNmosLog);
    link(on, q->m_pChannel, chosen, q, &QCorvel::onChannelSettingChanged);
    link(on, q->m_pComboType, chosen, q, &QCorvel::onTypeSettingChanged);
    link(on, q->m_pComboVidFormat, chosen, q, &QCorvel::onFormatChanged);
    link(on, q->m_pComboAudChan, chosen, q, &QCorvel::enableAudChannel);
    link(on, q->m_pComboAudFlow, chosen, q, &QCorvel::enableAudFlow);
    link(on, q->m_pUseGmId, toggled, q, &QCorvel::onUseGmId);
    link(on, q->m_pCheckLockGroup, toggled, q, &QCorvel::onLockGroup);

    for (QComboBox *combo :
         {q->m_pComboReceive, q->m_pComboSend, q->m_pComboClkSrc, q->m_pComboPTimeTx, q->m_pComboPTimeRx})
        link(on, combo, chosen, q, settingInt);
    for (QLineEdit *edit : {q->m_pEditClockDomain, q->m_pEditGmId, q->m_pEditGmAddress})
        link(on, edit, edited, q, setting);
    for (QRadioButton *radio : {q->m_pVideoConfig, q->m_pAudioConfig, q->m_pAncConfig})
        link(on, radio, toggled, q, &QCorvel::onSelectionChanged);
    for (QRadioButton *radio : q->m_pAudFlowSelect)
        link(on, radio, toggled, q, &QCorvel::onSelectionChanged);

    for (const NetworkField &field : qAsConst(fields)) {
        link(on, field.use, toggled, q, settingBool);
        link(on, field.lock, toggled, q, &QCorvel::onLockSetting);
        if (field.edit)
            link(on, field.edit, edited, q, setting);
    }

    // An address saves when it changed and again when it is left: some keys change an octet without
    // addressChanged. An interface checks and stores itself, each signal with its own slot.
    for (QLineAddress *address : {q->m_pLineRecSrcAddr, q->m_pLineRecDstAddr, q->m_pLineSndSrcAddr,
                                  q->m_pLineSndDstAddr, q->m_pSimpleAddress}) {
        link(on, address, &QLineAddress::addressChanged, q, setting);
        link(on, address, &QLineAddress::processReturn, q, setting);
    }
    for (QLineAddress *address : {q->m_pEditRecIFace, q->m_pEditSndIFace}) {
        link(on, address, &QLineAddress::addressChanged, q, &QCorvel::onInterfaceEdit);
        link(on, address, &QLineAddress::processReturn, q, &QCorvel::onInterfaceAlert);
    }
}
