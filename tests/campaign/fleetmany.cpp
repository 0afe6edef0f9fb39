// SPDX-License-Identifier: MIT
//
// As many servers as the amount says, with eight channels each, against three real members of etcd, and what
// happens to a plant of that size: all put up what they have, one value is changed on all of them by
// corvel-fleet, one server is away while the cluster throws its old revisions away, all are switched on at
// once, all members are started anew. Each server is in step after each of these. CAMPAIGN_NOJITTER: see
// fleetcrowd.cpp.
#include "campaign.h"
#include "fleet/machine.h"
#include "fleet/storereplica.h"
#include "fleetcrowd.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QFile>

#include <sys/resource.h>

namespace {

const std::string kKey = "kwx/internal0/ipconfig";
const QByteArray kValue = "TransmitRemotePort";
constexpr int kPatienceMs = 600000;
constexpr double kMassGoal = 60;    // seconds for all servers
constexpr double kMostAtOnce = 0.4; // of few servers; of many it is a twentieth

std::string contents(const QString &name)
{
    QFile file(name);
    return file.open(QIODevice::ReadOnly) ? file.readAll().toStdString() : std::string();
}

double residentMiB(qint64 pid)
{
    QFile status(QStringLiteral("/proc/%1/status").arg(pid));
    if (!status.open(QIODevice::ReadOnly))
        return 0;
    for (const QByteArray &line : status.readAll().split('\n')) {
        if (line.startsWith("VmRSS:"))
            return line.mid(6).simplified().split(' ').value(0).toDouble() / 1024;
    }
    return 0;
}

class Many {
public:
    explicit Many(int count) : m_count(count) {}

