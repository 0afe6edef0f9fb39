// SPDX-License-Identifier: MIT
//
// QLineAddress: what keys and the focus do. Its keys may come faster than the event loop runs, its owner
// may change in between; what a key means is decided by the octet that it was typed in.
#include <QCoreApplication>
#include <QKeyEvent>
#include <QMouseEvent>

#include "theme/lineaddress.h"
#include "theme/octetedit.h"

#include <algorithm>
#include <iterator>

namespace {

// Where the focus goes when a key acts.
enum class Move { Prev, Next, Back };

// What a key does before the octet itself gets it.
struct KeyRule {
    int key;
    bool (*acts)(const QLineEdit &octet);
    Move move;
    bool mayChangeText; // announced by signalTextChanged, whether the rule acts or not
};

bool always(const QLineEdit &)
{
    return true;
}

bool emptyOrAtStart(const QLineEdit &octet)
{
    return octet.text().isEmpty() || octet.cursorPosition() == 0;
}

bool atStartOrAllSelected(const QLineEdit &octet)
{
    return octet.cursorPosition() == 0 || octet.selectedText().length() == octet.text().length();
}

bool emptyOrAtEnd(const QLineEdit &octet)
{
    return octet.text().isEmpty() || octet.cursorPosition() == octet.text().length();
}

bool emptyOrZero(const QLineEdit &octet)
{
    return octet.text().isEmpty() || octet.text() == QLatin1String("0");
}

// Backspace and the keys that only move say nothing: the owner learns of what they did when the focus
// leaves the widget. Every key without a row is announced, letters and Tab included: the rule is about
// keys, not about what the octet makes of them.
// clang-format off
const KeyRule kKeyRules[] = {
    // key               acts when             focus goes   may change the text
    { Qt::Key_Backspace, emptyOrAtStart,       Move::Prev,  false },
    { Qt::Key_Left,      atStartOrAllSelected, Move::Prev,  false },
    { Qt::Key_Right,     emptyOrAtEnd,         Move::Next,  false },
    { Qt::Key_Period,    always,               Move::Next,  false },
    { Qt::Key_Comma,     always,               Move::Next,  false },
    { Qt::Key_0,         emptyOrZero,          Move::Next,  true  },
    { Qt::Key_Return,    always,               Move::Back,  true  },
    { Qt::Key_Enter,     always,               Move::Back,  true  },
};
// clang-format on

const KeyRule *ruleFor(int key)
{
    for (const KeyRule &rule : kKeyRules) {
        if (rule.key == key)
            return &rule;
    }
    return nullptr;
}

void fillOctet(QLineEdit *octet, int key)
{
    // A "0" typed onto a "0" writes it again, which also drops a selection.
    if (!octet->text().isEmpty() && key != Qt::Key_0)
        return;
    octet->setText(QStringLiteral("0"));
    octet->setModified(true);
    // The octet gets the Backspace too and would delete the new "0" again.
    if (key == Qt::Key_Backspace)
        octet->setCursorPosition(0);
}

// Keys that by themselves are none.
bool isModifier(int key)
{
    switch (key) {
    case Qt::Key_Shift:
    case Qt::Key_Control:
    case Qt::Key_Meta:
    case Qt::Key_Alt:
    case Qt::Key_AltGr:
    case Qt::Key_CapsLock:
    case Qt::Key_NumLock:
    case Qt::Key_ScrollLock:
    case Qt::Key_Super_L:
    case Qt::Key_Super_R:
        return true;
    default:
        return false;
    }
}

bool isSeparator(int key)
{
    return key == Qt::Key_Period || key == Qt::Key_Comma;
}

bool isTab(const QKeyEvent &event)
{
    return (event.key() == Qt::Key_Tab || event.key() == Qt::Key_Backtab) &&
           !(event.modifiers() & (Qt::ControlModifier | Qt::AltModifier));
}

void enterOctet(QLineEdit *octet)
{
    octet->setFocus(Qt::OtherFocusReason);
    octet->setCursorPosition(0);
    octet->selectAll();
}

} // namespace

