// SPDX-License-Identifier: MIT
#include "channel/keptjournal.h"

#include "channel/storehealth.h"
#include "rkos.h"

#include <QDir>
#include <QFileInfo>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <optional>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>
#include <vector>

namespace {

using Value = StoreChange::Value;

constexpr char kPrefix[] = ".corvel-kept-";
constexpr char kUnfinished[] = ".new";
constexpr qint64 kMostBytes = 64 << 20;

// ---------------------------------------------------------------------------------------------- as a text

// Texts are bytes; Latin-1 has a character for each and gives the same bytes back.
QJsonValue written(const Value &value)
{
    switch (value.type) {
    case Value::Type::Absent:
        return QJsonValue::Null;
    case Value::Type::Text:
        return QString::fromLatin1(value.text);
    case Value::Type::Number:
        return static_cast<double>(value.number);
    }
    return {};
}

Value readValue(const QJsonValue &value)
{
    if (value.isString())
        return {Value::Type::Text, value.toString().toLatin1(), 0};
    if (value.isDouble())
        return {Value::Type::Number, QByteArray(), static_cast<quint32>(value.toDouble())};
    return {};
}

QByteArray written(const QVector<KeptWrites> &steps)
{
    QJsonArray all;
    for (const KeptWrites &step : steps) {
        QJsonArray writes;
        for (const StoreChange &write : step.writes)
            writes.append(QJsonObject{{QStringLiteral("path"), QString::fromLatin1(write.path)},
                                      {QStringLiteral("name"), QString::fromLatin1(write.name)},
                                      {QStringLiteral("before"), written(write.before)},
                                      {QStringLiteral("after"), written(write.after)}});
        all.append(QJsonObject{{QStringLiteral("configuration"), step.configuration},
                               {QStringLiteral("writes"), writes}});
    }
    return QJsonDocument(all).toJson();
}

KeptWrites readStep(const QJsonObject &step)
{
    KeptWrites read;
    read.configuration = step.value(QStringLiteral("configuration")).toString();
    const QJsonArray rows = step.value(QStringLiteral("writes")).toArray();
    for (const QJsonValue &row : rows) {
        StoreChange write;
        write.path = row[QStringLiteral("path")].toString().toLatin1();
        write.name = row[QStringLiteral("name")].toString().toLatin1();
        write.before = readValue(row[QStringLiteral("before")]);
        write.after = readValue(row[QStringLiteral("after")]);
        if (!write.path.isEmpty() && !write.name.isEmpty() && write.after.type != Value::Type::Absent)
            read.writes.append(write);
    }
    return read;
}

std::optional<QVector<KeptWrites>> readSteps(const QByteArray &text)
{
    const QJsonDocument document = QJsonDocument::fromJson(text);
    if (!document.isArray())
        return std::nullopt;
    const QJsonArray list = document.array();
    QVector<KeptWrites> steps;
    for (const QJsonValue &step : list)
        steps.append(readStep(step.toObject()));
    return steps;
}

// ------------------------------------------------------------------------------------------------- on disk

bool lock(const QFile &file)
{
    return flock(file.handle(), LOCK_EX | LOCK_NB) == 0;
}

// Its process may have removed it while we waited for nothing but a moment.
bool isStillThere(const QFile &file)
{
    struct stat state = {};
    return fstat(file.handle(), &state) == 0 && S_ISREG(state.st_mode) && state.st_nlink > 0;
}

// Their names tell their order; two processes never have one. Empty when there is no folder for the store.
QString newPath()
{
    const QString store = storePath();
    if (store.isEmpty())
        return {};
    const auto sinceEpoch = std::chrono::system_clock::now().time_since_epoch();
    const qint64 us = std::chrono::duration_cast<std::chrono::microseconds>(sinceEpoch).count();
    return QFileInfo(store).dir().filePath(QLatin1String(kPrefix) + QString::number(us) + QLatin1Char('-') +
                                           QString::number(getpid()));
}

// Under the lock from the beginning. A file that could not be written whole is gone again.
bool replaceFile(const QString &path, QFile *next, const QByteArray &text)
{
    if (!next->open(QIODevice::WriteOnly | QIODevice::NewOnly))
        return false;
    const QByteArray from = QFile::encodeName(next->fileName()), to = QFile::encodeName(path);
    if (next->setPermissions(QFile::ReadOwner | QFile::WriteOwner) && lock(*next) &&
        next->write(text) == text.size() && next->flush() && fsync(next->handle()) == 0 &&
        rename(from.constData(), to.constData()) == 0)
        return true;
    unlink(from.constData());
    return false;
}

// With its lock; null when that is another process's, or the file is gone.
std::unique_ptr<QFile> leftBehind(const QString &path)
{
    if (QFileInfo(path).isSymLink())
        return nullptr;
    auto file = std::make_unique<QFile>(path);
    if (!file->open(QIODevice::ReadWrite | QIODevice::ExistingOnly) || !lock(*file) || !isStillThere(*file))
        return nullptr;
    return file;
}

std::vector<std::unique_ptr<QFile>> allLeftBehind()
{
    std::vector<std::unique_ptr<QFile>> files;
    const QString store = storePath();
    if (store.isEmpty())
        return files;
    const QDir dir = QFileInfo(store).dir();
    const QStringList patterns{QLatin1String(kPrefix) + QLatin1Char('*')};
    for (const QString &name : dir.entryList(patterns, QDir::Files | QDir::Hidden, QDir::Name)) {
        if (auto file = leftBehind(dir.filePath(name)))
            files.push_back(std::move(file));
    }
    return files;
}

int sizeOf(const QVector<KeptWrites> &steps)
{
    int size = 0;
    for (const KeptWrites &step : steps)
        size += step.writes.size();
    return size;
}

// The steps of one file go behind those that are there. False when it has to stay as it is.
bool takeSteps(QFile *file, QVector<KeptWrites> *steps)
{
    if (file->fileName().endsWith(QLatin1String(kUnfinished)))
        return true; // what it was to replace is still there
    const std::optional<QVector<KeptWrites>> read = readSteps(file->read(kMostBytes));
    if (!read) {
        ErrOut("%s cannot be understood and is left alone", QFile::encodeName(file->fileName()).constData());
        return false;
    }
    *steps += *read;
    return true;
}

} // namespace

bool KeptJournal::save(const QVector<KeptWrites> &steps)
{
    if (steps.isEmpty()) {
        remove();
        return true;
    }
    const QString path = m_path.isEmpty() ? newPath() : m_path;
    auto next = std::make_unique<QFile>(path + QLatin1String(kUnfinished));
    if (path.isEmpty() || !replaceFile(path, next.get(), written(steps))) {
        ErrOut("%s cannot be written: what waits is lost if the program ends",
               QFile::encodeName(next->fileName()).constData());
        return false;
    }
    m_file = std::move(next);
    m_path = path;
    return true;
}

void KeptJournal::remove()
{
    if (m_file)
        QFile::remove(m_path);
    m_file.reset();
    m_path.clear();
}

int KeptJournal::adopt(QVector<KeptWrites> *steps)
{
    const int before = sizeOf(*steps);
    std::vector<std::unique_ptr<QFile>> files = allLeftBehind();
    files.erase(std::remove_if(files.begin(), files.end(),
                               [steps](const auto &file) { return !takeSteps(file.get(), steps); }),
                files.end());
    if (files.empty() || !save(*steps))
        return sizeOf(*steps) - before;
    for (const auto &file : files)
        QFile::remove(file->fileName());
    return sizeOf(*steps) - before;
}
