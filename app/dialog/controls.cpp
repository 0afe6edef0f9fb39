// SPDX-License-Identifier: MIT
//
// Class floor: makes the controls and fills the combo boxes. It leaves their places to layout.cpp and what
// they do to connections.cpp.
#include "app/dialog/private.h"
#include "app/dialog/styles.h"
#include "channel/channelstore.h"
#include "channel/videoformats.h"
#include "theme/lineaddress.h"
#include "theme/portfield.h"

#include <QCheckBox>
#include <QComboBox>
#include <QFont>
#include <QGroupBox>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QRadioButton>
#include <QTextEdit>

#include <algorithm>
#include <iterator>

namespace {

// The fields whose padding is set apart from the style sheet.
constexpr char kTightStyle[] = "padding-top: 2px; padding-bottom: 2px;";
constexpr char kGroupStyle[] = "QGroupBox{margin-top:0px}";
constexpr char kNmosBoxStyle[] = "QCheckBox{padding-top:10px;}";

struct Entry {
    const char *text;
    quint32 data;
};

// clang-format off
const Entry kTypes[] = {
    {"SMPTE-2110", ChannelType::Smpte2110},
};

const Entry kClockSources[] = {
    {"Internal",             ClockSource::Internal},
    {"H/W SMPTE 2059/PTP",   ClockSource::HardwarePtp},
    {"S/W SMPTE 2059/PTP",   ClockSource::SoftwarePtp},
    {"Free Run",             ClockSource::FreeRun},
};

const Entry kAddressFamilies[] = {
    {"IPv4", 4},
    {"IPv6", 6},
};

const Entry kPacketTimes[] = {
    {"125",  125},
    {"1000", 1000},
};
// clang-format on

template<std::size_t N>
void fill(QComboBox *combo, const Entry (&entries)[N])
{
    combo->clear();
    for (const Entry &entry : entries)
        combo->addItem(QLatin1String(entry.text), entry.data);
}

void fillNumbers(QComboBox *combo, quint32 first, quint32 last, quint32 step)
{
    combo->clear();
    for (quint32 number = first; number <= last; number += step)
        combo->addItem(QString::number(number), number);
}

} // namespace

QFont QCorvelPrivate::controlFont() const
{
    return QFont(q->m_fontFamily, q->m_fontSize - 1);
}

QLabel *QCorvelPrivate::newLabel(const char *name, const QString &text)
{
    QLabel *label = new QLabel(text, ground);
    label->setObjectName(QLatin1String(name));
    label->setFont(controlFont());
    return label;
}

QComboBox *QCorvelPrivate::newCombo(const char *name)
{
    QComboBox *combo = new QComboBox(ground);
    combo->setObjectName(QLatin1String(name));
    combo->setFont(controlFont());
    combo->setSizeAdjustPolicy(QComboBox::AdjustToMinimumContentsLengthWithIcon);
    combo->setMinimumContentsLength(1);
    combo->setMaxVisibleItems(16);
    return combo;
}

QCheckBox *QCorvelPrivate::newCheckBox(const char *name, const QString &text)
{
    QCheckBox *box = new QCheckBox(text, ground);
    box->setObjectName(QLatin1String(name));
    box->setFont(controlFont());
    return box;
}

// No button is ever the default: Return in a field must not press one.
QPushButton *QCorvelPrivate::newButton(const char *name, const QString &text)
{
    QPushButton *button = new QPushButton(text, ground);
    button->setObjectName(QLatin1String(name));
    button->setFont(controlFont());
    button->setAutoDefault(false);
    button->setDefault(false);
    return button;
}

QLineEdit *QCorvelPrivate::newLineEdit(const char *name)
{
    QLineEdit *edit = new QLineEdit(ground);
    edit->setObjectName(QLatin1String(name));
    edit->setFont(controlFont());
    edit->setStyleSheet(QLatin1String(kTightStyle));
    return edit;
}

QLineAddress *QCorvelPrivate::newAddress(const char *name)
{
    QLineAddress *address = new QLineAddress(ground);
    address->setObjectName(QLatin1String(name));
    addresses.append(address);
    return address;
}

QRadioButton *QCorvelPrivate::newRadio(const char *name, const QString &text, QWidget *parent)
{
    QRadioButton *radio = new QRadioButton(text, parent);
    radio->setObjectName(QLatin1String(name));
    radio->setFont(controlFont());
    return radio;
}

