// SPDX-License-Identifier: MIT
#include "fleet/service/crew.h"

#include "fleet/service/alive.h"
#include "fleet/service/say.h"
#include "ops/configurations.h"
#include "ops/store.h"

#include <QDateTime>
#include <QRandomGenerator>

#include <unistd.h>

#include <chrono>

namespace fleet {

Crew::Crew(Config config, const EtcdOptions &options, News news)
    : m_config(std::move(config)), m_cluster(etcdCluster(options)), m_gate(*m_cluster, steadyMs),
      m_site(m_gate, serversPrefix(m_config.site), steadyMs), m_tell(std::move(news)), m_desk(m_config)
{
}

Crew::~Crew()
{
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        m_stopping = true;
    }
    m_woken.notify_all();
    if (m_thread.joinable())
        m_thread.join();
}

void Crew::start()
{
    m_startedMs = QDateTime::currentMSecsSinceEpoch();
    m_thread = std::thread([this] { run(); });
}

void Crew::touched(const QByteArray &configuration)
{
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        m_touches.insert(configuration);
    }
    m_woken.notify_all();
}

void Crew::wake(const QByteArray &configuration)
{
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        m_wakes.insert(configuration);
    }
    m_woken.notify_all();
}

qint64 Crew::steadyMs()
{
    const auto now = std::chrono::steady_clock::now().time_since_epoch();
    return std::chrono::duration_cast<std::chrono::milliseconds>(now).count();
}

Surroundings Crew::surroundings(const QByteArray &configuration)
{
    return {steadyMs, QDateTime::currentMSecsSinceEpoch,
            [](quint32 below) { return QRandomGenerator::global()->bounded(below); },
            [configuration](const QByteArray &line) { say(configuration + ": " + line); },
            [this, configuration] { wake(configuration); }};
}

void Crew::run()
{
    std::unique_lock<std::mutex> lock(m_mutex);
    while (!m_stopping) {
        lock.unlock();
        const qint64 pause = round();
        lock.lock();
        m_woken.wait_for(lock, std::chrono::milliseconds(pause),
                         [this] { return m_stopping || !m_wakes.empty() || !m_touches.empty(); });
    }
    lock.unlock();
    m_posts.clear(); // their watches call wake()
    m_cluster->endLease();
}

// Everything that is due, once. Returns how long nothing else will be.
qint64 Crew::round()
{
    takeWakes();
    lookAtRoster();
    const bool more = openSome();
    qint64 next = std::min(m_rosterMs, m_aliveMs);
    for (const auto &post : m_posts) {
        next = std::min(next, post.second->work(steadyMs()));
        m_news = post.second->takeNews() || m_news;
    }
    signOfLife();
    if (m_news && steadyMs() >= m_reportedMs + reportMs())
        report();
    else if (m_news)
        next = std::min(next, m_reportedMs + reportMs());
    return more ? 0 : std::max<qint64>(0, std::min(next, m_aliveMs) - steadyMs());
}

void Crew::takeWakes()
{
    std::set<QByteArray> wakes, touches;
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        wakes.swap(m_wakes);
        touches.swap(m_touches);
    }
    if (touches.count(QByteArray()) > 0 && m_config.role == Role::Server)
        m_rosterMs = 0;
    m_ptpDue = m_ptpDue || !touches.empty();
    for (const auto &[configuration, post] : m_posts) {
        if (touches.count(configuration) > 0)
            post->touched();
        if (wakes.count(configuration) > 0)
            post->woken();
    }
}

void Crew::lookAtRoster()
{
    if (steadyMs() < m_rosterMs)
        return;
    m_rosterMs = steadyMs() + kRosterMs + QRandomGenerator::global()->bounded(static_cast<int>(kRosterMs));
    if (m_config.role == Role::Server)
        return assign(serverAssignments(m_config));
    const bool found = m_desk.look(cluster());
    if (found)
        assign(m_desk.assignments());
    if (m_assignments.empty()) // nobody yet: soon again
        m_rosterMs = steadyMs() + kFirstRosterMs;
    if (found != m_looked)
        say(found ? QByteArray("looking for servers")
                  : "the cluster is away: " + QByteArray::fromStdString(m_gate.reason()));
    m_looked = found;
}

