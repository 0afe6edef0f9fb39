// SPDX-License-Identifier: MIT
#include "channel/neighbours.h"

#include <QFile>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <sched.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

namespace {

constexpr int kMostAttempts = 1000;
constexpr int kBacklog = 16;

// A name without a file; empty when there is no such folder.
QByteArray socketName(const QString &folder)
{
    struct stat state = {};
    if (stat(QFile::encodeName(folder).constData(), &state) != 0)
        return {};
    return "corvel-" + QByteArray::number(geteuid()) + '-' +
           QByteArray::number(static_cast<quint64>(state.st_dev)) + '-' +
           QByteArray::number(static_cast<quint64>(state.st_ino));
}

int newSocket()
{
    return socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0);
}

// bind or connect; the first byte of the name stays zero, which is what makes it no file.
template<class Call>
bool atName(Call call, int socket, const QByteArray &name)
{
    sockaddr_un address = {};
    address.sun_family = AF_UNIX;
    memcpy(address.sun_path + 1, name.constData(), static_cast<size_t>(name.size()));
    const auto size =
        static_cast<socklen_t>(offsetof(sockaddr_un, sun_path) + 1 + static_cast<size_t>(name.size()));
    return call(socket, reinterpret_cast<const sockaddr *>(&address), size) == 0;
}

// The process at the other end; 0 when it belongs to somebody else: anybody can take such a name.
int peerOf(int socket)
{
    ucred peer = {};
    socklen_t size = sizeof peer;
    const bool known = getsockopt(socket, SOL_SOCKET, SO_PEERCRED, &peer, &size) == 0;
    return known && peer.uid == geteuid() ? peer.pid : 0;
}

} // namespace

Neighbours::~Neighbours()
{
    for (const Peer &peer : m_peers)
        close(peer.socket);
    if (m_listener >= 0)
        close(m_listener);
}

void Neighbours::meet(const QString &folder)
{
    m_name = socketName(folder);
    if (m_name.isEmpty())
        return;
    joinOrListen();
    tellNow();
}

// Somebody may come to listen, or go, between the two; then it is tried again.
void Neighbours::joinOrListen()
{
    for (int attempt = 0; attempt < kMostAttempts; ++attempt) {
        if (join() || listen())
            return;
        sched_yield();
    }
}

bool Neighbours::join()
{
    const int peer = newSocket();
    if (peer >= 0 && atName(::connect, peer, m_name) && add(peer))
        return true;
    close(peer);
    return false;
}

bool Neighbours::listen()
{
    const int listener = newSocket();
    if (!atName(::bind, listener, m_name) || ::listen(listener, kBacklog) != 0) {
        close(listener);
        return false;
    }
    m_listener = listener;
    m_listenNotifier = std::make_unique<QSocketNotifier>(listener, QSocketNotifier::Read);
    QObject::connect(m_listenNotifier.get(), &QSocketNotifier::activated, [this] { accept(); });
    return true;
}

void Neighbours::accept()
{
    const int peer = accept4(m_listener, nullptr, nullptr, SOCK_CLOEXEC | SOCK_NONBLOCK);
    if (peer >= 0 && !add(peer))
        close(peer);
    tellNow();
}

bool Neighbours::add(int socket)
{
    const int pid = peerOf(socket);
    if (pid == 0)
        return false;
    Peer peer{socket, pid, std::make_unique<QSocketNotifier>(socket, QSocketNotifier::Read)};
    QObject::connect(peer.notifier.get(), &QSocketNotifier::activated, [this, socket] { heard(socket); });
    m_peers.push_back(std::move(peer));
    return true;
}

// Nobody says anything, so what is heard is that the other one is gone.
void Neighbours::heard(int socket)
{
    const auto gone = std::find_if(m_peers.begin(), m_peers.end(),
                                   [socket](const Peer &peer) { return peer.socket == socket; });
    gone->notifier->setEnabled(false);
    gone->notifier.release()->deleteLater(); // it is calling
    m_peers.erase(gone);
    close(socket);
    if (m_listener < 0)
        joinOrListen();
    tellNow();
}

void Neighbours::tellNow()
{
    const int pid = m_peers.empty() ? 0 : m_peers.front().pid;
    if (pid != m_told)
        m_tell(pid);
    m_told = pid;
}