// --------------------------------------------------------------------------------- the blocks of the dialog

void QCorvelPrivate::createHeader()
{
    ground = headerBand;
    q->m_pChannelLbl = newLabel("m_pChannelLbl", QCorvel::isStandAlone() ? QCorvel::tr("Channel/Instance")
                                                                         : QCorvel::tr("Channel"));
    q->m_pChannel = newCombo("m_pChannel");
    if (QCorvel::isStandAlone())
        q->m_pConfig = newCombo("m_pConfig");
}

void QCorvelPrivate::createNmosRow()
{
    ground = q;
    q->m_pNmosOverride = newCheckBox("m_pNmosOverride", QCorvel::tr("Override NMOS Settings"));
    q->m_pNmosOutLog = newCheckBox("m_pNmosOutLog", QCorvel::tr("NMOS Log to file"));
    for (QCheckBox *box : {q->m_pNmosOverride, q->m_pNmosOutLog})
        box->setStyleSheet(QLatin1String(kNmosBoxStyle));
    q->m_pOpenNmosCfg = newButton("m_pOpenNmosCfg", QCorvel::tr("NMOS Config"));
    q->m_pCheckErrs = newCheckBox("m_pCheckErrs", QCorvel::tr("Check and display errors"));
    q->m_pCheckErrs->setStyleSheet(QLatin1String(kNmosBoxStyle));

    q->m_pBoardSettings = new QGroupBox(q);
    q->m_pBoardSettings->setObjectName(QStringLiteral("m_pBoardSettings"));
    q->m_pBoardSettings->setCheckable(true);
    q->m_pBoardSettings->hide();
}

void QCorvelPrivate::createFormatRows()
{
    ground = fullPage;
    q->m_pTypeLbl = newLabel("m_pTypeLbl", QCorvel::tr("Type"));
    q->m_pComboType = newCombo("m_pComboType");
    q->m_pVidFormatLbl = newLabel("m_pVidFormatLbl", QCorvel::tr("Video Format"));
    q->m_pComboVidFormat = newCombo("m_pComboVidFormat");
    q->m_pAudChanLbl = newLabel("m_pAudChanLbl", QCorvel::tr("Audio Channels per Flow"));
    q->m_pComboAudChan = newCombo("m_pComboAudChan");
    q->m_pAudFlowLbl = newLabel("m_pAudFlowLbl", QCorvel::tr("Audio Flows"));
    q->m_pComboAudFlow = newCombo("m_pComboAudFlow");
    // Shows the mode that audChanUseSingle was last called with. Nobody clicks it: the switch belongs to the
    // host, which calls the slot by name.
    q->m_pAudFlowUseSingle = newCheckBox("m_pAudFlowUseSingle", QCorvel::tr("Single flow"));
    q->m_pAudFlowUseSingle->setEnabled(false);
}

// Each set of radio buttons has a group box of its own as parent: exclusiveness works by parent.
void QCorvelPrivate::createElementRow()
{
    q->m_pRadioGroup = new QGroupBox(ground);
    q->m_pRadioGroup->setObjectName(QStringLiteral("m_pRadioGroup"));
    q->m_pVideoConfig = newRadio("m_pVideoConfig", QCorvel::tr("Video"), q->m_pRadioGroup);
    q->m_pAudioConfig = newRadio("m_pAudioConfig", QCorvel::tr("Audio"), q->m_pRadioGroup);
    q->m_pAncConfig = newRadio("m_pAncConfig", QCorvel::tr("Anc"), q->m_pRadioGroup);
    q->m_pVideoConfig->setChecked(true);

    q->m_pAudFlowSelectLbl = newLabel("m_pAudFlowSelectLbl", QCorvel::tr("Flow"));
    q->m_pAudFlowGroup = new QGroupBox(ground);
    q->m_pAudFlowGroup->setObjectName(QStringLiteral("m_pAudFlowGroup"));
    for (int flow = 0; flow < kFlowCount; ++flow) {
        const QByteArray name = "m_pAudFlowSelect" + QByteArray::number(flow);
        q->m_pAudFlowSelect[flow] = newRadio(name.constData(), QString::number(flow), q->m_pAudFlowGroup);
    }
    for (QGroupBox *group : {q->m_pRadioGroup, q->m_pAudFlowGroup})
        group->setStyleSheet(QLatin1String(kGroupStyle));
    q->m_pCheckLockGroup = newCheckBox("m_pCheckLockGroup", QCorvel::tr("lock all"));
}

