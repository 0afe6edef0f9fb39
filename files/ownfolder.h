// SPDX-License-Identifier: MIT
//
// A folder that belongs to one process and goes with it. Several processes of one user share the folder for
// temporary files; what one of them writes there and reads back must not be another's.
#ifndef CORVEL_FILES_OWNFOLDER_H
#define CORVEL_FILES_OWNFOLDER_H

#include <QByteArray>

// Below a folder of the user's own that nobody else may write to. The process holds a lock on its folder, so
// one whose lock is free was left behind: it is removed. Any thread, but one at a time for an object.
class OwnFolder {
public:
    // name is how the folders begin, fileName the one file that they hold.
    OwnFolder(const char *name, const char *fileName);
    ~OwnFolder();
    OwnFolder(const OwnFolder &) = delete;
    OwnFolder &operator=(const OwnFolder &) = delete;

    // The path of the file in this process's folder below `parent`, which ends in "/". Makes the folder when
    // it is not there and clears up what dead processes left. Empty when there is no such folder to be had,
    // or when something stands there that is no plain file of ours: a link, a pipe, a file with a second
    // name.
    QByteArray file(const QByteArray &parent);

private:
    bool isHeld() const;
    bool take(const QByteArray &folder);
    void leave();
    void removeLeftBehind(const QByteArray &parent) const;

    const QByteArray m_name;
    const QByteArray m_fileName;
    QByteArray m_parent;
    QByteArray m_folder;
    int m_lock = -1;
};

#endif
