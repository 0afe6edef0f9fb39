// SPDX-License-Identifier: MIT
#include "hostwindow.h"

#include "app/corvel.h"
#include "recordingengine.h"

#include <QComboBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QVBoxLayout>

namespace {

// What the dialog's results mean to this application.
enum DialogResult { Cancelled = 0, Accepted = 1, UrlsAsked = 3 };

} // namespace

HostWindow::HostWindow(RecordingEngine *engine, QWidget *parent)
    : QWidget(parent), m_engine(engine), m_stage(new QHBoxLayout),
      m_openButton(new QPushButton(tr("IP Video Setup"), this)), m_log(new QPlainTextEdit(this)),
      m_outcome(new QLabel(this))
{
    setWindowTitle(tr("Recording host"));
    m_openButton->setObjectName(QStringLiteral("m_openButton"));
    m_log->setReadOnly(true);
    m_log->setMinimumWidth(360);
    QVBoxLayout *column = new QVBoxLayout(this);
    column->addWidget(m_openButton, 0, Qt::AlignLeft);
    column->addLayout(m_stage, 1);
    column->addWidget(m_outcome);
    m_stage->addWidget(m_log, 1);
    connect(m_openButton, &QPushButton::clicked, this, &HostWindow::openDialog);
    connect(m_engine, &RecordingEngine::recorded, m_log, &QPlainTextEdit::appendPlainText);
}

QString HostWindow::outcome() const
{
    return m_outcome->text();
}

// The dialog loads its first channel while it is made, so the engine is behind the hook by now. As a plain
// child it is a part of this window instead of a window of its own.
void HostWindow::openDialog()
{
    if (m_dialog)
        return;
    m_dialog = new QCorvel(this);
    m_dialog->setWindowFlags(Qt::Widget);
    connect(m_dialog, &QDialog::finished, this, &HostWindow::dialogFinished);
    m_stage->insertWidget(0, m_dialog, 0, Qt::AlignTop);
    m_dialog->show();
    m_openButton->setEnabled(false);
}

// The dialog has sent everything by the time it ends: with "Done" the final settings, with "Cancel" the
// stored ones again. What is left is to keep them, or not. It may still be working when it says that it
// is finished, so it is deleted later.
void HostWindow::dialogFinished(int result)
{
    const int channel = m_dialog->m_pChannel->currentIndex();
    switch (result) {
    case Accepted:
        m_engine->keep();
        m_outcome->setText(tr("settings kept"));
        break;
    case Cancelled:
        m_outcome->setText(tr("stored settings given back"));
        break;
    case UrlsAsked:
        m_outcome->setText(m_engine->urls(channel).join(QLatin1Char('\n')));
        break;
    }
    m_stage->removeWidget(m_dialog);
    m_dialog->deleteLater();
    m_dialog = nullptr;
    m_openButton->setEnabled(true);
    emit closed(result);
}
