// SPDX-License-Identifier: MIT
#include "ptpnet.h"

#include <QDir>
#include <QFile>
#include <QtTest>

#include <unistd.h>

namespace {

constexpr int patienceMs = 30000; // generous: a loaded machine is no failure

// "S" of "123 (name) S 45 ...": the state; the parent follows.
QList<QByteArray> statOf(pid_t pid)
{
    QFile file(QStringLiteral("/proc/%1/stat").arg(pid));
    if (!file.open(QIODevice::ReadOnly))
        return {};
    const QByteArray text = file.readAll();
    const int open = text.indexOf('(');
    const int close = text.lastIndexOf(')');
    QList<QByteArray> fields = text.mid(close + 2).split(' ');
    fields.prepend(text.mid(open + 1, close - open - 1));
    return fields;
}

QByteArray askClock(const QString &socket, unsigned domain, const QString &command)
{
    return runCommand(QStringLiteral("pmc"),
                      {QStringLiteral("-u"), QStringLiteral("-b"), QStringLiteral("0"), QStringLiteral("-d"),
                       QString::number(domain), QStringLiteral("-s"), socket, QStringLiteral("-i"),
                       socket + QStringLiteral(".pmc"), command});
}

// Which network namespace a process is in, as the kernel names it.
QByteArray networkOf(qint64 pid)
{
    char name[64] = "";
    const QByteArray path = "/proc/" + QByteArray::number(pid) + "/ns/net";
    return readlink(path.constData(), name, sizeof name - 1) > 0 ? QByteArray(name) : QByteArray();
}

} // namespace

QByteArray runCommand(const QString &program, const QStringList &arguments)
{
    QProcess process;
    process.setProcessChannelMode(QProcess::MergedChannels);
    process.start(program, arguments);
    if (!process.waitForFinished(patienceMs) || process.exitCode() != 0)
        qFatal("%s %s: %s", qPrintable(program), qPrintable(arguments.join(QLatin1Char(' '))),
               process.readAll().constData());
    return process.readAll();
}

std::unique_ptr<QProcess> startCommand(const QString &program, const QStringList &arguments,
                                       const QString &output)
{
    auto process = std::make_unique<QProcess>();
    QStringList all = {QStringLiteral("--pdeathsig"), QStringLiteral("KILL"), QStringLiteral("--"), program};
    all += arguments;
    process->setProcessChannelMode(QProcess::MergedChannels);
    process->setStandardOutputFile(output);
    process->start(QStringLiteral("setpriv"), all);
    if (!process->waitForStarted(patienceMs))
        qFatal("cannot start %s", qPrintable(program));
    return process;
}

ToolResult runTool(const char *name, const QString &arguments)
{
    QProcess process;
    process.start(QStringLiteral(CORVEL_BIN_DIR "/") + QLatin1String(name),
                  arguments.split(QLatin1Char(' '), Qt::SkipEmptyParts));
    if (!process.waitForFinished(90000))
        return {};
    return {process.exitCode(), process.readAllStandardOutput(), process.readAllStandardError()};
}

std::vector<pid_t> childrenNamed(pid_t parent, const QByteArray &name)
{
    struct Entry {
        pid_t pid;
        QList<QByteArray> stat;
    };
    // One look at all processes: with a hundred children a look for each takes seconds.
    std::vector<Entry> all;
    for (const QString &entry : QDir(QStringLiteral("/proc")).entryList(QDir::Dirs)) {
        const pid_t pid = entry.toInt();
        const QList<QByteArray> stat = pid > 0 ? statOf(pid) : QList<QByteArray>();
        if (stat.size() >= 3)
            all.push_back({pid, stat});
    }
    std::vector<pid_t> found;
    std::vector<pid_t> parents = {parent};
    for (size_t i = 0; i < parents.size(); ++i) {
        for (const Entry &one : all) {
            if (one.stat[2].toInt() != parents[i])
                continue;
            parents.push_back(one.pid);
            if (one.stat[0] == name && one.stat[1] != "Z")
                found.push_back(one.pid);
        }
    }
    return found;
}

bool isAlive(pid_t pid)
{
    const QList<QByteArray> stat = statOf(pid);
    return stat.size() > 1 && stat[1] != "Z" && stat[1] != "X";
}

int countOf(const char *folder)
{
    return QDir(QStringLiteral("/proc/self/") + QLatin1String(folder))
        .entryList(QDir::AllEntries | QDir::System | QDir::NoDotAndDotDot)
        .size();
}

Master::Master(const QString &socket, unsigned domain, std::unique_ptr<QProcess> process)
    : m_socket(socket), m_domain(domain), m_process(std::move(process))
{
}

Master::~Master()
{
    kill();
}

void Master::kill()
{
    m_process->kill();
    m_process->waitForFinished(patienceMs);
}

QByteArray Master::ask(const QString &command) const
{
    return askClock(m_socket, m_domain, command);
}

void Master::waitUntilActive()
{
    const auto active = [this] { return ask(QStringLiteral("GET PORT_DATA_SET")).contains(" MASTER"); };
    if (!QTest::qWaitFor(active, patienceMs))
        qFatal("ptp4l does not become master");
}

