// SPDX-License-Identifier: MIT
//
// How long it takes until a value that another process wrote is on the screen, from before its write:
//
//   build/ci/bench/bin/follow_bench [TIMES]
#include "support/dialog.h"

#include <QElapsedTimer>
#include <QRandomGenerator>
#include <QTextStream>

#include <algorithm>
#include <sys/wait.h>
#include <unistd.h>

namespace {

constexpr int kTimes = 200;
constexpr quint32 kFirst = 10000;

qint64 nowUs()
{
    QElapsedTimer timer;
    timer.start();
    return timer.msecsSinceReference() * 1000;
}

// Writes the port again and again and tells when.
[[noreturn]] void writeInAnotherProcess(int tell, int times)
{
    for (int i = 0; i < times; ++i) {
        usleep(50000 + QRandomGenerator::global()->bounded(100000u));
        const qint64 now = nowUs();
        StoreTest::put(0, "ReceiveDestinationPort", kFirst + quint32(i));
        commitStore();
        if (write(tell, &now, sizeof now) != ssize_t(sizeof now))
            _exit(1);
    }
    _exit(0);
}

} // namespace

int main(int argc, char **argv)
{
    QApplication application(argc, argv);
    useCorvelAppearance(application);
    const int times = argc > 1 ? QByteArray(argv[1]).toInt() : kTimes;
    const FreshStore store;
    setGlobalDword(StorePath::AvHAL, "nmosoverride", 1);
    QCorvel dialog(true, nullptr);
    dialog.show();
    int ends[2];
    if (pipe(ends) != 0)
        return 1;
    const pid_t writer = fork();
    if (writer == 0)
        writeInAnotherProcess(ends[1], times);

    QVector<qint64> shown(times, 0);
    QObject::connect(dialog.m_pEditRecDstPort, &QLineEdit::textChanged,
                     [&](const QString &text) { shown[int(text.toUInt() - kFirst)] = nowUs(); });
    while (shown.last() == 0)
        QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
    QVector<qint64> delays;
    for (int i = 0; i < times; ++i) {
        qint64 written = 0;
        if (read(ends[0], &written, sizeof written) == ssize_t(sizeof written) && shown.at(i) != 0)
            delays.append((shown.at(i) - written) / 1000);
    }
    waitpid(writer, nullptr, 0);
    std::sort(delays.begin(), delays.end());
    QTextStream(stdout) << delays.size() << " of " << times << " seen, median "
                        << delays.at(delays.size() / 2) << " ms, 99 % " << delays.at(delays.size() * 99 / 100)
                        << " ms, longest " << delays.last() << " ms\n";
    return 0;
}
