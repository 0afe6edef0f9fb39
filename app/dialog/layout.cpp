// SPDX-License-Identifier: MIT
//
// Class floor: where the controls stand. All lengths are for 96 dpi and scaled by the font factor.
//
// From the top: header band 40, NMOS row 34, page 522, command band 44; 660 wide. The full page is a grid
// of four columns (label, field, use, lock) with the receive block in rows 4 to 9, the send block in rows
// 10 to 15 and the clock in rows 16 to 19.
#include "app/dialog/private.h"
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

void QCorvelPrivate::createPages()
{
    headerBand = new QFrame(q);
    headerBand->setProperty("role", QStringLiteral("band"));
    commandBand = new QFrame(q);
    commandBand->setProperty("role", QStringLiteral("commands"));
    fullPage = new QWidget(q);
    simplePage = new QWidget(q);
}

void QCorvelPrivate::buildLayout()
{
    QVBoxLayout *root = new QVBoxLayout(q);
    root->setContentsMargins(0, 0, 0, 0);
    root->setSpacing(0);
    root->addWidget(headerBand);
    QHBoxLayout *nmosRow = newRow(px(16));
    root->addLayout(nmosRow);
    q->m_pSwapLayout = new QStackedLayout;
    q->m_pSwapLayout->setObjectName(QStringLiteral("m_pSwapLayout"));
    root->addLayout(q->m_pSwapLayout, 1);
    root->addWidget(commandBand);

    layoutHeader();
    layoutNmosRow(nmosRow);
    q->m_pFullLayout = new QGridLayout(fullPage);
    q->m_pFullLayout->setObjectName(QStringLiteral("m_pFullLayout"));
    q->m_pFullLayout->setContentsMargins(px(kMargin), px(6), px(kMargin), 0);
    q->m_pFullLayout->setHorizontalSpacing(px(kColumnGap));
    q->m_pFullLayout->setVerticalSpacing(px(kRowGap));
    for (int column = 0; column < ColumnCount; ++column)
        q->m_pFullLayout->setColumnMinimumWidth(column, px(kColumnWidth[column]));
    ground = fullPage;
    layoutFormatRows();
    layoutElementRow();
    layoutBlock(Side::Receive, kReceiveRow);
    layoutBlock(Side::Send, kSendRow);
    layoutClockBlock();
    q->m_pFullLayout->setRowStretch(kClockRow + 4, 1);
    layoutSimplePage();
    layoutCommands();
    layoutErrorDialog();
    layoutNmosDialog();
    // Last: this styles the controls on the pages, which have got their roles by now.
    q->m_pSwapLayout->addWidget(fullPage);
    q->m_pSwapLayout->addWidget(simplePage);
}

void QCorvelPrivate::layoutHeader()
{
    headerBand->setFixedHeight(px(40));
    QHBoxLayout *row = new QHBoxLayout(headerBand);
    row->setContentsMargins(px(kMargin), 0, px(kMargin), 0);
    row->setSpacing(px(kColumnGap));
    q->m_pChannelLbl->setFixedWidth(px(kColumnWidth[LabelColumn]));
    q->m_pChannel->setFixedSize(px(150), px(26));
    row->addWidget(q->m_pChannelLbl);
    row->addWidget(q->m_pChannel);
    row->addStretch(1);
    if (q->m_pConfig) {
        q->m_pConfig->setFixedSize(px(200), px(26));
        row->addWidget(q->m_pConfig);
    }
}

// The NMOS boxes carry 10 px of padding above, which is the gap under the header: box and button end on
// one line.
void QCorvelPrivate::layoutNmosRow(QHBoxLayout *row)
{
    row->setContentsMargins(px(kMargin) + px(14), 0, px(kMargin), 0);
    for (QCheckBox *box : {q->m_pNmosOverride, q->m_pNmosOutLog, q->m_pCheckErrs})
        box->setFixedHeight(10 + px(24));
    q->m_pOpenNmosCfg->setFixedSize(px(104), px(24));
    row->addWidget(q->m_pNmosOverride, 0, Qt::AlignBottom);
    row->addWidget(q->m_pNmosOutLog, 0, Qt::AlignBottom);
    row->addWidget(q->m_pOpenNmosCfg, 0, Qt::AlignBottom);
    row->addStretch(1);
    row->addWidget(q->m_pCheckErrs, 0, Qt::AlignBottom);
}

