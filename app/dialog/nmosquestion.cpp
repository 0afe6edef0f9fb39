// SPDX-License-Identifier: MIT
//
// Class floor: the question before NMOS takes over. It is asked by the slot of the override box.
#include "app/dialog/private.h"

#include <QDialog>
#include <QHBoxLayout>
#include <QLabel>
#include <QPointer>
#include <QPushButton>
#include <QVBoxLayout>

// On the heap: a host may delete the dialog, and the question with it, while it is open.
// It is made whether it is asked or not, see docs/deliberate.md.
bool QCorvelPrivate::askForNmos(bool ask)
{
    const QPointer<QDialog> question(new QDialog(q));
    fillNmosQuestion(question);
    const Survivors::Loop loop(survivors);
    const bool accepted = ask && question->exec() == QDialog::Accepted;
    delete question;
    return accepted;
}

// "CANCEL" has the focus and is the default, so that Return changes nothing.
void QCorvelPrivate::fillNmosQuestion(QDialog *question)
{
    const int gap = px(10);
    question->setWindowTitle(q->windowTitle());
    QVBoxLayout *column = new QVBoxLayout(question);
    column->setContentsMargins(gap, gap, gap, gap);
    column->setSpacing(gap);
    QLabel *text =
        new QLabel(QCorvel::tr("Using NMOS may over write your current settings. Continue?"), question);
    QFont textFont = q->font();
    textFont.setPointSize(10);
    text->setObjectName(QStringLiteral("m_pNmosQuestion"));
    text->setFont(textFont);
    column->addWidget(text, 0, Qt::AlignCenter);
    QHBoxLayout *row = new QHBoxLayout;
    row->setContentsMargins(gap, gap, gap, gap);
    row->setSpacing(gap);
    QPushButton *yes = new QPushButton(QCorvel::tr("OK"), question);
    QPushButton *no = new QPushButton(QCorvel::tr("CANCEL"), question);
    row->addStretch(1);
    for (QPushButton *button : {yes, no}) {
        button->setFont(controlFont());
        button->setFixedSize(px(100), px(28));
        row->addWidget(button, 0, Qt::AlignCenter);
    }
    row->addStretch(1);
    column->addLayout(row);
    QObject::connect(yes, &QPushButton::clicked, question, &QDialog::accept);
    QObject::connect(no, &QPushButton::clicked, question, &QDialog::close);
    no->setDefault(true);
    no->setFocus();
}
