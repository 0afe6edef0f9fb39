// SPDX-License-Identifier: MIT
//
// The dialog under test: made, shown and ready for keys.
#ifndef CORVEL_TEST_DIALOG_H
#define CORVEL_TEST_DIALOG_H

#include "app/appearance.h"
#include "app/corvel.h"
#include "support/store.h"
#include "theme/lineaddress.h"

#include <QApplication>
#include <QCheckBox>
#include <QComboBox>
#include <QDialog>
#include <QGroupBox>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QRadioButton>
#include <QStackedLayout>
#include <QTextEdit>
#include <QTimer>
#include <QtTest>

namespace DialogTest {

inline void show(QWidget *widget)
{
    widget->show();
    widget->activateWindow();
    QVERIFY(QTest::qWaitForWindowActive(widget));
}

// Types a whole dotted address into an entry, octet by octet, the way a person does: click, digits, ".".
inline void typeAddress(QLineAddress *entry, const QString &address)
{
    const QStringList octets = address.split(QLatin1Char('.'));
    QTest::mouseClick(entry->m_pLineEdit[0], Qt::LeftButton);
    for (int i = 0; i < 4; ++i) {
        QLineEdit *octet = entry->m_pLineEdit[i];
        QTest::mouseClick(octet, Qt::LeftButton);
        QTest::keyClick(octet, Qt::Key_Delete);
        QTest::keyClicks(octet, octets.value(i));
        QCoreApplication::processEvents();
    }
}

inline void typeText(QLineEdit *edit, const QString &text)
{
    QTest::mouseClick(edit, Qt::LeftButton);
    QTest::keyClick(edit, Qt::Key_A, Qt::ControlModifier);
    QTest::keyClick(edit, Qt::Key_Delete);
    QTest::keyClicks(edit, text);
    QTest::keyClick(edit, Qt::Key_Tab);
}

// Types a port over the one that is there and ends with Return.
inline void enterPort(QLineEdit *edit, const QString &text)
{
    edit->setFocus();
    edit->selectAll();
    QTest::keyClicks(edit, text);
    QTest::keyClick(edit, Qt::Key_Return);
}

// A check box or radio button, clicked where its indicator is.
inline void click(QAbstractButton *button)
{
    QTest::mouseClick(button, Qt::LeftButton, {}, QPoint(button->height() / 2, button->height() / 2));
}

// Chooses an entry by its item data, with the keyboard.
inline void choose(QComboBox *combo, quint32 data)
{
    combo->setFocus();
    QTest::keyClick(combo, Qt::Key_Home);
    while (combo->currentData().toUInt() != data && combo->currentIndex() < combo->count() - 1)
        QTest::keyClick(combo, Qt::Key_Down);
    QCOMPARE(combo->currentData().toUInt(), data);
}

// Waits until the dialog's clock has shown itself anew some times.
inline void letItTick(QCorvel *dialog)
{
    class Ticks : public QObject {
    public:
        explicit Ticks(QCorvel *dialog) : m_dialog(dialog) { dialog->installEventFilter(this); }
        int count = 0;

    private:
        bool eventFilter(QObject *, QEvent *event) override
        {
            if (event->type() == QEvent::Timer)
                count += static_cast<QTimerEvent *>(event)->timerId() == m_dialog->timerId;
            return false;
        }
        QCorvel *m_dialog;
    };
    const Ticks ticks(dialog);
    QTRY_VERIFY(ticks.count > 3);
}

// Answers the next modal dialog by pressing its button with this text, and keeps what it said. A test
// asks for wasShown afterwards.
class ModalAnswer : public QObject {
public:
    explicit ModalAnswer(const QString &button) : m_button(button)
    {
        m_timer.setInterval(5);
        connect(&m_timer, &QTimer::timeout, this, &ModalAnswer::look);
        m_timer.start();
    }
    int shown() const { return m_shown; }
    QString text() const { return m_text; }
    QString title() const { return m_title; }

private:
    void look()
    {
        QWidget *dialog = QApplication::activeModalWidget();
        if (!dialog)
            return;
        for (QPushButton *button : dialog->findChildren<QPushButton *>()) {
            if (button->text() != m_button || !button->isVisible())
                continue;
            ++m_shown;
            m_title = dialog->windowTitle();
            if (const QTextEdit *edit = dialog->findChild<QTextEdit *>())
                m_text = edit->toPlainText();
            else if (const QLabel *label = dialog->findChild<QLabel *>())
                m_text = label->text();
            QTest::mouseClick(button, Qt::LeftButton);
            return;
        }
    }

    QString m_button;
    QTimer m_timer;
    int m_shown = 0;
    QString m_text;
    QString m_title;
};

} // namespace DialogTest

// A main() that dresses the application as the program does.
#define CORVEL_DIALOG_TEST_MAIN(Class)                                                                       \
    int main(int argc, char **argv)                                                                          \
    {                                                                                                        \
        QCoreApplication::setAttribute(Qt::AA_DontUseNativeDialogs, true);                                   \
        QApplication application(argc, argv);                                                                \
        useCorvelAppearance(application);                                                                    \
        Class test;                                                                                          \
        return QTest::qExec(&test, argc, argv);                                                              \
    }

#endif
