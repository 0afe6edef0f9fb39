// SPDX-License-Identifier: MIT
#include "app/view/storewatch.h"

#include <QFileInfo>

void StoreWatch::watch(const QString &folder, const QString &configuration)
{
    if (!m_connected) {
        m_connected = true;
        QObject::connect(&m_watcher, &QFileSystemWatcher::fileChanged, &m_watcher, [this] { touched(); });
        QObject::connect(&m_watcher, &QFileSystemWatcher::directoryChanged, &m_watcher, [this] {
            m_folderTouched = true;
            touched();
        });
    }
    // The log beside the database is what grows with each write; the database itself when that is emptied.
    const QString database = folder + QLatin1Char('/') + configuration;
    m_wanted = QStringList{folder, database, database + QLatin1String("-wal")};
    for (const QString &path : m_watcher.files() + m_watcher.directories()) {
        if (!m_wanted.contains(path))
            m_watcher.removePath(path);
    }
    addMissing();
}

bool StoreWatch::tick()
{
    if (m_ticksLeft == 0)
        return false;
    --m_ticksLeft;
    return true;
}

bool StoreWatch::takeFolderTouched()
{
    const bool was = m_folderTouched;
    m_folderTouched = false;
    return was;
}

void StoreWatch::touched()
{
    m_ticksLeft = kTicks;
    addMissing();
}

// A file that was replaced or removed is no longer watched.
void StoreWatch::addMissing()
{
    const QStringList watched = m_watcher.files() + m_watcher.directories();
    for (const QString &path : m_wanted) {
        if (!watched.contains(path) && QFileInfo::exists(path))
            m_watcher.addPath(path);
    }
}
