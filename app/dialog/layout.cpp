// SPDX-License-Identifier: MIT
//
// Class floor: where the controls stand. All lengths are for 96 dpi and scaled by the font factor.
//
// From the top: header band 40, NMOS row 34, page 522, command band 44; 660 wide. The full page is a
// grid of four columns (label, field, use, lock) with the receive block in rows 4 to 9, the send block
// in rows 10 to 15 and the clock in rows 16 to 19.
#include "app/corvel.h"
#include "theme/lineaddress.h"

#include <QCheckBox>
#include <QComboBox>
#include <QFrame>
#include <QGridLayout>
#include <QGroupBox>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QRadioButton>
#include <QSpacerItem>
#include <QStackedLayout>
#include <QTextEdit>
#include <QVBoxLayout>

namespace {

constexpr int kMargin = 14;
constexpr int kColumnGap = 6;
constexpr int kRowGap = 3;
constexpr int kField = 21;     // height of a field
constexpr int kTopField = 22;  // height of a combo in the rows above the blocks
constexpr int kHead = 24;      // height of a block's head
constexpr int kLastRow = 30;   // height of a block's last row: its field and the card's lower edge
constexpr int kReceiveRow = 4; // first row of each block
constexpr int kSendRow = 10;
constexpr int kClockRow = 16;

enum Column { LabelColumn, FieldColumn, UseColumn, LockColumn, ColumnCount };

// clang-format off
const int kColumnWidth[ColumnCount] = {166, 290, 40, 118};
// clang-format on

// Takes no room, but keeps its row apart from the next one: a grid closes the gaps between the rows that
// only one item covers, and passes over items that call themselves empty.
class RowKeeper : public QSpacerItem {
public:
    RowKeeper() : QSpacerItem(0, 0) {}
    bool isEmpty() const override { return false; }
};

// A frame that only paints a surface behind controls; the style sheet knows it by its role.
QFrame *newSurface(QWidget *parent, const char *role)
{
    QFrame *frame = new QFrame(parent);
    frame->setProperty("role", QLatin1String(role));
    frame->setAttribute(Qt::WA_TransparentForMouseEvents);
    return frame;
}

QHBoxLayout *newRow(int spacing)
{
    QHBoxLayout *row = new QHBoxLayout;
    row->setContentsMargins(0, 0, 0, 0);
    row->setSpacing(spacing);
    return row;
}

QWidget *firstOctet(QLineAddress *address)
{
    return address->m_pLineEdit[0];
}

} // namespace

void QCorvel::buildLayout()
{
    m_pHeaderBand = new QFrame(this);
    m_pHeaderBand->setProperty("role", QStringLiteral("band"));
    m_pCommandBand = new QFrame(this);
    m_pCommandBand->setProperty("role", QStringLiteral("commands"));
    m_pFullPage = new QWidget(this);
    m_pSimplePage = new QWidget(this);

    QVBoxLayout *root = new QVBoxLayout(this);
    root->setContentsMargins(0, 0, 0, 0);
    root->setSpacing(0);
    root->addWidget(m_pHeaderBand);
    QHBoxLayout *nmosRow = newRow(px(16));
    root->addLayout(nmosRow);
    m_pSwapLayout = new QStackedLayout;
    m_pSwapLayout->setObjectName(QStringLiteral("m_pSwapLayout"));
    m_pSwapLayout->addWidget(m_pFullPage);
    m_pSwapLayout->addWidget(m_pSimplePage);
    root->addLayout(m_pSwapLayout, 1);
    root->addWidget(m_pCommandBand);

    layoutHeader(m_pHeaderBand);
    layoutNmosRow(nmosRow);
    m_pFullLayout = new QGridLayout(m_pFullPage);
    m_pFullLayout->setObjectName(QStringLiteral("m_pFullLayout"));
    m_pFullLayout->setContentsMargins(px(kMargin), px(6), px(kMargin), 0);
    m_pFullLayout->setHorizontalSpacing(px(kColumnGap));
    m_pFullLayout->setVerticalSpacing(px(kRowGap));
    for (int column = 0; column < ColumnCount; ++column)
        m_pFullLayout->setColumnMinimumWidth(column, px(kColumnWidth[column]));
    layoutFormatRows();
    layoutElementRow();
    layoutBlock(Side::Receive, kReceiveRow);
    layoutBlock(Side::Send, kSendRow);
    layoutClockBlock();
    m_pFullLayout->setRowStretch(kClockRow + 4, 1);
    layoutSimplePage(m_pSimplePage);
    layoutCommands(m_pCommandBand);
    layoutErrorDialog();
    layoutNmosDialog();
}

