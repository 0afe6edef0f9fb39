// SPDX-License-Identifier: MIT
//
// Slots, restoring: what is stored for one field, and the Escape key, which shows that again. Attached,
// Escape is left to the dialog.
#include "app/dialog/private.h"
#include "channel/channelstore.h"
#include "theme/lineaddress.h"

#include <QKeyEvent>
#include <QLineEdit>

namespace {

// Before the octets' own handling, which would take Escape for a key that may change the text.
class EscapeWatch : public QObject {
public:
    explicit EscapeWatch(QCorvelPrivate *d) : m_d(d) {}

    bool eventFilter(QObject *watched, QEvent *event) override
    {
        const bool isEscape = event->type() == QEvent::KeyPress &&
                              static_cast<QKeyEvent *>(event)->matches(QKeySequence::Cancel);
        if (!isEscape || !QCorvel::isStandAlone())
            return QObject::eventFilter(watched, event);
        m_d->restoreField(m_d->q->focusWidget());
        return true;
    }

private:
    QCorvelPrivate *m_d;
};

// Keys that are still on their way belong to the text that is given up.
void showAddress(QLineAddress *address, const QString &text, QWidget *octet)
{
    address->finishKeys();
    address->setAddress(QStringLiteral("...")); // a stored text may have fewer parts
    address->setAddress(text);
    octet->setFocus(Qt::OtherFocusReason);
    static_cast<QLineEdit *>(octet)->selectAll();
}

void showText(QLineEdit *edit, const QString &text)
{
    edit->setText(text);
    edit->selectAll();
}

} // namespace

void QCorvelPrivate::watchEscape()
{
    auto *watch = new EscapeWatch(this);
    watches.emplace_back(watch);
    q->installEventFilter(watch);
    for (const QLineAddress *address : q->findChildren<QLineAddress *>()) {
        if (address->window() == q->m_pNmosCfg)
            continue;
        for (QLineEdit *octet : address->m_pLineEdit)
            octet->installEventFilter(watch);
    }
}

// The stored text of the field that the control is or, for an octet, belongs to.
QString QCorvelPrivate::storedIn(const QWidget *control)
{
    for (const NetworkField &field : view.fields()) {
        if (field.control() == control)
            return elementValue(view.element(), field.side, field.field, channel(),
                                view.flows().saveSuffix());
    }
    if (control == q->m_pSimpleAddress)
        return elementValue(Element::Video, Side::Send, Field::DestinationAddress, channel());
    if (control == q->m_pLineNmosIp)
        return q->cfgValue(FirstChannelValue::NmosIp, true, 0);
    if (control == q->m_pEditGmId)
        return q->cfgValue(ChannelValue::ClockDomain, false, channel());
    if (control == q->m_pEditGmAddress)
        return q->cfgValue(ChannelValue::ClockGrandMaster, true, channel());
    const auto *other = qobject_cast<const QLineEdit *>(control);
    return other ? other->text() : QString(); // nothing is known of it, so it keeps what it shows
}

// Nothing is saved: the dialog's signals are disconnected.
void QCorvelPrivate::restoreField(QWidget *focus)
{
    const SignalBracket bracket(q);
    auto *address = qobject_cast<QLineAddress *>(focus ? focus->parentWidget() : nullptr);
    auto *edit = qobject_cast<QLineEdit *>(focus);
    const bool isClockLine = focus == q->m_pEditClockDomain || focus == q->m_pComboClkMstr;
    if (address)
        showAddress(address, storedIn(address), focus);
    else if (edit && !isClockLine)
        showText(edit, storedIn(edit));
}
