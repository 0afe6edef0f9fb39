// SPDX-License-Identifier: MIT
//
// Class floor: what assistive tools and the keyboard see: accessible names, tool tips, buddies, tab
// order.
#include "app/dialog/private.h"
#include "theme/lineaddress.h"

#include <QCheckBox>
#include <QComboBox>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QRadioButton>
#include <QTextEdit>

namespace {

// Appends the widgets that take the focus inside one control: the octets of an address, or itself.
void appendFocus(QVector<QWidget *> &chain, QWidget *control)
{
    if (const QLineAddress *address = qobject_cast<QLineAddress *>(control)) {
        for (QLineEdit *octet : address->m_pLineEdit)
            chain.append(octet);
    } else if (control) {
        chain.append(control);
    }
}

} // namespace

void QCorvelPrivate::describeFields()
{
    const QString sides[] = {QCorvel::tr("Receive"), QCorvel::tr("Send")};
    int row = 0;
    for (const NetworkField &field : view.fields()) {
        const QString side = sides[field.side == Side::Receive ? 0 : 1];
        const QString what = rowLabels[row++]->text().toLower();
        const QString name = QCorvel::tr("%1 %2").arg(side, what);
        if (field.address)
            field.address->setAccessibleNames(name);
        else
            field.edit->setAccessibleName(name);
        field.use->setAccessibleName(QCorvel::tr("%1, use").arg(name));
        field.use->setToolTip(QCorvel::tr("Use this %1").arg(what));
        field.lock->setAccessibleName(QCorvel::tr("%1, lock").arg(name));
        field.lock->setToolTip(QCorvel::tr("Copy this value to every element of the channel"));
    }
}

void QCorvelPrivate::describeControls()
{
    describeFields();
    // The clock lines change all the time and say no more than their names when asked.
    const struct {
        QWidget *control;
        QString name;
        QString tip;
    } rows[] = {
        {q->m_pChannel, q->m_pChannelLbl->text(), QCorvel::tr("Channel being edited")},
        {q->m_pConfig, QCorvel::tr("Named configuration"), QCorvel::tr("Named configuration")},
        {q->m_pNmosOverride, q->m_pNmosOverride->text(),
         QCorvel::tr("Checked: this dialog decides. Unchecked: NMOS may change the settings")},
        {q->m_pNmosOutLog, q->m_pNmosOutLog->text(), QCorvel::tr("The NMOS service writes a log file")},
        {q->m_pOpenNmosCfg, q->m_pOpenNmosCfg->text(),
         QCorvel::tr("Address, registry and domain of the NMOS node")},
        {q->m_pCheckErrs, q->m_pCheckErrs->text(),
         QCorvel::tr("Name network interfaces this machine does not have")},
        {q->m_pComboType, q->m_pTypeLbl->text(), QString()},
        {q->m_pComboVidFormat, q->m_pVidFormatLbl->text(), QString()},
        {q->m_pComboAudChan, q->m_pAudChanLbl->text(), QString()},
        {q->m_pComboAudFlow, q->m_pAudFlowLbl->text(), QString()},
        {q->m_pAudFlowUseSingle, q->m_pAudFlowUseSingle->text(), QString()},
        {q->m_pCheckLockGroup, q->m_pCheckLockGroup->text(), QCorvel::tr("Lock or unlock all ten fields")},
        {q->m_pComboReceive, QCorvel::tr("Receive, address family"), QString()},
        {q->m_pComboSend, QCorvel::tr("Send, address family"), QString()},
        {q->m_pComboPTimeRx, QCorvel::tr("Receive, audio packet time in microseconds"),
         QCorvel::tr("Audio packet time in \u03bcs")},
        {q->m_pComboPTimeTx, QCorvel::tr("Send, audio packet time in microseconds"),
         QCorvel::tr("Audio packet time in \u03bcs")},
        {q->m_pComboClkSrc, q->m_pClockSrcLbl->text(), QString()},
        {q->m_pEditGmId, QCorvel::tr("PTP domain"), QCorvel::tr("PTP domain")},
        {q->m_pUseGmId, q->m_pUseGmId->text(), QCorvel::tr("Name this clock in session descriptions")},
        {q->m_pEditGmAddress, q->m_pUseGmId->text(),
         QCorvel::tr("Grandmaster identity, or MAC address of the local clock")},
        {q->m_pComboClkMstr, q->m_pClockMstrLbl->text(), QString()},
        {q->m_pEditClockDomain, q->m_pClockDomainLbl->text(), QString()},
        {q->m_pEditErrMsg, QCorvel::tr("Error list"), QString()},
        {q->m_pEditNmosDmn, QCorvel::tr("Domain Name"), QString()},
        {q->m_pEditNmosPort, QCorvel::tr("Server Port"), QString()},
    };
    for (const auto &line : rows) {
        if (!line.control)
            continue;
        line.control->setAccessibleName(line.name);
        line.control->setToolTip(line.tip);
    }
    for (int flow = 0; flow < kFlowCount; ++flow) {
        q->m_pAudFlowSelect[flow]->setAccessibleName(QCorvel::tr("Audio flow %1").arg(flow));
        q->m_pAudFlowSelect[flow]->setToolTip(QCorvel::tr("Edit audio flow %1").arg(flow));
    }
    q->m_pSimpleAddress->setAccessibleNames(q->m_pSimpleLabel->text());
    q->m_pLineNmosIp->setAccessibleNames(QCorvel::tr("Node IP"));
    q->m_pLineNmosSrv->setAccessibleNames(QCorvel::tr("Server IP"));
    setBuddies();
}

