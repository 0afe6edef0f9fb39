// SPDX-License-Identifier: MIT
//
// Slots, checks: do the network interfaces that the channel names exist on this machine?
#include "app/dialog/private.h"
#include "app/view/localinterface.h"
#include "channel/elementvalues.h"
#include "channel/interfacecheck.h"
#include "rkos.h"
#include "theme/lineaddress.h"

#include <QCheckBox>
#include <QComboBox>
#include <QPointer>
#include <QTextEdit>

// Reports, never corrects. Runs only while NMOS is overridden: otherwise NMOS decides the interfaces.
int QCorvel::checkErrors()
{
    if (!m_pNmosOverride->isChecked())
        return 1;
    QString text;
    if (m_pCheckErrs->isChecked()) {
        for (const MissingInterface &missing : missingInterfaces(m_pChannel->currentData().toInt()))
            text += tr(interfaceLabel(missing.element)) + missing.address +
                    tr(" does not exist!  Please correct the adapter or setting\n");
    }
    if (!text.isEmpty()) {
        ErrOut("\nSMPTE2110-RiverMax:\n%s\n", text.toUtf8().constData());
        d->showErrors(text);
    }
    return 1;
}

// One box at a time: the box opening takes the focus away from a field, and so does its closing, each of
// which may raise the next alert. Whether the box is visible is not enough to know: its event loop runs a
// little longer.
void QCorvelPrivate::showErrors(const QString &text)
{
    q->m_pEditErrMsg->setPlainText(text);
    if (showsErrors)
        return;
    showsErrors = true;
    const QPointer<QCorvel> self(q); // a host may delete the dialog meanwhile
    const Survivors::Loop loop(survivors);
    q->m_pErrDlg->exec();
    if (self)
        showsErrors = false;
}

void QCorvel::onInterfaceAlert()
{
    QObject *const from = sender();
    if (m_bClosing)
        return;
    const Side side = from == m_pEditRecIFace ? Side::Receive : Side::Send;
    const NetworkField &field = d->networkField(side, Field::Interface);
    const QString address = field.value();
    if (!m_pCheckErrs->isChecked())
        return;
    QString text;
    if (!interfaceExists(address))
        text = tr("The IP ") + address + tr(" does not exist!  Please correct the adapter or setting\n");
    if (!d->isLocked(field))
        text += tr("Warning: Lock not set, change will not be reflected in all cases");
    if (!text.isEmpty())
        d->showErrors(text);
}

// An interface address is stored as it is typed once it belongs to this machine.
void QCorvel::onInterfaceEdit()
{
    QObject *const from = sender();
    const Side side = from == m_pEditRecIFace ? Side::Receive : Side::Send;
    const NetworkField &field = d->networkField(side, Field::Interface);
    const QString address = field.value();
    if (!isLocalInterface(address))
        return;
    if (!isStandAlone()) {
        if (d->isLocked(field))
            updateLockedItems(from);
        return;
    }
    const UserStep step(d.get(), from);
    d->write([&] {
        if (d->isLocked(field)) {
            for (const Element element : elementOrder())
                setElementValue(element, side, Field::Interface, address, d->channel());
        }
        setElementValue(d->view.element(), side, Field::Interface, address, d->channel());
    });
    checkPTP();
}

int QCorvel::findDefaultInterface()
{
    return 0;
}

QString QCorvel::GetIP(QString text) const
{
    return text.section(QLatin1Char(' '), 0, 0);
}