void QCorvel::layoutHeader(QFrame *band)
{
    band->setFixedHeight(px(40));
    QHBoxLayout *row = new QHBoxLayout(band);
    row->setContentsMargins(px(kMargin), 0, px(kMargin), 0);
    row->setSpacing(px(kColumnGap));
    m_pChannelLbl->setFixedWidth(px(kColumnWidth[LabelColumn]));
    m_pChannel->setFixedSize(px(150), px(26));
    row->addWidget(m_pChannelLbl);
    row->addWidget(m_pChannel);
    row->addStretch(1);
    if (m_pConfig) {
        m_pConfig->setFixedSize(px(200), px(26));
        row->addWidget(m_pConfig);
    }
}

// The NMOS boxes carry 10 px of padding above, which is the gap under the header: box and button end on
// one line.
void QCorvel::layoutNmosRow(QHBoxLayout *row)
{
    row->setContentsMargins(px(kMargin) + px(14), 0, px(kMargin), 0);
    for (QCheckBox *box : {m_pNmosOverride, m_pNmosOutLog, m_pCheckErrs})
        box->setFixedHeight(10 + px(24));
    m_pOpenNmosCfg->setFixedSize(px(104), px(24));
    row->addWidget(m_pNmosOverride, 0, Qt::AlignBottom);
    row->addWidget(m_pNmosOutLog, 0, Qt::AlignBottom);
    row->addWidget(m_pOpenNmosCfg, 0, Qt::AlignBottom);
    row->addStretch(1);
    row->addWidget(m_pCheckErrs, 0, Qt::AlignBottom);
}

void QCorvel::layoutFormatRows()
{
    for (QComboBox *combo : {m_pComboType, m_pComboVidFormat, m_pComboAudChan, m_pComboAudFlow})
        combo->setFixedHeight(px(kTopField));
    m_pComboType->setFixedWidth(px(118));
    m_pComboAudChan->setFixedWidth(px(118));
    m_pVidFormatLbl->setFixedWidth(px(96));
    m_pAudFlowLbl->setFixedWidth(px(96));
    m_pComboAudFlow->setFixedWidth(px(76));
    m_pAudFlowUseSingle->setFixedWidth(px(118));

    QHBoxLayout *format = newRow(px(kColumnGap));
    format->addWidget(m_pComboType);
    format->addWidget(m_pVidFormatLbl);
    format->addWidget(m_pComboVidFormat, 1);
    QHBoxLayout *audio = newRow(px(kColumnGap));
    audio->addWidget(m_pComboAudChan);
    audio->addWidget(m_pAudFlowLbl);
    audio->addWidget(m_pComboAudFlow);
    audio->addStretch(1);
    audio->addWidget(m_pAudFlowUseSingle);

    for (QLabel *label : {m_pTypeLbl, m_pAudChanLbl, m_pClockSrcLbl, m_pClockMstrLbl, m_pClockDomainLbl})
        label->setProperty("role", QStringLiteral("row"));
    m_pFullLayout->addWidget(m_pTypeLbl, 0, LabelColumn);
    m_pFullLayout->addLayout(format, 0, FieldColumn, 1, 3);
    m_pFullLayout->addWidget(m_pAudChanLbl, 1, LabelColumn);
    m_pFullLayout->addLayout(audio, 1, FieldColumn, 1, 3);
    m_pFullLayout->setRowMinimumHeight(2, px(1));
}

