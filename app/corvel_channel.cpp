// SPDX-License-Identifier: MIT
//
// Channel settings: from the configuration store to the controls and back. Both directions run with the
// dialog's signals disconnected, so loading never writes and saving never loads.
#include "app/corvel.h"
#include "channel/channelstore.h"
#include "channel/videoformats.h"
#include "rkos.h"
#include "theme/lineaddress.h"

#include <QCheckBox>
#include <QComboBox>
#include <QGroupBox>
#include <QLineEdit>
#include <QRadioButton>
#include <QSignalBlocker>

#include <algorithm>

namespace {

constexpr quint32 kDefaultAudioChannels = 2;
constexpr int kLastFlow = kFlowCount - 1;

} // namespace

// ------------------------------------------------------------------------------ access to one value

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

quint32 QCorvel::comboData(const QComboBox *combo) const
{
    return combo->currentData().toUInt();
}

int QCorvel::currentChannel() const
{
    return m_pChannel->currentIndex();
}

// ---------------------------------------------------------------------------- which element is shown

bool QCorvel::isType(quint32 type) const
{
    return comboData(m_pComboType) == type;
}

bool QCorvel::isMultiType(quint32 type) const
{
    return type == ChannelType::Smpte2110 || type == ChannelType::ClockDomainOwner;
}

