// SPDX-License-Identifier: MIT
//
// A home of its own for each test case, and the little things all tests of the library need.
#ifndef RKOS_TEST_SURROUNDINGS_H
#define RKOS_TEST_SURROUNDINGS_H

#include <QByteArray>
#include <QDir>
#include <QFile>
#include <QString>
#include <QTemporaryDir>

#include <functional>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

class Surroundings {
public:
    Surroundings() : m_dir(start() + QStringLiteral("/rkos-XXXXXX"))
    {
        for (const char *name : {"config", "state", "run", "tmp", "documents"})
            mkdir(path(name).constData(), 0700);
        qputenv("HOME", path(""));
        qputenv("XDG_CONFIG_HOME", path("config"));
        qputenv("XDG_STATE_HOME", path("state"));
        qputenv("XDG_RUNTIME_DIR", path("run"));
        qputenv("XDG_DOCUMENTS_DIR", path("documents"));
        qputenv("TMPDIR", path("tmp"));
    }

    // The path of something below the home, as bytes.
    QByteArray path(const QByteArray &name) const { return QFile::encodeName(m_dir.path()) + '/' + name; }

private:
    // Where temporary files went before the first case changed the environment.
    static QString start()
    {
        static const QString path = QDir::tempPath();
        return path;
    }

    QTemporaryDir m_dir;
};

inline QByteArray contentOf(const QByteArray &path)
{
    QFile file(QFile::decodeName(path));
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray("(cannot be read)");
}

inline bool putContent(const QByteArray &path, const QByteArray &content)
{
    QFile file(QFile::decodeName(path));
    return file.open(QIODevice::WriteOnly | QIODevice::Truncate) && file.write(content) == content.size();
}

inline int modeOf(const QByteArray &path)
{
    struct stat info {};
    return lstat(path.constData(), &info) == 0 ? static_cast<int>(info.st_mode & 07777) : -1;
}

// Runs `body` in a second process and returns its result; 1000 + signal when a signal ended it.
inline int inSecondProcess(const std::function<int()> &body)
{
    const pid_t child = fork();
    if (child == 0)
        _exit(body());
    int status = 0;
    waitpid(child, &status, 0);
    return WIFEXITED(status) ? WEXITSTATUS(status) : 1000 + WTERMSIG(status);
}

#endif // RKOS_TEST_SURROUNDINGS_H
