// SPDX-License-Identifier: MIT
#ifndef CORVEL_TEST_TIP_H
#define CORVEL_TEST_TIP_H

#include <QApplication>
#include <QHelpEvent>
#include <QWidget>

namespace DialogTest {

// What somebody reads who holds the mouse over it.
inline QString tipOf(QWidget *widget)
{
    QHelpEvent event(QEvent::ToolTip, QPoint(3, 3), widget->mapToGlobal(QPoint(3, 3)));
    QApplication::sendEvent(widget, &event);
    return widget->toolTip();
}

} // namespace DialogTest

#endif
