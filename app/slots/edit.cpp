// SPDX-License-Identifier: MIT
//
// Slots, edit: a control was changed, so what is shown goes to the store, or to the engine of a host. It
// leaves the interface fields to checks.cpp and what a lock copies to locks.cpp.
#include "app/dialog/frame.h"
#include "app/dialog/private.h"
#include "app/view/combos.h"
#include "app/view/enginerecords.h"
#include "channel/channelstore.h"
#include "channel/elementvalues.h"
#include "channel/storecalls.h"
#include "rkos.h"
#include "theme/lineaddress.h"

#include <QCheckBox>
#include <QComboBox>
#include <QLabel>
#include <QLineEdit>

namespace {

void logElement(const QCorvelPrivate *d, Side side)
{
    // One of the four spells "video" with a small letter.
    const char *const formats[2][2] = {
        {"\nReceive video Chan %d Source %s:%d Dest %s:%d interface %s Flags (0x%08X) ",
         "\nReceive Audio Chan %d Source %s:%d Dest %s:%d interface %s Flags (0x%08X) "},
        {"\nTransmit Video Chan %d Source %s:%d Dest %s:%d interface %s Flags (0x%08X) ",
         "\nTransmit Audio Chan %d Source %s:%d Dest %s:%d interface %s Flags (0x%08X) "},
    };
    const auto text = [&](Field field) { return d->networkField(side, field).value().toUtf8(); };
    const auto port = [&](Field field) {
        return static_cast<int>(toDword(d->networkField(side, field).value()));
    };
// The formats are the ones above; the compiler cannot see that through the table.
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wformat-nonliteral"
    ErrOut(formats[side == Side::Send][d->view.isAudio()], d->channel(),
           text(Field::SourceAddress).constData(), port(Field::SourcePort),
           text(Field::DestinationAddress).constData(), port(Field::DestinationPort),
           text(Field::Interface).constData(), d->view.fields().flags(side));
#pragma GCC diagnostic pop
}

void saveShownElement(QCorvelPrivate *d)
{
    const Element element = d->view.element();
    saveElementValues(d->view, element, d->channel(), d->view.flows().saveSuffix());
    if (element == Element::Anc)
        return;
    logElement(d, Side::Send);
    logElement(d, Side::Receive);
}

void saveChannel(QCorvelPrivate *d)
{
    QCorvel *const q = d->q;
    const int channel = d->channel();
    const auto saveNumber = [&](const char *name, quint32 value) {
        q->setCfgValue(name, QString::number(value), false, channel);
    };
    saveNumber(ChannelValue::VideoType, comboData(q->m_pComboType));
    saveShownElement(d);
    if (q->isType(ChannelType::ClockDomainOwner))
        q->setCfgValue(ChannelValue::ClockDomain, q->m_pEditClockDomain->text(), false, channel);
    saveNumber(ChannelValue::ClockType, comboData(q->m_pComboClkSrc));
    saveNumber(ChannelValue::SignalFormat, comboData(q->m_pComboVidFormat));
    q->setCfgValue(ChannelValue::ClockGrandMaster, q->m_pEditGmAddress->text(), true, channel);
    // Last, so that the domain's own edit wins over the clock line of the type that has one.
    q->setCfgValue(ChannelValue::ClockDomain, q->m_pEditGmId->text(), false, channel);
    // While NMOS is in charge the simple page's address is the one that is sent to.
    if (!q->m_pNmosOverride->isChecked())
        setElementValue(Element::Video, Side::Send, Field::DestinationAddress, q->m_pSimpleAddress->address(),
                        channel);
}

// A number of audio that holds for both sides and all flows.
void writeAudioNumber(const QCorvelPrivate *d, Field field, quint32 number)
{
    for (const Side side : sideOrder())
        setElementValue(Element::Audio, side, field, QString::number(number), d->channel());
}

} // namespace

// ------------------------------------------------------------------------------------------------ the whole

void QCorvel::saveDataStandAlone()
{
    if (d->channel() < 0)
        return;
    const SignalBracket bracket(this);
    d->write([this] { saveChannel(d.get()); });
}

void QCorvel::updateSettings(bool final)
{
    if (isStandAlone())
        saveDataStandAlone();
    else
        d->sendSettings(final);
}

// --------------------------------------------------------------------------------- network fields and clock

void QCorvel::onSettingChanged()
{
    QObject *const from = sender();    // gone as soon as the signals are disconnected
    const SignalBracket bracket(this); // one for both of what follows: it is what an edit costs most
    const UserStep step(d.get(), from);
    checkPTP();
    updateLockedItems(from);
    updateSettings(false);
}

void QCorvel::onSettingChanged(int)
{
    const UserStep step(d.get(), sender());
    checkPTP();
    updateSettings(false);
}

void QCorvel::onSettingChanged(bool)
{
    const UserStep step(d.get(), sender());
    updateSettings(false);
}

void QCorvel::onItemChanged(QTreeWidgetItem *, int) {}

// ------------------------------------------------------------------------------------------ type and format

// The type decides which elements can be shown. Unlike at start the scale has no lower bound here, and
// the clock line is hidden for the one type whose load and save use it.
void QCorvel::onTypeSettingChanged(int index)
{
    QObject *const from = sender();
    d->finishKeys();
    setFontFactor(scaleOf(this));
    const bool multi = isMultiType(static_cast<quint32>(m_pComboType->itemData(index).toUInt()));
    d->showElementRadios(multi, multi);
    const bool showDomain = multi && !isType(ChannelType::ClockDomainOwner);
    m_pClockDomainLbl->setVisible(showDomain);
    m_pEditClockDomain->setVisible(showDomain);
    d->applyFixedSize();
    {
        const UserStep step(d.get(), from);
        labelNextBatch(tr("type of channel %1").arg(d->channel()));
        d->write([this] {
            setCfgValue(ChannelValue::VideoType, QString::number(comboData(m_pComboType)), false,
                        d->channel());
        });
    }
    loadData();
    if (isType(ChannelType::Smpte2110))
        checkErrors();
}

void QCorvel::onFormatChanged(int)
{
    const UserStep step(d.get(), sender());
    d->write([this] {
        setCfgValue(ChannelValue::SignalFormat, QString::number(comboData(m_pComboVidFormat)), false,
                    d->channel());
    });
}

void QCorvel::onFileSettingChanged(bool value)
{
    d->finishKeys();
    d->write([&] {
        setCfgValue(ChannelValue::IpUseFileSettings, value ? QStringLiteral("1") : QStringLiteral("0"), false,
                    d->channel());
    });
    loadData();
}

// ------------------------------------------------------------------------------------------ layout of audio

void QCorvel::enableAudChannel(int)
{
    const UserStep step(d.get(), sender());
    const quint32 channels = comboData(m_pComboAudChan);
    const quint32 flows = comboData(m_pComboAudFlow);
    if (isStandAlone()) {
        d->write([&] {
            writeAudioNumber(d.get(), Field::Channels, channels);
            writeAudioNumber(d.get(), Field::TotalChannels, flows * channels);
        });
    } else {
        d->sendType(audioLayout(flows, channels));
    }
    updateSettings(false);
}

void QCorvel::enableAudFlow(int)
{
    const UserStep step(d.get(), sender());
    d->enableFlowSelectors();
    const quint32 total = comboData(m_pComboAudFlow) * comboData(m_pComboAudChan);
    if (isStandAlone())
        d->write([&] { writeAudioNumber(d.get(), Field::TotalChannels, total); });
    else
        d->sendType(0);
    updateSettings(false);
}
