// SPDX-License-Identifier: MIT
//
// Class floor: which control runs which slot. One list, applied by connectSignals and undone by
// disconnectSignals. The two nest: only the outermost pair touches the connections.
#include "app/corvel.h"
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
    m_signalDepth = qMax(0, m_signalDepth - 1);
    if (m_signalDepth == 0)
        wire(true);
}

void QCorvel::disconnectSignals()
{
    if (m_signalDepth++ == 0)
        wire(false);
}

void QCorvel::wire(bool on)
{
    const auto toggled = &QAbstractButton::toggled;
    const auto chosen = qOverload<int>(&QComboBox::currentIndexChanged);
    const auto edited = &QLineEdit::editingFinished;
    const auto setting = qOverload<>(&QCorvel::onSettingChanged);
    const auto settingInt = qOverload<int>(&QCorvel::onSettingChanged);
    const auto settingBool = qOverload<bool>(&QCorvel::onSettingChanged);

    link(on, m_pNmosOverride, toggled, this, &QCorvel::onBoardSettingChanged);
    link(on, m_pNmosOutLog, toggled, this, &QCorvel::toggleNmosLog);
    link(on, m_pChannel, chosen, this, &QCorvel::onChannelSettingChanged);
    link(on, m_pComboType, chosen, this, &QCorvel::onTypeSettingChanged);
    link(on, m_pComboVidFormat, chosen, this, &QCorvel::onFormatChanged);
    link(on, m_pComboAudChan, chosen, this, &QCorvel::enableAudChannel);
    link(on, m_pComboAudFlow, chosen, this, &QCorvel::enableAudFlow);
    link(on, m_pUseGmId, toggled, this, &QCorvel::onUseGmId);
    link(on, m_pCheckLockGroup, toggled, this, &QCorvel::onLockGroup);

    for (QComboBox *combo : {m_pComboReceive, m_pComboSend, m_pComboClkSrc, m_pComboPTimeTx, m_pComboPTimeRx})
        link(on, combo, chosen, this, settingInt);
    for (QLineEdit *edit : {m_pEditClockDomain, m_pEditGmId, m_pEditGmAddress})
        link(on, edit, edited, this, setting);
    for (QRadioButton *radio : {m_pVideoConfig, m_pAudioConfig, m_pAncConfig})
        link(on, radio, toggled, this, &QCorvel::onSelectionChanged);
    for (QRadioButton *radio : m_pAudFlowSelect)
        link(on, radio, toggled, this, &QCorvel::onSelectionChanged);

    for (const NetworkField &field : qAsConst(m_fields)) {
        link(on, field.use, toggled, this, settingBool);
        link(on, field.lock, toggled, this, &QCorvel::onLockSetting);
        if (field.edit)
            link(on, field.edit, edited, this, setting);
    }

    // An address saves when it changed and again when it is left: some keys change an octet without
    // addressChanged. An interface checks and stores itself, each signal with its own slot.
    for (QLineAddress *address :
         {m_pLineRecSrcAddr, m_pLineRecDstAddr, m_pLineSndSrcAddr, m_pLineSndDstAddr, m_pSimpleAddress}) {
        link(on, address, &QLineAddress::addressChanged, this, setting);
        link(on, address, &QLineAddress::processReturn, this, setting);
    }
    for (QLineAddress *address : {m_pEditRecIFace, m_pEditSndIFace}) {
        link(on, address, &QLineAddress::addressChanged, this, &QCorvel::onInterfaceEdit);
        link(on, address, &QLineAddress::processReturn, this, &QCorvel::onInterfaceAlert);
    }
}
