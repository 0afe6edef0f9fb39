// SPDX-License-Identifier: MIT
//
// Thousands of servers in one program: each has a keeper of its own with a connection, a watch and a sign of
// life as the service has them, and a store in memory. Some threads do the work of all.
#ifndef CAMPAIGN_FLEETCROWD_H
#define CAMPAIGN_FLEETCROWD_H

#include "fleet/etcd/etcdcluster.h"
#include "fleet/keeper.h"
#include "fleet/memoryreplica.h"

#include <atomic>
#include <condition_variable>
#include <random>
#include <thread>

class Crowd {
public:
    static constexpr int kThreads = 24;
    // As in fleet/service/crew.h.
    static constexpr int kLeaseSeconds = 10;
    static constexpr qint64 kAliveMs = 3000;

    // Every server gets these documents; what is looked at is a number in one of them.
    Crowd(const fleet::EtcdOptions &options, int count, const fleet::Documents &documents);
    ~Crowd();

    static QByteArray nameOf(int server);
    void look(const std::string &key, const QByteArray &valueName) { m_looked = {key, valueName}; }

    // All of them or one; as when the machine is switched on, or the service killed.
    void start();
    void stop();
    void start(int server) { turn(server, true); }
    void stop(int server);

    int count() const { return static_cast<int>(m_servers.size()); }
    int inStep() const;
    int with(quint32 number) const; // how many have it as the number that is looked at
    // The largest part of all servers that wanted to read everything in the same tenth of a second after
    // their start.
    double starters() const;

private:
    struct Server {
        QByteArray name;
        MemoryReplica replica;
        std::unique_ptr<fleet::EtcdCluster> cluster;
        std::unique_ptr<fleet::Keeper> keeper;
        std::mt19937 chance;
        qint64 aliveMs = 0;
        std::atomic<bool> on{false};
        std::atomic<bool> running{false}; // has a keeper
        std::atomic<bool> inStep{false};
        std::atomic<quint32> number{0};
        std::atomic<qint64> firstMs{0}; // how long after its start it wanted to read everything
        // Under the lock.
        bool busy = false;
        bool woken = false;
        qint64 dueMs = 0;
    };

    void turn(int server, bool on);
    void wake(int server);
    void work();
    qint64 step(int server);
    void begin(int server);
    qint64 live(Server &server);
    void signOfLife(Server &server, qint64 nowMs);
    void note(Server &server);

    const fleet::EtcdOptions m_options;
    std::pair<std::string, QByteArray> m_looked;
    std::vector<std::unique_ptr<Server>> m_servers;
    std::mutex m_mutex;
    std::condition_variable m_changed;
    std::set<std::pair<qint64, int>> m_queue; // when, who
    bool m_ending = false;
    std::vector<std::thread> m_threads;
};

#endif
