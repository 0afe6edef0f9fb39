// SPDX-License-Identifier: MIT
//
// The program against a bare Qt dialog with the same widgets, side by side in one run: time from exec to
// the first paint, processor time at rest, anonymous memory. Prints medians, and the median of the ratios of
// neighbouring starts. Needs a display; without one it starts Xvfb, unless QT_QPA_PLATFORM is offscreen.
//
//   desktop_bench [STARTS] [SECONDS AT REST; 0: not measured] [PROGRAM instead of the bare dialog]
#include "measure.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QProcess>
#include <QTemporaryDir>
#include <QThread>
#include <QVector>

#include <algorithm>
#include <ctime>
#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {

struct Program {
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

double startMs(const Program &program)
{
    int answer = -1;
    const pid_t pid = start(program.path, true, &answer);
    const double ms = readAnswerMs(answer);
    waitpid(pid, nullptr, 0);
    return ms;
}

void startServer(QProcess &server)
{
    server.setProcessChannelMode(QProcess::SeparateChannels);
    server.start(QStringLiteral("Xvfb"),
                 {QStringLiteral("-displayfd"), QStringLiteral("1"), QStringLiteral("-screen"),
                  QStringLiteral("0"), QStringLiteral("1280x1024x24"), QStringLiteral("-noreset"),
                  QStringLiteral("-nolisten"), QStringLiteral("tcp")});
    server.waitForReadyRead();
    qputenv("DISPLAY", ':' + server.readAllStandardOutput().trimmed());
}

void measureStarts(Program &bare, Program &ours, int starts)
{
    QVector<double> ratios;
    for (int i = 0; i < starts + 2; ++i) {
        const double alone = startMs(bare);
        const double own = startMs(ours);
        if (i < 2) // the first rounds fill the caches
            continue;
        bare.startMs.append(alone);
        ours.startMs.append(own);
        ratios.append(own / alone);
    }
    tell("start.ms", median(ours.startMs));
    tell("start.peer", median(bare.startMs));
    tell("start.ratio", median(ratios));
}

void measureRests(Program &bare, Program &ours, int seconds)
{
    measureRest(bare, seconds);
    measureRest(ours, seconds);
    tell("rest.cpu", ours.cpuPercent);
    tell("rest.peer", bare.cpuPercent);
    tell("rest.ratio", ours.cpuPercent / bare.cpuPercent);
    tell("memory.kib", ours.anonKiB);
    tell("memory.peer", bare.anonKiB);
    tell("memory.more", (ours.anonKiB - bare.anonKiB) / 1024);
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
    if (qEnvironmentVariableIsEmpty("DISPLAY") && qgetenv("QT_QPA_PLATFORM") != "offscreen")
        startServer(server);
    Program bare = {argc > 3 ? argv[3] : CORVEL_BARE_DIALOG, {}};
    Program ours = {CORVEL_BIN_DIR "/corvel", {}};
    measureStarts(bare, ours, starts);
    if (seconds > 0)
        measureRests(bare, ours, seconds);
    if (server.state() == QProcess::Running) {
        server.terminate();
        server.waitForFinished();
    }
    return 0;
}
