// SPDX-License-Identifier: MIT
#include "fleetcrowd.h"

#include "fleet/service/alive.h"

#include <QDateTime>

#include <array>

using namespace fleet;

namespace {

const QByteArray kSite = "london";

qint64 steadyMs()
{
    const auto now = std::chrono::steady_clock::now().time_since_epoch();
    return std::chrono::duration_cast<std::chrono::milliseconds>(now).count();
}

} // namespace

QByteArray Crowd::nameOf(int server)
{
    return "sim-" + QByteArray::number(server).rightJustified(5, '0');
}

Crowd::Crowd(const EtcdOptions &options, int count, const Documents &documents) : m_options(options)
{
    for (int i = 0; i < count; ++i) {
        auto server = std::make_unique<Server>();
        server->name = nameOf(i);
        server->chance.seed(static_cast<unsigned>(i));
        for (const auto &[key, document] : documents)
            server->replica.edit(key, document);
        server->replica.signer = [name = server->name](Document *document) {
            document->by = {name, "engineer", "corvel", 1};
            document->atMs = QDateTime::currentMSecsSinceEpoch();
        };
        m_servers.push_back(std::move(server));
        m_queue.insert({0, i});
    }
    for (int i = 0; i < kThreads; ++i)
        m_threads.emplace_back([this] { work(); });
}

Crowd::~Crowd()
{
    stop();
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        m_ending = true;
    }
    m_changed.notify_all();
    for (std::thread &thread : m_threads)
        thread.join();
}

void Crowd::start()
{
    for (int i = 0; i < count(); ++i)
        start(i);
}

void Crowd::stop()
{
    for (int i = 0; i < count(); ++i)
        turn(i, false);
    for (int i = 0; i < count(); ++i)
        stop(i);
}

void Crowd::stop(int server)
{
    turn(server, false);
    while (m_servers[static_cast<std::size_t>(server)]->running)
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
}

void Crowd::turn(int server, bool on)
{
    m_servers[static_cast<std::size_t>(server)]->on = on;
    wake(server);
}

void Crowd::wake(int server)
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    Server &who = *m_servers[static_cast<std::size_t>(server)];
    who.woken = true;
    if (who.busy)
        return;
    m_queue.erase({who.dueMs, server});
    who.dueMs = 0;
    m_queue.insert({0, server});
    m_changed.notify_one();
}

void Crowd::work()
{
    std::unique_lock<std::mutex> lock(m_mutex);
    while (!m_ending) {
        const auto first = m_queue.begin();
        if (first == m_queue.end() || first->first > steadyMs()) {
            const qint64 pause = first == m_queue.end() ? 1000 : first->first - steadyMs();
            m_changed.wait_for(lock, std::chrono::milliseconds(pause));
            continue;
        }
        const int number = first->second;
        Server &server = *m_servers[static_cast<std::size_t>(number)];
        m_queue.erase(first);
        server.busy = true;
        server.woken = false;
        lock.unlock();
        const qint64 pause = step(number);
        lock.lock();
        server.busy = false;
        server.dueMs = server.woken ? 0 : steadyMs() + pause;
        m_queue.insert({server.dueMs, number});
    }
}

qint64 Crowd::step(int number)
{
    Server &server = *m_servers[static_cast<std::size_t>(number)];
    if (server.on) {
        if (!server.keeper)
            begin(number);
        return live(server);
    }
    server.keeper.reset();
    server.cluster.reset();
    server.inStep = false;
    server.running = false;
    return 3600000;
}

// CAMPAIGN_NOJITTER: a break, chance gives always the same.
void Crowd::begin(int number)
{
    Server &server = *m_servers[static_cast<std::size_t>(number)];
    server.running = true;
    server.cluster = etcdCluster(m_options);
    server.aliveMs = 0;
    const bool chance = getenv("CAMPAIGN_NOJITTER") == nullptr;
    const Surroundings surroundings{
        steadyMs, QDateTime::currentMSecsSinceEpoch,
        [&server, chance](quint32 below) { return chance ? quint32(server.chance() % below) : 0; },
        [](const QByteArray &) {}, [this, number] { wake(number); }};
    const KeeperSettings settings{Role::Server, {kSite, server.name, "default"}, server.name};
    server.keeper = std::make_unique<Keeper>(settings, server.replica, *server.cluster, surroundings);
    const qint64 startMs = steadyMs();
    const qint64 pause = server.keeper->work();
    server.firstMs = server.keeper->status().connected ? 0 : steadyMs() - startMs + pause;
}

qint64 Crowd::live(Server &server)
{
    const qint64 nowMs = steadyMs();
    signOfLife(server, nowMs);
    const qint64 pause = server.keeper->work();
    note(server);
    return std::max<qint64>(0, std::min(pause, server.aliveMs - steadyMs()));
}

void Crowd::signOfLife(Server &server, qint64 nowMs)
{
    if (nowMs < server.aliveMs)
        return;
    server.aliveMs = nowMs + kAliveMs;
    Alive alive;
    alive.version = "1";
    alive.configuration = "default";
    alive.inStep = server.inStep;
    alive.revision = server.keeper->status().revision;
    server.cluster->keepAlive(aliveKey(kSite, server.name), aliveText(alive), kLeaseSeconds);
}

void Crowd::note(Server &server)
{
    server.inStep = server.keeper->status().inStep;
    const auto document = server.replica.values.find(m_looked.first);
    if (document == server.replica.values.end())
        return;
    const auto value = document->second.values.find(m_looked.second);
    if (value != document->second.values.end())
        server.number = value->second.number;
}

int Crowd::inStep() const
{
    return static_cast<int>(std::count_if(m_servers.begin(), m_servers.end(),
                                          [](const auto &server) { return server->inStep.load(); }));
}

int Crowd::with(quint32 number) const
{
    return static_cast<int>(std::count_if(m_servers.begin(), m_servers.end(),
                                          [&](const auto &server) { return server->number == number; }));
}

double Crowd::starters() const
{
    std::array<int, Keeper::kStartJitterMs / 100 + 1> tenths{};
    for (const auto &server : m_servers) {
        const auto tenth = static_cast<std::size_t>(server->firstMs / 100);
        ++tenths[std::min(tenth, tenths.size() - 1)];
    }
    return *std::max_element(tenths.begin(), tenths.end()) / double(m_servers.size());
}
