// SPDX-License-Identifier: MIT
#include "files/ownfolder.h"

#include <QDir>
#include <QFile>

#include <cerrno>
#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {

constexpr int kMostNames = 100; // process numbers may repeat where several containers share the folder

// The descriptor of the folder with the lock on it, or -1: it is another's, no folder, or gone.
int lockFolder(const QByteArray &folder)
{
    const int descriptor = open(folder.constData(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC);
    if (descriptor < 0)
        return -1;
    struct stat held {};
    struct stat named {};
    const bool isOurs = flock(descriptor, LOCK_EX | LOCK_NB) == 0 && fstat(descriptor, &held) == 0 &&
                        stat(folder.constData(), &named) == 0 && held.st_ino == named.st_ino &&
                        held.st_uid == geteuid();
    if (isOurs)
        return descriptor;
    close(descriptor);
    return -1;
}

bool isFreeOrOurs(const QByteArray &path)
{
    struct stat info {};
    if (lstat(path.constData(), &info) != 0)
        return errno == ENOENT;
    return S_ISREG(info.st_mode) && info.st_nlink == 1 && info.st_uid == geteuid();
}

void removeFolder(const QByteArray &folder, const QByteArray &fileName)
{
    unlink((folder + '/' + fileName).constData());
    rmdir(folder.constData());
}

} // namespace

OwnFolder::OwnFolder(const char *name, const char *fileName) : m_name(name), m_fileName(fileName) {}

OwnFolder::~OwnFolder()
{
    leave();
}

void OwnFolder::leave()
{
    if (m_lock < 0)
        return;
    removeFolder(m_folder, m_fileName);
    close(m_lock);
    m_lock = -1;
}

// Somebody may have cleared the parent up.
bool OwnFolder::isHeld() const
{
    struct stat held {};
    struct stat named {};
    return m_lock >= 0 && fstat(m_lock, &held) == 0 && lstat(m_folder.constData(), &named) == 0 &&
           held.st_ino == named.st_ino;
}

bool OwnFolder::take(const QByteArray &folder)
{
    if (mkdir(folder.constData(), 0700) != 0 && errno != EEXIST)
        return false;
    m_lock = lockFolder(folder);
    if (m_lock < 0)
        return false;
    fchmod(m_lock, 0700);
    m_folder = folder;
    return true;
}

void OwnFolder::removeLeftBehind(const QByteArray &parent) const
{
    const QStringList names = QDir(QFile::decodeName(parent))
                                  .entryList({QString::fromLatin1(m_name) + QLatin1Char('*')},
                                             QDir::Dirs | QDir::NoDotAndDotDot | QDir::Hidden);
    for (const QString &name : names) {
        const QByteArray folder = parent + QFile::encodeName(name);
        const int lock = lockFolder(folder);
        if (lock < 0)
            continue;
        removeFolder(folder, m_fileName);
        close(lock);
    }
}

QByteArray OwnFolder::file(const QByteArray &parent)
{
    if (parent != m_parent || !isHeld()) {
        leave();
        m_parent = parent;
        removeLeftBehind(parent);
        const QByteArray folder = parent + m_name + QByteArray::number(static_cast<qint64>(getpid()));
        for (int again = 0; m_lock < 0 && again < kMostNames; ++again)
            take(again == 0 ? folder : folder + '-' + QByteArray::number(again));
    }
    const QByteArray path = m_folder + '/' + m_fileName;
    return m_lock >= 0 && isFreeOrOurs(path) ? path : QByteArray();
}
