// SPDX-License-Identifier: MIT
//
// Tells whether the same program is open a second time on the same store, by the same user on this machine.
// The first one listens on a socket named after the store's folder, the others are connected to it; when a
// process ends in any way the system closes its end, so nothing is left behind and nothing is polled. Thread
// with an event loop.
#ifndef CORVEL_NEIGHBOURS_H
#define CORVEL_NEIGHBOURS_H

#include <QByteArray>
#include <QSocketNotifier>
#include <QString>

#include <functional>
#include <memory>
#include <vector>

class Neighbours {
public:
    // tell: the process number of another one, 0 when there is none any more. Not called by the destructor.
    explicit Neighbours(const std::function<void(int pid)> &tell) : m_tell(tell) {}
    ~Neighbours();
    Neighbours(const Neighbours &) = delete;
    Neighbours &operator=(const Neighbours &) = delete;

    // Looks for others with this folder from now on. To be called once; without the folder nothing is told.
    void meet(const QString &folder);

private:
    struct Peer {
        int socket;
        int pid;
        std::unique_ptr<QSocketNotifier> notifier;
    };
    void joinOrListen();
    bool join();
    bool listen();
    void accept();
    bool add(int socket);
    void heard(int socket);
    void tellNow();

    std::function<void(int pid)> m_tell;
    QByteArray m_name;
    int m_listener = -1;
    int m_told = 0;
    std::unique_ptr<QSocketNotifier> m_listenNotifier;
    std::vector<Peer> m_peers; // of a listener all others, else the listener
};

#endif