void QCorvelPrivate::createReceiveBlock()
{
    q->m_pReceiveLbl = newLabel("m_pReceiveLbl", QCorvel::tr("Receive"));
    q->m_pComboReceive = newCombo("m_pComboReceive");
    q->m_pPTimeLblRx = newLabel("m_pPTimeLblRx", QCorvel::tr("Packet Time Rx"));
    q->m_pComboPTimeRx = newCombo("m_pComboPTimeRx");
    q->m_pLineRecSrcAddr = newAddress("m_pLineRecSrcAddr");
    q->m_pEditRecSrcPort = newLineEdit("m_pEditRecSrcPort");
    q->m_pLineRecDstAddr = newAddress("m_pLineRecDstAddr");
    q->m_pEditRecDstPort = newLineEdit("m_pEditRecDstPort");
    q->m_pEditRecIFace = newAddress("m_pEditRecIFace");
    q->m_pCheckRecSrcAddr = newCheckBox("m_pCheckRecSrcAddr", QString());
    q->m_pCheckRecSrcPort = newCheckBox("m_pCheckRecSrcPort", QString());
    q->m_pCheckRecDstAddr = newCheckBox("m_pCheckRecDstAddr", QString());
    q->m_pCheckRecDstPort = newCheckBox("m_pCheckRecDstPort", QString());
    q->m_pCheckRecDstIFace = newCheckBox("m_pCheckRecDstIFace", QString());
    q->m_pCheckLockRecSrcAddr = newCheckBox("m_pCheckLockRecSrcAddr", QCorvel::tr("lock"));
    q->m_pCheckLockRecSrcPort = newCheckBox("m_pCheckLockRecSrcPort", QCorvel::tr("lock"));
    q->m_pCheckLockRecDstAddr = newCheckBox("m_pCheckLockRecDstAddr", QCorvel::tr("lock"));
    q->m_pCheckLockRecDstPort = newCheckBox("m_pCheckLockRecDstPort", QCorvel::tr("lock"));
    q->m_pCheckLockRecDstIFace = newCheckBox("m_pCheckLockRecDstIFace", QCorvel::tr("lock"));
}

void QCorvelPrivate::createSendBlock()
{
    q->m_pSendLbl = newLabel("m_pSendLbl", QCorvel::tr("Send / \u03bcs"));
    q->m_pComboSend = newCombo("m_pComboSend");
    q->m_pPTimeLblTx = newLabel("m_pPTimeLblTx", QCorvel::tr("Packet Time Tx"));
    q->m_pComboPTimeTx = newCombo("m_pComboPTimeTx");
    q->m_pLineSndSrcAddr = newAddress("m_pLineSndSrcAddr");
    q->m_pEditSndSrcPort = newLineEdit("m_pEditSndSrcPort");
    q->m_pLineSndDstAddr = newAddress("m_pLineSndDstAddr");
    q->m_pEditSndDstPort = newLineEdit("m_pEditSndDstPort");
    q->m_pEditSndIFace = newAddress("m_pEditSndIFace");
    q->m_pCheckSndSrcAddr = newCheckBox("m_pCheckSndSrcAddr", QString());
    q->m_pCheckSndSrcPort = newCheckBox("m_pCheckSndSrcPort", QString());
    q->m_pCheckSndDstAddr = newCheckBox("m_pCheckSndDstAddr", QString());
    q->m_pCheckSndDstPort = newCheckBox("m_pCheckSndDstPort", QString());
    q->m_pCheckSndDstIFace = newCheckBox("m_pCheckSndDstIFace", QString());
    q->m_pCheckLockSndSrcAddr = newCheckBox("m_pCheckLockSndSrcAddr", QCorvel::tr("lock"));
    q->m_pCheckLockSndSrcPort = newCheckBox("m_pCheckLockSndSrcPort", QCorvel::tr("lock"));
    q->m_pCheckLockSndDstAddr = newCheckBox("m_pCheckLockSndDstAddr", QCorvel::tr("lock"));
    q->m_pCheckLockSndDstPort = newCheckBox("m_pCheckLockSndDstPort", QCorvel::tr("lock"));
    q->m_pCheckLockSndDstIFace = newCheckBox("m_pCheckLockSndDstIFace", QCorvel::tr("lock"));
}

