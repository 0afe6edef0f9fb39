// SPDX-License-Identifier: MIT
#include "channel/storehealth.h"

#include "channel/configurations.h"
#include "rkos.h"

#include <QFile>
#include <QFileInfo>

#include <cerrno>
#include <cstring>
#include <sys/statvfs.h>
#include <unistd.h>

namespace {

// The system's error number for what stands in the way at the path; 0 when nothing does.
int refusal(const QString &path)
{
    return access(QFile::encodeName(path).constData(), R_OK | W_OK) == 0 ? 0 : errno;
}

int fileSystemRefusal(const QString &folder)
{
    struct statvfs state = {};
    if (statvfs(QFile::encodeName(folder).constData(), &state) != 0)
        return errno;
    if (state.f_flag & ST_RDONLY)
        return EROFS;
    const bool noFiles = state.f_files > 0 && state.f_favail == 0; // some file systems count none
    return state.f_bavail == 0 || noFiles ? ENOSPC : 0;
}

} // namespace

QString storePath()
{
    char folder[RKOS_PATH_SIZE] = {};
    rkOSGetConfigDir(folder);
    if (!folder[0])
        return {};
    return QFile::decodeName(folder) + configurationInUse() + QLatin1String(kConfigurationSuffix);
}

QString storeObstacle(const QString &path)
{
    if (path.isEmpty())
        return QString::fromLocal8Bit(strerror(ENOENT));
    const QFileInfo file(path);
    int number = refusal(file.path() + QStringLiteral("/.")); // a file there is no folder
    if (number == 0)
        number = fileSystemRefusal(file.path());
    if (number == 0 && file.exists())
        number = file.isDir() ? EISDIR : refusal(path);
    return number == 0 ? QString() : QString::fromLocal8Bit(strerror(number));
}
