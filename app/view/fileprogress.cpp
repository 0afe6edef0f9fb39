// SPDX-License-Identifier: MIT
#include "app/view/fileprogress.h"

#include "app/view/digitgroups.h"

#include <QCoreApplication>
#include <QProgressBar>
#include <QProgressDialog>

namespace {

constexpr int kBetweenMs = 50; // seldom enough to cost nothing, often enough for the eye
constexpr int kBarEnd = 1000;

// Lengths follow the font, as all lengths of the dialog do. The bar's own text would stand on the accent
// colour.
void fit(QProgressDialog *box)
{
    box->setMinimumWidth(box->fontMetrics().averageCharWidth() * 48);
    for (QProgressBar *bar : box->findChildren<QProgressBar *>())
        bar->setTextVisible(false);
}

} // namespace

FileProgress::FileProgress(const QString &title, int patienceMs) : m_title(title), m_nextMs(patienceMs)
{
    m_since.start();
}

FileProgress::~FileProgress() = default;

bool FileProgress::step(qint64 done, qint64 total, int values)
{
    if (!m_cancelled && m_since.elapsed() >= m_nextMs) {
        show(done, total, values);
        m_nextMs = m_since.elapsed() + kBetweenMs;
    }
    return !m_cancelled;
}

// It has no parent on purpose: a host that deletes the page does not delete it while it is running.
void FileProgress::show(qint64 done, qint64 total, int values)
{
    if (!m_box) {
        m_box = std::make_unique<QProgressDialog>();
        m_box->setObjectName(QStringLiteral("fileProgress"));
        m_box->setWindowTitle(m_title);
        m_box->setWindowModality(Qt::ApplicationModal);
        m_box->setMinimumDuration(0);
        m_box->setAutoClose(false);
        m_box->setAutoReset(false);
        m_box->setRange(0, total > 0 ? kBarEnd : 0);
        fit(m_box.get());
    }
    const QString text = QCoreApplication::translate("QCorvel", "%1 values");
    m_box->setLabelText(text.arg(QString::fromLatin1(digitGroups(values))));
    m_box->setValue(total > 0 ? static_cast<int>(kBarEnd * qMin(done, total) / total) : 0);
    m_box->show();
    QCoreApplication::processEvents();
    m_cancelled = m_box->wasCanceled();
}