void QLineAddress::finishKeys()
{
    QCoreApplication::sendPostedEvents(this, QEvent::MetaCall);
}

bool QLineAddress::hasPendingKeys() const
{
    const auto waits = [](int keys) { return keys > 0; };
    return m_nEdits > 0 || std::any_of(std::begin(m_nAnnounced), std::end(m_nAnnounced), waits) ||
           std::any_of(std::begin(m_nSettled), std::end(m_nSettled), waits);
}

bool QLineAddress::eventFilter(QObject *watched, QEvent *event)
{
    const int index = octetIndex(watched);
    if (index >= 0)
        octetEvent(index, event);
    else if (watched == m_pPlaceKeeper)
        ownerEvent(event);
    return QFrame::eventFilter(watched, event);
}

void QLineAddress::octetEvent(int index, QEvent *event)
{
    switch (event->type()) {
    case QEvent::MouseButtonRelease:
        if (static_cast<QMouseEvent *>(event)->button() == Qt::LeftButton)
            clickOctet(index);
        break;
    case QEvent::KeyPress:
        keyPressed(index, *static_cast<QKeyEvent *>(event));
        break;
    case QEvent::FocusOut:
        focusLeft(index);
        break;
    default:
        break;
    }
}

// ---------------------------------------------------------------------------------------------- keys

void QLineAddress::keyPressed(int index, const QKeyEvent &event)
{
    m_pKeyTarget = nullptr;
    m_bPassing = false;
    // The key before this one filled the octet and the event loop has not run since: the move that is
    // due comes first, and this key belongs to the next octet, as it would have a moment later.
    if (m_nAnnounced[index] > 0 && advanceIsDue(index)) {
        advance(index);
        m_pKeyTarget = m_pLineEdit[index + 1];
        return;
    }
    if (isModifier(event.key()) || OctetEdit::isCommand(event))
        return;
    const bool habit = m_nAdvancedTo == index && isSeparator(event.key());
    m_nAdvancedTo = -1;
    if (!habit)
        act(index, event.key());
}

// For the octet's own event handler, which comes after the filter: where the key goes instead.
QLineEdit *QLineAddress::takeKeyTarget()
{
    QLineEdit *target = m_pKeyTarget;
    m_pKeyTarget = nullptr;
    return target;
}

void QLineAddress::act(int index, int key)
{
    QLineEdit *octet = m_pLineEdit[index];
    const KeyRule *rule = ruleFor(key);
    const bool acts = rule && rule->acts(*octet);
    if (acts)
        fillOctet(octet, key);
    if (!rule || rule->mayChangeText)
        announceKey(index);
    if (!acts)
        return;
    switch (rule->move) {
    case Move::Prev:
        movePrevLineEdit(index);
        break;
    case Move::Next:
        moveNextLineEdit(index);
        // A zero moves on by itself, as a third digit does.
        if (key == Qt::Key_0 && index + 1 < QTUTL_IP_SIZE)
            m_nAdvancedTo = index + 1;
        break;
    case Move::Back:
        giveFocusBack(index);
        break;
    }
}

void QLineAddress::announceKey(int index)
{
    if (!signalsBlocked())
        ++m_nAnnounced[index];
    emit signalTextChanged(m_pLineEdit[index]);
}

void QLineAddress::slotTextChanged(QLineEdit *edit)
{
    const int index = octetIndex(edit);
    if (index < 0)
        return;
    if (m_nSettled[index] > 0) {
        --m_nSettled[index];
    } else {
        m_nAnnounced[index] = qMax(0, m_nAnnounced[index] - 1);
        if (advanceIsDue(index))
            advance(index);
    }
    emit addressChanged();
}

