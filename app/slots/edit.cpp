// SPDX-License-Identifier: MIT
//
// Slots, edit: a control was changed, so the values go to the store, or to the engine of a host.
#include "app/corvel.h"
#include "app/dialog/frame.h"
#include "app/dialog/private.h"
#include "channel/channelstore.h"
#include "rkos.h"
#include "theme/lineaddress.h"

#include <QCheckBox>
#include <QComboBox>
#include <QLabel>
#include <QLineEdit>

// --------------------------------------------------------------------------------------------- saving

void QCorvel::saveDataStandAlone()
{
    const int channel = d->currentChannel();
    if (channel < 0)
        return;
    const SignalBracket bracket(this);
    const auto saveNumber = [&](const char *name, quint32 value) {
        setCfgValue(name, QString::number(value), false, channel);
    };
    saveNumber(ChannelValue::VideoType, d->comboData(m_pComboType));
    d->saveShownElement(channel);
    if (isType(ChannelType::ClockDomainOwner))
        setCfgValue(ChannelValue::ClockDomain, m_pEditClockDomain->text(), false, channel);
    saveNumber(ChannelValue::ClockType, d->comboData(m_pComboClkSrc));
    saveNumber(ChannelValue::SignalFormat, d->comboData(m_pComboVidFormat));
    setCfgValue(ChannelValue::ClockGrandMaster, m_pEditGmAddress->text(), true, channel);
    // Written last on purpose: this edit wins over the clock line of the type that has one.
    setCfgValue(ChannelValue::ClockDomain, m_pEditGmId->text(), false, channel);
    // While NMOS is in charge the simple page's address is the one that is sent to.
    if (!m_pNmosOverride->isChecked())
        setCfgValue("TransmitDestinationIp", m_pSimpleAddress->address(), true, channel);
    commitStore();
}

void QCorvelPrivate::saveShownElement(int channel)
{
    const Element element = currentElement();
    const QByteArray suffix = saveFlowSuffix();
    for (const FieldStep &step : saveOrder(element)) {
        const ChannelKey *key = findChannelKey(element, step.side, step.field);
        q->setCfgValue(valueName(*key, suffix).constData(), shownValue(step.side, step.field),
                       key->stored == Stored::Text, channel);
    }
    if (element == Element::Anc)
        return;
    logElement(Side::Send, channel);
    logElement(Side::Receive, channel);
}

void QCorvelPrivate::logElement(Side side, int channel) const
{
    // The lower-case "video" is what the log's readers look for.
    const char *const formats[2][2] = {
        {"\nReceive video Chan %d Source %s:%d Dest %s:%d interface %s Flags (0x%08X) ",
         "\nReceive Audio Chan %d Source %s:%d Dest %s:%d interface %s Flags (0x%08X) "},
        {"\nTransmit Video Chan %d Source %s:%d Dest %s:%d interface %s Flags (0x%08X) ",
         "\nTransmit Audio Chan %d Source %s:%d Dest %s:%d interface %s Flags (0x%08X) "},
    };
    const auto text = [&](Field field) { return networkField(side, field).value().toUtf8(); };
    const auto port = [&](Field field) {
        return static_cast<int>(toDword(networkField(side, field).value()));
    };
// The formats are the ones above; the compiler cannot see that through the table.
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wformat-nonliteral"
    ErrOut(formats[side == Side::Send][q->isAudio()], channel, text(Field::SourceAddress).constData(),
           port(Field::SourcePort), text(Field::DestinationAddress).constData(), port(Field::DestinationPort),
           text(Field::Interface).constData(), shownFlags(side));
#pragma GCC diagnostic pop
}

// --------------------------------------------------------------------------- network fields and clock

void QCorvel::onSettingChanged()
{
    QObject *const from = sender();    // gone as soon as the signals are disconnected
    const SignalBracket bracket(this); // one for both of what follows: it is what an edit costs most
    checkPTP();
    updateLockedItems(from);
    updateSettings(false);
}

void QCorvel::onSettingChanged(int)
{
    checkPTP();
    updateSettings(false);
}

void QCorvel::onSettingChanged(bool)
{
    updateSettings(false);
}

// ------------------------------------------------------------------------------------ type and format

// The type decides which elements can be shown. Unlike at start the scale has no lower bound here, and
// the clock line is hidden for the one type whose load and save use it; both on purpose.
void QCorvel::onTypeSettingChanged(int index)
{
    setFontFactor(scaleOf(this));
    const bool multi = isMultiType(static_cast<quint32>(m_pComboType->itemData(index).toUInt()));
    d->showElementRadios(multi, multi);
    const bool showDomain = multi && !isType(ChannelType::ClockDomainOwner);
    m_pClockDomainLbl->setVisible(showDomain);
    m_pEditClockDomain->setVisible(showDomain);
    d->applyFixedSize();
    setCfgValue(ChannelValue::VideoType, QString::number(d->comboData(m_pComboType)), false,
                d->currentChannel());
    commitStore();
    loadData();
    if (isType(ChannelType::Smpte2110))
        checkErrors();
}

void QCorvel::onFormatChanged(int)
{
    setCfgValue(ChannelValue::SignalFormat, QString::number(d->comboData(m_pComboVidFormat)), false,
                d->currentChannel());
    commitStore();
}

void QCorvel::onFileSettingChanged(bool value)
{
    setCfgValue(ChannelValue::IpUseFileSettings, value ? QStringLiteral("1") : QStringLiteral("0"), false,
                d->currentChannel());
    commitStore();
    loadData();
}

void QCorvel::onItemChanged(QTreeWidgetItem *, int) {}

// ------------------------------------------------------------------------------------ layout of audio

void QCorvel::enableAudChannel(int)
{
    if (isStandAlone()) {
        const quint32 channels = d->comboData(m_pComboAudChan);
        setCfgValue("ReceiveAudChannels", QString::number(channels), false, d->currentChannel());
        setCfgValue("TransmitAudChannels", QString::number(channels), false, d->currentChannel());
        d->writeAudioTotals(d->comboData(m_pComboAudFlow) * channels);
        commitStore();
    } else {
        d->sendType(d->audioLayout());
    }
    updateSettings(false);
}

void QCorvel::enableAudFlow(int)
{
    d->enableFlowSelectors();
    if (isStandAlone()) {
        d->writeAudioTotals(d->comboData(m_pComboAudFlow) * d->comboData(m_pComboAudChan));
        commitStore();
    } else {
        d->sendType(0);
    }
    updateSettings(false);
}

void QCorvelPrivate::writeAudioTotals(quint32 total)
{
    const QString text = QString::number(total);
    q->setCfgValue("ReceiveAudTotalChannels", text, false, currentChannel());
    q->setCfgValue("TransmitAudTotalChannels", text, false, currentChannel());
}
