// SPDX-License-Identifier: MIT
//
// A text dragged from another program and dropped, as the toolkit hands it to a widget.
#ifndef CORVEL_TEST_DROP_H
#define CORVEL_TEST_DROP_H

#include <QCoreApplication>
#include <QDropEvent>
#include <QMimeData>
#include <QWidget>

// True when the widget lets it in and takes it.
inline bool dropText(QWidget *widget, const QPoint &place, const QString &text)
{
    QMimeData data;
    data.setText(text);
    QDragEnterEvent enter(place, Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier);
    QCoreApplication::sendEvent(widget, &enter);
    if (!enter.isAccepted())
        return false;
    QDropEvent drop(place, Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier);
    drop.ignore();
    QCoreApplication::sendEvent(widget, &drop);
    return drop.isAccepted();
}

#endif
