// SPDX-License-Identifier: MIT
//
// Audio flows, the choice of the element being edited, and the named configurations of the store.
#include "app/corvel.h"
#include "channel/channelstore.h"
#include "rkcfg.h"
#include "rkos.h"

#include <QCheckBox>
#include <QComboBox>
#include <QDir>
#include <QGroupBox>
#include <QLabel>
#include <QPushButton>
#include <QRadioButton>
#include <QSignalBlocker>

namespace {

constexpr int kPathBytes = 4096;
constexpr char kConfigSuffix[] = ".rkcfg"; // one database file per named configuration

QString defaultConfig()
{
    char name[256] = {};
    rkCFGGetDefaultName(name, sizeof name);
    return QString::fromUtf8(name);
}

} // namespace

// ---------------------------------------------------------------------------------- layout of audio

void QCorvel::writeAudioTotals(quint32 total)
{
    const QString text = QString::number(total);
    for (const Side side : sideOrder())
        setCfgValue(channelKey(Element::Audio, side, Field::TotalChannels).name, text, false,
                    currentChannel());
}

void QCorvel::enableAudChannel(int)
{
    if (isStandAlone()) {
        const quint32 channels = comboData(m_pComboAudChan);
        for (const Side side : sideOrder())
            setCfgValue(channelKey(Element::Audio, side, Field::Channels).name, QString::number(channels),
                        false, currentChannel());
        writeAudioTotals(comboData(m_pComboAudFlow) * channels);
        commitStore();
    } else {
        sendType(audioLayout());
    }
    updateSettings(false);
}

void QCorvel::enableAudFlow(int)
{
    enableFlowSelectors();
    if (isStandAlone()) {
        writeAudioTotals(comboData(m_pComboAudFlow) * comboData(m_pComboAudChan));
        commitStore();
    } else {
        sendType(0);
    }
    updateSettings(false);
}

// In single-flow mode no flow can be selected.
void QCorvel::enableFlowSelectors()
{
    const quint32 flows = m_singleFlow ? 0 : comboData(m_pComboAudFlow);
    for (quint32 flow = 0; flow < kFlowCount; ++flow)
        m_pAudFlowSelect[flow]->setEnabled(flow < flows);
}

// In single-flow mode the selectors do not exclude each other, so the others are unchecked by hand.
void QCorvel::selectOnlyFlow(QRadioButton *flow)
{
    flow->setChecked(true);
    for (QRadioButton *other : m_pAudFlowSelect)
        other->setChecked(other == flow);
}

// After a switch no flow is selected, on purpose: the values without a flow number are then the ones
// edited.
void QCorvel::audChanUseSingle(bool single)
{
    {
        const SignalBracket bracket(this);
        m_singleFlow = single;
        m_pAudFlowUseSingle->setChecked(single);
        setCfgValue(ChannelValue::AudioFlowType, single ? QStringLiteral("0") : QStringLiteral("1"), false,
                    currentChannel());
        if (single) {
            m_pComboAudFlow->setCurrentIndex(0);
            m_pComboAudFlow->setEnabled(false);
            writeAudioTotals(comboData(m_pComboAudChan));
        } else {
            m_pComboAudFlow->setEnabled(true);
        }
        commitStore();
        for (QRadioButton *flow : m_pAudFlowSelect) {
            flow->setAutoExclusive(false); // the checked button of an exclusive set cannot be unchecked
            flow->setChecked(false);
            flow->setAutoExclusive(!single);
            flow->setEnabled(!single);
        }
    }
    m_keepNoFlow = true;
    loadData();
    m_keepNoFlow = false;
}

// ------------------------------------------------------------------------------- choice of element

void QCorvel::onSelectionChanged(bool value)
{
    {
        const QSignalBlocker blocker(m_pCheckLockGroup);
        m_pCheckLockGroup->setChecked(false);
    }
    if (value)
        loadData();
    showElementControls();
}

void QCorvel::showElementControls()
{
    const bool audio = isAudio();
    m_pAudFlowGroup->setVisible(audio);
    m_pAudFlowSelectLbl->setVisible(audio);
    if (audio) {
        m_pCmdSaveElement->setText(tr("Save Audio SDP"));
        enableFlowSelectors();
    } else {
        m_pCmdSaveElement->setText(isVideo() ? tr("Save Video SDP") : tr("Save Anc SDP"));
    }
    for (QLabel *label : {m_pAudChanLbl, m_pAudFlowLbl, m_pPTimeLblTx, m_pPTimeLblRx})
        label->setEnabled(audio);
    m_pComboAudChan->setEnabled(audio);
    m_pComboAudFlow->setEnabled(audio && !m_singleFlow);
    m_pComboPTimeTx->setEnabled(audio);
    m_pComboPTimeRx->setEnabled(audio);
}

void QCorvel::onFileSettingChanged(bool value)
{
    setCfgValue(ChannelValue::IpUseFileSettings, value ? QStringLiteral("1") : QStringLiteral("0"), false,
                currentChannel());
    commitStore();
    loadData();
}

// ---------------------------------------------------------------------------- named configurations

// One entry for each configuration on disk. The one in use is always there and selected.
void QCorvel::findConfigs()
{
    char folder[kPathBytes] = {};
    rkOSGetConfigDir(folder);
    const QString inUse = defaultConfig();
    const QString suffix = QLatin1String(kConfigSuffix);
    QStringList names;
    const QDir dir(QString::fromUtf8(folder));
    for (const QString &file : dir.entryList({QLatin1Char('*') + suffix}, QDir::Files, QDir::Name))
        names.append(file.left(file.size() - suffix.size()));
    if (!inUse.isEmpty() && !names.contains(inUse))
        names.prepend(inUse);
    for (const QString &name : qAsConst(names))
        m_pConfig->addItem(name, name);
    m_pConfig->setCurrentIndex(m_pConfig->findData(inUse));
}

// Another program may have switched the configuration. Edits go to the one in use, so that is the one to
// be shown; looked after when the window comes to the front.
void QCorvel::followConfig()
{
    if (!m_pConfig)
        return;
    const QString inUse = defaultConfig();
    if (inUse.isEmpty() || inUse == m_pConfig->currentData().toString())
        return;
    {
        const QSignalBlocker blocker(m_pConfig);
        m_pConfig->clear();
        findConfigs();
    }
    loadData();
}

void QCorvel::onSetConfig()
{
    if (!m_pConfig)
        return;
    const QByteArray name = m_pConfig->currentData().toString().toUtf8();
    rkCFGClose(defaultStore(), 1);
    rkCFGSetDefaultName(name.constData());
    loadData();
}