bool QCorvel::isMultiType() const
{
    return isMultiType(comboData(m_pComboType));
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

Element QCorvel::currentElement() const
{
    if (isAnc())
        return Element::Anc;
    return isAudio() ? Element::Audio : Element::Video;
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

// ------------------------------------------------------------------------------- the network fields

QVector<QCorvel::NetworkField> QCorvel::networkFields() const
{
    const Side rx = Side::Receive;
    const Side tx = Side::Send;
    // clang-format off
    return {
        // side, field,               address,           text,              use box,             lock box
        {rx, Field::SourceAddress,      m_pLineRecSrcAddr, nullptr,           m_pCheckRecSrcAddr,  m_pCheckLockRecSrcAddr},
        {rx, Field::SourcePort,         nullptr,           m_pEditRecSrcPort, m_pCheckRecSrcPort,  m_pCheckLockRecSrcPort},
        {rx, Field::DestinationAddress, m_pLineRecDstAddr, nullptr,           m_pCheckRecDstAddr,  m_pCheckLockRecDstAddr},
        {rx, Field::DestinationPort,    nullptr,           m_pEditRecDstPort, m_pCheckRecDstPort,  m_pCheckLockRecDstPort},
        {rx, Field::Interface,          m_pEditRecIFace,   nullptr,           m_pCheckRecDstIFace, m_pCheckLockRecDstIFace},
        {tx, Field::SourceAddress,      m_pLineSndSrcAddr, nullptr,           m_pCheckSndSrcAddr,  m_pCheckLockSndSrcAddr},
        {tx, Field::SourcePort,         nullptr,           m_pEditSndSrcPort, m_pCheckSndSrcPort,  m_pCheckLockSndSrcPort},
        {tx, Field::DestinationAddress, m_pLineSndDstAddr, nullptr,           m_pCheckSndDstAddr,  m_pCheckLockSndDstAddr},
        {tx, Field::DestinationPort,    nullptr,           m_pEditSndDstPort, m_pCheckSndDstPort,  m_pCheckLockSndDstPort},
        {tx, Field::Interface,          m_pEditSndIFace,   nullptr,           m_pCheckSndDstIFace, m_pCheckLockSndDstIFace},
    };
    // clang-format on
}

QString QCorvel::NetworkField::value() const
{
    return address ? address->address() : edit->text();
}

void QCorvel::NetworkField::setValue(const QString &value) const
{
    if (address)
        address->setAddress(value);
    else
        edit->setText(value);
}

QWidget *QCorvel::NetworkField::control() const
{
    return address ? static_cast<QWidget *>(address) : edit;
}

const QCorvel::NetworkField &QCorvel::networkField(Side side, Field field) const
{
    const auto row = std::find_if(m_fields.cbegin(), m_fields.cend(), [=](const NetworkField &candidate) {
        return candidate.side == side && candidate.field == field;
    });
    if (row == m_fields.cend())
        qFatal("field %d is no network field", static_cast<int>(field)); // a neighbour would be overwritten
    return *row;
}

// ------------------------------------------------------------------------------------------ loading

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

// The first checked flow. With none, flow 0 is chosen, except in single-flow mode, whose values carry no
// number.
QByteArray QCorvel::loadFlowSuffix()
{
    for (int flow = 0; flow < kFlowCount; ++flow) {
        if (m_pAudFlowSelect[flow]->isChecked())
            return QByteArray::number(flow);
    }
    if (m_singleFlow || m_keepNoFlow)
        return QByteArray();
    m_pAudFlowSelect[0]->setChecked(true);
    return QByteArrayLiteral("0");
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

// Both sides share one combo of channels per flow; the send side is read last and stays.
void QCorvel::showValue(Side side, Field field, const QString &value)
{
    switch (field) {
    case Field::Flags:
        showFlags(side, toDword(value));
        break;
    case Field::Channels:
        selectFromData(m_pComboAudChan, toDword(value));
        break;
    case Field::PacketTime:
        selectFromData(side == Side::Receive ? m_pComboPTimeRx : m_pComboPTimeTx, toDword(value));
        break;
    case Field::SourceAddress:
    case Field::SourcePort:
    case Field::DestinationAddress:
    case Field::DestinationPort:
    case Field::Interface:
        networkField(side, field).setValue(value);
        break;
    case Field::TotalChannels: // shown as the number of flows, by loadFlowCount
        break;
    }
}

void QCorvel::showFlags(Side side, quint32 flags)
{
    for (const FlagBit &row : flagBits())
        useSetting(networkField(side, row.field).use, flags, row.bit);
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

// ------------------------------------------------------------------------------------------- saving

void QCorvel::saveDataStandAlone()
{
    const int channel = currentChannel();
    if (channel < 0)
        return;
    const SignalBracket bracket(this);
    const auto saveNumber = [&](const char *name, quint32 value) {
        setCfgValue(name, QString::number(value), false, channel);
    };
    saveNumber(ChannelValue::VideoType, comboData(m_pComboType));
    saveShownElement(channel);
    if (isType(ChannelType::ClockDomainOwner))
        setCfgValue(ChannelValue::ClockDomain, m_pEditClockDomain->text(), false, channel);
    saveNumber(ChannelValue::ClockType, comboData(m_pComboClkSrc));
    saveNumber(ChannelValue::SignalFormat, comboData(m_pComboVidFormat));
    setCfgValue(ChannelValue::ClockGrandMaster, m_pEditGmAddress->text(), true, channel);
    // Written last on purpose: this edit wins over the clock line of the type that has one.
    setCfgValue(ChannelValue::ClockDomain, m_pEditGmId->text(), false, channel);
    // While NMOS is in charge the simple page's address is the one that is sent to.
    if (!m_pNmosOverride->isChecked())
        setCfgValue("TransmitDestinationIp", m_pSimpleAddress->address(), true, channel);
    commitStore();
}

void QCorvel::saveShownElement(int channel)
{
    const Element element = currentElement();
    const QByteArray suffix = saveFlowSuffix();
    for (const FieldStep &step : saveOrder(element)) {
        const ChannelKey *key = findChannelKey(element, step.side, step.field);
        setCfgValue(valueName(*key, suffix).constData(), shownValue(step.side, step.field),
                    key->stored == Stored::Text, channel);
    }
    if (element == Element::Anc)
        return;
    logElement(Side::Send, channel);
    logElement(Side::Receive, channel);
}

// The last checked flow, on purpose the other way round than in loading; none in single-flow mode.
QByteArray QCorvel::saveFlowSuffix() const
{
    for (int flow = kLastFlow; flow >= 0; --flow) {
        if (m_pAudFlowSelect[flow]->isChecked())
            return QByteArray::number(flow);
    }
    return QByteArray();
}

// What a save writes for one field, as text.
QString QCorvel::shownValue(Side side, Field field) const
{
    const bool receive = side == Side::Receive;
    switch (field) {
    case Field::Flags:
        return QString::number(shownFlags(side));
    case Field::Channels:
        return QString::number(comboData(m_pComboAudChan));
    case Field::PacketTime:
        return QString::number(comboData(receive ? m_pComboPTimeRx : m_pComboPTimeTx));
    case Field::TotalChannels:
        return QString::number(comboData(m_pComboAudFlow) * comboData(m_pComboAudChan));
    case Field::SourceAddress:
    case Field::SourcePort:
    case Field::DestinationAddress:
    case Field::DestinationPort:
    case Field::Interface:
        break;
    }
    return networkField(side, field).value();
}

quint32 QCorvel::shownFlags(Side side) const
{
    quint32 flags = 0;
    for (const FlagBit &row : flagBits()) {
        if (networkField(side, row.field).use->isChecked())
            flags |= row.bit;
    }
    return flags;
}

void QCorvel::logElement(Side side, int channel) const
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
    ErrOut(formats[side == Side::Send][isAudio()], channel, text(Field::SourceAddress).constData(),
           port(Field::SourcePort), text(Field::DestinationAddress).constData(), port(Field::DestinationPort),
           text(Field::Interface).constData(), shownFlags(side));
#pragma GCC diagnostic pop
}

// -------------------------------------------------------------------------------------------- slots

void QCorvel::onChannelSettingChanged(int)
{
    {
        const QSignalBlocker blocker(m_pCheckLockGroup);
        m_pCheckLockGroup->setChecked(false);
    }
    loadData();
}

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

void QCorvel::onFormatChanged(int)
{
    setCfgValue(ChannelValue::SignalFormat, QString::number(comboData(m_pComboVidFormat)), false,
                currentChannel());
    commitStore();
}

void QCorvel::onItemChanged(QTreeWidgetItem *, int) {}