void QCorvelPrivate::layoutFormatRows()
{
    for (QComboBox *combo : {q->m_pComboType, q->m_pComboVidFormat, q->m_pComboAudChan, q->m_pComboAudFlow})
        combo->setFixedHeight(px(kTopField));
    q->m_pComboType->setFixedWidth(px(118));
    q->m_pComboAudChan->setFixedWidth(px(118));
    q->m_pVidFormatLbl->setFixedWidth(px(96));
    q->m_pAudFlowLbl->setFixedWidth(px(96));
    q->m_pComboAudFlow->setFixedWidth(px(76));
    q->m_pAudFlowUseSingle->setFixedWidth(px(118));

    QHBoxLayout *format = newRow(px(kColumnGap));
    format->addWidget(q->m_pComboType);
    format->addWidget(q->m_pVidFormatLbl);
    format->addWidget(q->m_pComboVidFormat, 1);
    QHBoxLayout *audio = newRow(px(kColumnGap));
    audio->addWidget(q->m_pComboAudChan);
    audio->addWidget(q->m_pAudFlowLbl);
    audio->addWidget(q->m_pComboAudFlow);
    audio->addStretch(1);
    audio->addWidget(q->m_pAudFlowUseSingle);

    for (QLabel *label :
         {q->m_pTypeLbl, q->m_pAudChanLbl, q->m_pClockSrcLbl, q->m_pClockMstrLbl, q->m_pClockDomainLbl})
        label->setProperty("role", QStringLiteral("row"));
    q->m_pFullLayout->addWidget(q->m_pTypeLbl, 0, LabelColumn);
    q->m_pFullLayout->addLayout(format, 0, FieldColumn, 1, 3);
    q->m_pFullLayout->addWidget(q->m_pAudChanLbl, 1, LabelColumn);
    q->m_pFullLayout->addLayout(audio, 1, FieldColumn, 1, 3);
    q->m_pFullLayout->setRowMinimumHeight(2, px(1));
}

void QCorvelPrivate::layoutElementRow()
{
    QHBoxLayout *elements = new QHBoxLayout(q->m_pRadioGroup);
    elements->setContentsMargins(0, 0, 0, 0);
    elements->setSpacing(0);
    for (QRadioButton *radio : {q->m_pVideoConfig, q->m_pAudioConfig, q->m_pAncConfig}) {
        radio->setFixedHeight(px(26));
        elements->addWidget(radio);
    }
    QHBoxLayout *flows = new QHBoxLayout(q->m_pAudFlowGroup);
    flows->setContentsMargins(0, 0, 0, 0);
    flows->setSpacing(px(2));
    for (QRadioButton *flow : q->m_pAudFlowSelect) {
        flow->setFixedHeight(px(24));
        flows->addWidget(flow);
    }
    QHBoxLayout *row = newRow(px(8));
    row->addWidget(q->m_pRadioGroup);
    row->addStretch(1);
    row->addWidget(q->m_pAudFlowSelectLbl);
    row->addWidget(q->m_pAudFlowGroup);
    q->m_pFullLayout->addLayout(row, 3, LabelColumn, 1, 3);
    q->m_pFullLayout->addWidget(q->m_pCheckLockGroup, 3, LockColumn);
    q->m_pFullLayout->setRowMinimumHeight(3, px(28));
}

