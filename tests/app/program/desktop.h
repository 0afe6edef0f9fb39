// SPDX-License-Identifier: MIT
//
// An X server of the test's own, the built program on it, and a person's hands: real mouse and key events
// through the X server (xdotool). Only processes started here are ever ended.
#ifndef CORVEL_TEST_DESKTOP_H
#define CORVEL_TEST_DESKTOP_H

#include <QPoint>
#include <QProcess>
#include <QString>
#include <QStringList>

// Xvfb on a display number that it chooses itself. It stays as it is when its last client goes.
class Desktop {
public:
    Desktop();
    ~Desktop();
    bool isRunning() const { return !m_display.isEmpty(); }
    QString display() const { return m_display; }

private:
    QProcess m_server;
    QString m_display;
};

// bin/corvel on a desktop. Takes the settings folders from the test's own environment.
class Program {
public:
    explicit Program(const Desktop &desktop, const QStringList &arguments = {});
    ~Program();

    // Waits for the window and gives it the keyboard. False when none came up.
    bool waitForWindow();
    QProcess &process() { return m_process; }
    // Waits for the end; the exit code, or -1 when it was killed or did not end.
    int waitForEnd();

    // All of these: false when the event could not be sent. The program takes its time to handle it.
    bool click(const QPoint &place);
    bool key(const QString &name, int times = 1);
    bool type(const QString &text);
    // Clicks into a field and types digits over what stands there, then leaves it, as quickly as hands can.
    bool replace(const QPoint &place, const QString &digits);
    // Width and height of the window as the X server has them.
    QString geometry();

private:
    QByteArray hands(const QStringList &arguments, bool *ok);
    bool act(const QStringList &arguments);

    QProcess m_process;
    QString m_display;
    QString m_window;
};

#endif