void QCorvel::layoutElementRow()
{
    QHBoxLayout *elements = new QHBoxLayout(m_pRadioGroup);
    elements->setContentsMargins(0, 0, 0, 0);
    elements->setSpacing(0);
    for (QRadioButton *radio : {m_pVideoConfig, m_pAudioConfig, m_pAncConfig}) {
        radio->setFixedHeight(px(26));
        elements->addWidget(radio);
    }
    QHBoxLayout *flows = new QHBoxLayout(m_pAudFlowGroup);
    flows->setContentsMargins(0, 0, 0, 0);
    flows->setSpacing(px(2));
    for (QRadioButton *flow : m_pAudFlowSelect) {
        flow->setFixedHeight(px(24));
        flows->addWidget(flow);
    }
    QHBoxLayout *row = newRow(px(8));
    row->addWidget(m_pRadioGroup);
    row->addStretch(1);
    row->addWidget(m_pAudFlowSelectLbl);
    row->addWidget(m_pAudFlowGroup);
    m_pFullLayout->addLayout(row, 3, LabelColumn, 1, 3);
    m_pFullLayout->addWidget(m_pCheckLockGroup, 3, LockColumn);
    m_pFullLayout->setRowMinimumHeight(3, px(28));
}

void QCorvel::layoutBlock(Side side, int row)
{
    const bool receive = side == Side::Receive;
    QComboBox *family = receive ? m_pComboReceive : m_pComboSend;
    QLabel *timeLabel = receive ? m_pPTimeLblRx : m_pPTimeLblTx;
    QComboBox *time = receive ? m_pComboPTimeRx : m_pComboPTimeTx;
    family->setFixedSize(px(84), px(kField));
    time->setFixedSize(px(76), px(kField));
    QHBoxLayout *head = newRow(px(8));
    head->addWidget(family);
    head->addStretch(1);
    head->addWidget(timeLabel);
    head->addWidget(time);
    QLabel *useHead = newLabel(receive ? "m_pUseHead0" : "m_pUseHead1", tr("use"));
    m_pUseHead[receive ? 0 : 1] = useHead;
    m_pFullLayout->addWidget(receive ? m_pReceiveLbl : m_pSendLbl, row, LabelColumn);
    m_pFullLayout->addLayout(head, row, FieldColumn);
    m_pFullLayout->addWidget(useHead, row, UseColumn);
    m_pFullLayout->setRowMinimumHeight(row, px(kHead));
    layoutBlockRows(side, row + 1);
    underlay(receive ? "receiveHead" : "sendHead", row, 1, ColumnCount);
    underlay(receive ? "receiveCard" : "sendCard", row, 6, ColumnCount);
}

// A surface below controls that are in the grid already. Coming after them, it leaves them the first of
// their cells.
void QCorvel::underlay(const char *name, int row, int rows, int columns)
{
    QFrame *surface = newSurface(m_pFullPage, name);
    surface->lower();
    m_pFullLayout->addWidget(surface, row, LabelColumn, rows, columns);
    for (int i = 0; i < rows; ++i)
        m_pFullLayout->addItem(new RowKeeper, row + i, LabelColumn);
}

