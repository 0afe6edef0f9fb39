// SPDX-License-Identifier: MIT
#include "fleetsite.h"

#include <QCoreApplication>
#include <QElapsedTimer>

namespace {

constexpr int kAnswerMs = 60000;
// Only ends what hangs. In the form that tries the breaks everything is about to.
int patienceMs()
{
    return qEnvironmentVariable("CAMPAIGN_FORM") == QLatin1String("breaks") ? 10000 : 60000;
}

} // namespace

Hand::Hand(const Machine &machine, const QString &configuration)
{
    m_process.setProcessEnvironment(machine.environment());
    m_process.setProcessChannelMode(QProcess::ForwardedErrorChannel);
    m_process.start(QStringLiteral(CORVEL_BUILD_DIR "/tests/bin/fleethand"),
                    configuration.isEmpty() ? QStringList() : QStringList(configuration));
    m_process.waitForStarted();
}

Hand::~Hand()
{
    m_process.closeWriteChannel();
    m_process.waitForFinished();
}

QByteArray Hand::ask(const QByteArray &line)
{
    m_process.write(line + '\n');
    return answer();
}

QByteArray Hand::answer()
{
    while (!m_process.canReadLine()) {
        if (!m_process.waitForReadyRead(kAnswerMs))
            return {};
    }
    return m_process.readLine().trimmed();
}

qint64 Hand::editUs(int channel, int count, quint32 number)
{
    const QByteArray answer = ask("edit " + QByteArray::number(channel) + ' ' + QByteArray::number(count) +
                                  ' ' + QByteArray::number(number));
    return answer.startsWith("edited ") ? answer.mid(7).toLongLong() : -1;
}

void Hand::await(int channel, quint32 number)
{
    m_process.write("await " + QByteArray::number(channel) + ' ' + QByteArray::number(number) + '\n');
    m_process.waitForBytesWritten();
}

bool Hand::seen()
{
    return answer() == "seen";
}

std::map<int, QByteArray> Hand::dump()
{
    std::map<int, QByteArray> seen;
    const QByteArrayList words = ask("dump").split(' ');
    for (int i = 0; i + 1 < words.size(); i += 2)
        seen[words.at(i).toInt()] = words.at(i + 1);
    return seen;
}

int Hand::repeats()
{
    return ask("repeats").mid(9).toInt();
}

bool FleetSite::start(const QStringList &serverLauncher)
{
    if (!m_plant.start() || !m_plant.addServer("lon-1") ||
        !m_plant.addDesk("desk-1", {QStringLiteral("lon-1")})) {
        m_problems.add("no plant: %s", m_plant.error().constData());
        return false;
    }
    m_server = std::make_unique<Machine>(m_plant, "server", "lon-1");
    m_desk = std::make_unique<Machine>(m_plant, "desk", "desk-1", "[follow]\nservers = lon-*\n");
    m_server->startThrough(serverLauncher);
    m_hands[kServer] = std::make_unique<Hand>(*m_server, QString());
    edit(kServer, 0);
    m_server->start();
    m_desk->start();
    const QString copy = m_desk->path(QStringLiteral("corvel/lon-1.rkcfg"));
    if (!eventually([&] { return QFile::exists(copy); }, patienceMs())) {
        m_problems.add("no copy at the desk: %s%s", m_server->said().constData(), m_desk->said().constData());
        return false;
    }
    m_hands[kDesk] = std::make_unique<Hand>(*m_desk, QStringLiteral("lon-1"));
    untilEqual("the start");
    return m_problems.count() == 0;
}

void FleetSite::edit(int side, int channel, bool counts)
{
    const qint64 us = hand(side).editUs(channel, 1, ++m_number);
    if (us < 0)
        m_problems.add("edit %u was refused by the %s's store", m_number,
                       side == kServer ? "server" : "desk");
    m_slowestUs = std::max(m_slowestUs, us);
    ++m_edits;
    if (counts)
        m_expected[channel] = QByteArray::number(m_number);
}

bool FleetSite::equal()
{
    return hand(kServer).dump() == m_expected && hand(kDesk).dump() == m_expected;
}

qint64 FleetSite::untilEqual(const char *after)
{
    QElapsedTimer timer;
    timer.start();
    qint64 tookMs = 0;
    const auto looked = [&] { // the looking must not be what keeps the machine busy
        const qint64 startMs = timer.elapsed();
        const bool same = equal();
        tookMs = timer.elapsed();
        if (!same)
            QTest::qWait(static_cast<int>(3 * (tookMs - startMs)));
        return same;
    };
    if (!eventually(looked, patienceMs()))
        tellDifference(after);
    return tookMs;
}

void FleetSite::tellDifference(const char *after)
{
    for (int side = kServer; side <= kDesk; ++side) {
        std::map<int, QByteArray> seen = hand(side).dump();
        for (const auto &[channel, number] : m_expected) {
            if (seen[channel] != number)
                m_problems.add("after %s: channel %d of side %d is %s instead of %s", after, channel, side,
                               seen[channel].constData(), number.constData());
        }
    }
    m_problems.add("after %s: the services said\n%s%s", after, m_server->said().right(2000).constData(),
                   m_desk->said().right(2000).constData());
}

QByteArrayList FleetSite::conflicts() const
{
    QByteArrayList values;
    const QByteArray all =
        m_plant
            .etcdctl({QStringLiteral("get"), QStringLiteral("--prefix"), QStringLiteral("--print-value-only"),
                      QStringLiteral("/corvel/v1/london/conflicts/lon-1/")})
            .out;
    for (const QByteArray &line : all.split('\n')) {
        if (!line.trimmed().isEmpty())
            values.append(line);
    }
    return values;
}

int onSite(int argc, char **argv, const std::function<int(FleetSite &, campaign::Problems &)> &work)
{
    const QCoreApplication application(argc, argv);
    campaign::Problems problems;
    FleetSite site(problems);
    return site.start() ? work(site, problems) : campaign::finish(problems, "the plant did not come up");
}
