// SPDX-License-Identifier: MIT
//
// Slots, loading: the stored state of the shown channel and element goes to the controls. Runs with the
// dialog's signals disconnected, so loading never writes.
#include "app/corvel.h"
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
        loadEmbedded();
}

void QCorvel::loadDataStandAlone()
{
    {
        const SignalBracket bracket(this);
        const int channel = currentChannel();
        loadFlowCount(channel);
        const QByteArray suffix = loadFlowSuffix();
        selectFromData(m_pComboType, toDword(cfgValue(ChannelValue::VideoType, false, channel)));
        const quint32 nmosOverride = globalDword(StorePath::AvHAL, "nmosoverride", 0);
        selectFromData(m_pComboVidFormat, toDword(cfgValue(ChannelValue::SignalFormat, false, channel)));
        loadElement(channel, suffix);
        loadClock(channel);
        m_pBoardSettings->setChecked(nmosOverride != 0);
        loadCommon(channel);
        lookForInterfaces();
    }
    checkPTP();
}

// Buttons past the last flow are disabled, but for the one next to it and never enabled again here; both
// on purpose.
void QCorvel::loadFlowCount(int channel)
{
    const quint32 total = toDword(cfgValue("ReceiveAudTotalChannels", false, channel));
    const quint32 channels = toDword(cfgValue("ReceiveAudChannels", false, channel));
    const quint32 flows = total / (channels ? channels : kDefaultAudioChannels);
    selectFromData(m_pComboAudFlow, flows);
    for (quint32 flow = flows + 1; flows < kLastFlow && flow <= kLastFlow; ++flow)
        m_pAudFlowSelect[flow]->setEnabled(false);
}

void QCorvel::loadElement(int channel, const QByteArray &suffix)
{
    const Element element = currentElement();
    for (const FieldStep &step : loadOrder(element)) {
        const ChannelKey *key = findChannelKey(element, step.side, step.field);
        // Audio flags are read from flow 0 whatever flow is shown, on purpose.
        const QByteArray name = valueName(*key, step.field == Field::Flags ? "0" : suffix);
        const bool isText = key->stored == Stored::Text;
        const bool isPort = step.field == Field::SourcePort || step.field == Field::DestinationPort;
        showValue(step.side, step.field, cfgValue(name.constData(), isText, channel, isPort));
    }
}

void QCorvel::loadClock(int channel)
{
    selectFromData(m_pComboClkSrc, toDword(cfgValue(ChannelValue::ClockType, false, channel)));
    if (isType(ChannelType::ClockDomainOwner))
        m_pEditClockDomain->setText(cfgValue(ChannelValue::ClockDomain, false, channel));
}

void QCorvel::loadCommon(int channel)
{
    m_pEditGmId->setText(cfgValue(ChannelValue::ClockDomain, false, channel));
    m_pEditGmAddress->setText(cfgValue(ChannelValue::ClockGrandMaster, true, channel));
    m_pEditGmAddress->setCursorPosition(0);
    m_pSimpleAddress->setAddress(cfgValue("TransmitDestinationIp", true, channel));
}

void QCorvel::lookForInterfaces()
{
    const QString unset = QStringLiteral("1.0.0.0");
    const bool noNode = isTextEmpty(channelIpKeyName(0), "nmosip");
    if (m_pEditRecIFace->address() == unset || m_pEditSndIFace->address() == unset ||
        m_pSimpleAddress->address() == unset || noNode)
        findDefaultInterface();
}
