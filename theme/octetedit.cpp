// SPDX-License-Identifier: MIT
#include "theme/octetedit.h"

#include <QAction>
#include <QClipboard>
#include <QContextMenuEvent>
#include <QCoreApplication>
#include <QGuiApplication>
#include <QMenu>
#include <QMimeData>
#include <QScopedValueRollback>

#include "theme/lineaddress.h"

namespace {

// The toolkit's own menu has no names for its actions; their texts come from the same catalogue.
QAction *actionCalled(const QMenu *menu, const QString &text)
{
    for (QAction *action : menu->actions()) {
        if (action->text().section(QLatin1Char('\t'), 0, 0) == text)
            return action;
    }
    return nullptr;
}

// The validator refuses a separator, but not in an octet whose text came in unchecked and is wrong already.
bool isSeparator(const QKeyEvent &event)
{
    return event.text() == QLatin1String(".") || event.text() == QLatin1String(",");
}

// A line edit would type the "5" of Alt+5.
bool isTextOfCommand(const QKeyEvent &event)
{
    return (event.modifiers() & (Qt::AltModifier | Qt::MetaModifier)) && !event.text().isEmpty() &&
           event.text().at(0).isPrint();
}

} // namespace

OctetEdit::OctetEdit(QLineAddress *address) : QLineEdit(address), m_address(address)
{
    // Cut, undo, a paste, the menu: what changed the text without a key that was announced.
    connect(this, &QLineEdit::textEdited, this, [this] {
        if (!m_typing)
            m_address->announceEdit();
    });
}

bool OctetEdit::isCommand(const QKeyEvent &event)
{
    if (event.modifiers() & (Qt::ControlModifier | Qt::AltModifier | Qt::MetaModifier))
        return true;
    // Some have keys without a modifier or with Shift: Shift+Insert, Shift+Delete, Copy and Paste keys.
    for (const QKeySequence::StandardKey command :
         {QKeySequence::Copy, QKeySequence::Cut, QKeySequence::Paste, QKeySequence::Undo}) {
        if (const_cast<QKeyEvent &>(event).matches(command)) // const only from the next toolkit on
            return true;
    }
    return false;
}

bool OctetEdit::event(QEvent *event)
{
    if (event->type() == QEvent::KeyPress) {
        if (QLineEdit *next = m_address->takeKeyTarget()) {
            QCoreApplication::sendEvent(next, event);
            // The other octet has offered it to the widgets around; they shall not get it twice.
            event->accept();
            return true;
        }
    }
    return QLineEdit::event(event);
}

void OctetEdit::keyPressEvent(QKeyEvent *event)
{
    event->accept();
    if (event->matches(QKeySequence::Copy)) {
        copyText();
    } else if (event->matches(QKeySequence::Paste)) {
        pasteText();
    } else if (isTextOfCommand(*event)) {
        event->ignore();
    } else if (!isSeparator(*event)) {
        const QScopedValueRollback<bool> typing(m_typing, !isCommand(*event));
        QLineEdit::keyPressEvent(event);
    }
}

void OctetEdit::contextMenuEvent(QContextMenuEvent *event)
{
    QMenu *menu = createStandardContextMenu();
    if (!menu)
        return;
    addAddressActions(menu);
    menu->setAttribute(Qt::WA_DeleteOnClose);
    menu->popup(event->globalPos());
}

void OctetEdit::mouseReleaseEvent(QMouseEvent *event)
{
    const QClipboard *clipboard = QGuiApplication::clipboard();
    if (event->button() == Qt::MiddleButton && clipboard->supportsSelection() &&
        offer(clipboard->text(QClipboard::Selection)))
        return;
    QLineEdit::mouseReleaseEvent(event);
}

void OctetEdit::dropEvent(QDropEvent *event)
{
    if (offer(event->mimeData()->text()))
        event->acceptProposedAction();
    else
        QLineEdit::dropEvent(event);
    // A drop gives no focus that could be lost later, so nothing else would tell of it.
    m_address->finishKeys();
}

bool OctetEdit::offer(const QString &text)
{
    return !isReadOnly() && m_address->takeAddress(text);
}

bool OctetEdit::standsForTheAddress() const
{
    return !hasSelectedText() || selectedText() == text();
}

void OctetEdit::copyText()
{
    if (standsForTheAddress())
        m_address->copyAddress();
    else
        copy();
}

void OctetEdit::pasteText()
{
    if (!isReadOnly() && !offer(QGuiApplication::clipboard()->text()))
        paste();
}

void OctetEdit::addAddressActions(QMenu *menu)
{
    if (QAction *own = actionCalled(menu, QLineEdit::tr("&Paste"))) {
        own->disconnect(this);
        connect(own, &QAction::triggered, this, &OctetEdit::pasteText);
    }
    auto *whole = new QAction(QLineAddress::tr("Copy Address"), menu);
    connect(whole, &QAction::triggered, m_address, &QLineAddress::copyAddress);
    QAction *copyOctet = actionCalled(menu, QLineEdit::tr("&Copy"));
    if (copyOctet) {
        copyOctet->disconnect();
        copyOctet->setEnabled(true); // nothing selected means the address
        connect(copyOctet, &QAction::triggered, this, &OctetEdit::copyText);
    }
    const int at = copyOctet ? menu->actions().indexOf(copyOctet) + 1 : 0;
    menu->insertAction(menu->actions().value(at), whole);
}
