// SPDX-License-Identifier: MIT
//
// What can happen to the members of a cluster, under somebody who edits at a server and somebody at a desk
// ten times a second each: the leader killed every ten seconds, all three killed at once, one member's disk
// full, one member slow. After each of them both stores have every edit, soon; and no edit ever waits for
// the network. CAMPAIGN_DEAF: a break, the desk's service is stopped and not started again.
#include "fleetsite.h"

#include <QDir>
#include <QElapsedTimer>

#include <csignal>
#include <sys/mount.h>

namespace {

constexpr int kChannels = 4; // of each side
constexpr int kPauseMs = 100;
constexpr int kLongEqualMs = 5000;
constexpr double kLongestEditMs = 1100;
constexpr int kLeaderMs = 10000;
constexpr int kBackMs = 2000;         // until a killed member is started again
constexpr char kDisk[] = "size=160m"; // etcd takes 64 MiB of it at once for its log

class Storm {
public:
    Storm(FleetSite &site, campaign::Problems &problems) : m_site(site), m_problems(problems) {}

    int run(int leaderMs)
    {
        const bool isLong = campaign::isLong();
        killLeaders(leaderMs);
        killAll();
        slowMember(isLong ? 60000 : 1000);
        fullDisk(isLong ? 60000 : 500);
        if (isLong && m_site.slowestMs() > kLongestEditMs)
            m_problems.add("an edit took %.0f ms", m_site.slowestMs());
        const int repeats =
            m_site.hand(FleetSite::kServer).repeats() + m_site.hand(FleetSite::kDesk).repeats();
        if (repeats > 0)
            m_problems.add("%d values were stored twice", repeats);
        return campaign::finish(
            m_problems,
            "%d leaders killed, all three killed %d times, a slow member, %s; %ld edits, 0 lost; "
            "equal %.1f s after it at the latest; slowest local edit %.1f ms",
            m_leaders, m_all, m_disk.constData(), m_site.edits(), double(m_equalMs) / 1000,
            m_site.slowestMs());
    }

private:
    // Edits on both sides for so long.
    void edit(int ms)
    {
        QElapsedTimer timer;
        timer.start();
        do {
            const int channel = static_cast<int>(campaign::draw(kChannels));
            m_site.edit(FleetSite::kServer, channel);
            m_site.edit(FleetSite::kDesk, kChannels + channel);
            QTest::qWait(kPauseMs);
        } while (timer.elapsed() < ms && m_problems.count() < 10);
    }
    void over(const char *what)
    {
        if (getenv("CAMPAIGN_DEAF") != nullptr)
            kill(static_cast<pid_t>(m_site.machine(FleetSite::kDesk).pid()), SIGSTOP);
        const qint64 ms = m_site.untilEqual(what);
        m_equalMs = std::max(m_equalMs, ms);
        if (campaign::isLong() && ms > kLongEqualMs)
            m_problems.add("equal only %lld ms after %s", static_cast<long long>(ms), what);
    }
    void killLeaders(int ms)
    {
        QElapsedTimer timer;
        timer.start();
        do {
            const int leader = m_site.plant().leader();
            if (leader < 0)
                return m_problems.add("no leader");
            m_site.plant().killNode(leader);
            ++m_leaders;
            edit(kBackMs);
            m_site.plant().startNode(leader);
            edit(ms > kLeaderMs ? kLeaderMs - kBackMs : kPauseMs);
            wellAgain();
        } while (timer.elapsed() < ms && m_problems.count() < 10);
        over("the leader was killed");
    }
    void wellAgain()
    {
        if (!eventually([this] { return m_site.plant().healthy(); }))
            m_problems.add("the members did not find each other again");
    }
    void killAll()
    {
        const int times = campaign::isLong() ? 6 : 1;
        for (; m_all < times && m_problems.count() < 10; ++m_all) {
            for (int node = 0; node < Plant::kNodes; ++node)
                m_site.plant().killNode(node);
            edit(campaign::isLong() ? kBackMs * 2 : kPauseMs * 3);
            for (int node = 0; node < Plant::kNodes; ++node)
                m_site.plant().startNode(node);
            wellAgain();
            over("all three were killed");
        }
    }
    // Stopped three quarters of the time: where the system can delay packets nothing else would be seen.
    void slowMember(int ms)
    {
        const int node = m_site.plant().leader();
        if (node < 0)
            return m_problems.add("no leader");
        const auto pid = static_cast<pid_t>(m_site.plant().nodePid(node));
        QElapsedTimer timer;
        timer.start();
        while (timer.elapsed() < ms && m_problems.count() < 10) {
            kill(pid, SIGSTOP);
            edit(kPauseMs * 3);
            kill(pid, SIGCONT);
            edit(kPauseMs);
        }
        over("a member was slow");
    }
    // Its data lie on a file system of their own, which is then filled.
    void fullDisk(int ms)
    {
        const int node = std::max(0, m_site.plant().leader());
        const QString data = m_site.plant().file(QStringLiteral("node%1.data").arg(node));
        m_site.plant().killNode(node);
        const QString aside = data + QStringLiteral(".aside");
        if (!QDir().rename(data, aside) || !QDir().mkpath(data) ||
            mount("tmpfs", qPrintable(data), "tmpfs", 0, kDisk) != 0) {
            m_disk = "no full disk, as nothing can be mounted here";
            QDir().rmdir(data);
            QDir().rename(aside, data);
            m_site.plant().startNode(node);
            return wellAgain();
        }
        runProgram(QStringLiteral("cp"), {QStringLiteral("-a"), aside + QStringLiteral("/member"), data});
        m_site.plant().startNode(node);
        wellAgain();
        fill(data + QStringLiteral("/filler"), ms, node);
        m_site.plant().killNode(node);
        umount2(qPrintable(data), MNT_DETACH);
    }
    void fill(const QString &name, int ms, int node)
    {
        QFile filler(name);
        if (!filler.open(QIODevice::WriteOnly | QIODevice::Unbuffered))
            return m_problems.add("no filler");
        const QByteArray block(64 * 1024, 'x');
        while (filler.write(block) == block.size()) {
        }
        edit(ms);
        const bool lives = m_site.plant().nodePid(node) != 0;
        filler.remove();
        if (!lives)
            m_site.plant().startNode(node);
        m_disk = lives ? "a full disk that its member lived through" : "a full disk that ended its member";
        wellAgain();
        over("a disk was full");
    }

    FleetSite &m_site;
    campaign::Problems &m_problems;
    int m_leaders = 0;
    int m_all = 0;
    qint64 m_equalMs = 0;
    QByteArray m_disk;
};

} // namespace

int main(int argc, char **argv)
{
    return onSite(argc, argv, [](FleetSite &site, campaign::Problems &problems) {
        return Storm(site, problems).run(static_cast<int>(campaign::amount(1)) * 1000);
    });
}
