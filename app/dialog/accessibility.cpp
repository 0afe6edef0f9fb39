// SPDX-License-Identifier: MIT
//
// Class floor: what assistive tools and the keyboard see: accessible names, tool tips, buddies, tab order.
#include "app/corvel.h"
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

void QCorvel::describeControls()
{
    const QString sides[] = {tr("Receive"), tr("Send")};
    int row = 0;
    for (const NetworkField &field : qAsConst(m_fields)) {
        const QString side = sides[field.side == Side::Receive ? 0 : 1];
        const QString what = m_pRowLbl[row++]->text().toLower();
        const QString name = tr("%1 %2").arg(side, what);
        if (field.address)
            field.address->setAccessibleNames(name);
        else
            field.edit->setAccessibleName(name);
        field.use->setAccessibleName(tr("%1, use").arg(name));
        field.use->setToolTip(tr("Use this %1").arg(what));
        field.lock->setAccessibleName(tr("%1, lock").arg(name));
        field.lock->setToolTip(tr("Copy this value to every element of the channel"));
    }
    // The clock lines change all the time and say no more than their names when asked.
    const struct {
        QWidget *control;
        QString name;
        QString tip;
    } rows[] = {
        {m_pChannel, m_pChannelLbl->text(), tr("Channel being edited")},
        {m_pConfig, tr("Named configuration"), tr("Named configuration")},
        {m_pNmosOverride, m_pNmosOverride->text(),
         tr("Checked: this dialog decides. Unchecked: NMOS may change the settings")},
        {m_pNmosOutLog, m_pNmosOutLog->text(), tr("The NMOS service writes a log file")},
        {m_pOpenNmosCfg, m_pOpenNmosCfg->text(), tr("Address, registry and domain of the NMOS node")},
        {m_pCheckErrs, m_pCheckErrs->text(), tr("Name network interfaces this machine does not have")},
        {m_pComboType, m_pTypeLbl->text(), QString()},
        {m_pComboVidFormat, m_pVidFormatLbl->text(), QString()},
        {m_pComboAudChan, m_pAudChanLbl->text(), QString()},
        {m_pComboAudFlow, m_pAudFlowLbl->text(), QString()},
        {m_pAudFlowUseSingle, m_pAudFlowUseSingle->text(), QString()},
        {m_pCheckLockGroup, m_pCheckLockGroup->text(), tr("Lock or unlock all ten fields")},
        {m_pComboReceive, tr("Receive, address family"), QString()},
        {m_pComboSend, tr("Send, address family"), QString()},
        {m_pComboPTimeRx, tr("Receive, audio packet time in microseconds"),
         tr("Audio packet time in \u03bcs")},
        {m_pComboPTimeTx, tr("Send, audio packet time in microseconds"), tr("Audio packet time in \u03bcs")},
        {m_pComboClkSrc, m_pClockSrcLbl->text(), QString()},
        {m_pEditGmId, tr("PTP domain"), tr("PTP domain")},
        {m_pUseGmId, m_pUseGmId->text(), tr("Name this clock in session descriptions")},
        {m_pEditGmAddress, m_pUseGmId->text(), tr("Grandmaster identity, or MAC address of the local clock")},
        {m_pComboClkMstr, m_pClockMstrLbl->text(), QString()},
        {m_pEditClockDomain, m_pClockDomainLbl->text(), QString()},
        {m_pEditErrMsg, tr("Error list"), QString()},
        {m_pEditNmosDmn, tr("Domain Name"), QString()},
        {m_pEditNmosPort, tr("Server Port"), QString()},
    };
    for (const auto &line : rows) {
        if (!line.control)
            continue;
        line.control->setAccessibleName(line.name);
        line.control->setToolTip(line.tip);
    }
    for (int flow = 0; flow < kFlowCount; ++flow) {
        m_pAudFlowSelect[flow]->setAccessibleName(tr("Audio flow %1").arg(flow));
        m_pAudFlowSelect[flow]->setToolTip(tr("Edit audio flow %1").arg(flow));
    }
    m_pSimpleAddress->setAccessibleNames(m_pSimpleLabel->text());
    m_pLineNmosIp->setAccessibleNames(tr("Node IP"));
    m_pLineNmosSrv->setAccessibleNames(tr("Server IP"));
    setBuddies();
}

void QCorvel::setBuddies()
{
    const struct {
        QLabel *label;
        QWidget *field;
    } rows[] = {
        {m_pChannelLbl, m_pChannel},          {m_pTypeLbl, m_pComboType},
        {m_pVidFormatLbl, m_pComboVidFormat}, {m_pAudChanLbl, m_pComboAudChan},
        {m_pAudFlowLbl, m_pComboAudFlow},     {m_pAudFlowSelectLbl, m_pAudFlowSelect[0]},
        {m_pReceiveLbl, m_pComboReceive},     {m_pSendLbl, m_pComboSend},
        {m_pPTimeLblRx, m_pComboPTimeRx},     {m_pPTimeLblTx, m_pComboPTimeTx},
        {m_pClockSrcLbl, m_pComboClkSrc},     {m_pDomainLbl, m_pEditGmId},
        {m_pClockMstrLbl, m_pComboClkMstr},   {m_pClockDomainLbl, m_pEditClockDomain},
    };
    for (const auto &row : rows)
        row.label->setBuddy(row.field);
}

// In the order of the eye. "Save ... SDP" and "Cancel" take no focus.
void QCorvel::setTabOrders()
{
    QVector<QWidget *> chain;
    for (QWidget *control : std::initializer_list<QWidget *>{
             m_pChannel, m_pConfig, m_pNmosOverride, m_pNmosOutLog, m_pOpenNmosCfg, m_pCheckErrs,
             m_pComboType, m_pComboVidFormat, m_pComboAudChan, m_pComboAudFlow, m_pAudFlowUseSingle,
             m_pVideoConfig, m_pAudioConfig, m_pAncConfig})
        appendFocus(chain, control);
    for (QRadioButton *flow : m_pAudFlowSelect)
        appendFocus(chain, flow);
    appendFocus(chain, m_pCheckLockGroup);
    Side side = Side::Send;
    for (const NetworkField &field : qAsConst(m_fields)) {
        if (field.side != side) {
            side = field.side;
            appendFocus(chain, side == Side::Receive ? m_pComboPTimeRx : m_pComboPTimeTx);
        }
        appendFocus(chain, field.control());
        appendFocus(chain, field.use);
        appendFocus(chain, field.lock);
    }
    for (QWidget *control : std::initializer_list<QWidget *>{
             m_pComboClkSrc, m_pEditGmId, m_pUseGmId, m_pEditGmAddress, m_pComboClkMstr, m_pEditClockDomain,
             m_pSimpleAddress, m_pCmdLoad, m_pCmdSave, m_pCmdAccept, m_pCmdURLs})
        appendFocus(chain, control);
    for (int i = 1; i < chain.size(); ++i)
        setTabOrder(chain[i - 1], chain[i]);

    QVector<QWidget *> nmos;
    for (QWidget *control : std::initializer_list<QWidget *>{m_pEditNmosDmn, m_pLineNmosIp, m_pLineNmosSrv,
                                                             m_pEditNmosPort, m_pSetNmosCfg})
        appendFocus(nmos, control);
    for (int i = 1; i < nmos.size(); ++i)
        setTabOrder(nmos[i - 1], nmos[i]);
}
