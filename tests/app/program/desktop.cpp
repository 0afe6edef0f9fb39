// SPDX-License-Identifier: MIT
#include "app/program/desktop.h"

#include <QElapsedTimer>
#include <QProcessEnvironment>

namespace {

constexpr int kPatienceMs = 60000;

QProcessEnvironment environmentFor(const QString &display)
{
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert(QStringLiteral("DISPLAY"), display);
    environment.insert(QStringLiteral("QT_QPA_PLATFORM"), QStringLiteral("xcb"));
    environment.insert(QStringLiteral("QT_FONT_DPI"), QStringLiteral("96"));
    // Under the address sanitizer: what the platform plug-in and D-Bus keep to the end can no longer be
    // told apart once the plug-in is unloaded. The tests inside one process look for leaks.
    const QString options = environment.value(QStringLiteral("ASAN_OPTIONS"));
    environment.insert(QStringLiteral("ASAN_OPTIONS"), options + QStringLiteral(":detect_leaks=0"));
    return environment;
}

} // namespace

Desktop::Desktop()
{
    m_server.start(QStringLiteral("Xvfb"),
                   {QStringLiteral("-displayfd"), QStringLiteral("1"), QStringLiteral("-screen"),
                    QStringLiteral("0"), QStringLiteral("1280x1024x24"), QStringLiteral("-dpi"),
                    QStringLiteral("96"), QStringLiteral("-nolisten"), QStringLiteral("tcp"),
                    QStringLiteral("-noreset")});
    QByteArray number;
    while (!number.endsWith('\n') && m_server.waitForReadyRead(kPatienceMs))
        number += m_server.readAllStandardOutput();
    if (number.endsWith('\n'))
        m_display = QLatin1Char(':') + QString::fromLatin1(number.trimmed());
}

Desktop::~Desktop()
{
    m_server.terminate();
    if (!m_server.waitForFinished(kPatienceMs))
        m_server.kill();
    m_server.waitForFinished();
}

Program::Program(const Desktop &desktop, const QStringList &arguments) : m_display(desktop.display())
{
    m_process.setProcessEnvironment(environmentFor(m_display));
    m_process.setProcessChannelMode(QProcess::ForwardedErrorChannel);
    m_process.start(QStringLiteral(CORVEL_BIN_DIR "/corvel"), arguments);
}

Program::~Program()
{
    if (m_process.state() == QProcess::NotRunning)
        return;
    m_process.kill();
    m_process.waitForFinished();
}

QByteArray Program::hands(const QStringList &arguments, bool *ok)
{
    QProcess tool;
    tool.setProcessEnvironment(environmentFor(m_display));
    tool.start(QStringLiteral("xdotool"), arguments);
    *ok = tool.waitForFinished(kPatienceMs) && tool.exitStatus() == QProcess::NormalExit &&
          tool.exitCode() == 0;
    return tool.readAllStandardOutput();
}

bool Program::act(const QStringList &arguments)
{
    bool ok = false;
    hands(arguments, &ok);
    return ok;
}

bool Program::waitForWindow()
{
    QElapsedTimer timer;
    timer.start();
    while (m_window.isEmpty() && timer.elapsed() < kPatienceMs && !m_process.waitForFinished(20)) {
        bool ok = false;
        const QByteArray found = hands({QStringLiteral("search"), QStringLiteral("--onlyvisible"),
                                        QStringLiteral("--name"), QStringLiteral("^IP Video Setup$")},
                                       &ok);
        if (ok)
            m_window = QString::fromLatin1(found).section(QLatin1Char('\n'), 0, 0);
    }
    return !m_window.isEmpty() && act({QStringLiteral("windowfocus"), QStringLiteral("--sync"), m_window});
}

int Program::waitForEnd()
{
    if (!m_process.waitForFinished(kPatienceMs) || m_process.exitStatus() != QProcess::NormalExit)
        return -1;
    return m_process.exitCode();
}

bool Program::click(const QPoint &place)
{
    return act({QStringLiteral("mousemove"), QStringLiteral("--window"), m_window, QString::number(place.x()),
                QString::number(place.y()), QStringLiteral("click"), QStringLiteral("1")});
}

bool Program::key(const QString &name, int times)
{
    QStringList arguments{QStringLiteral("key")};
    for (int i = 0; i < times; ++i)
        arguments.append(name);
    return act(arguments);
}

bool Program::type(const QString &text)
{
    return act({QStringLiteral("type"), QStringLiteral("--"), text});
}

bool Program::replace(const QPoint &place, const QString &digits)
{
    QStringList arguments{QStringLiteral("mousemove"), QStringLiteral("--window"), m_window,
                          QString::number(place.x()),  QString::number(place.y()), QStringLiteral("click"),
                          QStringLiteral("1"),         QStringLiteral("key"),      QStringLiteral("--delay"),
                          QStringLiteral("0"),         QStringLiteral("ctrl+a")};
    for (const QChar digit : digits)
        arguments.append(QString(digit));
    return act(arguments << QStringLiteral("Tab"));
}

QString Program::geometry()
{
    bool ok = false;
    const QString answer = QString::fromLatin1(hands({QStringLiteral("getwindowgeometry"), m_window}, &ok));
    return ok ? answer.section(QLatin1String("Geometry: "), 1).section(QLatin1Char('\n'), 0, 0) : QString();
}