// Any announced key moves on from a full octet or a lone "0", also one that typed nothing (see
// docs/deliberate.md); "0" counts as full because no digit may follow it. Whoever has gone elsewhere
// meanwhile is not pulled back. It is the window's focus that counts: an octet has none itself while another
// window is in front.
bool QLineAddress::advanceIsDue(int index) const
{
    const QLineEdit *octet = m_pLineEdit[index];
    const QWidget *holder = window()->focusWidget();
    const bool stillThere = holder ? holder == octet : !m_bFocusCleared;
    if (!stillThere || index + 1 >= QTUTL_IP_SIZE)
        return false;
    const QString text = octet->text();
    const bool full = text.length() == MAX_DIGITS && octet->cursorPosition() == text.length();
    return full || text == QLatin1String("0");
}

void QLineAddress::advance(int index)
{
    m_pLineEdit[index + 1]->setFocus(Qt::OtherFocusReason);
    m_pLineEdit[index + 1]->selectAll();
    m_nAdvancedTo = index + 1;
    settle(index);
}

// The keys typed in the octet so far have had their say about the focus; who comes back starts anew.
void QLineAddress::settle(int index)
{
    m_nSettled[index] += m_nAnnounced[index];
    m_nAnnounced[index] = 0;
}

void QLineAddress::moveNextLineEdit(int index)
{
    if (index + 1 >= QTUTL_IP_SIZE)
        return;
    enterOctet(m_pLineEdit[index + 1]);
}

void QLineAddress::movePrevLineEdit(int index)
{
    if (index <= 0)
        return;
    enterOctet(m_pLineEdit[index - 1]);
}

// --------------------------------------------------------------------------------------------- focus

void QLineAddress::focusLeft(int index)
{
    const bool passing = m_bPassing;
    m_bPassing = false;
    // Another window in front takes the focus only for a while; typing goes on where it was.
    if (window()->focusWidget() != m_pLineEdit[index]) {
        settle(index);
        if (m_nAdvancedTo == index)
            m_nAdvancedTo = -1;
    }
    // Not its own focus: a menu that opens over the octet leaves it that.
    const bool isInside =
        std::any_of(std::begin(m_pLineEdit), std::end(m_pLineEdit),
                    [=](const QLineEdit *octet) { return octet != m_pLineEdit[index] && octet->hasFocus(); });
    if (passing || isInside)
        return;
    finishKeys();
    showMark();
    emit processReturn();
}

// The octet losing the focus is what tells the owner that the user has finished.
void QLineAddress::giveFocusBack(int index)
{
    if (QWidget *owner = parentWidget()) {
        keepPlace(index, owner);
        owner->setFocus(Qt::OtherFocusReason);
        return;
    }
    m_bFocusCleared = true;
    m_pLineEdit[index]->clearFocus();
}

// The owner is no tab stop, so a Tab there would start from the first control of the window.
void QLineAddress::keepPlace(int index, QWidget *owner)
{
    m_nPlace = index;
    m_pPlaceKeeper = owner;
    owner->installEventFilter(this);
}

void QLineAddress::ownerEvent(QEvent *event)
{
    const bool gone = event->type() == QEvent::FocusOut && window()->focusWidget() != m_pPlaceKeeper;
    const bool tab = event->type() == QEvent::KeyPress && isTab(*static_cast<QKeyEvent *>(event));
    if (!gone && !tab)
        return;
    m_pPlaceKeeper->removeEventFilter(this);
    m_pPlaceKeeper = nullptr;
    if (tab)
        goOnFromPlace();
}

// The Tab itself goes on to the owner, which then moves the focus away from where it is: from the octet.
// That is no visit to the field, so leaving it is not told again.
void QLineAddress::goOnFromPlace()
{
    QLineEdit *octet = m_pLineEdit[m_nPlace];
    if (!octet->isVisible() || !octet->isEnabled())
        return;
    octet->setFocus(Qt::OtherFocusReason);
    m_bPassing = octet->hasFocus();
}
