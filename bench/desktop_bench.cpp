// SPDX-License-Identifier: MIT
//
// The program against a bare Qt dialog with the same widgets, side by side in one run: time from exec to
// the first paint, processor time at rest, anonymous memory. Prints medians and the ratio. Needs a
// display; without one it starts Xvfb.
//
//   desktop_bench [STARTS] [SECONDS AT REST]
#include "measure.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QProcess>
#include <QTemporaryDir>
#include <QTextStream>
#include <QThread>
#include <QVector>

#include <algorithm>
#include <ctime>
#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {

struct Program {
    const char *name;
    QByteArray path;
    QVector<double> startMs;
    double cpuPercent = 0;
    double anonKiB = 0;
};

qint64 monotonicNs()
{
    timespec now = {};
    clock_gettime(CLOCK_MONOTONIC, &now);
    return now.tv_sec * 1000000000LL + now.tv_nsec;
}

double median(QVector<double> values)
{
    std::sort(values.begin(), values.end());
    return values.isEmpty() ? 0 : values[values.size() / 2];
}

// Starts the program with firstpaint loaded; the read end of its answer is put into *answer.
pid_t start(const QByteArray &path, bool end, int *answer)
{
    int ends[2];
    if (pipe(ends) != 0)
        return -1;
    const pid_t pid = fork();
    if (pid == 0) {
        dup2(ends[1], 3);
        const int null = open("/dev/null", O_RDWR);
        dup2(null, 1);
        dup2(null, 2);
        setenv("LD_PRELOAD", CORVEL_FIRSTPAINT, 1);
        if (end)
            setenv("CORVEL_BENCH_END", "1", 1);
        setenv("CORVEL_BENCH_START_NS", QByteArray::number(monotonicNs()).constData(), 1);
        execl(path.constData(), path.constData(), nullptr);
        _exit(127);
    }
    close(ends[1]);
    *answer = ends[0];
    return pid;
}

double readAnswerMs(int answer)
{
    char text[32] = {};
    const ssize_t got = read(answer, text, sizeof text - 1);
    close(answer);
    return got > 0 ? atof(text) / 1e6 : -1;
}

void measureRest(Program &program, int seconds)
{
    int answer = -1;
    const pid_t pid = start(program.path, false, &answer);
    readAnswerMs(answer);
    QThread::sleep(1);
    const double before = cpuSeconds(pid);
    QThread::sleep(static_cast<unsigned>(seconds));
    program.cpuPercent = (cpuSeconds(pid) - before) * 100 / seconds;
    program.anonKiB = anonKiB(pid);
    kill(pid, SIGTERM);
    waitpid(pid, nullptr, 0);
}

} // namespace

int main(int argc, char **argv)
{
    QCoreApplication application(argc, argv);
    const int starts = argc > 1 ? atoi(argv[1]) : 21;
    const int seconds = argc > 2 ? atoi(argv[2]) : 10;
    QTemporaryDir home;
    for (const char *name : {"XDG_CONFIG_HOME", "XDG_STATE_HOME"})
        qputenv(name, home.path().toLocal8Bit());
    QProcess server;
    if (qEnvironmentVariableIsEmpty("DISPLAY")) {
        server.setProcessChannelMode(QProcess::SeparateChannels);
        server.start(QStringLiteral("Xvfb"),
                     {QStringLiteral("-displayfd"), QStringLiteral("1"), QStringLiteral("-screen"),
                      QStringLiteral("0"), QStringLiteral("1280x1024x24"), QStringLiteral("-noreset"),
                      QStringLiteral("-nolisten"), QStringLiteral("tcp")});
        server.waitForReadyRead();
        qputenv("DISPLAY", ':' + server.readAllStandardOutput().trimmed());
    }
    Program programs[] = {{"bare dialog", CORVEL_BARE_DIALOG, {}}, {"corvel", CORVEL_BIN_DIR "/corvel", {}}};
    for (int i = 0; i < starts + 2; ++i) {
        for (Program &program : programs) {
            int answer = -1;
            const pid_t pid = start(program.path, true, &answer);
            const double ms = readAnswerMs(answer);
            waitpid(pid, nullptr, 0);
            if (i >= 2) // the first rounds fill the caches
                program.startMs.append(ms);
        }
    }
    QTextStream out(stdout);
    out << "                 start ms   cpu %   anonymous KiB\n";
    for (Program &program : programs) {
        measureRest(program, seconds);
        out << QString::asprintf("%-14s %10.1f %7.2f %15.0f\n", program.name, median(program.startMs),
                                 program.cpuPercent, program.anonKiB);
    }
    out << QString::asprintf(
        "ratio, more    %10.2f %7.2f %+15.0f\n", median(programs[1].startMs) / median(programs[0].startMs),
        programs[1].cpuPercent / programs[0].cpuPercent, programs[1].anonKiB - programs[0].anonKiB);
    out.flush();
    if (server.state() == QProcess::Running) {
        server.terminate();
        server.waitForFinished();
    }
    return 0;
}