void QCorvelPrivate::setBuddies()
{
    const struct {
        QLabel *label;
        QWidget *field;
    } rows[] = {
        {q->m_pChannelLbl, q->m_pChannel},          {q->m_pTypeLbl, q->m_pComboType},
        {q->m_pVidFormatLbl, q->m_pComboVidFormat}, {q->m_pAudChanLbl, q->m_pComboAudChan},
        {q->m_pAudFlowLbl, q->m_pComboAudFlow},     {q->m_pAudFlowSelectLbl, q->m_pAudFlowSelect[0]},
        {q->m_pReceiveLbl, q->m_pComboReceive},     {q->m_pSendLbl, q->m_pComboSend},
        {q->m_pPTimeLblRx, q->m_pComboPTimeRx},     {q->m_pPTimeLblTx, q->m_pComboPTimeTx},
        {q->m_pClockSrcLbl, q->m_pComboClkSrc},     {q->m_pDomainLbl, q->m_pEditGmId},
        {q->m_pClockMstrLbl, q->m_pComboClkMstr},   {q->m_pClockDomainLbl, q->m_pEditClockDomain},
    };
    for (const auto &row : rows)
        row.label->setBuddy(row.field);
}

// In the order of the eye. "Save ... SDP" and "Cancel" take no focus.
void QCorvelPrivate::setTabOrders()
{
    QVector<QWidget *> chain;
    for (QWidget *control : std::initializer_list<QWidget *>{
             q->m_pChannel, q->m_pConfig, q->m_pNmosOverride, q->m_pNmosOutLog, q->m_pOpenNmosCfg,
             q->m_pCheckErrs, q->m_pComboType, q->m_pComboVidFormat, q->m_pComboAudChan, q->m_pComboAudFlow,
             q->m_pAudFlowUseSingle, q->m_pVideoConfig, q->m_pAudioConfig, q->m_pAncConfig})
        appendFocus(chain, control);
    for (QRadioButton *flow : q->m_pAudFlowSelect)
        appendFocus(chain, flow);
    appendFocus(chain, q->m_pCheckLockGroup);
    Side side = Side::Send;
    for (const NetworkField &field : view.fields()) {
        if (field.side != side) {
            side = field.side;
            appendFocus(chain, side == Side::Receive ? q->m_pComboPTimeRx : q->m_pComboPTimeTx);
        }
        appendFocus(chain, field.control());
        appendFocus(chain, field.use);
        appendFocus(chain, field.lock);
    }
    for (QWidget *control : std::initializer_list<QWidget *>{
             q->m_pComboClkSrc, q->m_pEditGmId, q->m_pUseGmId, q->m_pEditGmAddress, q->m_pComboClkMstr,
             q->m_pEditClockDomain, q->m_pSimpleAddress, q->m_pCmdLoad, q->m_pCmdSave, q->m_pCmdAccept,
             q->m_pCmdURLs})
        appendFocus(chain, control);
    for (int i = 1; i < chain.size(); ++i)
        QWidget::setTabOrder(chain[i - 1], chain[i]);

    QVector<QWidget *> nmos;
    for (QWidget *control : std::initializer_list<QWidget *>{
             q->m_pEditNmosDmn, q->m_pLineNmosIp, q->m_pLineNmosSrv, q->m_pEditNmosPort, q->m_pSetNmosCfg})
        appendFocus(nmos, control);
    for (int i = 1; i < nmos.size(); ++i)
        QWidget::setTabOrder(nmos[i - 1], nmos[i]);
}
