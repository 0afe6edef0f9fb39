// SPDX-License-Identifier: MIT
//
// One machine of a plant: a folder for its store, its corvel-fleet.conf, and the built corvel-fleet as a
// process.
#ifndef TESTS_FLEET_MACHINE_H
#define TESTS_FLEET_MACHINE_H

#include "fleet/plant.h"

class Machine {
public:
    // sections: what follows [cluster] in the file.
    Machine(const Plant &plant, const QByteArray &role, const QByteArray &name,
            const QByteArray &sections = {});
    ~Machine() { kill(); }

    // What the service is started through: a program that becomes it.
    void startThrough(const QStringList &launcher) { m_launcher = launcher; }
    void start();
    // SIGTERM; the exit code, -1 when it did not end.
    int stop();
    void kill();
    bool running() const { return m_process.state() == QProcess::Running; }
    qint64 pid() const { return m_process.processId(); }
    // Waits for the service to end by itself.
    int waitForEnd();
    QByteArray said() const;

    // corvelctl with this machine's store; an empty configuration is the one in use.
    ProgramResult ctl(const QByteArray &configuration, const QStringList &words) const;
    ProgramResult fleet(const QStringList &words) const;
    // A line as somebody types it, in this machine's own folder.
    ProgramResult type(const QByteArray &line) const;
    bool set(const QByteArray &configuration, const char *place, const char *assignment) const;
    QByteArray get(const QByteArray &configuration, const char *place, const char *word) const;

    QString path(const QString &name) const { return m_home.filePath(name); }
    QByteArray status() const; // the status file
    void writeConfig(const QByteArray &text) const;
    QByteArray config() const { return m_config; }
    QProcessEnvironment environment() const;

private:
    const Plant &m_plant;
    QTemporaryDir m_home;
    QByteArray m_config;
    QStringList m_launcher;
    QProcess m_process;
};

#endif
