// SPDX-License-Identifier: MIT
//
// Class floor: makes the controls and fills the combo boxes. Places are in layout.cpp, signals in
// wiring.cpp.
#include "app/corvel.h"
#include "channel/channelstore.h"
#include "channel/videoformats.h"
#include "theme/lineaddress.h"

#include <QCheckBox>
#include <QComboBox>
#include <QFont>
#include <QGroupBox>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QRadioButton>
#include <QTextEdit>

namespace {

// The fields whose padding is set apart from the style sheet.
constexpr char kTightStyle[] = "padding-top: 2px; padding-bottom: 2px;";
constexpr char kGroupStyle[] = "QGroupBox{margin-top:0px}";
constexpr char kNmosBoxStyle[] = "QCheckBox{padding-top:10px;}";
constexpr char kDisabledStyle[] = "background-color:#404040;";

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

QFont QCorvel::controlFont() const
{
    return QFont(m_fontFamily, m_fontSize - 1);
}

QLabel *QCorvel::newLabel(const char *name, const QString &text)
{
    QLabel *label = new QLabel(text, this);
    label->setObjectName(QLatin1String(name));
    label->setFont(controlFont());
    return label;
}

QComboBox *QCorvel::newCombo(const char *name, QWidget *parent)
{
    QComboBox *combo = new QComboBox(parent ? parent : this);
    combo->setObjectName(QLatin1String(name));
    combo->setFont(controlFont());
    combo->setSizeAdjustPolicy(QComboBox::AdjustToMinimumContentsLengthWithIcon);
    combo->setMinimumContentsLength(1);
    combo->setMaxVisibleItems(16);
    return combo;
}

QCheckBox *QCorvel::newCheckBox(const char *name, const QString &text)
{
    QCheckBox *box = new QCheckBox(text, this);
    box->setObjectName(QLatin1String(name));
    box->setFont(controlFont());
    return box;
}

// No button is ever the default: Return in a field must not press one.
QPushButton *QCorvel::newButton(const char *name, const QString &text)
{
    QPushButton *button = new QPushButton(text, this);
    button->setObjectName(QLatin1String(name));
    button->setFont(controlFont());
    button->setAutoDefault(false);
    button->setDefault(false);
    return button;
}

QLineEdit *QCorvel::newLineEdit(const char *name)
{
    QLineEdit *edit = new QLineEdit(this);
    edit->setObjectName(QLatin1String(name));
    edit->setFont(controlFont());
    edit->setStyleSheet(QLatin1String(kTightStyle));
    return edit;
}

QLineAddress *QCorvel::newAddress(const char *name)
{
    QLineAddress *address = new QLineAddress(this);
    address->setObjectName(QLatin1String(name));
    return address;
}

QRadioButton *QCorvel::newRadio(const char *name, const QString &text, QWidget *parent)
{
    QRadioButton *radio = new QRadioButton(text, parent);
    radio->setObjectName(QLatin1String(name));
    radio->setFont(controlFont());
    return radio;
}

// --------------------------------------------------------------------------- the blocks of the dialog

void QCorvel::createHeader()
{
    m_pChannelLbl = newLabel("m_pChannelLbl", isStandAlone() ? tr("Channel/Instance") : tr("Channel"));
    m_pChannel = newCombo("m_pChannel");
    if (!isStandAlone())
        return;
    // Filled before it is wired, or filling it would switch configurations.
    m_pConfig = newCombo("m_pConfig");
    findConfigs();
    connect(m_pConfig, qOverload<int>(&QComboBox::currentIndexChanged), this, &QCorvel::onSetConfig);
}

void QCorvel::createNmosRow()
{
    m_pNmosOverride = newCheckBox("m_pNmosOverride", tr("Override NMOS Settings"));
    m_pNmosOutLog = newCheckBox("m_pNmosOutLog", tr("NMOS Log to file"));
    for (QCheckBox *box : {m_pNmosOverride, m_pNmosOutLog})
        box->setStyleSheet(QLatin1String(kNmosBoxStyle));
    m_pOpenNmosCfg = newButton("m_pOpenNmosCfg", tr("NMOS Config"));
    connect(m_pOpenNmosCfg, &QPushButton::clicked, this, &QCorvel::onShowNmosCfg);
    m_pCheckErrs = newCheckBox("m_pCheckErrs", tr("Check and display errors"));
    m_pCheckErrs->setStyleSheet(QLatin1String(kNmosBoxStyle));

    m_pBoardSettings = new QGroupBox(this);
    m_pBoardSettings->setObjectName(QStringLiteral("m_pBoardSettings"));
    m_pBoardSettings->setCheckable(true);
    m_pBoardSettings->hide();
}

void QCorvel::createFormatRows()
{
    m_pTypeLbl = newLabel("m_pTypeLbl", tr("Type"));
    m_pComboType = newCombo("m_pComboType");
    m_pVidFormatLbl = newLabel("m_pVidFormatLbl", tr("Video Format"));
    m_pComboVidFormat = newCombo("m_pComboVidFormat");
    m_pAudChanLbl = newLabel("m_pAudChanLbl", tr("Audio Channels per Flow"));
    m_pComboAudChan = newCombo("m_pComboAudChan");
    m_pAudFlowLbl = newLabel("m_pAudFlowLbl", tr("Audio Flows"));
    m_pComboAudFlow = newCombo("m_pComboAudFlow");
    // Shows the mode that audChanUseSingle was last called with. Nobody clicks it: the switch belongs to
    // the host, which calls the slot by name.
    m_pAudFlowUseSingle = newCheckBox("m_pAudFlowUseSingle", tr("Single flow"));
    m_pAudFlowUseSingle->setEnabled(false);
}

// Each set of radio buttons has a group box of its own as parent: exclusiveness works by parent.
void QCorvel::createElementRow()
{
    m_pRadioGroup = new QGroupBox(this);
    m_pRadioGroup->setObjectName(QStringLiteral("m_pRadioGroup"));
    m_pVideoConfig = newRadio("m_pVideoConfig", tr("Video"), m_pRadioGroup);
    m_pAudioConfig = newRadio("m_pAudioConfig", tr("Audio"), m_pRadioGroup);
    m_pAncConfig = newRadio("m_pAncConfig", tr("Anc"), m_pRadioGroup);
    m_pVideoConfig->setChecked(true);

    m_pAudFlowSelectLbl = newLabel("m_pAudFlowSelectLbl", tr("Flow"));
    m_pAudFlowGroup = new QGroupBox(this);
    m_pAudFlowGroup->setObjectName(QStringLiteral("m_pAudFlowGroup"));
    for (int flow = 0; flow < kFlowCount; ++flow) {
        const QByteArray name = "m_pAudFlowSelect" + QByteArray::number(flow);
        m_pAudFlowSelect[flow] = newRadio(name.constData(), QString::number(flow), m_pAudFlowGroup);
    }
    for (QGroupBox *group : {m_pRadioGroup, m_pAudFlowGroup})
        group->setStyleSheet(QLatin1String(kGroupStyle));
    m_pCheckLockGroup = newCheckBox("m_pCheckLockGroup", tr("lock all"));
}

void QCorvel::createReceiveBlock()
{
    m_pReceiveLbl = newLabel("m_pReceiveLbl", tr("Receive"));
    m_pComboReceive = newCombo("m_pComboReceive");
    m_pPTimeLblRx = newLabel("m_pPTimeLblRx", tr("Packet Time Rx"));
    m_pComboPTimeRx = newCombo("m_pComboPTimeRx");
    m_pLineRecSrcAddr = newAddress("m_pLineRecSrcAddr");
    m_pEditRecSrcPort = newLineEdit("m_pEditRecSrcPort");
    m_pLineRecDstAddr = newAddress("m_pLineRecDstAddr");
    m_pEditRecDstPort = newLineEdit("m_pEditRecDstPort");
    m_pEditRecIFace = newAddress("m_pEditRecIFace");
    m_pCheckRecSrcAddr = newCheckBox("m_pCheckRecSrcAddr", QString());
    m_pCheckRecSrcPort = newCheckBox("m_pCheckRecSrcPort", QString());
    m_pCheckRecDstAddr = newCheckBox("m_pCheckRecDstAddr", QString());
    m_pCheckRecDstPort = newCheckBox("m_pCheckRecDstPort", QString());
    m_pCheckRecDstIFace = newCheckBox("m_pCheckRecDstIFace", QString());
    m_pCheckLockRecSrcAddr = newCheckBox("m_pCheckLockRecSrcAddr", tr("lock"));
    m_pCheckLockRecSrcPort = newCheckBox("m_pCheckLockRecSrcPort", tr("lock"));
    m_pCheckLockRecDstAddr = newCheckBox("m_pCheckLockRecDstAddr", tr("lock"));
    m_pCheckLockRecDstPort = newCheckBox("m_pCheckLockRecDstPort", tr("lock"));
    m_pCheckLockRecDstIFace = newCheckBox("m_pCheckLockRecDstIFace", tr("lock"));
}

void QCorvel::createSendBlock()
{
    m_pSendLbl = newLabel("m_pSendLbl", tr("Send / \u03bcs"));
    m_pComboSend = newCombo("m_pComboSend");
    m_pPTimeLblTx = newLabel("m_pPTimeLblTx", tr("Packet Time Tx"));
    m_pComboPTimeTx = newCombo("m_pComboPTimeTx");
    m_pLineSndSrcAddr = newAddress("m_pLineSndSrcAddr");
    m_pEditSndSrcPort = newLineEdit("m_pEditSndSrcPort");
    m_pLineSndDstAddr = newAddress("m_pLineSndDstAddr");
    m_pEditSndDstPort = newLineEdit("m_pEditSndDstPort");
    m_pEditSndIFace = newAddress("m_pEditSndIFace");
    m_pCheckSndSrcAddr = newCheckBox("m_pCheckSndSrcAddr", QString());
    m_pCheckSndSrcPort = newCheckBox("m_pCheckSndSrcPort", QString());
    m_pCheckSndDstAddr = newCheckBox("m_pCheckSndDstAddr", QString());
    m_pCheckSndDstPort = newCheckBox("m_pCheckSndDstPort", QString());
    m_pCheckSndDstIFace = newCheckBox("m_pCheckSndDstIFace", QString());
    m_pCheckLockSndSrcAddr = newCheckBox("m_pCheckLockSndSrcAddr", tr("lock"));
    m_pCheckLockSndSrcPort = newCheckBox("m_pCheckLockSndSrcPort", tr("lock"));
    m_pCheckLockSndDstAddr = newCheckBox("m_pCheckLockSndDstAddr", tr("lock"));
    m_pCheckLockSndDstPort = newCheckBox("m_pCheckLockSndDstPort", tr("lock"));
    m_pCheckLockSndDstIFace = newCheckBox("m_pCheckLockSndDstIFace", tr("lock"));
}

void QCorvel::createClockBlock()
{
    m_pClockSrcLbl = newLabel("m_pClockSrcLbl", tr("Clock Source"));
    m_pComboClkSrc = newCombo("m_pComboClkSrc");
    m_pDomainLbl = newLabel("m_pDomainLbl", tr("Domain"));
    m_pEditGmId = newLineEdit("m_pEditGmId");
    m_pUseGmId = newCheckBox("m_pUseGmId", tr("Clock Mac Address / ID"));
    m_pEditGmAddress = newLineEdit("m_pEditGmAddress");
    m_pEditGmAddress->setEnabled(false);
    m_pEditGmAddress->setStyleSheet(QLatin1String(kDisabledStyle));
    m_pClockMstrLbl = newLabel("m_pClockMstrLbl", tr("Clock Info"));
    m_pComboClkMstr = newLineEdit("m_pComboClkMstr");
    m_pComboClkMstr->setReadOnly(true);
    m_pClockDomainLbl = newLabel("m_pClockDomainLbl", tr("Clock Time"));
    m_pEditClockDomain = newLineEdit("m_pEditClockDomain");
}

void QCorvel::createSimplePage()
{
    m_pSimpleLabel = newLabel("m_pSimpleLabel", tr("Multicast Address"));
    m_pSimpleAddress = newAddress("m_pSimpleAddress");
}

// "Cancel" exists in both modes and is shown embedded only; "Show URLs" exists embedded only.
void QCorvel::createCommands()
{
    m_pCmdLoad = newButton("m_pCmdLoad", tr("Load File"));
    m_pCmdSave = newButton("m_pCmdSave", tr("Save File"));
    m_pCmdSaveElement = newButton("m_pCmdSaveElement", tr("Save Video SDP"));
    m_pCmdSaveElement->setStyleSheet(QLatin1String(kTightStyle));
    m_pCmdAccept = newButton("m_pCmdAccept", tr("Done"));
    m_pCmdCancel = newButton("m_pCmdCancel", tr("Cancel"));
    m_pCmdSaveElement->setFocusPolicy(Qt::NoFocus);
    m_pCmdCancel->setFocusPolicy(Qt::NoFocus);
    connect(m_pCmdLoad, &QPushButton::clicked, this, &QCorvel::load);
    connect(m_pCmdSave, &QPushButton::clicked, this, &QCorvel::save);
    connect(m_pCmdSaveElement, &QPushButton::clicked, this, &QCorvel::saveElement);
    connect(m_pCmdAccept, &QPushButton::clicked, this, &QCorvel::ok);
    connect(m_pCmdCancel, &QPushButton::clicked, this, &QCorvel::cancel);
    m_pCmdCancel->setVisible(!isStandAlone());
    if (isStandAlone())
        return;
    m_pCmdURLs = newButton("m_pCmdURLs", tr("Show URLs"));
    connect(m_pCmdURLs, &QPushButton::clicked, this, &QCorvel::showurls);
}

void QCorvel::createErrorDialog()
{
    m_pErrDlg = new QDialog(this);
    m_pErrDlg->setObjectName(QStringLiteral("m_pErrDlg"));
    m_pErrDlg->setWindowTitle(tr("Error List"));
    m_pErrDlg->setFont(font());
    m_pEditErrMsg = new QTextEdit(m_pErrDlg);
    m_pEditErrMsg->setObjectName(QStringLiteral("m_pEditErrMsg"));
    m_pEditErrMsg->setFont(font());
    m_pEditErrMsg->setReadOnly(true);
    m_pEditErrMsg->setAcceptRichText(false);
    m_pEditErrMsg->setTabChangesFocus(true);
    m_pEditErrMsg->document()->setDocumentMargin(px(9));
    m_pErrOk = newButton("m_pErrOk", tr("OK"));
    m_pErrOk->setParent(m_pErrDlg); // before it becomes the default, or it were the main dialog's
    m_pErrOk->setDefault(true);
    m_pErrOk->setFocus();
    connect(m_pErrOk, &QPushButton::clicked, m_pErrDlg, &QDialog::accept);
}

void QCorvel::createNmosDialog()
{
    m_pNmosCfg = new QDialog(this);
    m_pNmosCfg->setObjectName(QStringLiteral("m_pNmosCfg"));
    m_pNmosCfg->setWindowTitle(tr("NMOS Config"));
    m_pNmosCfg->setFont(font());
    m_pEditNmosDmn = newLineEdit("m_pEditNmosDmn");
    m_pLineNmosIp = newAddress("m_pLineNmosIp");
    m_pLineNmosSrv = newAddress("m_pLineNmosSrv");
    m_pEditNmosPort = newLineEdit("m_pEditNmosPort");
    m_pSetNmosCfg = newButton("m_pSetNmosCfg", tr("Set"));
    connect(m_pSetNmosCfg, &QPushButton::clicked, this, &QCorvel::onSetNmosCfg);
}

// ------------------------------------------------------------------------ contents of the combo boxes

void QCorvel::fillTypes()
{
    fill(m_pComboType, kTypes);
}

void QCorvel::popCombos()
{
    m_pChannel->clear();
    const int channels = channelCount();
    for (int channel = 0; channel < channels; ++channel)
        m_pChannel->addItem(QString::asprintf("Channel-%d", channel), channel);
    fillTypes();
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