void QCorvelPrivate::layoutBlock(Side side, int row)
{
    const bool receive = side == Side::Receive;
    QComboBox *family = receive ? q->m_pComboReceive : q->m_pComboSend;
    QLabel *timeLabel = receive ? q->m_pPTimeLblRx : q->m_pPTimeLblTx;
    QComboBox *time = receive ? q->m_pComboPTimeRx : q->m_pComboPTimeTx;
    family->setFixedSize(px(84), px(kField));
    time->setFixedSize(px(76), px(kField));
    QHBoxLayout *head = newRow(px(8));
    head->addWidget(family);
    head->addStretch(1);
    head->addWidget(timeLabel);
    head->addWidget(time);
    QLabel *useHead = newLabel(receive ? "m_pUseHead0" : "m_pUseHead1", QCorvel::tr("use"));
    q->m_pFullLayout->addWidget(receive ? q->m_pReceiveLbl : q->m_pSendLbl, row, LabelColumn);
    q->m_pFullLayout->addLayout(head, row, FieldColumn);
    q->m_pFullLayout->addWidget(useHead, row, UseColumn);
    q->m_pFullLayout->setRowMinimumHeight(row, px(kHead));
    layoutBlockRows(side, row + 1);
    underlay(receive ? "receiveHead" : "sendHead", row, 1, ColumnCount);
    underlay(receive ? "receiveCard" : "sendCard", row, 6, ColumnCount);
}

// A surface below controls that are in the grid already. Coming after them, it leaves them the first of
// their cells.
void QCorvelPrivate::underlay(const char *name, int row, int rows, int columns)
{
    QFrame *surface = newSurface(fullPage, name);
    surface->lower();
    q->m_pFullLayout->addWidget(surface, row, LabelColumn, rows, columns);
    for (int i = 0; i < rows; ++i)
        q->m_pFullLayout->addItem(new RowKeeper, row + i, LabelColumn);
}

// The field rows of a block. The last row is higher, with its content at the top, for the card's edge.
void QCorvelPrivate::layoutBlockRows(Side side, int row)
{
    const char *const labels[2][5] = {
        {QT_TRANSLATE_NOOP("QCorvel", "Source Address"), QT_TRANSLATE_NOOP("QCorvel", "Source port"),
         QT_TRANSLATE_NOOP("QCorvel", "Destination Address"),
         QT_TRANSLATE_NOOP("QCorvel", "Destination Port"), QT_TRANSLATE_NOOP("QCorvel", "Interface")},
        {QT_TRANSLATE_NOOP("QCorvel", "Source Address"), QT_TRANSLATE_NOOP("QCorvel", "Source Port"),
         QT_TRANSLATE_NOOP("QCorvel", "Destination Address"),
         QT_TRANSLATE_NOOP("QCorvel", "Destination Port"), QT_TRANSLATE_NOOP("QCorvel", "Interface")},
    };
    const int sideIndex = side == Side::Receive ? 0 : 1;
    int index = 0;
    for (const NetworkField &field : view.fields()) {
        if (field.side != side)
            continue;
        const bool last = index == 4;
        const Qt::Alignment top = last ? Qt::AlignTop : Qt::Alignment();
        const QByteArray name = "m_pRowLbl" + QByteArray::number(sideIndex * 5 + index);
        QLabel *label = newLabel(name.constData(), QCorvel::tr(labels[sideIndex][index]));
        rowLabels[sideIndex * 5 + index] = label;
        label->setProperty("role", QStringLiteral("row"));
        QWidget *control = field.control();
        for (QWidget *widget : {static_cast<QWidget *>(label), control, static_cast<QWidget *>(field.use),
                                static_cast<QWidget *>(field.lock)})
            widget->setFixedHeight(px(kField));
        if (field.edit)
            field.edit->setAlignment(Qt::AlignCenter);
        field.use->setProperty("role", QStringLiteral("use"));
        label->setBuddy(field.address ? firstOctet(field.address) : control);
        q->m_pFullLayout->addWidget(label, row, LabelColumn, top);
        q->m_pFullLayout->addWidget(control, row, FieldColumn, top);
        q->m_pFullLayout->addWidget(field.use, row, UseColumn, top);
        q->m_pFullLayout->addWidget(field.lock, row, LockColumn, top);
        q->m_pFullLayout->setRowMinimumHeight(row, px(last ? kLastRow : kField));
        ++row;
        ++index;
    }
}

