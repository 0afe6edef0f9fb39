// SPDX-License-Identifier: MIT
//
// What the software PTP clock costs: the dialog's processor time and memory at rest with the clock source
// "Internal" and with "S/W SMPTE 2059/PTP" following a real master behind a veth pair, and ptp4l's own.
// And how long a client of the library takes to its first lock, and to notice that its ptp4l was killed.
// Runs in a network namespace of its own:
//
//   tests/platform/rkptp/innetns build/ci/bench/bin/clock_bench [SECONDS]
#include "measure.h"
#include "platform/rkptp/ptpnet.h"
#include "rkptp.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QTemporaryDir>
#include <QTextStream>
#include <QThread>

#include <csignal>
#include <memory>

namespace {

struct Rest {
    double cpuPercent;
    double anonKiB;
};

void store(const QStringList &arguments)
{
    runCommand(QStringLiteral(CORVEL_BIN_DIR "/rkcfg"), arguments);
}

void setNumber(const QString &name, const QString &value)
{
    store({QStringLiteral("set-dword"), QStringLiteral("KWX\\Internal0\\IpConfig"), name, value});
}

Rest measure(pid_t pid, int seconds)
{
    const double before = cpuSeconds(pid);
    QThread::sleep(static_cast<unsigned>(seconds));
    return {(cpuSeconds(pid) - before) * 100 / seconds, anonKiB(pid)};
}

// The dialog with this clock source, after it has settled; ptp4l's use goes to *client when there is one.
Rest measureDialog(const char *clockType, int seconds, Rest *client)
{
    setNumber(QStringLiteral("ClockType"), QLatin1String(clockType));
    const std::unique_ptr<QProcess> dialog = startCommand(QStringLiteral(CORVEL_BIN_DIR "/corvel"), {});
    QThread::sleep(4);
    const pid_t pid = static_cast<pid_t>(dialog->processId());
    const std::vector<pid_t> children = childrenNamed(pid, "ptp4l");
    const double before = children.empty() ? 0 : cpuSeconds(children.front());
    const Rest rest = measure(pid, seconds);
    if (!children.empty())
        *client = {(cpuSeconds(children.front()) - before) * 100 / seconds, anonKiB(children.front())};
    return rest;
}

// Until the client is in this state; half a minute at most.
qint64 msUntil(PTP_HANDLE client, int status)
{
    QElapsedTimer timer;
    timer.start();
    while (rkPTPGetStatus(client, 0) != status && timer.elapsed() < 30000)
        QThread::msleep(1);
    return timer.elapsed();
}

void measureClient(QTextStream &out)
{
    const PTP_HANDLE client = rkPTPStart("10.9.0.1");
    rkPTPSetTargetDomain(client, 0);
    rkPTPSetTargetMacAddress(client, "");
    const qint64 lockMs = msUntil(client, RKPTP_LOCKED);
    for (const pid_t pid : childrenNamed(getpid(), "ptp4l"))
        kill(pid, SIGKILL);
    const qint64 noticeMs = msUntil(client, RKPTP_NO_CLIENT);
    rkPTPEnd(client);
    out << QString::asprintf("first lock after    %7lld ms\n", lockMs)
        << QString::asprintf("killed ptp4l noticed%7lld ms\n", noticeMs);
}

} // namespace

int main(int argc, char **argv)
{
    QCoreApplication application(argc, argv);
    const int seconds = argc > 1 ? atoi(argv[1]) : 20;
    QTemporaryDir home;
    for (const char *name : {"XDG_CONFIG_HOME", "XDG_STATE_HOME", "XDG_RUNTIME_DIR"})
        qputenv(name, home.path().toLocal8Bit());
    qputenv("QT_QPA_PLATFORM", "offscreen");
    PtpNet net;
    net.addLink(QStringLiteral("v0"), 0);
    const auto master = net.startMaster(QStringLiteral("v0"), 0, QStringLiteral("001dc1.fffe.000001"));
    master->waitUntilActive();
    setNumber(QStringLiteral("VideoType"), QStringLiteral("1"));
    setNumber(QStringLiteral("TransmitFlags"), QStringLiteral("16"));
    store({QStringLiteral("set-text"), QStringLiteral("KWX\\Internal0\\IpConfig"),
           QStringLiteral("TransmitInterface"), QStringLiteral("10.9.0.1")});

    Rest client = {0, 0};
    const Rest internal = measureDialog("0", seconds, &client);
    const Rest software = measureDialog("65536", seconds, &client);
    QTextStream out(stdout);
    out << "                      cpu %   anonymous KiB\n"
        << QString::asprintf("dialog, Internal    %7.2f %15.0f\n", internal.cpuPercent, internal.anonKiB)
        << QString::asprintf("dialog, S/W PTP     %7.2f %15.0f\n", software.cpuPercent, software.anonKiB)
        << QString::asprintf("its ptp4l           %7.2f %15.0f\n", client.cpuPercent, client.anonKiB)
        << QString::asprintf("ratio, more         %7.2f %+15.0f\n", software.cpuPercent / internal.cpuPercent,
                             software.anonKiB - internal.anonKiB);
    measureClient(out);
    return 0;
}
