// SPDX-License-Identifier: MIT
//
// A server is cut from the cluster by its network card going down, both sides are edited, a tenth of it on
// the same channels, then the card is up again. Afterwards both stores are equal, on the same channels the
// server's edits stand, and each of the desk's is kept as a conflict: exactly those. The
// cut takes ten minutes in the long form. CAMPAIGN_HEALED: a break, the card stays up.
#include "fleetsite.h"

#include <QCoreApplication>
#include <QElapsedTimer>

namespace {

constexpr int kLongCutMs = 600000;
constexpr int kLongEqualMs = 5000;

bool run(const QStringList &words)
{
    return runProgram(words.front(), words.mid(1)).code == 0;
}

QStringList words(const QString &line)
{
    return line.split(QLatin1Char(' '));
}

// A network namespace with a cable to ours; the members' addresses are on this side.
class FarRoom {
public:
    explicit FarRoom(const QByteArrayList &hosts)
    {
        m_keeper.start(QStringLiteral("unshare"), words(QStringLiteral("-n sleep infinity")));
        m_keeper.waitForStarted();
        const QString pid = QString::number(m_keeper.processId());
        m_launcher = words(QStringLiteral("nsenter -n -t ") + pid);
        const auto room = [](const QString &who) {
            return QFile::symLinkTarget(QStringLiteral("/proc/%1/ns/net").arg(who));
        };
        m_up = eventually([&] { return room(pid) != room(QStringLiteral("self")); }) &&
               run(words(QStringLiteral("ip link add cable0 type veth peer name cable1 netns ") + pid)) &&
               run(words(QStringLiteral("ip addr add 10.77.1.1/24 dev cable0"))) && plug(true) &&
               run(m_launcher + words(QStringLiteral("ip addr add 10.77.1.2/24 dev cable1"))) &&
               run(m_launcher + words(QStringLiteral("ip link set cable1 up"))) &&
               run(m_launcher + words(QStringLiteral("ip route add default via 10.77.1.1")));
        for (const QByteArray &host : hosts)
            m_up = run(words(QStringLiteral("ip addr add %1/32 dev lo").arg(QLatin1String(host)))) && m_up;
    }
    ~FarRoom()
    {
        m_keeper.kill();
        m_keeper.waitForFinished();
    }
    bool up() const { return m_up; }
    bool plug(bool in) const
    {
        return run(words(QStringLiteral("ip link set cable0 %1").arg(QLatin1String(in ? "up" : "down"))));
    }
    const QStringList &launcher() const { return m_launcher; }

private:
    QProcess m_keeper;
    QStringList m_launcher;
    bool m_up = false;
};

class Cut {
public:
    Cut(FleetSite &site, const FarRoom &room, campaign::Problems &problems)
        : m_site(site), m_room(room), m_problems(problems), m_edits(static_cast<int>(campaign::amount(100))),
          m_shared(m_edits / 10)
    {
    }

    int run()
    {
        if (getenv("CAMPAIGN_HEALED") == nullptr)
            m_room.plug(false);
        editBothSides();
        const bool away = eventually(
            [this] { return m_site.machine(FleetSite::kServer).status().contains("\"connected\":false"); });
        if (!away)
            m_problems.add("the server did not notice the cut");
        m_room.plug(true);
        const qint64 equalMs = m_site.untilEqual("the cut");
        if (campaign::isLong() && equalMs > kLongEqualMs)
            m_problems.add("equal only after %lld ms", static_cast<long long>(equalMs));
        const int conflicts = lookAtConflicts();
        return campaign::finish(
            m_problems,
            "%d edits on each side of a cut of %.0f s, %d on the same channels, equal %.1f s after it, "
            "%d conflicts, slowest local edit %.1f ms",
            m_edits, m_cutSeconds, m_shared, double(equalMs) / 1000, conflicts, m_site.slowestMs());
    }

private:
    // The server's channels are 0 and up, the desk's overlap with the last of them.
    void editBothSides()
    {
        QElapsedTimer timer;
        timer.start();
        const int pauseMs = campaign::isLong() ? kLongCutMs / m_edits : 0;
        for (int i = 0; i < m_edits; ++i) {
            m_site.edit(FleetSite::kServer, i);
            const bool same = i >= m_edits - m_shared;
            if (same)
                m_overruled.append(QByteArray::number(m_site.lastNumber() + 1));
            editAtDesk(i, same);
            QTest::qWait(static_cast<int>(std::max<qint64>(0, i * qint64(pauseMs) - timer.elapsed())));
        }
        m_cutSeconds = double(timer.elapsed()) / 1000;
    }
    void editAtDesk(int i, bool same) { m_site.edit(FleetSite::kDesk, same ? i : m_edits + i, !same); }

    // As they may still be on their way up: until there are as many as there have to be.
    int lookAtConflicts()
    {
        eventually([this] { return m_site.conflicts().size() >= m_overruled.size(); }, 10000);
        const QByteArrayList kept = m_site.conflicts();
        if (kept.size() != m_overruled.size())
            m_problems.add("%d conflicts instead of %d", kept.size(), m_overruled.size());
        for (const QByteArray &number : m_overruled) {
            const QByteArray value = "\"value\":" + number + '}';
            const auto tells = [&](const QByteArray &conflict) {
                return conflict.contains(value) && conflict.contains("desk-1");
            };
            if (std::none_of(kept.begin(), kept.end(), tells))
                m_problems.add("the desk's edit %s is among no conflicts", number.constData());
        }
        return kept.size();
    }

    FleetSite &m_site;
    const FarRoom &m_room;
    campaign::Problems &m_problems;
    const int m_edits;
    const int m_shared;
    double m_cutSeconds = 0;
    QByteArrayList m_overruled;
};

} // namespace

int main(int argc, char **argv)
{
    const QCoreApplication application(argc, argv);
    campaign::Problems problems;
    FleetSite site(problems);
    const QByteArrayList hosts{"10.77.0.1", "10.77.0.2", "10.77.0.3"};
    const FarRoom room(hosts);
    if (!room.up()) {
        puts("SKIPPED: no second network namespace");
        return 77;
    }
    site.plant().useHosts(hosts);
    if (!site.start(room.launcher()))
        return campaign::finish(problems, "the plant did not come up");
    return Cut(site, room, problems).run();
}
