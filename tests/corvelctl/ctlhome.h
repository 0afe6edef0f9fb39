// SPDX-License-Identifier: MIT
//
// The built corvelctl on a store of its own on disk, as a user in a shell has it.
#ifndef TESTS_CORVELCTL_CTLHOME_H
#define TESTS_CORVELCTL_CTLHOME_H

#include <QByteArray>
#include <QFile>
#include <QProcess>
#include <QTemporaryDir>
#include <QtTest>

struct CtlResult {
    int code = -1;
    QByteArray out;
    QByteArray err;
};

class CtlHome {
public:
    QString path(const char *name) const { return m_folder.filePath(QLatin1String(name)); }

    QProcessEnvironment environment() const
    {
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        environment.insert(QStringLiteral("XDG_CONFIG_HOME"), m_folder.path());
        return environment;
    }

    static QString program(const char *name = "corvelctl")
    {
        return QStringLiteral(CORVEL_BIN_DIR "/") + QLatin1String(name);
    }

    // Words are separated by blanks; arguments that hold some go into `more`.
    CtlResult run(const char *words, const QStringList &more = {},
                  const QByteArray &input = QByteArray()) const
    {
        return runProgram(program(),
                          QString::fromUtf8(words).split(QLatin1Char(' '), Qt::SkipEmptyParts) + more, input);
    }

    CtlResult runProgram(const QString &name, const QStringList &arguments,
                         const QByteArray &input = QByteArray()) const
    {
        QProcess process;
        process.setProcessEnvironment(environment());
        process.setWorkingDirectory(m_folder.path());
        process.start(name, arguments);
        process.write(input);
        process.closeWriteChannel();
        process.waitForFinished(60000);
        const bool ended =
            process.exitStatus() == QProcess::NormalExit && process.state() == QProcess::NotRunning;
        return {ended ? process.exitCode() : -1, process.readAllStandardOutput(),
                process.readAllStandardError()};
    }

    // Every row of the store as another program sees it.
    QByteArray rows() const { return runProgram(program("rkcfg"), {QStringLiteral("dump")}).out; }

    void write(const char *name, const QByteArray &content) const
    {
        QFile file(path(name));
        QVERIFY(file.open(QIODevice::WriteOnly));
        file.write(content);
    }

    QByteArray read(const char *name) const
    {
        QFile file(path(name));
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
    }

private:
    QTemporaryDir m_folder;
};

#endif