// The field rows of a block. The last row is higher, with its content at the top, for the card's edge.
void QCorvel::layoutBlockRows(Side side, int row)
{
    const char *const labels[2][5] = {
        {QT_TR_NOOP("Source Address"), QT_TR_NOOP("Source port"), QT_TR_NOOP("Destination Address"),
         QT_TR_NOOP("Destination Port"), QT_TR_NOOP("Interface")},
        {QT_TR_NOOP("Source Address"), QT_TR_NOOP("Source Port"), QT_TR_NOOP("Destination Address"),
         QT_TR_NOOP("Destination Port"), QT_TR_NOOP("Interface")},
    };
    const int sideIndex = side == Side::Receive ? 0 : 1;
    int index = 0;
    for (const NetworkField &field : qAsConst(m_fields)) {
        if (field.side != side)
            continue;
        const bool last = index == 4;
        const Qt::Alignment top = last ? Qt::AlignTop : Qt::Alignment();
        const QByteArray name = "m_pRowLbl" + QByteArray::number(sideIndex * 5 + index);
        QLabel *label = newLabel(name.constData(), tr(labels[sideIndex][index]));
        m_pRowLbl[sideIndex * 5 + index] = label;
        label->setProperty("role", QStringLiteral("row"));
        QWidget *control = field.control();
        for (QWidget *widget : {static_cast<QWidget *>(label), control, static_cast<QWidget *>(field.use),
                                static_cast<QWidget *>(field.lock)})
            widget->setFixedHeight(px(kField));
        if (field.edit)
            field.edit->setAlignment(Qt::AlignCenter);
        field.use->setProperty("role", QStringLiteral("use"));
        label->setBuddy(field.address ? firstOctet(field.address) : control);
        m_pFullLayout->addWidget(label, row, LabelColumn, top);
        m_pFullLayout->addWidget(control, row, FieldColumn, top);
        m_pFullLayout->addWidget(field.use, row, UseColumn, top);
        m_pFullLayout->addWidget(field.lock, row, LockColumn, top);
        m_pFullLayout->setRowMinimumHeight(row, px(last ? kLastRow : kField));
        ++row;
        ++index;
    }
}

void QCorvel::layoutClockBlock()
{
    for (QWidget *field : std::initializer_list<QWidget *>{
             m_pComboClkSrc, m_pEditGmId, m_pUseGmId, m_pEditGmAddress, m_pComboClkMstr, m_pEditClockDomain})
        field->setFixedHeight(px(kField));
    m_pEditGmId->setFixedWidth(px(52));
    m_pEditGmId->setAlignment(Qt::AlignCenter);

    QHBoxLayout *source = newRow(px(10));
    source->addWidget(m_pComboClkSrc, 1);
    source->addWidget(m_pDomainLbl);
    source->addWidget(m_pEditGmId);
    source->addSpacing(px(8));
    m_pFullLayout->addWidget(m_pClockSrcLbl, kClockRow, LabelColumn, Qt::AlignBottom);
    m_pFullLayout->addLayout(source, kClockRow, FieldColumn, 1, 2, Qt::AlignBottom);
    m_pFullLayout->addWidget(m_pUseGmId, kClockRow + 1, LabelColumn);
    const struct {
        QLabel *label;
        QLineEdit *edit;
    } lines[] = {{nullptr, m_pEditGmAddress},
                 {m_pClockMstrLbl, m_pComboClkMstr},
                 {m_pClockDomainLbl, m_pEditClockDomain}};
    int row = kClockRow + 1;
    for (const auto &line : lines) {
        QHBoxLayout *cell = newRow(0);
        cell->addWidget(line.edit);
        cell->addSpacing(px(8));
        const bool last = line.edit == m_pEditClockDomain;
        const Qt::Alignment top = last ? Qt::AlignTop : Qt::Alignment();
        if (line.label) {
            line.label->setFixedHeight(px(kField));
            m_pFullLayout->addWidget(line.label, row, LabelColumn, top);
        }
        m_pFullLayout->addLayout(cell, row, FieldColumn, 1, 2, top);
        ++row;
    }
    m_pClockSrcLbl->setFixedHeight(px(kField));
    m_pFullLayout->setRowMinimumHeight(kClockRow, px(30));
    m_pFullLayout->setRowMinimumHeight(kClockRow + 1, px(kField));
    m_pFullLayout->setRowMinimumHeight(kClockRow + 2, px(kField));
    m_pFullLayout->setRowMinimumHeight(kClockRow + 3, px(28));
    m_pCmdSaveElement->setFixedSize(px(118), px(26));
    m_pFullLayout->addWidget(m_pCmdSaveElement, kClockRow + 3, LockColumn, Qt::AlignRight | Qt::AlignBottom);
    underlay("clockCard", kClockRow, 4, 3);
}

