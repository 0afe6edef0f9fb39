// SPDX-License-Identifier: MIT
//
// HostWindow: the application's window. "IP Video Setup" shows the dialog inside it; the list beside it
// shows what the engine is told, and the line below how the dialog ended.
#ifndef CORVEL_HOST_HOSTWINDOW_H
#define CORVEL_HOST_HOSTWINDOW_H

#include <QWidget>

class QCorvel;
class QHBoxLayout;
class QLabel;
class QPlainTextEdit;
class QPushButton;
class RecordingEngine;

class HostWindow : public QWidget {
    Q_OBJECT

public:
    // The engine has to live longer than the window.
    explicit HostWindow(RecordingEngine *engine, QWidget *parent = nullptr);

    // The dialog while it is shown, else the null pointer.
    QCorvel *dialog() const { return m_dialog; }
    // How the last dialog ended, as text; empty before.
    QString outcome() const;

public slots:
    void openDialog();

signals:
    // The dialog ended with this result: 1 "Done", 0 "Cancel", 3 "Show URLs".
    void closed(int result);

private:
    void dialogFinished(int result);

    RecordingEngine *m_engine;
    QCorvel *m_dialog = nullptr; // while it is shown
    QHBoxLayout *m_stage;
    QPushButton *m_openButton;
    QPlainTextEdit *m_log;
    QLabel *m_outcome;
};

#endif