void QCorvelPrivate::layoutClockBlock()
{
    for (QWidget *field :
         std::initializer_list<QWidget *>{q->m_pComboClkSrc, q->m_pEditGmId, q->m_pUseGmId,
                                          q->m_pEditGmAddress, q->m_pComboClkMstr, q->m_pEditClockDomain})
        field->setFixedHeight(px(kField));
    q->m_pEditGmId->setFixedWidth(px(52));
    q->m_pEditGmId->setAlignment(Qt::AlignCenter);

    QHBoxLayout *source = newRow(px(10));
    source->addWidget(q->m_pComboClkSrc, 1);
    source->addWidget(q->m_pDomainLbl);
    source->addWidget(q->m_pEditGmId);
    source->addSpacing(px(8));
    q->m_pFullLayout->addWidget(q->m_pClockSrcLbl, kClockRow, LabelColumn, Qt::AlignBottom);
    q->m_pFullLayout->addLayout(source, kClockRow, FieldColumn, 1, 2, Qt::AlignBottom);
    q->m_pFullLayout->addWidget(q->m_pUseGmId, kClockRow + 1, LabelColumn);
    const struct {
        QLabel *label;
        QLineEdit *edit;
    } lines[] = {{nullptr, q->m_pEditGmAddress},
                 {q->m_pClockMstrLbl, q->m_pComboClkMstr},
                 {q->m_pClockDomainLbl, q->m_pEditClockDomain}};
    int row = kClockRow + 1;
    for (const auto &line : lines) {
        QHBoxLayout *cell = newRow(0);
        cell->addWidget(line.edit);
        cell->addSpacing(px(8));
        const bool last = line.edit == q->m_pEditClockDomain;
        const Qt::Alignment top = last ? Qt::AlignTop : Qt::Alignment();
        if (line.label) {
            line.label->setFixedHeight(px(kField));
            q->m_pFullLayout->addWidget(line.label, row, LabelColumn, top);
        }
        q->m_pFullLayout->addLayout(cell, row, FieldColumn, 1, 2, top);
        ++row;
    }
    q->m_pClockSrcLbl->setFixedHeight(px(kField));
    q->m_pFullLayout->setRowMinimumHeight(kClockRow, px(30));
    q->m_pFullLayout->setRowMinimumHeight(kClockRow + 1, px(kField));
    q->m_pFullLayout->setRowMinimumHeight(kClockRow + 2, px(kField));
    q->m_pFullLayout->setRowMinimumHeight(kClockRow + 3, px(28));
    q->m_pCmdSaveElement->setFixedSize(px(118), px(26));
    q->m_pFullLayout->addWidget(q->m_pCmdSaveElement, kClockRow + 3, LockColumn,
                                Qt::AlignRight | Qt::AlignBottom);
    underlay("clockCard", kClockRow, 4, 3);
}

void QCorvelPrivate::layoutSimplePage()
{
    QFrame *card = newSurface(simplePage, "sendCard");
    card->lower();
    q->m_pSimpleLayout = new QGridLayout(simplePage);
    q->m_pSimpleLayout->setObjectName(QStringLiteral("m_pSimpleLayout"));
    q->m_pSimpleLayout->setContentsMargins(px(kMargin), px(16), px(kMargin), 0);
    q->m_pSimpleLayout->setHorizontalSpacing(px(kColumnGap));
    q->m_pSimpleLayout->setVerticalSpacing(0);
    q->m_pSimpleLayout->setColumnMinimumWidth(0, px(kColumnWidth[LabelColumn]));
    q->m_pSimpleLayout->setColumnMinimumWidth(1, px(kColumnWidth[FieldColumn]));
    q->m_pSimpleLayout->setColumnStretch(2, 1);
    q->m_pSimpleLayout->setRowMinimumHeight(0, px(54));
    q->m_pSimpleLayout->setRowStretch(1, 1);
    q->m_pSimpleLayout->addWidget(card, 0, 0, 1, 3);
    q->m_pSimpleLayout->addWidget(q->m_pSimpleLabel, 0, 0);
    q->m_pSimpleLayout->addWidget(q->m_pSimpleAddress, 0, 1);
    q->m_pSimpleAddress->setFixedSize(px(kColumnWidth[FieldColumn]), px(30));
    q->m_pSimpleLabel->setBuddy(firstOctet(q->m_pSimpleAddress));
}

