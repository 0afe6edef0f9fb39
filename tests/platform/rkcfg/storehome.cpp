// SPDX-License-Identifier: MIT
#include "storehome.h"

#include <QDir>
#include <QFile>
#include <QMutex>
#include <QRandomGenerator>
#include <cstdarg>
#include <sqlite3.h>

namespace {

QMutex logMutex;
QStringList logLines;

} // namespace

extern "C" __attribute__((visibility("default"), format(printf, 1, 2))) void ErrOut(const char *format, ...)
{
    va_list arguments;
    va_start(arguments, format);
    const QString line = QString::vasprintf(format, arguments);
    va_end(arguments);
    const QMutexLocker locker(&logMutex);
    logLines << line;
}

QStringList takeLog()
{
    const QMutexLocker locker(&logMutex);
    QStringList lines;
    lines.swap(logLines);
    return lines;
}

StoreHome::StoreHome() : m_folder(m_home.path() + QStringLiteral("/corvel/"))
{
    closeStore();
    qputenv("XDG_CONFIG_HOME", QFile::encodeName(m_home.path()));
    takeLog();
}

StoreHome::~StoreHome()
{
    closeStore();
}

QString StoreHome::database(const QString &name) const
{
    return m_folder + name + QStringLiteral(".rkcfg");
}

QStringList StoreHome::files(const QString &pattern) const
{
    return QDir(m_folder).entryList({pattern},
                                    QDir::AllEntries | QDir::NoDotAndDotDot | QDir::Hidden | QDir::System);
}

QStringList StoreHome::quarantined() const
{
    QStringList names = files(QStringLiteral("*.rkcfg.corrupt-*"));
    names.erase(std::remove_if(names.begin(), names.end(),
                               [](const QString &name) {
                                   return name.endsWith(QStringLiteral("-wal")) ||
                                          name.endsWith(QStringLiteral("-journal"));
                               }),
                names.end());
    return names;
}

bool putText(const char *path, const char *name, const QByteArray &text)
{
    QByteArray bytes(text);
    auto size = static_cast<uint32_t>(bytes.size() + 1);
    return rkCFGValueString(store, path, name, bytes.data(), &size, 1) != 0;
}

bool putNumber(const char *path, const char *name, uint32_t number)
{
    return rkCFGValueDword(store, path, name, &number, 1) != 0;
}

std::optional<QByteArray> text(const char *path, const char *name)
{
    uint32_t size = 0;
    if (rkCFGValueString(store, path, name, nullptr, &size, 0) != 0)
        return std::nullopt;
    QByteArray bytes(static_cast<int>(size), '#');
    if (rkCFGValueString(store, path, name, bytes.data(), &size, 0) != 0 || !bytes.endsWith('\0'))
        return std::nullopt;
    bytes.chop(1);
    return bytes;
}

std::optional<uint32_t> number(const char *path, const char *name)
{
    uint32_t value = 0;
    if (rkCFGValueDword(store, path, name, &value, 0) != 0)
        return std::nullopt;
    return value;
}

int save()
{
    return rkCFGSave(store, nullptr, 0);
}

void closeStore()
{
    rkCFGClose(store, 0);
}

QByteArray content(const QString &file)
{
    QFile opened(file);
    return opened.open(QIODevice::ReadOnly) ? opened.readAll() : QByteArray("(cannot be read)");
}

void overwrite(const QString &file, const QByteArray &bytes)
{
    QFile opened(file);
    if (!opened.open(QIODevice::WriteOnly | QIODevice::Truncate) || opened.write(bytes) != bytes.size())
        qFatal("cannot write %s", qPrintable(file));
}

void scribble(const QString &file, qint64 offset, const QByteArray &bytes)
{
    QFile opened(file);
    if (!opened.open(QIODevice::ReadWrite) || !opened.seek(offset) || opened.write(bytes) != bytes.size())
        qFatal("cannot write %s", qPrintable(file));
}

QByteArray noise(int bytes, quint32 seed)
{
    QRandomGenerator generator(seed);
    QByteArray result(bytes, '\0');
    for (char &c : result)
        c = static_cast<char>(generator.bounded(256));
    return result;
}

ToolResult tool(const QStringList &arguments)
{
    QProcess process;
    process.start(QStringLiteral(CORVEL_BIN_DIR "/rkcfg"), arguments);
    if (!process.waitForFinished() || process.exitStatus() != QProcess::NormalExit)
        return {-1, {}, process.errorString().toUtf8()};
    return {process.exitCode(), process.readAllStandardOutput(), process.readAllStandardError()};
}

Worker::Worker(const QStringList &arguments)
{
    m_process.start(QStringLiteral(CORVEL_BUILD_DIR "/tests/bin/rkcfg_worker"), arguments);
    if (!m_process.waitForStarted())
        qFatal("cannot start the worker");
}

Worker::~Worker()
{
    finish();
}

void Worker::send(const QByteArray &command)
{
    m_process.write(command + '\n');
    m_process.waitForBytesWritten();
}

QByteArray Worker::readLine()
{
    while (!m_process.canReadLine()) {
        if (!m_process.waitForReadyRead())
            return "(no answer)";
    }
    return m_process.readLine().chopped(1);
}

QByteArray Worker::ask(const QByteArray &command)
{
    send(command);
    return readLine();
}

void Worker::kill()
{
    m_process.kill();
    m_process.waitForFinished();
}

bool Worker::finish()
{
    m_process.closeWriteChannel();
    return m_process.state() == QProcess::NotRunning || m_process.waitForFinished();
}

Direct::Direct(const QString &file)
{
    if (sqlite3_open_v2(QFile::encodeName(file).constData(), &m_db, SQLITE_OPEN_READWRITE, nullptr) !=
        SQLITE_OK)
        qWarning("%s", sqlite3_errmsg(m_db));
}

Direct::~Direct()
{
    sqlite3_close(m_db);
}

QByteArray Direct::ask(const char *sql)
{
    sqlite3_stmt *statement = nullptr;
    QByteArray answer;
    if (sqlite3_prepare_v2(m_db, sql, -1, &statement, nullptr) != SQLITE_OK)
        return sqlite3_errmsg(m_db);
    const int code = sqlite3_step(statement);
    if (code == SQLITE_ROW)
        answer = QByteArray(static_cast<const char *>(sqlite3_column_blob(statement, 0)),
                            sqlite3_column_bytes(statement, 0));
    else if (code != SQLITE_DONE)
        answer = sqlite3_errmsg(m_db);
    sqlite3_finalize(statement);
    return answer;
}
