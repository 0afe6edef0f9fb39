// SPDX-License-Identifier: MIT
//
// The toolkit's progress dialog over a file command that takes its time. It comes up by itself after half a
// second and lives as long as the object. While it is up, step() runs the event loop: the windows stay
// painted, the page takes no input, and anything else may happen, the end of the page among it.
#ifndef CORVEL_VIEW_FILEPROGRESS_H
#define CORVEL_VIEW_FILEPROGRESS_H

#include <QElapsedTimer>
#include <QString>

#include <memory>

class QProgressDialog;

class FileProgress {
public:
    explicit FileProgress(const QString &title, int patienceMs = 500);
    ~FileProgress();
    FileProgress(const FileProgress &) = delete;
    FileProgress &operator=(const FileProgress &) = delete;

    // Call it often, it looks at the clock only. done of total is the bar's, values are told in words; total
    // may be 0. False once the user wants to stop.
    bool step(qint64 done, qint64 total, int values);
    bool isCancelled() const { return m_cancelled; }

private:
    void show(qint64 done, qint64 total, int values);

    QString m_title;
    qint64 m_nextMs;
    QElapsedTimer m_since;
    std::unique_ptr<QProgressDialog> m_box;
    bool m_cancelled = false;
};

#endif
