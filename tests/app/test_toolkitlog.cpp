// SPDX-License-Identifier: MIT
//
// The toolkit's messages: into the log, and after the start nowhere else. Each case is a child with a
// standard error of its own.
#include "app/appearance.h"
#include "app/toolkitlog.h"
#include "rkos.h"
#include "support/logfile.h"

#include <QtTest>

#include <csignal>
#include <functional>
#include <sys/wait.h>
#include <unistd.h>

namespace {

constexpr int kMessages = 5000; // more than a pipe holds

// Runs the work in a child whose standard error is the given descriptor; how the child ended.
int inChild(int standardError, const std::function<void()> &work)
{
    const pid_t child = fork();
    if (child == 0) {
        dup2(standardError, STDERR_FILENO);
        alarm(30); // a child that waits for ever is ended, and the test fails
        work();
        _exit(0);
    }
    int status = -1;
    waitpid(child, &status, 0);
    return status;
}

void warnOften()
{
    for (int i = 0; i < kMessages; ++i)
        qWarning("a warning of some length, number %d", i);
}

} // namespace

class TestToolkitLog : public QObject {
    Q_OBJECT

private slots:
    void initTestCase() { LogTest::startLog(); }
    void unreadPipe();
    void closedPipe();
    void beforeTheStartOnStandardErrorToo();
    void intoTheLog(); // starts this process for good
    void styleOption_data();
    void styleOption();
};

void TestToolkitLog::unreadPipe()
{
    int ends[2];
    QCOMPARE(pipe(ends), 0);
    const int status = inChild(ends[1], [] {
        logToolkitMessages();
        toolkitStarted();
        warnOften();
    });
    QVERIFY(WIFEXITED(status));
    close(ends[0]);
    close(ends[1]);
}

void TestToolkitLog::closedPipe()
{
    int ends[2];
    QCOMPARE(pipe(ends), 0);
    close(ends[0]);
    const int status = inChild(ends[1], [] {
        logToolkitMessages();
        qWarning("before the start");
        toolkitStarted();
        warnOften();
        const bool ended = write(STDERR_FILENO, "x", 1) == -1; // by SIGPIPE it would not come back
        _exit(ended ? 0 : 1);
    });
    QVERIFY(WIFEXITED(status));
    QCOMPARE(WEXITSTATUS(status), 0);
    close(ends[1]);
}

void TestToolkitLog::intoTheLog()
{
    logToolkitMessages();
    toolkitStarted();
    qWarning("100%% of the colour %s", "blue");
    qInstallMessageHandler(nullptr);
    QVERIFY(LogTest::logText().contains("toolkit warning: 100% of the colour blue"));
}

void TestToolkitLog::beforeTheStartOnStandardErrorToo()
{
    int ends[2];
    QCOMPARE(pipe(ends), 0);
    inChild(ends[1], [] {
        logToolkitMessages();
        qWarning("no display");
        toolkitStarted();
        qWarning("later");
    });
    close(ends[1]);
    char text[256] = {};
    QVERIFY(read(ends[0], text, sizeof text - 1) > 0);
    QCOMPARE(QByteArray(text), QByteArray("corvel: no display\n"));
    close(ends[0]);
}

void TestToolkitLog::styleOption_data()
{
    QTest::addColumn<QByteArrayList>("arguments");
    QTest::addColumn<bool>("chosen");
    QTest::newRow("none") << QByteArrayList{"corvel"} << false;
    QTest::newRow("two words") << QByteArrayList{"corvel", "-style", "Windows"} << true;
    QTest::newRow("one word") << QByteArrayList{"corvel", "-style=Windows"} << true;
    QTest::newRow("two dashes") << QByteArrayList{"corvel", "--style", "Windows"} << true;
    QTest::newRow("a sheet is no style") << QByteArrayList{"corvel", "-stylesheet", "x.qss"} << false;
    QTest::newRow("the program's name") << QByteArrayList{"-style"} << false;
}

void TestToolkitLog::styleOption()
{
    QFETCH(QByteArrayList, arguments);
    QFETCH(bool, chosen);
    QVector<char *> words;
    for (QByteArray &word : arguments)
        words.append(word.data());
    QCOMPARE(choosesStyle(words.size(), words.data()), chosen);
}

QTEST_GUILESS_MAIN(TestToolkitLog)

#include "test_toolkitlog.moc"
