// SPDX-License-Identifier: MIT
//
// Slots, engine: the embedded dialog asks the engine of its host for settings and sends them. Stand-alone
// none of this runs.
#include "app/dialog/private.h"
#include "app/view/combos.h"
#include "app/view/enginerecords.h"
#include "channel/channelstore.h"
#include "theme/lineaddress.h"

#include <QComboBox>
#include <QLineEdit>

namespace {

constexpr int kNoType = -1; // item data of "N/A"

// A machine without channels has nobody to talk to.
void toEngine(MEDIACMD &command, int mode)
{
    if (command.channel >= 0)
        ipSetMode(&command, mode);
}

// A command about one side of the element that is shown; of audio about the first checked flow, flow 0
// when none is.
MEDIACMD elementRecord(QCorvelPrivate *d, quint32 code, Side side)
{
    MEDIACMD record = engineRecord(code, d->channel());
    quint32 receive = 0;
    quint32 transmit = 0;
    d->q->getRecSndTypes(&receive, &transmit);
    record.element = side == Side::Receive ? receive : transmit;
    record.flow = d->view.isAudio() ? qMax(0, d->view.flows().first()) : 0;
    return record;
}

// The engine knows no type for the channel: the type combo says so and everything else stays as it is.
void showNoType(QCorvelPrivate *d)
{
    d->q->m_pComboType->clear();
    d->q->m_pComboType->addItem(QCorvel::tr("N/A"), kNoType);
    d->showElementRadios(true, false);
    d->showElementControls();
}

// What belongs to the channel as a whole. Its type and video format are the stored ones; an engine that
// works on another type has to read its media again.
void showConfig(QCorvelPrivate *d, const MEDIACMD &config)
{
    QCorvel *const q = d->q;
    const bool hadType = q->m_pComboType->findData(kNoType) < 0;
    if (!hadType)
        d->fillTypes();
    const quint32 stored = toDword(q->cfgValue(ChannelValue::VideoType, false, d->channel()));
    selectData(q->m_pComboType, stored);
    if (stored != config.type)
        q->reloadMedia();
    else
        q->m_bReloadChannel = false;
    if (!hadType) {
        d->showElementRadios(true, q->isMultiType());
        d->showElementControls();
    }
    selectData(q->m_pComboVidFormat, toDword(q->cfgValue(ChannelValue::SignalFormat, false, d->channel())));
    selectData(q->m_pComboClkSrc, config.clockSource);
    q->m_pEditGmId->setText(QString::number(config.domain));
    q->m_pEditGmAddress->setText(q->cfgValue(ChannelValue::ClockGrandMaster, true, d->channel()));
    q->m_pEditGmAddress->setCursorPosition(0);
    d->view.flows().loadSuffix(); // chooses flow 0 when none is chosen
}

// Shown for every element, as it is sent with every element. The number of flows is that of the receive
// side; the send side is shown last and its channels per flow stay.
void showAudioLayout(QCorvelPrivate *d, Side side, quint32 layout)
{
    selectData(d->q->m_pComboAudChan, layoutChannels(layout));
    if (side == Side::Receive)
        selectData(d->q->m_pComboAudFlow, layoutFlows(layout));
    d->enableFlowSelectors();
}

void showSettings(QCorvelPrivate *d, Side side, const EngineSettings &settings)
{
    d->networkField(side, Field::SourceAddress).setValue(settings.sourceAddress);
    d->networkField(side, Field::DestinationAddress).setValue(settings.destinationAddress);
    d->networkField(side, Field::Interface).setValue(settings.interfaceAddress);
    d->networkField(side, Field::SourcePort).setValue(QString::number(settings.sourcePort));
    d->networkField(side, Field::DestinationPort).setValue(QString::number(settings.destinationPort));
    d->view.fields().showFlags(side, settings.flags);
    showAudioLayout(d, side, settings.audioLayout);
    if (side == Side::Send && d->view.isVideo())
        d->q->m_pSimpleAddress->setAddress(settings.destinationAddress);
}

EngineSettings shownSettings(const QCorvelPrivate *d, Side side)
{
    const auto text = [&](Field field) { return d->networkField(side, field).value(); };
    EngineSettings settings;
    settings.sourceAddress = text(Field::SourceAddress);
    settings.destinationAddress = text(Field::DestinationAddress);
    settings.interfaceAddress = text(Field::Interface);
    settings.sourcePort = toDword(text(Field::SourcePort));
    settings.destinationPort = toDword(text(Field::DestinationPort));
    settings.audioLayout = audioLayout(comboData(d->q->m_pComboAudFlow), comboData(d->q->m_pComboAudChan));
    settings.flags = d->view.fields().flags(side);
    return settings;
}

void sendSide(QCorvelPrivate *d, Side side, quint32 code)
{
    MEDIACMD record = elementRecord(d, code, side);
    putSettings(record, shownSettings(d, side));
    toEngine(record, MediaMode::Tell);
}

} // namespace

// -------------------------------------------------------------------------------------------------- loading

void QCorvelPrivate::loadEmbedded()
{
    {
        const SignalBracket bracket(q);
        MEDIACMD config = engineRecord(MediaCode::GetConfig, channel());
        toEngine(config, MediaMode::Ask);
        if (config.type == 0) {
            showNoType(this);
            return;
        }
        showConfig(this, config);
        for (const Side side : {Side::Receive, Side::Send}) {
            MEDIACMD settings = elementRecord(this, MediaCode::GetSettings, side);
            toEngine(settings, MediaMode::Ask);
            showSettings(this, side, settingsOf(settings));
        }
    }
    q->checkPTP();
}

// -------------------------------------------------------------------------------------------------- sending

// final: the dialog closes with "Done".
void QCorvelPrivate::sendSettings(bool final)
{
    const SignalBracket bracket(q);
    sendType(0);
    sendSide(this, Side::Receive, final ? MediaCode::ReceiveFinal : MediaCode::ReceiveSettings);
    sendSide(this, Side::Send, MediaCode::TransmitSettings);
    MEDIACMD clock = engineRecord(MediaCode::SetClock, channel());
    clock.clockSource = comboData(q->m_pComboClkSrc);
    clock.domain = toDword(q->m_pEditGmId->text());
    toEngine(clock, MediaMode::Tell);
}

// The channel type, and with it the layout of the audio channels when that is what changed.
void QCorvelPrivate::sendType(quint32 audioLayout)
{
    MEDIACMD record = engineRecord(MediaCode::SetType, channel());
    record.type = comboData(q->m_pComboType);
    record.audioLayout = audioLayout;
    toEngine(record, MediaMode::Tell);
}

// One field for every element of the channel and every flow of audio.
void QCorvelPrivate::sendField(const NetworkField &field)
{
    for (MEDIACMD record : fieldRecords(channel(), field.side, field.field, field.value()))
        toEngine(record, MediaMode::Tell);
}

void QCorvel::reloadMedia()
{
    MEDIACMD record = engineRecord(MediaCode::ReloadMedia, d->channel());
    toEngine(record, MediaMode::Tell);
}