void QCorvelPrivate::createClockBlock()
{
    q->m_pClockSrcLbl = newLabel("m_pClockSrcLbl", QCorvel::tr("Clock Source"));
    q->m_pComboClkSrc = newCombo("m_pComboClkSrc");
    q->m_pDomainLbl = newLabel("m_pDomainLbl", QCorvel::tr("Domain"));
    q->m_pEditGmId = newLineEdit("m_pEditGmId");
    q->m_pUseGmId = newCheckBox("m_pUseGmId", QCorvel::tr("Clock Mac Address / ID"));
    q->m_pEditGmAddress = newLineEdit("m_pEditGmAddress");
    q->m_pEditGmAddress->setEnabled(false);
    q->m_pEditGmAddress->setStyleSheet(QLatin1String(kDisabledStyle));
    q->m_pClockMstrLbl = newLabel("m_pClockMstrLbl", QCorvel::tr("Clock Info"));
    q->m_pComboClkMstr = newLineEdit("m_pComboClkMstr");
    q->m_pComboClkMstr->setReadOnly(true);
    q->m_pClockDomainLbl = newLabel("m_pClockDomainLbl", QCorvel::tr("Clock Time"));
    q->m_pEditClockDomain = newLineEdit("m_pEditClockDomain");
}

void QCorvelPrivate::createSimplePage()
{
    ground = simplePage;
    q->m_pSimpleLabel = newLabel("m_pSimpleLabel", QCorvel::tr("Multicast Address"));
    q->m_pSimpleAddress = newAddress("m_pSimpleAddress");
}

// "Cancel" exists in both modes and is shown embedded only; "Show URLs" exists embedded only.
void QCorvelPrivate::createCommands()
{
    ground = fullPage;
    q->m_pCmdSaveElement = newButton("m_pCmdSaveElement", QCorvel::tr("Save Video SDP"));
    ground = commandBand;
    q->m_pCmdLoad = newButton("m_pCmdLoad", QCorvel::tr("Load File"));
    q->m_pCmdSave = newButton("m_pCmdSave", QCorvel::tr("Save File"));
    q->m_pCmdSaveElement->setStyleSheet(QLatin1String(kTightStyle));
    q->m_pCmdAccept = newButton("m_pCmdAccept", QCorvel::tr("Done"));
    q->m_pCmdCancel = newButton("m_pCmdCancel", QCorvel::tr("Cancel"));
    q->m_pCmdSaveElement->setFocusPolicy(Qt::NoFocus);
    q->m_pCmdCancel->setFocusPolicy(Qt::NoFocus);
    q->m_pCmdCancel->setVisible(!QCorvel::isStandAlone());
    if (!QCorvel::isStandAlone())
        q->m_pCmdURLs = newButton("m_pCmdURLs", QCorvel::tr("Show URLs"));
}

void QCorvelPrivate::createErrorDialog()
{
    q->m_pErrDlg = new QDialog(q);
    q->m_pErrDlg->setObjectName(QStringLiteral("m_pErrDlg"));
    q->m_pErrDlg->setWindowTitle(QCorvel::tr("Error List"));
    q->m_pErrDlg->setFont(q->font());
    q->m_pEditErrMsg = new QTextEdit(q->m_pErrDlg);
    q->m_pEditErrMsg->setObjectName(QStringLiteral("m_pEditErrMsg"));
    q->m_pEditErrMsg->setFont(q->font());
    q->m_pEditErrMsg->setReadOnly(true);
    q->m_pEditErrMsg->setAcceptRichText(false);
    q->m_pEditErrMsg->setTabChangesFocus(true);
    q->m_pEditErrMsg->document()->setDocumentMargin(px(9));
    ground = q->m_pErrDlg;
    q->m_pErrOk = newButton("m_pErrOk", QCorvel::tr("OK"));
    q->m_pErrOk->setDefault(true);
    q->m_pErrOk->setFocus();
    QObject::connect(q->m_pErrOk, &QPushButton::clicked, q->m_pErrDlg, &QDialog::accept);
}

void QCorvelPrivate::createNmosDialog()
{
    q->m_pNmosCfg = new QDialog(q);
    q->m_pNmosCfg->setObjectName(QStringLiteral("m_pNmosCfg"));
    q->m_pNmosCfg->setWindowTitle(QCorvel::tr("NMOS Config"));
    q->m_pNmosCfg->setFont(q->font());
    ground = q->m_pNmosCfg;
    q->m_pEditNmosDmn = newLineEdit("m_pEditNmosDmn");
    q->m_pLineNmosIp = newAddress("m_pLineNmosIp");
    q->m_pLineNmosSrv = newAddress("m_pLineNmosSrv");
    q->m_pEditNmosPort = newLineEdit("m_pEditNmosPort");
    selectAllOnClick(q->m_pEditNmosPort);
    q->m_pSetNmosCfg = newButton("m_pSetNmosCfg", QCorvel::tr("Set"));
}

