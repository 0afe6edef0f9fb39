// SPDX-License-Identifier: MIT
//
// Class floor: what the dialog shows at the moment (type, element, format), and a channel's stored values
// by name. It leaves loading and saving to the slots.
#include "app/dialog/private.h"
#include "app/view/combos.h"
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

void QCorvel::selectFromData(QComboBox *combo, quint32 value)
{
    selectData(combo, value);
}

void QCorvel::useSetting(QCheckBox *checkBox, quint32 flags, quint32 bit)
{
    checkBox->setChecked((flags & bit) != 0);
}

// ----------------------------------------------------------------------------------- which element is shown

bool QCorvel::isType(quint32 type) const
{
    return d->view.isType(type);
}

bool QCorvel::isMultiType(quint32 type) const
{
    return d->view.isMultiType(type);
}

bool QCorvel::isMultiType() const
{
    return d->view.isMultiType();
}

bool QCorvel::isVideo() const
{
    return d->view.isVideo();
}

bool QCorvel::isAudio() const
{
    return d->view.isAudio();
}

bool QCorvel::isAnc() const
{
    return d->view.isAnc();
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
    const VideoFormat *format = findVideoFormat(comboData(m_pComboVidFormat));
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

void QCorvelPrivate::enableFlowSelectors()
{
    view.flows().enable(comboData(q->m_pComboAudFlow));
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
    q->m_pComboAudFlow->setEnabled(audio && !view.flows().isSingle());
    q->m_pComboPTimeTx->setEnabled(audio);
    q->m_pComboPTimeRx->setEnabled(audio);
}
