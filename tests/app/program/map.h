// SPDX-License-Identifier: MIT
#ifndef CORVEL_TEST_MAP_H
#define CORVEL_TEST_MAP_H

#include "app/corvel.h"
#include "theme/lineaddress.h"

#include <QAbstractButton>
#include <QApplication>
#include <QLineEdit>
#include <QRadioButton>

// Where a control stands in the window. The dialog is of fixed size and looks the same everywhere, so one
// made here, which nobody sees, tells where the program's has its controls.
class Map {
public:
    explicit Map(const char *element = "m_pVideoConfig") : m_dialog(true, nullptr)
    {
        m_dialog.m_pAudFlowSelect[0]->setChecked(true);
        m_dialog.show();
        m_dialog.findChild<QRadioButton *>(QLatin1String(element))->setChecked(true);
        QCoreApplication::processEvents();
    }
    QPoint of(const char *name) const
    {
        const QWidget *widget = m_dialog.findChild<QWidget *>(QLatin1String(name));
        const QPoint place(qobject_cast<const QAbstractButton *>(widget) ? widget->height() / 2
                                                                         : widget->width() / 2,
                           widget->height() / 2);
        return widget->mapTo(&m_dialog, place);
    }
    QPoint octet(const char *name, int index) const
    {
        const QLineAddress *address = m_dialog.findChild<QLineAddress *>(QLatin1String(name));
        const QLineEdit *edit = address->m_pLineEdit[index];
        return edit->mapTo(&m_dialog, edit->rect().center());
    }

private:
    QCorvel m_dialog;
};

#endif
