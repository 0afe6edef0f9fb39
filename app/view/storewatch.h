// SPDX-License-Identifier: MIT
//
// View: tells when the files of the store were touched, so that it is worth asking the store for news. Time
// is counted in ticks of the owner's timer; nothing is polled while nobody touches the files.
#ifndef CORVEL_VIEW_STOREWATCH_H
#define CORVEL_VIEW_STOREWATCH_H

#include <QFileSystemWatcher>
#include <QString>

class StoreWatch {
public:
    // Files are touched a moment before what was written can be seen, and a writer may be held up in
    // between: so many ticks are worth asking after each touch.
    static constexpr int kTicks = 50;

    // Watches the folder of the configurations and the files of one of them. To be called again when
    // another configuration is shown. A folder that is not there is watched from the next call on.
    void watch(const QString &folder, const QString &configuration);

    // One tick: true when the store is to be asked.
    bool tick();
    // True once after files came, went or were renamed.
    bool takeFolderTouched();

private:
    void touched();
    void addMissing();

    QFileSystemWatcher m_watcher;
    QStringList m_wanted;
    bool m_connected = false;
    bool m_folderTouched = false;
    int m_ticksLeft = 0;
};

#endif
