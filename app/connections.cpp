// SPDX-License-Identifier: MIT
//
// Roof: which control runs which slot. The dialog takes the whole list away while it changes its controls
// itself. Connected for good are only the buttons, which no program presses, and the choice of a
// configuration.
#include "app/dialog/private.h"
#include "theme/lineaddress.h"

#include <QCheckBox>
#include <QComboBox>
#include <QLineEdit>
#include <QPushButton>
#include <QRadioButton>

void QCorvelPrivate::listConnections()
{
    const auto toggled = &QAbstractButton::toggled;
    const auto chosen = qOverload<int>(&QComboBox::currentIndexChanged);
    const auto edited = &QLineEdit::editingFinished;
    const auto setting = qOverload<>(&QCorvel::onSettingChanged);
    const auto settingInt = qOverload<int>(&QCorvel::onSettingChanged);
    const auto settingBool = qOverload<bool>(&QCorvel::onSettingChanged);

    wiring.add(q->m_pNmosOverride, toggled, q, &QCorvel::onBoardSettingChanged);
    wiring.add(q->m_pNmosOutLog, toggled, q, &QCorvel::toggleNmosLog);
    wiring.add(q->m_pChannel, chosen, q, &QCorvel::onChannelSettingChanged);
    wiring.add(q->m_pComboType, chosen, q, &QCorvel::onTypeSettingChanged);
    wiring.add(q->m_pComboVidFormat, chosen, q, &QCorvel::onFormatChanged);
    wiring.add(q->m_pComboAudChan, chosen, q, &QCorvel::enableAudChannel);
    wiring.add(q->m_pComboAudFlow, chosen, q, &QCorvel::enableAudFlow);
    wiring.add(q->m_pUseGmId, toggled, q, &QCorvel::onUseGmId);
    wiring.add(q->m_pCheckLockGroup, toggled, q, &QCorvel::onLockGroup);

    for (QComboBox *combo :
         {q->m_pComboReceive, q->m_pComboSend, q->m_pComboClkSrc, q->m_pComboPTimeTx, q->m_pComboPTimeRx})
        wiring.add(combo, chosen, q, settingInt);
    for (QLineEdit *edit : {q->m_pEditClockDomain, q->m_pEditGmId, q->m_pEditGmAddress})
        wiring.add(edit, edited, q, setting);
    for (QRadioButton *radio : {q->m_pVideoConfig, q->m_pAudioConfig, q->m_pAncConfig})
        wiring.add(radio, toggled, q, &QCorvel::onSelectionChanged);
    for (QRadioButton *radio : q->m_pAudFlowSelect)
        wiring.add(radio, toggled, q, &QCorvel::onSelectionChanged);

    for (const NetworkField &field : view.fields()) {
        wiring.add(field.use, toggled, q, settingBool);
        wiring.add(field.lock, toggled, q, &QCorvel::onLockSetting);
        if (field.edit)
            wiring.add(field.edit, edited, q, setting);
    }

    // An address saves when it changed and again when it is left: some keys change an octet without
    // addressChanged. An interface checks and stores itself, each signal with its own slot.
    for (QLineAddress *address : {q->m_pLineRecSrcAddr, q->m_pLineRecDstAddr, q->m_pLineSndSrcAddr,
                                  q->m_pLineSndDstAddr, q->m_pSimpleAddress}) {
        wiring.add(address, &QLineAddress::addressChanged, q, setting);
        wiring.add(address, &QLineAddress::processReturn, q, setting);
    }
    for (QLineAddress *address : {q->m_pEditRecIFace, q->m_pEditSndIFace}) {
        wiring.add(address, &QLineAddress::addressChanged, q, &QCorvel::onInterfaceEdit);
        wiring.add(address, &QLineAddress::processReturn, q, &QCorvel::onInterfaceAlert);
    }
}

void QCorvelPrivate::connectButtons()
{
    const auto clicked = &QPushButton::clicked;
    if (q->m_pConfig)
        QObject::connect(q->m_pConfig, qOverload<int>(&QComboBox::currentIndexChanged), q,
                         &QCorvel::onSetConfig);
    QObject::connect(q->m_pOpenNmosCfg, clicked, q, &QCorvel::onShowNmosCfg);
    QObject::connect(q->m_pSetNmosCfg, clicked, q, &QCorvel::onSetNmosCfg);
    QObject::connect(q->m_pCmdLoad, clicked, q, &QCorvel::load);
    QObject::connect(q->m_pCmdSave, clicked, q, &QCorvel::save);
    QObject::connect(q->m_pCmdSaveElement, clicked, q, &QCorvel::saveElement);
    QObject::connect(q->m_pCmdAccept, clicked, q, &QCorvel::ok);
    QObject::connect(q->m_pCmdCancel, clicked, q, &QCorvel::cancel);
    if (q->m_pCmdURLs)
        QObject::connect(q->m_pCmdURLs, clicked, q, &QCorvel::showurls);
}
