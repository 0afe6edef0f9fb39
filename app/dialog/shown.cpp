// SPDX-License-Identifier: MIT
//
// Class floor: what the dialog shows at the moment (type, element, format), and the store's values of a
// channel by name. Loading and saving are the business of the slots.
#include "app/corvel.h"
#include "app/dialog/private.h"
#include "channel/channelstore.h"
#include "channel/videoformats.h"

#include <QCheckBox>
#include <QComboBox>
#include <QGroupBox>
#include <QLabel>
#include <QPushButton>
#include <QRadioButton>

QString QCorvel::cfgValue(const char *name, bool isString, int channel, bool isPort) const
{
    return ::cfgValue(name, isString, channel, isPort);
}

void QCorvel::setCfgValue(const char *name, const QString &value, bool isString, int channel)
{
    ::setCfgValue(name, value, isString, channel);
}

QString QCorvel::channelIpKeyName(int channel) const
{
    return ::channelIpKeyName(channel);
}

// Selects the first entry with this item data; without one the selection stays as it was.
void QCorvel::selectFromData(QComboBox *combo, quint32 value)
{
    for (int index = 0; index < combo->count(); ++index) {
        if (combo->itemData(index).toUInt() == value) {
            combo->setCurrentIndex(index);
            return;
        }
    }
}

void QCorvel::useSetting(QCheckBox *checkBox, quint32 flags, quint32 bit)
{
    checkBox->setChecked((flags & bit) != 0);
}

// ----------------------------------------------------------------------------- which element is shown

bool QCorvel::isType(quint32 type) const
{
    return d->comboData(m_pComboType) == type;
}

bool QCorvel::isMultiType(quint32 type) const
{
    return type == ChannelType::Smpte2110 || type == ChannelType::ClockDomainOwner;
}

bool QCorvel::isMultiType() const
{
    return isMultiType(d->comboData(m_pComboType));
}

bool QCorvel::isVideo() const
{
    return !isMultiType() || m_pVideoConfig->isChecked();
}

bool QCorvel::isAudio() const
{
    return isMultiType() && m_pAudioConfig->isChecked();
}

bool QCorvel::isAnc() const
{
    return isMultiType() && m_pAncConfig->isChecked();
}

void QCorvel::getRecSndTypes(quint32 *receive, quint32 *send) const
{
    // Neither video nor audio chosen means ancillary data.
    const Element element = isVideo() ? Element::Video : isAudio() ? Element::Audio : Element::Anc;
    *receive = elementCode(element, Side::Receive);
    *send = elementCode(element, Side::Send);
}

void QCorvel::getSignalFormatValues(QString *width, QString *height, QString *rate) const
{
    if (m_pComboVidFormat->currentIndex() < 0)
        return;
    const VideoFormat *format = findVideoFormat(d->comboData(m_pComboVidFormat));
    if (!format)
        return;
    *width = QLatin1String(format->width);
    *height = QLatin1String(format->height);
    *rate = QLatin1String(format->rate);
}

void QCorvelPrivate::showElementRadios(bool video, bool others)
{
    q->m_pVideoConfig->setVisible(video);
    q->m_pAudioConfig->setVisible(others);
    q->m_pAncConfig->setVisible(others);
}

void QCorvelPrivate::showElementControls()
{
    const bool audio = q->isAudio();
    q->m_pAudFlowGroup->setVisible(audio);
    q->m_pAudFlowSelectLbl->setVisible(audio);
    if (audio) {
        q->m_pCmdSaveElement->setText(QCorvel::tr("Save Audio SDP"));
        enableFlowSelectors();
    } else {
        q->m_pCmdSaveElement->setText(q->isVideo() ? QCorvel::tr("Save Video SDP")
                                                   : QCorvel::tr("Save Anc SDP"));
    }
    for (QLabel *label : {q->m_pAudChanLbl, q->m_pAudFlowLbl, q->m_pPTimeLblTx, q->m_pPTimeLblRx})
        label->setEnabled(audio);
    q->m_pComboAudChan->setEnabled(audio);
    q->m_pComboAudFlow->setEnabled(audio && !singleFlow);
    q->m_pComboPTimeTx->setEnabled(audio);
    q->m_pComboPTimeRx->setEnabled(audio);
}