void QCorvelPrivate::layoutCommands()
{
    commandBand->setFixedHeight(px(44));
    QHBoxLayout *row = new QHBoxLayout(commandBand);
    row->setContentsMargins(px(kMargin), 0, px(kMargin), 0);
    row->setSpacing(px(8));
    q->m_pCmdLoad->setFixedSize(px(104), px(28));
    q->m_pCmdSave->setFixedSize(px(104), px(28));
    q->m_pCmdAccept->setFixedSize(px(118), px(28));
    q->m_pCmdCancel->setFixedSize(px(104), px(28));
    row->addWidget(q->m_pCmdLoad);
    row->addWidget(q->m_pCmdSave);
    row->addStretch(1);
    row->addWidget(q->m_pCmdAccept);
    row->addWidget(q->m_pCmdCancel);
    if (q->m_pCmdURLs) {
        q->m_pCmdURLs->setFixedSize(px(104), px(28));
        row->addWidget(q->m_pCmdURLs);
    }
}

void QCorvelPrivate::layoutErrorDialog()
{
    q->m_pErrDlg->setFixedSize(px(560), px(240));
    q->m_pErrOk->setFixedSize(px(100), px(28));
    QVBoxLayout *column = new QVBoxLayout(q->m_pErrDlg);
    column->setContentsMargins(px(16), px(16), px(16), px(14));
    column->setSpacing(px(12));
    column->addWidget(q->m_pEditErrMsg, 1);
    column->addWidget(q->m_pErrOk, 0, Qt::AlignRight);
}

void QCorvelPrivate::layoutNmosDialog()
{
    ground = q->m_pNmosCfg;
    QGridLayout *grid = new QGridLayout(q->m_pNmosCfg);
    grid->setContentsMargins(px(16), px(16), px(16), px(14));
    grid->setHorizontalSpacing(px(12));
    grid->setVerticalSpacing(px(8));
    grid->setSizeConstraint(QLayout::SetFixedSize);
    const struct {
        const char *text;
        QWidget *field;
        QWidget *buddy;
    } rows[] = {
        {QT_TRANSLATE_NOOP("QCorvel", "Domain Name"), q->m_pEditNmosDmn, q->m_pEditNmosDmn},
        {QT_TRANSLATE_NOOP("QCorvel", "Node IP"), q->m_pLineNmosIp, firstOctet(q->m_pLineNmosIp)},
        {QT_TRANSLATE_NOOP("QCorvel", "Server IP"), q->m_pLineNmosSrv, firstOctet(q->m_pLineNmosSrv)},
        {QT_TRANSLATE_NOOP("QCorvel", "Server Port"), q->m_pEditNmosPort, q->m_pEditNmosPort},
    };
    int row = 0;
    for (const auto &line : rows) {
        QLabel *label = newLabel("", QCorvel::tr(line.text));
        label->setBuddy(line.buddy);
        line.field->setFixedSize(px(290), px(24));
        grid->addWidget(label, row, 0);
        grid->addWidget(line.field, row, 1);
        grid->setRowMinimumHeight(row, px(24));
        ++row;
    }
    q->m_pSetNmosCfg->setFixedSize(px(100), px(28));
    grid->addWidget(q->m_pSetNmosCfg, row, 1, Qt::AlignRight);
}