// What is no longer wanted goes first: another server may get its name.
void Crew::assign(Assignments assignments)
{
    std::set<QByteArray> kept;
    for (const Assignment &assignment : assignments) {
        const auto post = m_posts.find(assignment.configuration);
        if (post != m_posts.end() && post->second->assignment() == assignment)
            kept.insert(assignment.configuration);
    }
    for (auto post = m_posts.begin(); post != m_posts.end();)
        post = kept.count(post->first) > 0 ? std::next(post) : m_posts.erase(post);
    m_assignments = std::move(assignments);
    m_toOpen.clear();
    m_unopened.clear();
    m_news = true;
    for (const Assignment &assignment : m_assignments) {
        if (kept.count(assignment.configuration) == 0)
            m_toOpen.push_back(assignment);
    }
}

// False when all are open.
bool Crew::openSome()
{
    for (int count = 0; count < kOpenAtOnce && !m_toOpen.empty(); ++count) {
        open(m_toOpen.back());
        m_toOpen.pop_back();
        m_news = true;
    }
    return !m_toOpen.empty();
}

void Crew::open(const Assignment &assignment)
{
    auto post = Post::open(assignment, m_config, cluster(), surroundings(assignment.configuration));
    if (post) {
        m_complained.erase(assignment.configuration);
        m_posts[assignment.configuration] = std::move(*post);
        return;
    }
    m_unopened.insert(assignment.configuration);
    if (m_complained.insert(assignment.configuration).second)
        say(post.failure().text);
}

Alive Crew::ownAlive() const
{
    Alive alive;
    alive.version = CORVEL_VERSION;
    alive.configuration = ops::defaultConfiguration();
    alive.startedMs = m_startedMs;
    alive.inStep = !m_posts.empty();
    for (const auto &post : m_posts) {
        const KeeperStatus status = post.second->status().status;
        alive.inStep = alive.inStep && status.inStep;
        if (post.first == alive.configuration)
            alive.revision = status.revision;
        alive.waiting += status.waiting;
        alive.refused += status.refused;
    }
    alive.ptp = m_ptp.seen();
    alive.interfaces = aliveInterfaces(ops::machinePicture());
    return alive;
}

void Crew::signOfLife()
{
    if (m_config.role == Role::Desk) {
        m_aliveMs = steadyMs() + kRosterMs;
        return;
    }
    if (heardRevision() != m_saidRevision) // somebody may be waiting for that
        m_aliveMs = std::min(m_aliveMs, m_saidMs + kSoonMs);
    if (steadyMs() < m_aliveMs)
        return;
    m_news = true; // what is seen of PTP changes by itself
    m_saidMs = steadyMs();
    m_saidRevision = heardRevision();
    m_aliveMs = m_saidMs + kAliveMs;
    lookAtPtp();
    const std::string key = aliveKey(m_config.site, m_config.name);
    const Outcome outcome = m_gate.keepAlive(key, aliveText(ownAlive()), kLeaseSeconds);
    if (outcome == Outcome::Done)
        return tellInUse();
    for (const auto &post : m_posts)
        post.second->doubt();
}

// Of all that is in step.
std::int64_t Crew::heardRevision() const
{
    std::int64_t sum = 0;
    for (const auto &post : m_posts) {
        const KeeperStatus status = post.second->status().status;
        sum += status.inStep ? status.revision : 0;
    }
    return sum;
}

void Crew::lookAtPtp()
{
    if (!m_ptpDue)
        return;
    const auto values = ops::Store().read();
    m_ptpDue = !values;
    if (values)
        m_ptp.want(ops::firstPtpTarget(*values));
}

void Crew::tellInUse()
{
    const QByteArray inUse = ops::defaultConfiguration();
    if (inUse == m_told)
        return;
    Put put;
    put.key = inUseKey(m_config.site, m_config.name);
    put.value = inUse.toStdString();
    if (m_gate.commit({put}, nullptr) == Outcome::Done)
        m_told = inUse;
}

void Crew::report()
{
    FleetStatus status;
    status.role = m_config.role;
    status.site = m_config.site;
    status.name = m_config.name;
    status.pid = getpid();
    status.unopened = static_cast<int>(m_unopened.size());
    if (m_config.role == Role::Server)
        status.ptp = m_ptp.seen();
    for (const auto &post : m_posts)
        status.configurations.push_back(post.second->status());
    m_tell(status);
    m_news = false;
    m_reportedMs = steadyMs();
}

qint64 Crew::reportMs() const
{
    return m_posts.size() > kMany ? kLongReportMs : kReportMs;
}

} // namespace fleet
