// SPDX-License-Identifier: MIT
//
// Slots, checks: do the network interfaces that the channel names exist on this machine?
#include "app/dialog/private.h"
#include "app/view/localinterface.h"
#include "channel/channelstore.h"
#include "rkos.h"
#include "theme/lineaddress.h"

#include <QCheckBox>
#include <QComboBox>
#include <QPointer>
#include <QTextEdit>

namespace {

struct InterfaceCheck {
    Element element;
    Side side;
    const char *label;
};

// clang-format off
const InterfaceCheck kInterfaceChecks[] = {
    {Element::Video, Side::Receive, QT_TRANSLATE_NOOP("QCorvel", "Video IP ")},
    {Element::Video, Side::Send,    QT_TRANSLATE_NOOP("QCorvel", "Video IP ")},
    {Element::Audio, Side::Receive, QT_TRANSLATE_NOOP("QCorvel", "Audio IP ")},
    {Element::Audio, Side::Send,    QT_TRANSLATE_NOOP("QCorvel", "Audio IP ")},
    {Element::Anc,   Side::Receive, QT_TRANSLATE_NOOP("QCorvel", "Anc IP ")},
    {Element::Anc,   Side::Send,    QT_TRANSLATE_NOOP("QCorvel", "Anc IP ")},
};
// clang-format on

bool interfaceExists(const QString &address)
{
    return rkOSIPExists(address.toUtf8().constData()) != 0;
}

} // namespace

// Reports, never corrects. Runs only while NMOS is overridden: otherwise NMOS decides the interfaces.
int QCorvel::checkErrors()
{
    if (!m_pNmosOverride->isChecked())
        return 1;
    QString text;
    if (m_pCheckErrs->isChecked()) {
        const int channel = m_pChannel->currentData().toInt();
        for (const InterfaceCheck &row : kInterfaceChecks) {
            const char *key = findChannelKey(row.element, row.side, Field::Interface)->name;
            const QString address = cfgValue(key, true, channel);
            if (!interfaceExists(address))
                text +=
                    tr(row.label) + address + tr(" does not exist!  Please correct the adapter or setting\n");
        }
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
    const int channel = d->channel();
    if (d->isLocked(field)) {
        for (const Element element : {Element::Video, Element::Audio, Element::Anc})
            setCfgValue(findChannelKey(element, side, Field::Interface)->name, address, true, channel);
    }
    setCfgValue(findChannelKey(d->view.element(), side, Field::Interface)->name, address, true, channel);
    commitStore();
}

int QCorvel::findDefaultInterface()
{
    return 0;
}

QString QCorvel::GetIP(QString text) const
{
    return text.section(QLatin1Char(' '), 0, 0);
}
