// SPDX-License-Identifier: MIT
#include "theme/lineaddress.h"

#include <algorithm>
#include <iterator>

#include <QClipboard>
#include <QDragEnterEvent>
#include <QGuiApplication>
#include <QHBoxLayout>
#include <QLabel>
#include <QMimeData>
#include <QMouseEvent>
#include <QRegExpValidator>
#include <QStringList>

#include "theme/addresstext.h"
#include "theme/invalidmark.h"
#include "theme/octetedit.h"

namespace {

// 0 to 255 without leading zeros; an empty text is "not yet" and may stand.
const char kOctetPattern[] = "^(0|[1-9]|[1-9][0-9]|1[0-9][0-9]|2([0-4][0-9]|5[0-5]))$";

QFont octetFont(QFont font)
{
    font.setStyleHint(QFont::Monospace, QFont::PreferDefault);
    font.setFixedPitch(true);
    // A font given in pixels has no point size to take one from and keeps its size.
    if (font.pointSizeF() > 1.0)
        font.setPointSizeF(font.pointSizeF() - 1.0);
    return font;
}

} // namespace

QLineAddress::QLineAddress(QWidget *parent) : QFrame(parent)
{
    setFrameShape(QFrame::StyledPanel);
    setFrameShadow(QFrame::Sunken);
    setFocusPolicy(Qt::NoFocus);
    setAcceptDrops(true);

    auto *row = new QHBoxLayout(this);
    // The wide sides keep the four octets together in the middle of the field.
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

    // Queued: the filter speaks before the octet has applied the key, the slot has to see
    // the text after it.
    connect(this, &QLineAddress::signalTextChanged, this, &QLineAddress::slotTextChanged,
            Qt::QueuedConnection);
}

void QLineAddress::addOctet(int index)
{
    auto *octet = new OctetEdit(this);
    m_pLineEdit[index] = octet;
    octet->installEventFilter(this);
    octet->setObjectName(QStringLiteral("octet%1").arg(index));
    octet->setFrame(false);
    octet->setAlignment(Qt::AlignHCenter | Qt::AlignVCenter);
    octet->setStyleSheet(QStringLiteral("padding-top: 1px; padding-bottom: 1px;"));
    octet->setFont(octetFont(octet->font()));
    const QRegExp rule(QLatin1String(kOctetPattern), Qt::CaseSensitive, QRegExp::RegExp);
    octet->setValidator(new QRegExpValidator(rule, octet));
    connect(octet, &QLineEdit::textChanged, this, &QLineAddress::showMark);
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
    // A short text leaves the other octets alone: see docs/deliberate.md.
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

// ------------------------------------------------------------------------------------- whole addresses

bool QLineAddress::takeAddress(const QString &text)
{
    const QString found = addressInText(text);
    if (found.isEmpty())
        return false;
    setAddress(found);
    for (QLineEdit *octet : m_pLineEdit)
        octet->setModified(true);
    announceEdit();
    // Where typing it would have ended: the next Tab leaves the field.
    if (octetIndex(window()->focusWidget()) >= 0)
        m_pLineEdit[QTUTL_IP_SIZE - 1]->setFocus(Qt::OtherFocusReason);
    return true;
}

void QLineAddress::copyAddress() const
{
    QGuiApplication::clipboard()->setText(address());
}

// Queued as a key is, so that edits are told in their order; but there is nothing to move on from.
void QLineAddress::announceEdit()
{
    m_nAdvancedTo = -1;
    ++m_nEdits;
    const auto tell = [this] {
        --m_nEdits;
        emit addressChanged();
    };
    QMetaObject::invokeMethod(this, tell, Qt::QueuedConnection);
}

// ------------------------------------------------------------------------------------------- the mark

bool QLineAddress::isModified() const
{
    return std::any_of(std::begin(m_pLineEdit), std::end(m_pLineEdit),
                       [](const QLineEdit *octet) { return octet->isModified(); });
}

bool QLineAddress::isIncomplete() const
{
    return std::any_of(std::begin(m_pLineEdit), std::end(m_pLineEdit),
                       [](const QLineEdit *octet) { return octet->text().isEmpty(); });
}

void QLineAddress::setInvalid(bool invalid)
{
    m_bOwnerInvalid = invalid;
    showMark();
}

// An octet may be empty while somebody types; a mark that is there stays until none is.
void QLineAddress::showMark()
{
    if (!isIncomplete())
        m_bMarkedEmpty = false;
    else if (!hasFocusInside())
        m_bMarkedEmpty = true;
    markInvalid(this, m_bMarkedEmpty || m_bOwnerInvalid);
}

bool QLineAddress::hasFocusInside() const
{
    return std::any_of(std::begin(m_pLineEdit), std::end(m_pLineEdit),
                       [](const QLineEdit *octet) { return octet->hasFocus(); });
}

// -------------------------------------------------------------------------------------------- the mouse

void QLineAddress::clickOctet(int index)
{
    m_nAdvancedTo = -1;
    m_pLineEdit[index]->setFocus(Qt::OtherFocusReason);
    m_pLineEdit[index]->selectAll();
}

void QLineAddress::mousePressEvent(QMouseEvent *event)
{
    if (event->button() != Qt::LeftButton) {
        QFrame::mousePressEvent(event);
        return;
    }
    const auto distance = [event](const QLineEdit *octet) {
        return qAbs(octet->geometry().center().x() - event->pos().x());
    };
    const auto nearest = std::min_element(
        std::begin(m_pLineEdit), std::end(m_pLineEdit),
        [distance](const QLineEdit *a, const QLineEdit *b) { return distance(a) < distance(b); });
    clickOctet(octetIndex(*nearest));
    event->accept();
}

void QLineAddress::dragEnterEvent(QDragEnterEvent *event)
{
    if (!addressInText(event->mimeData()->text()).isEmpty())
        event->acceptProposedAction();
}

// Told at once, as in an octet.
void QLineAddress::dropEvent(QDropEvent *event)
{
    if (takeAddress(event->mimeData()->text()))
        event->acceptProposedAction();
    finishKeys();
}

int QLineAddress::octetIndex(const QObject *object) const
{
    for (int i = 0; i < QTUTL_IP_SIZE; ++i) {
        if (object && object == m_pLineEdit[i])
            return i;
    }
    return -1;
}
