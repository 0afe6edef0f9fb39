// SPDX-License-Identifier: MIT
//
// Slots, loading: the stored state of the shown channel and element goes to the controls. Runs with the
// dialog's signals disconnected, so loading never writes.
#include "app/corvel.h"
#include "app/dialog/private.h"
#include "channel/channelstore.h"
#include "theme/lineaddress.h"

#include <QComboBox>
#include <QGroupBox>
#include <QLineEdit>
#include <QRadioButton>

namespace {

constexpr quint32 kDefaultAudioChannels = 2;
constexpr int kLastFlow = kFlowCount - 1;

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
        const int channel = d->currentChannel();
        d->loadFlowCount(channel);
        const QByteArray suffix = d->loadFlowSuffix();
        selectFromData(m_pComboType, toDword(cfgValue(ChannelValue::VideoType, false, channel)));
        const quint32 nmosOverride = globalDword(StorePath::AvHAL, "nmosoverride", 0);
        selectFromData(m_pComboVidFormat, toDword(cfgValue(ChannelValue::SignalFormat, false, channel)));
        d->loadElement(channel, suffix);
        d->loadClock(channel);
        m_pBoardSettings->setChecked(nmosOverride != 0);
        d->loadCommon(channel);
        d->lookForInterfaces();
    }
    checkPTP();
}

// Buttons past the last flow are disabled, but for the one next to it and never enabled again here; both
// on purpose.
void QCorvelPrivate::loadFlowCount(int channel)
{
    const quint32 total = toDword(q->cfgValue("ReceiveAudTotalChannels", false, channel));
    const quint32 channels = toDword(q->cfgValue("ReceiveAudChannels", false, channel));
    const quint32 flows = total / (channels ? channels : kDefaultAudioChannels);
    q->selectFromData(q->m_pComboAudFlow, flows);
    for (quint32 flow = flows + 1; flows < kLastFlow && flow <= kLastFlow; ++flow)
        q->m_pAudFlowSelect[flow]->setEnabled(false);
}

void QCorvelPrivate::loadElement(int channel, const QByteArray &suffix)
{
    const Element element = currentElement();
    for (const FieldStep &step : loadOrder(element)) {
        const ChannelKey *key = findChannelKey(element, step.side, step.field);
        // Audio flags are read from flow 0 whatever flow is shown, on purpose.
        const QByteArray name = valueName(*key, step.field == Field::Flags ? "0" : suffix);
        const bool isText = key->stored == Stored::Text;
        const bool isPort = step.field == Field::SourcePort || step.field == Field::DestinationPort;
        showValue(step.side, step.field, q->cfgValue(name.constData(), isText, channel, isPort));
    }
}

void QCorvelPrivate::loadClock(int channel)
{
    q->selectFromData(q->m_pComboClkSrc, toDword(q->cfgValue(ChannelValue::ClockType, false, channel)));
    if (q->isType(ChannelType::ClockDomainOwner))
        q->m_pEditClockDomain->setText(q->cfgValue(ChannelValue::ClockDomain, false, channel));
}

void QCorvelPrivate::loadCommon(int channel)
{
    q->m_pEditGmId->setText(q->cfgValue(ChannelValue::ClockDomain, false, channel));
    q->m_pEditGmAddress->setText(q->cfgValue(ChannelValue::ClockGrandMaster, true, channel));
    q->m_pEditGmAddress->setCursorPosition(0);
    q->m_pSimpleAddress->setAddress(q->cfgValue("TransmitDestinationIp", true, channel));
}

void QCorvelPrivate::lookForInterfaces()
{
    const QString unset = QStringLiteral("1.0.0.0");
    const bool noNode = isTextEmpty(q->channelIpKeyName(0), "nmosip");
    if (q->m_pEditRecIFace->address() == unset || q->m_pEditSndIFace->address() == unset ||
        q->m_pSimpleAddress->address() == unset || noNode)
        q->findDefaultInterface();
}
