// SPDX-License-Identifier: MIT
#include "app/view/notices.h"

#include <QFont>
#include <QLabel>

namespace {

QLabel *newNotice(QWidget *owner, const char *name, const QFont &font)
{
    QLabel *label = new QLabel(owner);
    label->setObjectName(QLatin1String(name));
    label->setFont(font);
    label->setTextFormat(Qt::PlainText);
    label->setWordWrap(true);
    label->setAttribute(Qt::WA_TransparentForMouseEvents);
    label->hide();
    return label;
}

// Assistive tools are told once for each new text, by the name of the label.
void showText(QLabel *label, const QString &text)
{
    if (label->text() != text || label->isHidden() != text.isEmpty()) {
        label->setText(text);
        label->setAccessibleName(text);
        label->setVisible(!text.isEmpty());
        label->raise();
    }
}

} // namespace

void Notices::make(QWidget *owner, const QFont &font)
{
    m_bar = newNotice(owner, "storeBar", font);
    m_bar->setAlignment(Qt::AlignCenter);
    m_line = newNotice(owner, "statusLine", font);
    m_line->setAlignment(Qt::AlignVCenter | Qt::AlignLeft);
}

void Notices::place(const QRect &bar, const QRect &line)
{
    m_barPlace = bar;
    fitBar();
    m_linePlace = line;
    fitLine();
}

void Notices::setBar(const QString &text)
{
    m_barText = text;
    showText(m_bar, text);
    fitBar();
}

// A long path takes a second line, which is not to be cut.
void Notices::fitBar()
{
    QRect place = m_barPlace;
    place.setHeight(qMax(place.height(), m_bar->heightForWidth(place.width())));
    m_bar->setGeometry(place);
}

void Notices::fitLine()
{
    QRect place = m_linePlace;
    const int height = qMax(place.height(), m_line->heightForWidth(place.width()));
    place.setTop(place.bottom() + 1 - height);
    m_line->setGeometry(place);
}

void Notices::showLine(const QString &text)
{
    showText(m_line, text);
    fitLine();
}

void Notices::setStanding(const QString &text)
{
    m_standing = text;
    if (m_ticksLeft == 0)
        showLine(text);
}

void Notices::tell(const QString &text, int ticks)
{
    m_ticksLeft = ticks;
    showLine(text);
}

void Notices::tick()
{
    if (m_ticksLeft > 0 && --m_ticksLeft == 0)
        showLine(m_standing);
}
