/* SPDX-License-Identifier: MIT */
/*
 * What the store's tests share: a fresh home per case, short forms of the calls, the log lines, other
 * processes and a direct look into a database.
 */
#ifndef STOREHOME_H
#define STOREHOME_H

#include "rkcfg.h"

#include <QByteArray>
#include <QProcess>
#include <QString>
#include <QStringList>
#include <QTemporaryDir>
#include <memory>
#include <optional>

struct sqlite3;

void *const store = RKCFG_DEFAULT_STORE;

// The lines that the library logged since the last call. Takes the place of rkos' ErrOut.
QStringList takeLog();

// An empty configuration home for one case. The store is closed before and after.
class StoreHome {
public:
    StoreHome();
    ~StoreHome();

    QString folder() const { return m_folder; }
    QString path(const QString &file) const { return m_folder + file; }
    QString database(const QString &name = QStringLiteral("default")) const;
    QStringList files(const QString &pattern = QStringLiteral("*")) const;
    // The databases (not their logs) that were set aside.
    QStringList quarantined() const;

private:
    QTemporaryDir m_home;
    QString m_folder;
};

bool putText(const char *path, const char *name, const QByteArray &text);
bool putNumber(const char *path, const char *name, uint32_t number);
std::optional<QByteArray> text(const char *path, const char *name);
std::optional<uint32_t> number(const char *path, const char *name);
int save();
void closeStore();

QByteArray content(const QString &file);
void overwrite(const QString &file, const QByteArray &bytes);
// Writes into the middle of a file without making it shorter or longer.
void scribble(const QString &file, qint64 offset, const QByteArray &bytes);
QByteArray noise(int bytes, quint32 seed);

struct ToolResult {
    int code;
    QByteArray out;
    QByteArray err;
};
ToolResult tool(const QStringList &arguments);

// A process that answers one line per command; see worker.cpp. Ends with the object.
class Worker {
public:
    explicit Worker(const QStringList &arguments = {});
    ~Worker();

    QByteArray ask(const QByteArray &command);
    void send(const QByteArray &command);
    QByteArray readLine();
    void kill();
    bool finish();
    QProcess &process() { return m_process; }

private:
    QProcess m_process;
};

// A database opened past the library.
class Direct {
public:
    explicit Direct(const QString &file);
    ~Direct();
    // The first column of the first row, or the error's text.
    QByteArray ask(const char *sql);

private:
    sqlite3 *m_db = nullptr;
};

#endif // STOREHOME_H
