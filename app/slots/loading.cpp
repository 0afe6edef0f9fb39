// SPDX-License-Identifier: MIT
//
// Slots, loading: the stored state of the shown channel and element goes to the controls. The dialog's
// signals are disconnected meanwhile, so loading never writes.
#include "app/dialog/private.h"
#include "app/view/combos.h"
#include "channel/channelstore.h"
#include "channel/elementvalues.h"
#include "theme/lineaddress.h"

#include <QGroupBox>
#include <QLineEdit>

namespace {

void showText(QLineEdit *edit, const QString &text, const HeldControls &held)
{
    if (!held.contains(edit))
        edit->setText(text);
}

void loadClock(QCorvel *q, const HeldControls &held, int channel)
{
    selectData(q->m_pComboClkSrc, toDword(q->cfgValue(ChannelValue::ClockType, false, channel)));
    if (q->isType(ChannelType::ClockDomainOwner))
        showText(q->m_pEditClockDomain, q->cfgValue(ChannelValue::ClockDomain, false, channel), held);
}

void loadCommon(QCorvel *q, const HeldControls &held, int channel)
{
    showText(q->m_pEditGmId, q->cfgValue(ChannelValue::ClockDomain, false, channel), held);
    showText(q->m_pEditGmAddress, q->cfgValue(ChannelValue::ClockGrandMaster, true, channel), held);
    if (!held.contains(q->m_pEditGmAddress))
        q->m_pEditGmAddress->setCursorPosition(0);
    // The simple page shows where video is sent to.
    const QString sentTo = elementValue(Element::Video, Side::Send, Field::DestinationAddress, channel);
    if (!held.contains(q->m_pSimpleAddress))
        q->m_pSimpleAddress->setAddress(sentTo);
}

void lookForInterfaces(QCorvel *q)
{
    const QString unset = QStringLiteral("1.0.0.0");
    const bool noNode = isTextEmpty(q->channelIpKeyName(0), FirstChannelValue::NmosIp);
    if (q->m_pEditRecIFace->address() == unset || q->m_pEditSndIFace->address() == unset ||
        q->m_pSimpleAddress->address() == unset || noNode)
        q->findDefaultInterface();
}

} // namespace

void QCorvel::loadData()
{
    checkLocksForConfig();
    if (isStandAlone())
        loadDataStandAlone();
    else
        d->loadEmbedded();
    d->shown = d->place();
}

void QCorvel::loadDataStandAlone()
{
    {
        const SignalBracket bracket(this);
        const int channel = d->channel();
        const quint32 flows = storedFlowCount(channel);
        selectData(m_pComboAudFlow, flows);
        d->view.flows().disablePast(flows);
        const QByteArray suffix = d->view.flows().loadSuffix();
        selectData(m_pComboType, toDword(cfgValue(ChannelValue::VideoType, false, channel)));
        const quint32 nmosOverride = globalDword(StorePath::AvHAL, MachineValue::NmosOverride, 0);
        d->followSwitches(nmosOverride);
        selectData(m_pComboVidFormat, toDword(cfgValue(ChannelValue::SignalFormat, false, channel)));
        loadElementValues(d->view, d->view.element(), channel, suffix);
        loadClock(this, d->view.held(), channel);
        m_pBoardSettings->setChecked(nmosOverride != 0);
        loadCommon(this, d->view.held(), channel);
        lookForInterfaces(this);
    }
    d->shown = d->place();
    checkPTP();
}
