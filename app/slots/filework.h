// SPDX-License-Identifier: MIT
//
// What holds while a file command works: the wait cursor, and that nothing else writes in between.
#ifndef CORVEL_SLOTS_FILEWORK_H
#define CORVEL_SLOTS_FILEWORK_H

#include "app/dialog/private.h"

#include <QApplication>
#include <QFileInfo>
#include <QPointer>

#include <utility>

// The progress dialog runs the event loop. A description that is pushed meanwhile waits in afterFileWork
// and is applied at the end, so that a cancelled load does not take it back. The dialog may be gone by then.
class FileWork {
public:
    explicit FileWork(QCorvelPrivate *dialog) : m_dialog(dialog), m_alive(dialog->q)
    {
        m_dialog->fileWorkRuns = true;
        QApplication::setOverrideCursor(Qt::WaitCursor);
    }
    ~FileWork()
    {
        QApplication::restoreOverrideCursor();
        if (!m_alive)
            return;
        m_dialog->fileWorkRuns = false;
        const auto waiting = std::exchange(m_dialog->afterFileWork, {});
        for (const std::function<void()> &next : waiting)
            next();
    }
    FileWork(const FileWork &) = delete;
    FileWork &operator=(const FileWork &) = delete;

    // False when the dialog was deleted under the work: nothing of it may be touched.
    bool isWanted() const { return !m_alive.isNull(); }

private:
    QCorvelPrivate *m_dialog;
    QPointer<QCorvel> m_alive;
};

// Told by the letters behind the last ".", in lower case only.
inline bool isSessionDescription(const QString &path)
{
    return QFileInfo(path).suffix() == QLatin1String("sdp");
}

#endif
