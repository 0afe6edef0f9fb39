// SPDX-License-Identifier: MIT
//
// Class floor: the window itself, its mode, style sheet, scale, size and place.
#include "app/dialog/frame.h"

#include "app/dialog/private.h"
#include "rkos.h"

#include <QFile>
#include <QGuiApplication>
#include <QScreen>
#include <QWindow>

namespace {

constexpr double kReferenceDpi = 96.0;

bool standAloneFlag = true;
double currentFontFactor = 1.0;

// The screen that holds the widget; before it has a window, the primary one.
QScreen *screenOf(const QWidget *widget)
{
    const QWindow *window = widget->windowHandle();
    QScreen *screen = window ? window->screen() : widget->screen();
    return screen ? screen : QGuiApplication::primaryScreen();
}

} // namespace

void setStandAlone(bool on)
{
    standAloneFlag = on;
}

void setFontFactor(double factor)
{
    currentFontFactor = factor;
}

double scaleOf(const QWidget *widget)
{
    const QScreen *screen = screenOf(widget);
    return screen ? screen->logicalDotsPerInchY() / kReferenceDpi : 1.0;
}

bool QCorvel::isStandAlone()
{
    return standAloneFlag;
}

double QCorvel::fontFactor()
{
    return currentFontFactor;
}

void QCorvel::applyStyleSheet(const QString &resource)
{
    QFile file(resource);
    QByteArray bytes;
    if (file.open(QIODevice::ReadOnly))
        bytes = file.readAll();
    setStyleSheet(QString::fromLatin1(bytes.constData())); // up to the first zero byte
}

void QCorvelPrivate::applyFixedSize()
{
    q->setFixedSize(px(660), px(640));
}

// Whole pixels of a length given for 96 dpi, rounded down.
int QCorvelPrivate::px(double pixels) const
{
    return static_cast<int>(pixels * currentFontFactor);
}

void QCorvel::setLiveUpdates(bool on)
{
    m_liveUpdates = on;
}

// The size stays what it is; whoever wonders where the buttons are finds the reason in the log.
void QCorvelPrivate::tellSize()
{
    const QSize room = screenOf(q)->availableSize();
    if (toldSize || !q->isWindow() || room.expandedTo(q->size()) == room)
        return;
    toldSize = true;
    ErrOut("The dialog of %d x %d pixels does not fit the screen of %d x %d; a smaller QT_FONT_DPI makes it "
           "smaller, down to 96",
           q->width(), q->height(), room.width(), room.height());
}

void QCorvel::CenterOnScreen()
{
    const QRect area = screenOf(this)->geometry();
    move((area.left() + area.right()) / 2 - width() / 2, (area.top() + area.bottom()) / 2 - height() / 2);
}
