// SPDX-License-Identifier: MIT
//
// Slots, engine: the embedded dialog asks the engine of its host for settings and sends them. Stand-alone
// none of this runs.
#include "app/corvel.h"
#include "app/dialog/private.h"
#include "channel/channelstore.h"
#include "theme/lineaddress.h"

#include <QComboBox>
#include <QLineEdit>

namespace {

constexpr int kNoType = -1; // item data of "N/A"
constexpr quint32 kDefaultAudioChannels = 2;

template<int Size>
void copyText(char (&target)[Size], const QString &text)
{
    qstrncpy(target, text.toLatin1().constData(), Size);
}

// An answer comes from outside: its text may lack the terminating zero.
template<int Size>
QString textOf(const char (&source)[Size])
{
    return QString::fromLatin1(source, static_cast<int>(qstrnlen(source, Size)));
}

// A machine without channels has nobody to talk to.
void toEngine(MEDIACMD &command, int mode)
{
    if (command.channel >= 0)
        ipSetMode(&command, mode);
}

} // namespace

// -------------------------------------------------------------------------------------------- loading

void QCorvelPrivate::loadEmbedded()
{
    {
        const SignalBracket bracket(q);
        MEDIACMD config = mediaCommand(MediaCode::GetConfig);
        toEngine(config, MediaMode::Ask);
        if (config.type == 0) {
            showNoType();
            return;
        }
        showMediaConfig(config);
        for (const Side side : {Side::Receive, Side::Send}) {
            MEDIACMD settings = elementCommand(MediaCode::GetSettings, side);
            toEngine(settings, MediaMode::Ask);
            showMediaSettings(side, settings);
        }
    }
    q->checkPTP();
}

// The engine knows no type for the channel: the type combo says so and everything else stays as it is.
void QCorvelPrivate::showNoType()
{
    q->m_pComboType->clear();
    q->m_pComboType->addItem(QCorvel::tr("N/A"), kNoType);
    showElementRadios(true, false);
    showElementControls();
}

// What belongs to the channel as a whole. Its type and video format are the stored ones; an engine that
// works on another type has to read its media again.
void QCorvelPrivate::showMediaConfig(const MEDIACMD &config)
{
    const bool hadType = q->m_pComboType->findData(kNoType) < 0;
    if (!hadType)
        fillTypes();
    const quint32 stored = toDword(q->cfgValue(ChannelValue::VideoType, false, currentChannel()));
    q->selectFromData(q->m_pComboType, stored);
    if (stored != config.type)
        q->reloadMedia();
    else
        q->m_bReloadChannel = false;
    if (!hadType) {
        showElementRadios(true, q->isMultiType());
        showElementControls();
    }
    q->selectFromData(q->m_pComboVidFormat,
                      toDword(q->cfgValue(ChannelValue::SignalFormat, false, currentChannel())));
    q->selectFromData(q->m_pComboClkSrc, config.clockSource);
    q->m_pEditGmId->setText(QString::number(config.domain));
    loadFlowSuffix(); // chooses flow 0 when none is chosen
}

void QCorvelPrivate::showMediaSettings(Side side, const MEDIACMD &answer)
{
    const QString destination = textOf(answer.destinationAddress);
    networkField(side, Field::SourceAddress).setValue(textOf(answer.sourceAddress));
    networkField(side, Field::DestinationAddress).setValue(destination);
    networkField(side, Field::Interface).setValue(textOf(answer.interfaceAddress));
    networkField(side, Field::SourcePort).setValue(QString::number(answer.sourcePort));
    networkField(side, Field::DestinationPort).setValue(QString::number(answer.destinationPort));
    showFlags(side, answer.flags);
    showAudioLayout(side, answer.audioLayout);
    if (side == Side::Send && q->isVideo())
        q->m_pSimpleAddress->setAddress(destination);
}

// Shown for every element, as it is sent with every element. The number of flows is that of the receive
// side; the send side is shown last and its channels per flow stay.
void QCorvelPrivate::showAudioLayout(Side side, quint32 layout)
{
    const quint32 channels = layout & 0xffff;
    q->selectFromData(q->m_pComboAudChan, channels);
    if (side == Side::Receive)
        q->selectFromData(q->m_pComboAudFlow, (layout >> 16) / (channels ? channels : kDefaultAudioChannels));
    enableFlowSelectors();
}

// -------------------------------------------------------------------------------------------- sending

void QCorvel::updateSettings(bool final)
{
    if (isStandAlone()) {
        saveDataStandAlone();
        return;
    }
    const SignalBracket bracket(this);
    d->sendType(0);
    d->sendMediaSettings(Side::Receive, final ? MediaCode::ReceiveFinal : MediaCode::ReceiveSettings);
    d->sendMediaSettings(Side::Send, MediaCode::TransmitSettings);
    MEDIACMD clock = d->mediaCommand(MediaCode::SetClock);
    clock.clockSource = d->comboData(m_pComboClkSrc);
    clock.domain = toDword(m_pEditGmId->text());
    toEngine(clock, MediaMode::Tell);
}

// The channel type, and with it the layout of the audio channels when that is what changed.
void QCorvelPrivate::sendType(quint32 layout)
{
    MEDIACMD command = mediaCommand(MediaCode::SetType);
    command.type = comboData(q->m_pComboType);
    command.audioLayout = layout;
    toEngine(command, MediaMode::Tell);
}

void QCorvelPrivate::sendMediaSettings(Side side, quint32 code)
{
    MEDIACMD command = elementCommand(code, side);
    command.sourcePort = toDword(networkField(side, Field::SourcePort).value());
    command.destinationPort = toDword(networkField(side, Field::DestinationPort).value());
    command.audioLayout = audioLayout();
    copyText(command.destinationAddress, networkField(side, Field::DestinationAddress).value());
    copyText(command.sourceAddress, networkField(side, Field::SourceAddress).value());
    copyText(command.interfaceAddress, networkField(side, Field::Interface).value());
    command.flags = shownFlags(side);
    toEngine(command, MediaMode::Tell);
}

// One field for every element of the channel: once for video and ancillary data, for each flow of audio.
void QCorvelPrivate::sendMediaField(const NetworkField &field)
{
    for (const Element element : {Element::Video, Element::Audio, Element::Anc}) {
        const int flows = element == Element::Audio ? kFlowCount : 1;
        for (int flow = 0; flow < flows; ++flow) {
            MEDIACMD command = mediaCommand(MediaCode::SetField);
            command.element = elementCode(element, field.side);
            command.flow = flow;
            command.field = flagBit(field.field);
            if (field.edit)
                command.value = toDword(field.value());
            else
                copyText(command.text, field.value());
            toEngine(command, MediaMode::Tell);
        }
    }
}

void QCorvel::reloadMedia()
{
    MEDIACMD command = d->mediaCommand(MediaCode::ReloadMedia);
    toEngine(command, MediaMode::Tell);
}
