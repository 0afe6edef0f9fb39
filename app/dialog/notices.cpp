// SPDX-License-Identifier: MIT
//
// Class floor, notices: the bar over the top of the page and the line in the command band. What they say
// is the slots' business.
#include "app/dialog/private.h"

#include <QGridLayout>
#include <QPushButton>
#include <QStackedLayout>

namespace {

constexpr int kTicksPerSecond = 100; // of the status timer

} // namespace

// The bar is as wide as the page and covers its first row, where there are others. The line stands between
// the command buttons.
void QCorvelPrivate::placeNotices()
{
    const QWidget *shownPage = q->m_pSwapLayout->currentWidget();
    const QRect page = shownPage->geometry(); // the layout itself has none
    const int below = shownPage == simplePage ? q->m_pSimpleLayout->cellRect(0, 0).bottom() + px(8) : px(2);
    const QRect bar(page.left(), page.top() + below, page.width(), px(26));
    const QPoint left = q->m_pCmdSave->mapTo(q, q->m_pCmdSave->rect().topRight());
    const QPoint right = q->m_pCmdAccept->mapTo(q, QPoint(0, 0));
    const int top = left.y() - px(6);
    notices.place(bar, QRect(left.x() + px(10), top, right.x() - left.x() - px(20), px(40)));
}

void QCorvelPrivate::showBar(const QString &text)
{
    placeNotices();
    notices.setBar(text);
}

void QCorvelPrivate::showStanding(const QString &text)
{
    placeNotices();
    notices.setStanding(text);
}

void QCorvelPrivate::tell(const QString &text, int seconds)
{
    placeNotices();
    notices.tell(text, seconds * kTicksPerSecond);
}
