// SPDX-License-Identifier: MIT
//
// Answers the toolkit's file dialog the way a person does, and remembers how it looked.
#ifndef CORVEL_TEST_FILEDIALOG_H
#define CORVEL_TEST_FILEDIALOG_H

#include <QApplication>
#include <QDialogButtonBox>
#include <QDir>
#include <QFileDialog>
#include <QLineEdit>
#include <QMessageBox>
#include <QPointer>
#include <QPushButton>
#include <QTimer>

namespace DialogTest {

// Enters a name into the next file dialog and presses its button; a null name cancels it. A question
// about an existing file is answered with yes. A dialog that stays open is cancelled.
class FileAnswer : public QObject {
public:
    explicit FileAnswer(const QString &name) : m_name(name)
    {
        connect(&m_timer, &QTimer::timeout, this, &FileAnswer::look);
        m_timer.start(5);
    }

    int shown = 0;
    int questions = 0;   // about existing files, or that there is no such file
    bool stayed = false; // the dialog did not take the name
    bool hadParent = false;
    bool isNative = false;
    QString title;
    QString folder;
    QString filters;
    QFileDialog::AcceptMode mode = QFileDialog::AcceptOpen;

private:
    void look()
    {
        QWidget *modal = QApplication::activeModalWidget();
        if (QMessageBox *box = qobject_cast<QMessageBox *>(modal))
            answer(box);
        else if (QFileDialog *dialog = qobject_cast<QFileDialog *>(modal))
            dialog == m_dialog ? wait(dialog) : enter(dialog);
    }

    // Everything is queued: a nested event loop would keep this timer from firing again.
    static void press(QAbstractButton *button)
    {
        QMetaObject::invokeMethod(button, "click", Qt::QueuedConnection);
    }

    void answer(QMessageBox *box)
    {
        if (box == m_box)
            return;
        m_box = box;
        ++questions;
        QAbstractButton *yes = box->button(QMessageBox::Yes);
        press(yes ? yes : box->buttons().value(0));
    }

    void enter(QFileDialog *dialog)
    {
        m_dialog = dialog;
        m_waited = 0;
        ++shown;
        title = dialog->windowTitle();
        folder = dialog->directory().absolutePath();
        filters = dialog->nameFilters().join(QLatin1String(";;"));
        mode = dialog->acceptMode();
        hadParent = dialog->parentWidget() != nullptr;
        isNative = !dialog->testOption(QFileDialog::DontUseNativeDialog);
        if (m_name.isNull()) {
            QMetaObject::invokeMethod(dialog, "reject", Qt::QueuedConnection);
            return;
        }
        dialog->findChild<QLineEdit *>(QStringLiteral("fileNameEdit"))->setText(m_name);
        const auto *buttons = dialog->findChild<QDialogButtonBox *>();
        const bool save = mode == QFileDialog::AcceptSave;
        QPushButton *button = buttons->button(save ? QDialogButtonBox::Save : QDialogButtonBox::Open);
        button->setEnabled(true);
        press(button);
    }

    void wait(QFileDialog *dialog)
    {
        if (++m_waited < 20)
            return;
        stayed = true;
        QMetaObject::invokeMethod(dialog, "reject", Qt::QueuedConnection);
    }

    QString m_name;
    QTimer m_timer;
    QPointer<QFileDialog> m_dialog;
    QPointer<QMessageBox> m_box;
    int m_waited = 0;
};

} // namespace DialogTest

#endif
