// SPDX-License-Identifier: MIT
//
// The signs that a store was written to: the system says which files of the folder of the configurations were
// touched. One descriptor for all of them, whatever their number. One edit writes many times; so after the
// first sign nobody listens for a moment, and the writer does not have to wake this program each time.
// Belongs to the thread that made it and needs its event loop.
#ifndef CORVEL_FLEET_SERVICE_STORESIGNS_H
#define CORVEL_FLEET_SERVICE_STORESIGNS_H

#include <QByteArray>
#include <QSocketNotifier>
#include <QTimer>

#include <functional>
#include <memory>
#include <optional>

namespace fleet {

class StoreSigns {
public:
    // Called with the configuration whose files were touched; with an empty name when another one may be in
    // use.
    using Tell = std::function<void(const QByteArray &configuration)>;

    static constexpr int kPauseMs = 2; // an edit of twenty values takes one

    StoreSigns(const QByteArray &folder, Tell tell, int pauseMs = kPauseMs);
    ~StoreSigns();
    StoreSigns(const StoreSigns &) = delete;
    StoreSigns &operator=(const StoreSigns &) = delete;

    // False when the system gave no watch; keepers then find out by their own looks, every few seconds.
    bool works() const { return m_descriptor >= 0; }

private:
    void read();

    const Tell m_tell;
    int m_descriptor = -1;
    std::unique_ptr<QSocketNotifier> m_notifier;
    QTimer m_pause;
};

// "night.rkcfg-wal" is of "night"; the file with the name of the one in use, of "". Nothing for other files.
std::optional<QByteArray> configurationOfFile(const QByteArray &file);

} // namespace fleet

#endif