// The view gets the controls that show a channel; from here on it is asked for what they hold.
void QCorvelPrivate::takeView()
{
    const Side rx = Side::Receive;
    const Side tx = Side::Send;
    // clang-format off
    const QVector<NetworkField> rows = {
        // side, field,                  address,              text,                 use box,                lock box
        {rx, Field::SourceAddress,      q->m_pLineRecSrcAddr, nullptr,              q->m_pCheckRecSrcAddr,  q->m_pCheckLockRecSrcAddr},
        {rx, Field::SourcePort,         nullptr,              q->m_pEditRecSrcPort, q->m_pCheckRecSrcPort,  q->m_pCheckLockRecSrcPort},
        {rx, Field::DestinationAddress, q->m_pLineRecDstAddr, nullptr,              q->m_pCheckRecDstAddr,  q->m_pCheckLockRecDstAddr},
        {rx, Field::DestinationPort,    nullptr,              q->m_pEditRecDstPort, q->m_pCheckRecDstPort,  q->m_pCheckLockRecDstPort},
        {rx, Field::Interface,          q->m_pEditRecIFace,   nullptr,              q->m_pCheckRecDstIFace, q->m_pCheckLockRecDstIFace},
        {tx, Field::SourceAddress,      q->m_pLineSndSrcAddr, nullptr,              q->m_pCheckSndSrcAddr,  q->m_pCheckLockSndSrcAddr},
        {tx, Field::SourcePort,         nullptr,              q->m_pEditSndSrcPort, q->m_pCheckSndSrcPort,  q->m_pCheckLockSndSrcPort},
        {tx, Field::DestinationAddress, q->m_pLineSndDstAddr, nullptr,              q->m_pCheckSndDstAddr,  q->m_pCheckLockSndDstAddr},
        {tx, Field::DestinationPort,    nullptr,              q->m_pEditSndDstPort, q->m_pCheckSndDstPort,  q->m_pCheckLockSndDstPort},
        {tx, Field::Interface,          q->m_pEditSndIFace,   nullptr,              q->m_pCheckSndDstIFace, q->m_pCheckLockSndDstIFace},
    };
    // clang-format on
    AudioFlows::Buttons flows;
    std::copy(std::begin(q->m_pAudFlowSelect), std::end(q->m_pAudFlowSelect), flows.begin());
    const ChannelView::Controls controls = {q->m_pChannel,      q->m_pComboType,    q->m_pVideoConfig,
                                            q->m_pAudioConfig,  q->m_pAncConfig,    q->m_pComboAudChan,
                                            q->m_pComboAudFlow, q->m_pComboPTimeRx, q->m_pComboPTimeTx};
    view = ChannelView(controls, NetworkFields(rows), AudioFlows(flows));
    clockLines = ClockStateLines(q->m_pComboClkMstr, q->m_pEditClockDomain);
}

// ------------------------------------------------------------------------------ contents of the combo boxes

void QCorvelPrivate::fillTypes()
{
    fill(q->m_pComboType, kTypes);
}

void QCorvel::popCombos()
{
    m_pChannel->clear();
    const int channels = channelCount();
    for (int channel = 0; channel < channels; ++channel)
        m_pChannel->addItem(QString::asprintf("Channel-%d", channel), channel);
    d->fillTypes();
    fill(m_pComboClkSrc, kClockSources);
    fill(m_pComboReceive, kAddressFamilies);
    fill(m_pComboSend, kAddressFamilies);
    fill(m_pComboPTimeTx, kPacketTimes);
    fill(m_pComboPTimeRx, kPacketTimes);
    m_pComboVidFormat->clear();
    for (const VideoFormat &format : videoFormats())
        m_pComboVidFormat->addItem(tr(format.text), format.id);
    fillNumbers(m_pComboAudChan, 0, 16, 2);
    fillNumbers(m_pComboAudFlow, 1, kFlowCount, 1);
    m_pComboClkMstr->setText(tr("No PTP Found"));
}
