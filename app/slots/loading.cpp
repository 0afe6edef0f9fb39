// SPDX-License-Identifier: MIT
//
// Slots, loading: the stored state of the shown channel and element goes to the controls. The dialog's
// signals are disconnected meanwhile, so loading never writes.
#include "app/dialog/private.h"
#include "app/view/combos.h"
#include "channel/channelstore.h"
#include "theme/lineaddress.h"

#include <QGroupBox>
#include <QLineEdit>

namespace {

constexpr quint32 kDefaultAudioChannels = 2;

void loadFlowCount(QCorvelPrivate *d)
{
    const quint32 total = toDword(d->q->cfgValue("ReceiveAudTotalChannels", false, d->channel()));
    const quint32 channels = toDword(d->q->cfgValue("ReceiveAudChannels", false, d->channel()));
    const quint32 flows = total / (channels ? channels : kDefaultAudioChannels);
    selectData(d->q->m_pComboAudFlow, flows);
    d->view.flows().disablePast(flows);
}

void loadElement(QCorvelPrivate *d, const QByteArray &suffix)
{
    const Element element = d->view.element();
    for (const FieldStep &step : loadOrder(element)) {
        const ChannelKey *key = findChannelKey(element, step.side, step.field);
        // The flags of audio are the same for all flows and are read from flow 0.
        const QByteArray name = valueName(*key, step.field == Field::Flags ? "0" : suffix);
        const bool isText = key->stored == Stored::Text;
        const bool isPort = step.field == Field::SourcePort || step.field == Field::DestinationPort;
        d->view.show(step.side, step.field, d->q->cfgValue(name.constData(), isText, d->channel(), isPort));
    }
}

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
    q->m_pSimpleAddress->setAddress(q->cfgValue("TransmitDestinationIp", true, channel));
}

void lookForInterfaces(QCorvel *q)
{
    const QString unset = QStringLiteral("1.0.0.0");
    const bool noNode = isTextEmpty(q->channelIpKeyName(0), "nmosip");
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
        loadFlowCount(d.get());
        const QByteArray suffix = d->view.flows().loadSuffix();
        selectData(m_pComboType, toDword(cfgValue(ChannelValue::VideoType, false, channel)));
        const quint32 nmosOverride = globalDword(StorePath::AvHAL, "nmosoverride", 0);
        selectData(m_pComboVidFormat, toDword(cfgValue(ChannelValue::SignalFormat, false, channel)));
        loadElement(d.get(), suffix);
        loadClock(this, channel);
        m_pBoardSettings->setChecked(nmosOverride != 0);
        loadCommon(this, channel);
        lookForInterfaces(this);
    }
    checkPTP();
}