    int run()
    {
        if (!prepare())
            return campaign::finish(m_problems, "the plant did not come up");
        begin();
        massChange(5006, QStringLiteral("sim-*"));
        awayWhileCompacted();
        look();
        restartAll();
        if (campaign::isLong())
            restartMembers();
        m_crowd.reset();
        return campaign::finish(m_problems, "%s", m_figures.constData());
    }

private:
    bool prepare()
    {
        rlimit files{};
        getrlimit(RLIMIT_NOFILE, &files);
        files.rlim_cur = files.rlim_max;
        setrlimit(RLIMIT_NOFILE, &files); // the members get it from here
        if (!m_plant.start() || !m_plant.addDesk("desk-1", {QStringLiteral("*")})) {
            m_problems.add("no plant: %s", m_plant.error().constData());
            return false;
        }
        m_desk = std::make_unique<Machine>(m_plant, "desk", "desk-1", "[follow]\nservers = sim-*\n");
        fleet::EtcdOptions options;
        for (const QByteArray &endpoint : m_plant.endpoints().split(','))
            options.endpoints.push_back(endpoint.toStdString());
        options.tls = {contents(m_plant.file(QStringLiteral("ca.crt"))),
                       contents(m_plant.file(QStringLiteral("root.crt"))),
                       contents(m_plant.file(QStringLiteral("root.key")))};
        m_crowd = std::make_unique<Crowd>(options, m_count, usualServer());
        m_crowd->look(kKey, kValue);
        return m_problems.count() == 0;
    }
    // What corvelctl makes of eight channels in use.
    fleet::Documents usualServer()
    {
        for (const char *words :
             {"server channels=8",
              "0-7/video tx.dst=239.1.1.1:5004 tx.src=10.0.0.1:5004 rx.dst=239.1.2.1:5004",
              "0-7/audio/* tx.dst=239.2.1.1:5004 rx.dst=239.2.2.1:5004",
              "0-7/anc tx.dst=239.3.1.1:5004 rx.dst=239.3.2.1:5004"}) {
            const QStringList list = QString::fromLatin1(words).split(QLatin1Char(' '));
            m_desk->ctl({}, QStringList{QStringLiteral("set"), QStringLiteral("--force")} + list);
        }
        qputenv("XDG_CONFIG_HOME", m_desk->path(QString()).toUtf8());
        fleet::Documents documents;
        auto store = fleet::StoreReplica::open("default", false, "desk-1");
        if (!store || !(*store)->read(&documents) || documents.count(kKey) == 0)
            m_problems.add("no settings of a usual server");
        return documents;
    }
    void add(const QByteArray &figure)
    {
        puts(figure.constData()); // the long form takes its time
        fflush(stdout);
        m_figures += (m_figures.isEmpty() ? "" : ", ") + figure;
    }
    static QByteArray seconds(const QElapsedTimer &timer)
    {
        return QByteArray::number(double(timer.elapsed()) / 1000, 'f', 1) + " s";
    }
    void waitFor(const char *what, const std::function<bool()> &condition)
    {
        if (!eventually(condition, kPatienceMs))
            m_problems.add("%s: %d of %d in step", what, m_crowd->inStep(), m_count);
    }
    void waitForAll(const char *what)
    {
        waitFor(what, [this] { return m_crowd->inStep() == m_count; });
    }
    void begin()
    {
        QElapsedTimer timer;
        timer.start();
        m_crowd->start();
        waitForAll("the first start");
        add(QByteArray::number(m_count) + " servers, all up for the first time after " + seconds(timer));
        weigh();
    }
    void weigh()
    {
        const QByteArrayList fields =
            m_plant.etcdctl({QStringLiteral("endpoint"), QStringLiteral("status")}).out.split(',');
        double members = 0;
        for (int node = 0; node < Plant::kNodes; ++node)
            members = std::max(members, residentMiB(m_plant.nodePid(node)));
        add("database" + fields.value(3) + ", a member " + QByteArray::number(members, 'f', 0) +
            " MiB, this program " + QByteArray::number(residentMiB(getpid()), 'f', 0) + " MiB");
    }
    void look()
    {
        for (const char *command : {"status", "check"}) {
            QElapsedTimer timer;
            timer.start();
            const ProgramResult result = m_desk->fleet({QLatin1String(command)});
            add(QByteArray("corvel-fleet ") + command + " in " + seconds(timer));
            if (result.code > 1)
                m_problems.add("corvel-fleet %s: %s", command, result.err.right(300).constData());
        }
    }
    void massChange(quint32 number, const QString &where)
    {
        QElapsedTimer timer;
        timer.start();
        QProcess tool;
        tool.setProcessEnvironment(m_desk->environment());
        tool.setProcessChannelMode(QProcess::MergedChannels);
        tool.start(QStringLiteral(CORVEL_BIN_DIR "/corvel-fleet"),
                   {QStringLiteral("set"), QStringLiteral("0/video"),
                    QStringLiteral("tx.dst-port=%1").arg(number), QStringLiteral("--where"), where,
                    QStringLiteral("--yes")});
        QByteArray said;
        waitFor("the mass change", [&] {
            said += tool.readAll();
            return tool.state() == QProcess::NotRunning;
        });
        if (tool.exitCode() != 0)
            return m_problems.add("corvel-fleet set: %s", said.right(300).constData());
        const QByteArray toolTook = seconds(timer);
        waitFor("the mass change", [&] { return m_crowd->with(number) == m_count; });
        add("one value changed on all by one command in " + toolTook + ", everywhere after " +
            seconds(timer));
        if (campaign::isLong() && double(timer.elapsed()) / 1000 > kMassGoal)
            m_problems.add("a change of all took longer than %.0f s", kMassGoal);
    }
    void awayWhileCompacted()
    {
        const QString name = QString::fromLatin1(Crowd::nameOf(0));
        m_crowd->stop(0);
        for (const char *port : {"5007", "5008"}) {
            const ProgramResult result =
                m_desk->fleet({QStringLiteral("set"), QStringLiteral("0/video"),
                               QStringLiteral("tx.dst-port=") + QLatin1String(port),
                               QStringLiteral("--where"), name, QStringLiteral("--yes")});
            if (result.code != 0)
                m_problems.add("corvel-fleet set: %s", (result.out + result.err).right(300).constData());
        }
        const QByteArray json = m_plant
                                    .etcdctl({QStringLiteral("get"), QStringLiteral("x"),
                                              QStringLiteral("-w"), QStringLiteral("json")})
                                    .out;
        const int at = json.indexOf("\"revision\":") + 11;
        const QByteArray revision = json.mid(at, json.indexOf(',', at) - at);
        if (m_plant.etcdctl({QStringLiteral("compact"), QString::fromLatin1(revision)}).code != 0)
            m_problems.add("not compacted");
        QElapsedTimer timer;
        timer.start();
        m_crowd->start(0);
        waitFor("compaction", [this] { return m_crowd->with(5008) == 1; });
        waitForAll("compaction");
        add("a server that was away while old revisions went caught up in " + seconds(timer));
    }
    void restartAll()
    {
        QElapsedTimer timer;
        m_crowd->stop();
        timer.start();
        m_crowd->start();
        waitForAll("the restart of all");
        add("all started at once: in step after " + seconds(timer) + ", at most " +
            QByteArray::number(100 * m_crowd->starters(), 'f', 0) +
            " % of them in the same tenth of a second");
        if (m_crowd->starters() > kMostAtOnce)
            m_problems.add("a stampede");
        weigh();
    }
    void restartMembers()
    {
        for (int node = 0; node < Plant::kNodes; ++node)
            m_plant.killNode(node);
        eventually([this] { return m_crowd->inStep() == 0; }, 30000);
        for (int node = 0; node < Plant::kNodes; ++node)
            m_plant.startNode(node);
        QElapsedTimer timer;
        timer.start();
        waitForAll("the restart of the members");
        add("members started anew: in step after " + seconds(timer));
    }

    const int m_count;
    campaign::Problems m_problems;
    Plant m_plant;
    std::unique_ptr<Machine> m_desk;
    std::unique_ptr<Crowd> m_crowd;
    QByteArray m_figures;
};

} // namespace

int main(int argc, char **argv)
{
    const QCoreApplication application(argc, argv);
    return Many(static_cast<int>(campaign::amount(30))).run();
}
