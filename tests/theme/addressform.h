// SPDX-License-Identifier: MIT
//
// A window with an address field between two line edits, and the means to type into it the way a
// person does: every key goes to whatever has the focus, and the event loop runs in between.
#ifndef CORVEL_TESTS_ADDRESSFORM_H
#define CORVEL_TESTS_ADDRESSFORM_H

#include <QApplication>
#include <QSignalSpy>
#include <QTest>
#include <QVBoxLayout>

#include "theme/lineaddress.h"

struct AddressForm {
    QWidget window;
    QLineEdit before;
    QLineAddress field{&window};
    QLineEdit after;
    QSignalSpy key{&field, &QLineAddress::signalTextChanged};
    QSignalSpy changed{&field, &QLineAddress::addressChanged};
    QSignalSpy left{&field, &QLineAddress::processReturn};

    AddressForm()
    {
        auto *column = new QVBoxLayout(&window);
        column->addWidget(&before);
        column->addWidget(&field);
        column->addWidget(&after);
        QWidget::setTabOrder(&before, field.m_pLineEdit[0]);
        for (int i = 0; i < 3; ++i)
            QWidget::setTabOrder(octet(i), octet(i + 1));
        QWidget::setTabOrder(octet(3), &after);
    }

    QLineEdit *octet(int index) const { return field.m_pLineEdit[index]; }

    // Shows the window and waits until it is the active one.
    bool show()
    {
        window.show();
        return QTest::qWaitForWindowActive(&window);
    }

    // Puts text into one octet, cursor and focus too; a negative cursor selects the whole text.
    void put(int index, const QString &text, int cursor)
    {
        octet(index)->setFocus(Qt::OtherFocusReason);
        octet(index)->setText(text);
        if (cursor < 0)
            octet(index)->selectAll();
        else
            octet(index)->setCursorPosition(cursor);
        QCoreApplication::processEvents();
        clearSpies();
    }

    void press(Qt::Key pressed, Qt::KeyboardModifiers modifiers = Qt::NoModifier)
    {
        QTest::keyClick(target(), pressed, modifiers);
        QCoreApplication::processEvents();
    }

    // '<' stands for Backspace and '>' for Return.
    void type(const QString &text)
    {
        for (const QChar character : text) {
            if (character == QLatin1Char('<'))
                press(Qt::Key_Backspace);
            else if (character == QLatin1Char('>'))
                press(Qt::Key_Return);
            else {
                QTest::keyClick(target(), character.toLatin1());
                QCoreApplication::processEvents();
            }
        }
    }

    // Octet with the window's focus, -1 when none has it.
    int focused() const
    {
        for (int i = 0; i < QLineAddress::QTUTL_IP_SIZE; ++i) {
            if (window.focusWidget() == octet(i))
                return i;
        }
        return -1;
    }

    void clearSpies()
    {
        key.clear();
        changed.clear();
        left.clear();
    }

    bool allSelected(int index) const { return octet(index)->selectedText() == octet(index)->text(); }

private:
    QWidget *target() { return window.focusWidget() ? window.focusWidget() : &window; }
};

#endif
