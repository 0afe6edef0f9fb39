// SPDX-License-Identifier: MIT
#include "theme/lineaddress.h"

#include <QHBoxLayout>
#include <QKeyEvent>
#include <QLabel>
#include <QMouseEvent>
#include <QRegExpValidator>
#include <QStringList>

namespace {

// 0 to 255 without leading zeros; an empty text is "not yet" and may stand.
const char octetPattern[] = "^(0|[1-9]|[1-9][0-9]|1[0-9][0-9]|2([0-4][0-9]|5[0-5]))$";

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

// Backspace and the keys that only move say nothing, on purpose: the owner learns of what they did
// when the focus leaves the widget. Every key without a row is announced, on purpose, letters and
// Tab included: the rule is about keys, not about what the octet makes of them.
// clang-format off
const KeyRule keyRules[] = {
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
    for (const KeyRule &rule : keyRules) {
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
    // The octet gets the Backspace too and would delete the new "0" again.
    if (key == Qt::Key_Backspace)
        octet->setCursorPosition(0);
}

QFont octetFont(QFont font)
{
    font.setStyleHint(QFont::Monospace, QFont::PreferDefault);
    font.setFixedPitch(true);
    // A font given in pixels has no point size to take one from and keeps its size.
    if (font.pointSizeF() > 1.0)
        font.setPointSizeF(font.pointSizeF() - 1.0);
    return font;
}

void focusAndSelect(QLineEdit *octet)
{
    octet->setFocus(Qt::OtherFocusReason);
    octet->selectAll();
}

void enterOctet(QLineEdit *octet)
{
    octet->setFocus(Qt::OtherFocusReason);
    octet->setCursorPosition(0);
    octet->selectAll();
}

} // namespace

QLineAddress::QLineAddress(QWidget *parent) : QFrame(parent)
{
    setFrameShape(QFrame::StyledPanel);
    setFrameShadow(QFrame::Sunken);
    setFocusPolicy(Qt::NoFocus);

    auto *row = new QHBoxLayout(this);
    // The wide sides are on purpose: they keep the four octets together in the middle of the field.
    row->setContentsMargins(40, 0, 40, 0);
    row->setSpacing(0);
    for (int i = 0; i < QTUTL_IP_SIZE; ++i) {
        if (i > 0)
            row->addWidget(new QLabel(QStringLiteral("."), this), 0);
        addOctet(i);
        row->addWidget(m_pLineEdit[i], 1);
    }
    setAccessibleNames(QString());
    setAddress(QStringLiteral("1.0.0.0"));

    // Queued on purpose: the filter speaks before the octet has applied the key, the slot has to see
    // the text after it.
    connect(this, &QLineAddress::signalTextChanged, this, &QLineAddress::slotTextChanged,
            Qt::QueuedConnection);
}

void QLineAddress::addOctet(int index)
{
    auto *octet = new QLineEdit(this);
    m_pLineEdit[index] = octet;
    octet->installEventFilter(this);
    octet->setObjectName(QStringLiteral("octet%1").arg(index));
    octet->setFrame(false);
    octet->setAlignment(Qt::AlignHCenter | Qt::AlignVCenter);
    octet->setStyleSheet(QStringLiteral("padding-top: 1px; padding-bottom: 1px;"));
    octet->setFont(octetFont(octet->font()));
    const QRegExp rule(QLatin1String(octetPattern), Qt::CaseSensitive, QRegExp::RegExp);
    octet->setValidator(new QRegExpValidator(rule, octet));
}

QString QLineAddress::address() const
{
    QStringList parts;
    for (const QLineEdit *octet : m_pLineEdit)
        parts << octet->text();
    return parts.join(QLatin1Char('.'));
}

void QLineAddress::setAddress(const QString &text)
{
    QString dotted = text;
    if (dotted.isEmpty())
        dotted = m_ipRange == multicast ? QStringLiteral("239.0.0.0") : QStringLiteral("1.0.0.0");

    const QStringList parts = dotted.split(QLatin1Char('.'), Qt::KeepEmptyParts, Qt::CaseSensitive);
    // A short text leaves the other octets alone, on purpose.
    const int count = qMin(static_cast<int>(parts.size()), static_cast<int>(QTUTL_IP_SIZE));
    for (int i = 0; i < count; ++i)
        m_pLineEdit[i]->setText(parts.at(i));
}

void QLineAddress::setIpRange(ipRangeType range)
{
    m_ipRange = range;
}

void QLineAddress::setFont(const QFont &font)
{
    for (QLineEdit *octet : m_pLineEdit)
        octet->setFont(font);
    QFrame::setFont(font);
}

void QLineAddress::setAccessibleNames(const QString &name)
{
    setAccessibleName(name);
    for (int i = 0; i < QTUTL_IP_SIZE; ++i) {
        const QString octet = tr("octet %1 of %2").arg(i + 1).arg(static_cast<int>(QTUTL_IP_SIZE));
        m_pLineEdit[i]->setAccessibleName(name.isEmpty() ? octet : tr("%1, %2").arg(name, octet));
    }
}

bool QLineAddress::eventFilter(QObject *watched, QEvent *event)
{
    const int index = octetIndex(watched);
    if (index >= 0) {
        switch (event->type()) {
        case QEvent::MouseButtonRelease:
            if (static_cast<QMouseEvent *>(event)->button() == Qt::LeftButton)
                focusAndSelect(m_pLineEdit[index]);
            break;
        case QEvent::KeyPress:
            keyPressed(index, static_cast<QKeyEvent *>(event)->key());
            break;
        case QEvent::FocusOut:
            focusLeft(index);
            break;
        default:
            break;
        }
    }
    return QFrame::eventFilter(watched, event);
}

void QLineAddress::slotTextChanged(QLineEdit *edit)
{
    const int index = octetIndex(edit);
    if (index < 0)
        return;
    // Any announced key moves on from a full octet or a lone "0", on purpose also one that typed
    // nothing; "0" counts as full because no digit may follow it. That the octet still has the focus
    // is not asked for, on purpose: it never has it while another window is in front.
    const QString text = edit->text();
    const bool full = text.length() == MAX_DIGITS && edit->cursorPosition() == text.length();
    const bool advance = full || text == QLatin1String("0");
    if (advance && index + 1 < QTUTL_IP_SIZE && !focusGivenBack())
        focusAndSelect(m_pLineEdit[index + 1]);
    emit addressChanged();
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

void QLineAddress::keyPressed(int index, int key)
{
    QLineEdit *octet = m_pLineEdit[index];
    const KeyRule *rule = ruleFor(key);
    if (!rule) {
        emit signalTextChanged(octet);
        return;
    }
    const bool acts = rule->acts(*octet);
    if (acts)
        fillOctet(octet, key);
    if (rule->mayChangeText)
        emit signalTextChanged(octet);
    if (!acts)
        return;
    switch (rule->move) {
    case Move::Prev:
        movePrevLineEdit(index);
        break;
    case Move::Next:
        moveNextLineEdit(index);
        break;
    case Move::Back:
        giveFocusBack(index);
        break;
    }
}

void QLineAddress::focusLeft(int index)
{
    for (int i = 0; i < QTUTL_IP_SIZE; ++i) {
        if (i != index && m_pLineEdit[i]->hasFocus())
            return;
    }
    emit processReturn();
}

// The octet losing the focus is what tells the owner that the user has finished.
void QLineAddress::giveFocusBack(int index)
{
    if (QWidget *owner = parentWidget()) {
        owner->setFocus(Qt::OtherFocusReason);
        return;
    }
    m_bFocusCleared = true;
    m_pLineEdit[index]->clearFocus();
}

// True after Return until something else takes the focus: the announcement that Return makes is
// still on its way then and must not pull the focus back into the next octet.
bool QLineAddress::focusGivenBack() const
{
    const QWidget *holder = window()->focusWidget();
    if (const QWidget *owner = parentWidget())
        return holder == owner;
    return m_bFocusCleared && !holder;
}

int QLineAddress::octetIndex(const QObject *object) const
{
    for (int i = 0; i < QTUTL_IP_SIZE; ++i) {
        if (object && object == m_pLineEdit[i])
            return i;
    }
    return -1;
}