void QCorvel::layoutSimplePage(QWidget *page)
{
    QFrame *card = newSurface(page, "sendCard");
    m_pSimpleLayout = new QGridLayout(page);
    m_pSimpleLayout->setObjectName(QStringLiteral("m_pSimpleLayout"));
    m_pSimpleLayout->setContentsMargins(px(kMargin), px(16), px(kMargin), 0);
    m_pSimpleLayout->setHorizontalSpacing(px(kColumnGap));
    m_pSimpleLayout->setVerticalSpacing(0);
    m_pSimpleLayout->setColumnMinimumWidth(0, px(kColumnWidth[LabelColumn]));
    m_pSimpleLayout->setColumnMinimumWidth(1, px(kColumnWidth[FieldColumn]));
    m_pSimpleLayout->setColumnStretch(2, 1);
    m_pSimpleLayout->setRowMinimumHeight(0, px(54));
    m_pSimpleLayout->setRowStretch(1, 1);
    m_pSimpleLayout->addWidget(card, 0, 0, 1, 3);
    m_pSimpleLayout->addWidget(m_pSimpleLabel, 0, 0);
    m_pSimpleLayout->addWidget(m_pSimpleAddress, 0, 1);
    m_pSimpleAddress->setFixedSize(px(kColumnWidth[FieldColumn]), px(30));
    m_pSimpleLabel->setBuddy(firstOctet(m_pSimpleAddress));
}

void QCorvel::layoutCommands(QFrame *band)
{
    band->setFixedHeight(px(44));
    QHBoxLayout *row = new QHBoxLayout(band);
    row->setContentsMargins(px(kMargin), 0, px(kMargin), 0);
    row->setSpacing(px(8));
    m_pCmdLoad->setFixedSize(px(104), px(28));
    m_pCmdSave->setFixedSize(px(104), px(28));
    m_pCmdAccept->setFixedSize(px(118), px(28));
    m_pCmdCancel->setFixedSize(px(104), px(28));
    row->addWidget(m_pCmdLoad);
    row->addWidget(m_pCmdSave);
    row->addStretch(1);
    row->addWidget(m_pCmdAccept);
    row->addWidget(m_pCmdCancel);
    if (m_pCmdURLs) {
        m_pCmdURLs->setFixedSize(px(104), px(28));
        row->addWidget(m_pCmdURLs);
    }
}

void QCorvel::layoutErrorDialog()
{
    m_pErrDlg->setFixedSize(px(560), px(240));
    m_pErrOk->setFixedSize(px(100), px(28));
    QVBoxLayout *column = new QVBoxLayout(m_pErrDlg);
    column->setContentsMargins(px(16), px(16), px(16), px(14));
    column->setSpacing(px(12));
    column->addWidget(m_pEditErrMsg, 1);
    column->addWidget(m_pErrOk, 0, Qt::AlignRight);
}

void QCorvel::layoutNmosDialog()
{
    QGridLayout *grid = new QGridLayout(m_pNmosCfg);
    grid->setContentsMargins(px(16), px(16), px(16), px(14));
    grid->setHorizontalSpacing(px(12));
    grid->setVerticalSpacing(px(8));
    grid->setSizeConstraint(QLayout::SetFixedSize);
    const struct {
        const char *text;
        QWidget *field;
        QWidget *buddy;
    } rows[] = {
        {QT_TR_NOOP("Domain Name"), m_pEditNmosDmn, m_pEditNmosDmn},
        {QT_TR_NOOP("Node IP"), m_pLineNmosIp, firstOctet(m_pLineNmosIp)},
        {QT_TR_NOOP("Server IP"), m_pLineNmosSrv, firstOctet(m_pLineNmosSrv)},
        {QT_TR_NOOP("Server Port"), m_pEditNmosPort, m_pEditNmosPort},
    };
    int row = 0;
    for (const auto &line : rows) {
        QLabel *label = newLabel("", tr(line.text));
        label->setBuddy(line.buddy);
        line.field->setFixedSize(px(290), px(24));
        grid->addWidget(label, row, 0);
        grid->addWidget(line.field, row, 1);
        grid->setRowMinimumHeight(row, px(24));
        ++row;
    }
    m_pSetNmosCfg->setFixedSize(px(100), px(28));
    grid->addWidget(m_pSetNmosCfg, row, 1, Qt::AlignRight);
}