void Master::announce(int utcOffset, bool valid, bool ptpTimescale)
{
    const QString command =
        QStringLiteral(
            "SET GRANDMASTER_SETTINGS_NP clockClass 248 clockAccuracy 0xfe offsetScaledLogVariance 0xffff "
            "currentUtcOffset %1 leap61 0 leap59 0 currentUtcOffsetValid %2 ptpTimescale %3 "
            "timeTraceable %2 frequencyTraceable 0 timeSource 0xa0")
            .arg(utcOffset)
            .arg(valid ? 1 : 0)
            .arg(ptpTimescale ? 1 : 0);
    const QByteArray answer = ask(command);
    if (!answer.contains("RESPONSE"))
        qFatal("the master does not take its settings: %s", answer.constData());
}

SystemClient::SystemClient(const QString &near, unsigned domain, const QByteArray &settings)
    : m_domain(domain)
{
    QFile file(m_folder.filePath(QStringLiteral("ptp4l.conf")));
    if (!file.open(QIODevice::WriteOnly))
        qFatal("cannot write %s", qPrintable(file.fileName()));
    // Free running, or the test would set the clock of the machine.
    file.write(
        "[global]\nnetwork_transport UDPv4\ndelay_mechanism E2E\ntime_stamping software\nslaveOnly 1\n"
        "free_running 1\nkernel_leap 0\nverbose 1\nuse_syslog 0\nlogMinDelayReqInterval -2\nuds_address ");
    file.write(QFile::encodeName(socket()) + "\ndomainNumber " + QByteArray::number(domain) + "\n" +
               settings);
    file.close();
    m_process = startCommand(QStringLiteral("ptp4l"),
                             {QStringLiteral("-f"), file.fileName(), QStringLiteral("-i"), near},
                             m_folder.filePath(QStringLiteral("log")));
}

SystemClient::~SystemClient()
{
    kill();
}

void SystemClient::kill()
{
    m_process->kill();
    m_process->waitForFinished(5000);
}

QByteArray SystemClient::log() const
{
    QFile file(m_folder.filePath(QStringLiteral("log")));
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

QByteArray SystemClient::ask(const QString &command) const
{
    if (!QFile::exists(socket()))
        return {};
    return askClock(socket(), m_domain, command);
}

bool SystemClient::follows() const
{
    const QByteArray answer = ask(QStringLiteral("GET PORT_DATA_SET"));
    return answer.contains(" UNCALIBRATED") || answer.contains(" SLAVE");
}

int SystemClient::delayAnswers() const
{
    const QByteArray answer = ask(QStringLiteral("GET PORT_STATS_NP")).simplified();
    const QByteArray name("rx_Delay_Resp ");
    const int at = answer.indexOf(name);
    return at < 0 ? -1 : answer.mid(at + name.size()).split(' ').first().toInt();
}

PtpNet::PtpNet()
{
    m_far = startCommand(QStringLiteral("unshare"),
                         {QStringLiteral("-n"), QStringLiteral("sleep"), QStringLiteral("600")});
    const auto apart = [this] { return networkOf(m_far->processId()) != networkOf(getpid()); };
    if (!QTest::qWaitFor(apart, patienceMs))
        qFatal("there is no network namespace");
}

PtpNet::~PtpNet()
{
    m_far->kill();
    m_far->waitForFinished(patienceMs);
}

QStringList PtpNet::inFar(const QStringList &command) const
{
    return QStringList{QStringLiteral("-t"), QString::number(m_far->processId()), QStringLiteral("-n")} +
           command;
}

void PtpNet::addLink(const QString &near, int number)
{
    const QString far = near + QStringLiteral("far");
    const QString script =
        QStringLiteral("ip link add %1 type veth peer name %2 netns %3 && ip addr add 10.9.%4.1/24 dev %1 && "
                       "ip link set %1 up && nsenter -t %3 -n ip addr add 10.9.%4.2/24 dev %2 && "
                       "nsenter -t %3 -n ip link set %2 up")
            .arg(near, far)
            .arg(m_far->processId())
            .arg(number);
    runCommand(QStringLiteral("sh"), {QStringLiteral("-c"), script});
}

std::unique_ptr<Master> PtpNet::startMaster(const QString &near, unsigned domain, const QString &identity,
                                            const QStringList &more)
{
    const QString socket = m_sockets.filePath(QString::number(++m_masters));
    const QString options =
        QStringLiteral("ptp4l -4 -E -S -m -q --free_running=1 --kernel_leap=0 --logAnnounceInterval=-2 "
                       "--logSyncInterval=-3 --priority1=1 --domainNumber=%1 --clockIdentity=%2 -i %3far")
            .arg(domain)
            .arg(identity, near);
    auto process = startCommand(QStringLiteral("nsenter"),
                                inFar(options.split(QLatin1Char(' '))) +
                                    QStringList{QStringLiteral("--uds_address=") + socket} + more);
    if (!QTest::qWaitFor([&socket] { return QFile::exists(socket); }, patienceMs))
        qFatal("ptp4l does not answer at %s", qPrintable(socket));
    return std::make_unique<Master>(socket, domain, std::move(process));
}

std::unique_ptr<PtpNet> PtpNet::withOneLink()
{
    auto net = std::make_unique<PtpNet>();
    net->addLink(QStringLiteral("v0"), 0);
    return net;
}

std::unique_ptr<Master> PtpNet::activeMaster(unsigned domain, const QStringList &more)
{
    auto master =
        startMaster(QStringLiteral("v0"), domain, QStringLiteral("001dc1.fffe.00000%1").arg(domain), more);
    master->waitUntilActive();
    return master;
}
