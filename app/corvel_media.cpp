// SPDX-License-Identifier: MIT
//
// The embedded dialog's side of the engine: settings asked for and sent as media commands. Stand-alone
// none of this runs, but for updateSettings.
#include "app/corvel.h"
#include "channel/channelstore.h"
#include "theme/lineaddress.h"

#include <QComboBox>
#include <QLineEdit>
#include <QRadioButton>

namespace {

constexpr int kTell = 0;
constexpr int kAsk = 1;

template<int Size>
void copyText(char (&target)[Size], const QString &text)
{
    qstrncpy(target, text.toLatin1().constData(), Size);
}

} // namespace

MEDIACMD QCorvel::mediaCommand(quint32 code) const
{
    MEDIACMD command;
    command.code = code;
    command.channel = currentChannel();
    return command;
}

// The first checked flow, flow 0 when none is.
int QCorvel::engineFlow() const
{
    for (int flow = 0; flow < kFlowCount; ++flow) {
        if (m_pAudFlowSelect[flow]->isChecked())
            return flow;
    }
    return 0;
}

quint32 QCorvel::audioLayout() const
{
    const quint32 channels = comboData(m_pComboAudChan);
    return (comboData(m_pComboAudFlow) * channels) << 16 | channels;
}

// ------------------------------------------------------------------------------------------ loading

void QCorvel::loadEmbedded()
{
    {
        const SignalBracket bracket(this);
        MEDIACMD question = mediaCommand(MediaCode::GetType);
        ipSetMode(&question, kAsk);
        if (question.value == 0) {
            m_pComboType->clear();
            m_pComboType->addItem(tr("N/A"), -1);
            showElementRadios(true, false);
            return;
        }
        if (m_pComboType->findData(-1) >= 0)
            fillTypes();
        const quint32 stored = toDword(cfgValue(ChannelValue::VideoType, false, currentChannel()));
        selectFromData(m_pComboType, stored);
        if (stored != question.value)
            reloadMedia();
        else
            m_bReloadChannel = false;
        showElementRadios(true, isMultiType());
        quint32 codes[2] = {};
        getRecSndTypes(&codes[0], &codes[1]);
        for (const Side side : {Side::Receive, Side::Send}) {
            MEDIACMD settings = mediaCommand(MediaCode::GetSettings);
            settings.element = codes[side == Side::Send];
            settings.flow = isAudio() ? engineFlow() : 0;
            ipSetMode(&settings, kAsk);
            showMediaSettings(side, settings);
        }
    }
    checkPTP();
}

void QCorvel::showMediaSettings(Side side, const MEDIACMD &answer)
{
    networkField(side, Field::SourceAddress).setValue(QString::fromLatin1(answer.sourceAddress));
    networkField(side, Field::DestinationAddress).setValue(QString::fromLatin1(answer.destinationAddress));
    networkField(side, Field::Interface).setValue(QString::fromLatin1(answer.interfaceAddress));
    networkField(side, Field::SourcePort).setValue(QString::number(answer.sourcePort));
    networkField(side, Field::DestinationPort).setValue(QString::number(answer.destinationPort));
    showFlags(side, answer.flags);
    const quint32 channels = answer.audioLayout & 0xffff;
    if (!isAudio() || channels == 0)
        return;
    selectFromData(m_pComboAudChan, channels);
    selectFromData(m_pComboAudFlow, (answer.audioLayout >> 16) / channels);
}

// ------------------------------------------------------------------------------------------ sending

void QCorvel::updateSettings(bool final)
{
    if (isStandAlone()) {
        saveDataStandAlone();
        return;
    }
    const SignalBracket bracket(this);
    MEDIACMD type = mediaCommand(MediaCode::SetType);
    type.value = comboData(m_pComboType);
    ipSetMode(&type, kTell);
    sendMediaSettings(Side::Receive, final ? MediaCode::ReceiveFinal : MediaCode::ReceiveSettings);
    sendMediaSettings(Side::Send, MediaCode::TransmitSettings);
    MEDIACMD clock = mediaCommand(MediaCode::SetClock);
    clock.value = clock.clockSource = comboData(m_pComboClkSrc);
    clock.domain = toDword(m_pEditGmId->text());
    ipSetMode(&clock, kTell);
}

void QCorvel::sendMediaSettings(Side side, quint32 code)
{
    MEDIACMD command = mediaCommand(code);
    quint32 codes[2] = {};
    getRecSndTypes(&codes[0], &codes[1]);
    command.element = codes[side == Side::Send];
    command.flow = isAudio() ? engineFlow() : 0;
    command.sourcePort = toDword(networkField(side, Field::SourcePort).value());
    command.destinationPort = toDword(networkField(side, Field::DestinationPort).value());
    command.audioLayout = audioLayout();
    copyText(command.destinationAddress, networkField(side, Field::DestinationAddress).value());
    copyText(command.sourceAddress, networkField(side, Field::SourceAddress).value());
    copyText(command.interfaceAddress, networkField(side, Field::Interface).value());
    command.flags = shownFlags(side);
    ipSetMode(&command, kTell);
}

// One field for every element of the channel: once for video and ancillary data, for each flow of audio.
void QCorvel::sendMediaField(const NetworkField &field)
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
            ipSetMode(&command, kTell);
        }
    }
}

// The type, and with it the layout of the audio channels when that is what changed.
void QCorvel::sendAudioLayout(bool withLayout)
{
    MEDIACMD command = mediaCommand(MediaCode::SetType);
    command.value = comboData(m_pComboType);
    if (withLayout)
        command.audioLayout = audioLayout();
    ipSetMode(&command, kTell);
}

void QCorvel::reloadMedia()
{
    MEDIACMD command = mediaCommand(MediaCode::ReloadMedia);
    ipSetMode(&command, kTell);
}
