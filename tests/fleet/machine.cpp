// SPDX-License-Identifier: MIT
#include "fleet/machine.h"

#include <QDir>
#include <QFile>

Machine::Machine(const Plant &plant, const QByteArray &role, const QByteArray &name,
                 const QByteArray &sections)
    : m_plant(plant)
{
    const QByteArray folder = m_plant.folder().toUtf8() + '/';
    m_config = "[fleet]\nrole = " + role + "\nsite = london\nname = " + name +
               "\n[cluster]\nendpoints = " + m_plant.endpoints() + "\nca = " + folder +
               "ca.crt\ncertificate = " + folder + name + ".crt\nkey = " + folder + name + ".key\n" +
               sections;
    QDir().mkpath(path(QStringLiteral("corvel")));
    QFile::setPermissions(path(QStringLiteral("corvel")),
                          QFileDevice::ReadOwner | QFileDevice::WriteOwner | QFileDevice::ExeOwner);
    writeConfig(m_config);
}

void Machine::writeConfig(const QByteArray &text) const
{
    QFile file(path(QStringLiteral("corvel/corvel-fleet.conf")));
    QVERIFY(file.open(QIODevice::WriteOnly) && file.write(text) == text.size());
}

QProcessEnvironment Machine::environment() const
{
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert(QStringLiteral("XDG_CONFIG_HOME"), m_home.path());
    environment.insert(QStringLiteral("XDG_STATE_HOME"), path(QStringLiteral("state")));
    environment.insert(QStringLiteral("XDG_RUNTIME_DIR"), m_home.path());
    return environment;
}

void Machine::start()
{
    m_process.setProcessEnvironment(environment());
    m_process.setStandardErrorFile(path(QStringLiteral("said")), QIODevice::Append);
    QStringList words =
        m_launcher + QStringList{QStringLiteral(CORVEL_BIN_DIR "/corvel-fleet"), QStringLiteral("run")};
    const QString program = words.takeFirst();
    m_process.start(program, words);
    QVERIFY(m_process.waitForStarted());
}

int Machine::stop()
{
    m_process.terminate();
    return waitForEnd();
}

int Machine::waitForEnd()
{
    const bool ended = m_process.waitForFinished(30000) && m_process.exitStatus() == QProcess::NormalExit;
    return ended ? m_process.exitCode() : -1;
}

void Machine::kill()
{
    if (m_process.state() == QProcess::NotRunning)
        return;
    m_process.kill();
    m_process.waitForFinished();
}

QByteArray Machine::said() const
{
    QFile file(path(QStringLiteral("said")));
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

QByteArray Machine::status() const
{
    QFile file(path(QStringLiteral("corvel/fleet-status")));
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

ProgramResult Machine::ctl(const QByteArray &configuration, const QStringList &words) const
{
    const QStringList chosen{QStringLiteral("-c"), QString::fromUtf8(configuration)};
    return runProgram(QStringLiteral(CORVEL_BIN_DIR "/corvelctl"),
                      (configuration.isEmpty() ? QStringList() : chosen) + words, environment());
}

ProgramResult Machine::fleet(const QStringList &words) const
{
    return runProgram(QStringLiteral(CORVEL_BIN_DIR "/corvel-fleet"), words, environment());
}

ProgramResult Machine::type(const QByteArray &line) const
{
    QProcessEnvironment environment = this->environment();
    environment.insert(QStringLiteral("PATH"),
                       QStringLiteral(CORVEL_BIN_DIR ":") + environment.value(QStringLiteral("PATH")));
    return runProgram(
        QStringLiteral("bash"),
        {QStringLiteral("-c"), QStringLiteral("cd \"$XDG_CONFIG_HOME\"; ") + QString::fromUtf8(line)},
        environment);
}

bool Machine::set(const QByteArray &configuration, const char *place, const char *assignment) const
{
    return ctl(configuration, {QStringLiteral("set"), QLatin1String(place), QLatin1String(assignment)})
               .code == 0;
}

QByteArray Machine::get(const QByteArray &configuration, const char *place, const char *word) const
{
    return ctl(configuration, {QStringLiteral("get"), QLatin1String(place), QLatin1String(word)})
        .out.trimmed();
}
