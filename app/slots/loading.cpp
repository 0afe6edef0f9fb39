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

void loadClock(QCorvel *q, int channel)
{
    selectData(q->m_pComboClkSrc, toDword(q->cfgValue(ChannelValue::ClockType, false, channel)));
    if (q->isType(ChannelType::ClockDomainOwner))
        q->m_pEditClockDomain->setText(q->cfgValue(ChannelValue::ClockDomain, false, channel));
}

void loadCommon(QCorvel *q, int channel)
{
    q->m_pEditGmId->setText(q->cfgValue(ChannelValue::ClockDomain, false, channel));
    q->m_pEditGmAddress->setText(q->cfgValue(ChannelValue::ClockGrandMaster, true, channel));
    q->m_pEditGmAddress->setCursorPosition(0);
    // The simple page shows where video is sent to.
    q->m_pSimpleAddress->setAddress(
        elementValue(Element::Video, Side::Send, Field::DestinationAddress, channel));
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
        selectData(m_pComboVidFormat, toDword(cfgValue(ChannelValue::SignalFormat, false, channel)));
        loadElementValues(d->view, d->view.element(), channel, suffix);
        loadClock(this, channel);
        m_pBoardSettings->setChecked(nmosOverride != 0);
        loadCommon(this, channel);
        lookForInterfaces(this);
    }
    checkPTP();
}
