// SPDX-License-Identifier: MIT
#include "logtext.h"
#include "rkos.h"
#include "surroundings.h"

#include <QRegularExpression>
#include <QtTest>

#include <atomic>
#include <cerrno>
#include <climits>
#include <csignal>
#include <fcntl.h>
#include <memory>
#include <sys/resource.h>
#include <sys/socket.h>
#include <sys/time.h>
#include <thread>
#include <vector>

namespace {

constexpr int mebibyte = 1024 * 1024;

// What the message looks like in the log, without time and process number.
QByteArray shown(const QByteArray &message)
{
    return QByteArray::fromStdString(
        rkos::logText(std::string_view(message.constData(), static_cast<size_t>(message.size()))));
}

// ErrOut as a caller sees it whose compiler does not look at formats.
void (*const unchecked)(const char *, ...) = ErrOut;

// Makes a pipe one that this process may write to but not open.
void makeForeign(int fd)
{
    fchmod(fd, 0);
    if (geteuid() == 0 && setresuid(65534, 65534, 65534) != 0)
        _exit(9);
}

volatile sig_atomic_t alarmsLogged = 0;

void logOnAlarm(int)
{
    ErrOut("from the handler");
    alarmsLogged = alarmsLogged + 1;
}

} // namespace

class TestRkosLog : public QObject {
    Q_OBJECT

    std::unique_ptr<Surroundings> m_home;

    QByteArray logPath(const char *tail = "") const { return m_home->path("state/corvel/corvel.log") + tail; }
    QList<QByteArray> logLines(const char *tail = "") const
    {
        QList<QByteArray> lines = contentOf(logPath(tail)).split('\n');
        if (!lines.isEmpty() && lines.last().isEmpty())
            lines.removeLast();
        return lines;
    }

private slots:
    void init()
    {
        m_home = std::make_unique<Surroundings>();
        ErrLogSetFileName("corvel");
    }
    void cleanup()
    {
        ErrLogSetFileName(nullptr);
        m_home.reset();
    }

    // ---- text

    void text_data()
    {
        QTest::addColumn<QByteArray>("message");
        QTest::addColumn<QByteArray>("expected");
        const auto row = [](const char *name, const QByteArray &message, const QByteArray &expected) {
            QTest::newRow(name) << message << expected;
        };
        row("plain", "Not a valid config file", "Not a valid config file");
        row("line ends around", "\nTransmit Video Chan 0, a \n", "Transmit Video Chan 0, a");
        row("line ends inside", "\nSMPTE2110-RiverMax:\nx\n", "SMPTE2110-RiverMax:\\nx");
        row("CR LF and tab", "a\r\nb\tc", "a\\r\\nb\\tc");
        row("escape sequence", "\x1b[31mred", "\\x1b[31mred");
        row("delete", "a\x7f", "a\\x7f");
        row("zero byte", QByteArray("a\0b", 3), "a\\x00b");
        row("C1",
            "a\xc2\x9b"
            "b",
            "a\\u009bb");
        row("line separator",
            "a\xe2\x80\xa8"
            "b",
            "a\\u2028b");
        row("direction override",
            "a\xe2\x80\xae"
            "b",
            "a\\u202eb");
        row("umlaut", "K\xc3\xb6ln", "K\xc3\xb6ln");
        row("four bytes", "\xf0\x9f\x8e\xa5", "\xf0\x9f\x8e\xa5");
        row("latin-1", "K\xf6ln", "K\\xf6ln");
        row("cut off", "a\xe2\x82", "a\\xe2\\x82");
        row("too long form", "\xc0\xaf", "\\xc0\\xaf");
        row("surrogate", "\xed\xa0\x80", "\\xed\\xa0\\x80");
        row("beyond the last", "\xf4\x90\x80\x80", "\\xf4\\x90\\x80\\x80");
        row("backslashes stay", "KWX\\Internal0\\IpConfig", "KWX\\Internal0\\IpConfig");
        row("only blanks", " \n\t", "");
        row("longest", QByteArray(4096, 'x'), QByteArray(4096, 'x'));
        row("too long", QByteArray(4097, 'x'), QByteArray(4096, 'x') + "\xe2\x80\xa6");
        row("cut between characters", QByteArray(4095, 'x') + "\xc3\xb6yz",
            QByteArray(4095, 'x') + "\xe2\x80\xa6");
    }
    void text()
    {
        QFETCH(QByteArray, message);
        QFETCH(QByteArray, expected);
        QCOMPARE(shown(message), expected);
    }

    // ---- file

    void aLineHasTimeProcessAndMessage()
    {
        ErrOut("Chan %d of %s", 3, "a\nb");
        const QList<QByteArray> lines = logLines();
        QCOMPARE(lines.size(), 1);
        const QRegularExpression form(
            QStringLiteral("^\\d{4}-\\d\\d-\\d\\dT\\d\\d:\\d\\d:\\d\\d\\.\\d{3}Z \\[%1\\] Chan 3 of a\\\\nb$")
                .arg(getpid()));
        QVERIFY2(form.match(QString::fromUtf8(lines[0])).hasMatch(), lines[0].constData());
        QCOMPARE(modeOf(logPath()), 0600);
        QCOMPARE(modeOf(m_home->path("state/corvel")), 0700);
    }

    void userTextIsNoFormat()
    {
        ErrOut("%s", "%s%n%d 100%");
        QVERIFY(logLines().value(0).endsWith("] %s%n%d 100%"));
    }

    void emptyAndNullWriteNothing()
    {
        ErrOut("%s", "");
        ErrOut("%s", " \n");
        unchecked(nullptr);
        QVERIFY(!QFile::exists(QFile::decodeName(logPath())));
    }

    void errnoIsKept()
    {
        errno = EOWNERDEAD;
        ErrOut("x");
        QCOMPARE(errno, EOWNERDEAD);
        ErrLogSetFileName("other");
        QCOMPARE(errno, EOWNERDEAD);
    }

    void aHugeMessageIsCut()
    {
        ErrOut("%s", QByteArray(3000000, 'x').constData());
        QCOMPARE(logLines().size(), 1);
        QVERIFY(logLines()[0].endsWith("xx\xe2\x80\xa6"));
        QVERIFY(logLines()[0].size() < 4200);
    }

    void aFormatThatCannotBeCarriedOutIsShown()
    {
        const wchar_t noCharacter[] = {0xd800, 0};
        ErrOut("no such character: %ls", noCharacter);
        QVERIFY(logLines().value(0).endsWith("] no such character: %ls"));
    }

    void badNamesAreRefused_data()
    {
        QTest::addColumn<QByteArray>("name");
        QTest::newRow("path") << QByteArray("../corvel2");
        QTest::newRow("absolute") << QByteArray("/tmp/x");
        QTest::newRow("hidden") << QByteArray(".x");
        QTest::newRow("line end") << QByteArray("a\nb");
        QTest::newRow("long") << QByteArray(101, 'n');
    }
    void badNamesAreRefused()
    {
        QFETCH(QByteArray, name);
        ErrLogSetFileName(name.constData());
        ErrOut("still here");
        QCOMPARE(logLines().size(), 2);
        QVERIFY(logLines()[0].contains("no name for a log file"));
        QVERIFY(logLines()[1].endsWith("still here"));
    }

    void plantedThingsAreNotUsed_data()
    {
        QTest::addColumn<QString>("kind");
        for (const char *kind : {"link", "pipe", "directory"})
            QTest::newRow(kind) << QString::fromLatin1(kind);
    }
    void plantedThingsAreNotUsed()
    {
        QFETCH(QString, kind);
        QVERIFY(mkdir(m_home->path("state/corvel").constData(), 0700) == 0);
        const QByteArray foreign = m_home->path("documents/foreign");
        QVERIFY(putContent(foreign, "foreign"));
        if (kind == QLatin1String("link"))
            QVERIFY(symlink(foreign.constData(), logPath().constData()) == 0);
        else if (kind == QLatin1String("pipe"))
            QVERIFY(mkfifo(logPath().constData(), 0600) == 0);
        else
            QVERIFY(mkdir(logPath().constData(), 0700) == 0);
        ErrOut("goes to standard error");
        QCOMPARE(contentOf(foreign), QByteArray("foreign"));
    }

    // Somebody who made the log a second name of another file would have us write into that; one who gives
    // ours a second name later takes part in it. What is there stays as it is, and the log goes on in a file
    // of its own.
    void aLogWithASecondNameIsLeftBehind_data()
    {
        QTest::addColumn<bool>("linkedLater");
        QTest::newRow("before the first line") << false;
        QTest::newRow("while it is open") << true;
    }
    void aLogWithASecondNameIsLeftBehind()
    {
        QFETCH(bool, linkedLater);
        const QByteArray other = m_home->path("documents/precious");
        QVERIFY(mkdir(m_home->path("state/corvel").constData(), 0700) == 0);
        if (linkedLater) {
            ErrOut("first");
            QVERIFY(link(logPath().constData(), other.constData()) == 0);
        } else {
            QVERIFY(putContent(other, "precious\n"));
            QVERIFY(link(other.constData(), logPath().constData()) == 0);
        }
        const QByteArray before = contentOf(other);
        const int mode = modeOf(other);
        ErrOut("second");
        QCOMPARE(contentOf(other), before);
        QCOMPARE(modeOf(other), mode);
        QCOMPARE(logLines().size(), 1);
        QVERIFY(logLines().first().endsWith("second"));
        QCOMPARE(contentOf(logPath(".1")), before);
    }

    void aLogTakenAwayIsMadeAnew()
    {
        ErrOut("one");
        QVERIFY(rename(logPath().constData(), logPath(".away").constData()) == 0);
        ErrOut("two");
        QVERIFY(unlink(logPath().constData()) == 0);
        ErrOut("three");
        QVERIFY(logLines(".away").value(0).endsWith("one"));
        QCOMPARE(logLines().size(), 1);
        QVERIFY(logLines()[0].endsWith("three"));
    }

    // Programs that close what they do not know must not make us write into what comes next.
    void aDescriptorClosedBehindOurBackIsNoticed()
    {
        const int result = inSecondProcess([this] {
            ErrOut("one");
            for (int fd = 3; fd < 64; ++fd)
                close(fd);
            std::vector<int> others;
            for (int i = 0; i < 32; ++i)
                others.push_back(open(m_home->path("documents/other").constData(), O_RDWR | O_CREAT, 0600));
            ErrOut("two");
            return others[0] >= 0 ? 0 : 1;
        });
        QCOMPARE(result, 0);
        QCOMPARE(logLines().size(), 2);
        QCOMPARE(contentOf(m_home->path("documents/other")), QByteArray());
    }

    // ---- rotation

    void rotationKeepsThree()
    {
        const QByteArray filler(4000, 'x');
        for (int i = 0; i < 5 * 270; ++i)
            ErrOut("%s %d", filler.constData(), i);
        QVERIFY(!QFile::exists(QFile::decodeName(logPath(".4"))));
        for (const char *tail : {"", ".1", ".2", ".3"}) {
            const QByteArray content = contentOf(logPath(tail));
            QVERIFY(content.endsWith('\n'));
            QVERIFY2(content.size() <= mebibyte, tail);
            QCOMPARE(modeOf(logPath(tail)), 0600);
        }
        QVERIFY(contentOf(logPath(".1")).size() > mebibyte - 5000);
        QVERIFY(logLines().last().endsWith(" 1349"));
    }

    // No line is lost, doubled or torn while four processes rotate over each other.
    void processesShareALog()
    {
        constexpr int perProcess = 200;
        std::vector<pid_t> children;
        for (int process = 0; process < 4; ++process) {
            const pid_t child = fork();
            if (child == 0) {
                const QByteArray filler(3000, static_cast<char>('a' + process));
                for (int i = 0; i < perProcess; ++i)
                    ErrOut("%s %d-%d", filler.constData(), process, i);
                _exit(0);
            }
            children.push_back(child);
        }
        for (const pid_t child : children)
            QCOMPARE(waitpid(child, nullptr, 0), child);
        QSet<QByteArray> seen;
        int lines = 0;
        for (const char *tail : {"", ".1", ".2", ".3"}) {
            if (!QFile::exists(QFile::decodeName(logPath(tail))))
                continue;
            for (const QByteArray &line : logLines(tail)) {
                const QByteArray mark = line.mid(line.lastIndexOf(' ') + 1);
                const QByteArray filler(3000, static_cast<char>('a' + mark.left(1).toInt()));
                QVERIFY2(line.contains("] " + filler + " " + mark), line.left(60).constData());
                seen.insert(mark);
                ++lines;
            }
        }
        QCOMPARE(lines, 4 * perProcess);
        QCOMPARE(seen.size(), 4 * perProcess);
        QVERIFY(QFile::exists(QFile::decodeName(logPath(".1"))));
    }

    void threadsShareALog()
    {
        std::vector<std::thread> threads;
        for (int t = 0; t < 4; ++t) {
            threads.emplace_back([t] {
                for (int i = 0; i < 200; ++i)
                    ErrOut("thread %d line %d", t, i);
            });
        }
        for (std::thread &thread : threads)
            thread.join();
        const QList<QByteArray> lines = logLines();
        QCOMPARE(lines.size(), 800);
        for (const QByteArray &line : lines)
            QVERIFY(line.contains("] thread "));
    }

    void aForkWhileOthersLogDoesNotHang()
    {
        std::atomic<bool> stop{false};
        std::thread logger([&stop] {
            while (!stop)
                ErrOut("busy");
        });
        int bad = 0;
        for (int i = 0; i < 200; ++i) {
            bad += inSecondProcess([] {
                alarm(120);
                ErrOut("child");
                return 0;
            });
        }
        stop = true;
        logger.join();
        QCOMPARE(bad, 0);
    }

    void aSignalHandlerMayLog()
    {
        const int result = inSecondProcess([] {
            alarm(120);
            struct sigaction action {};
            action.sa_handler = logOnAlarm;
            action.sa_flags = SA_RESTART;
            sigaction(SIGVTALRM, &action, nullptr);
            const itimerval often = {{0, 1000}, {0, 1000}};
            setitimer(ITIMER_VIRTUAL, &often, nullptr);
            for (int i = 0; i < 10000000 && alarmsLogged < 50; ++i)
                ErrOut("loop");
            return alarmsLogged >= 50 ? 0 : 1;
        });
        QCOMPARE(result, 0);
    }

    // ---- where nothing can be written

    void aFullDiskLosesLinesNotTheProgram()
    {
        const int result = inSecondProcess([] {
            // Standard error must not take the lines instead.
            close(STDERR_FILENO);
            ErrOut("first");
            rlimit limit = {};
            getrlimit(RLIMIT_FSIZE, &limit);
            const rlimit tight = {100, limit.rlim_max};
            setrlimit(RLIMIT_FSIZE, &tight);
            for (int i = 0; i < 10; ++i)
                ErrOut("does not fit on this small disk, for certain and in any case: %d", i);
            setrlimit(RLIMIT_FSIZE, &limit);
            ErrOut("last");
            return 0;
        });
        QCOMPARE(result, 0);
        const QList<QByteArray> lines = logLines();
        QCOMPARE(lines.size(), 4);
        QVERIFY(lines[0].endsWith("] first"));
        QCOMPARE(lines[0].size() + 1 + lines[1].size(), 100); // torn by the limit
        QVERIFY2(lines[2].endsWith("] 10 log lines were lost here"), lines[2].constData());
        QVERIFY(lines[3].endsWith("] last"));
    }

    void withoutANameLinesGoToStandardError()
    {
        int ends[2];
        QVERIFY(pipe(ends) == 0);
        const int result = inSecondProcess([&] {
            ErrLogSetFileName("");
            dup2(ends[1], STDERR_FILENO);
            ErrOut("to standard error");
            return 0;
        });
        QCOMPARE(result, 0);
        char text[200] = "";
        QVERIFY(read(ends[0], text, sizeof text - 1) > 0);
        QVERIFY(QByteArray(text).endsWith("] to standard error\n"));
        close(ends[0]);
        close(ends[1]);
    }

    void anotherUsersPipeGetsItsLines()
    {
        int ends[2];
        QVERIFY(pipe(ends) == 0);
        const int result = inSecondProcess([&] {
            dup2(ends[1], STDERR_FILENO);
            makeForeign(STDERR_FILENO);
            ErrLogSetFileName("");
            ErrOut("short");
            // Bytes that are no UTF-8 become four: longer than a pipe takes at once.
            ErrOut("%s", QByteArray(4000, '\xff').constData());
            return 0;
        });
        QCOMPARE(result, 0);
        char text[10000];
        const ssize_t got = read(ends[0], text, sizeof text);
        QVERIFY(got > 0);
        const QList<QByteArray> lines = QByteArray(text, static_cast<int>(got)).split('\n');
        QCOMPARE(lines.size(), 3);
        QVERIFY(lines[0].endsWith("] short"));
        QCOMPARE(lines[1].size() + 1, PIPE_BUF);
        close(ends[0]);
        close(ends[1]);
    }

    void standardErrorNeverStopsUs_data()
    {
        QTest::addColumn<QString>("kind");
        for (const char *kind : {"pipe nobody reads", "pipe without a reader",
                                 "other user's pipe nobody reads", "other user's pipe without a reader",
                                 "socket nobody reads", "socket without a reader", "closed"})
            QTest::newRow(kind) << QString::fromLatin1(kind);
    }
    void standardErrorNeverStopsUs()
    {
        QFETCH(QString, kind);
        const int result = inSecondProcess([&kind] {
            alarm(120);
            int ends[2] = {-1, -1};
            const bool isSocket = kind.startsWith(QLatin1String("socket"));
            if ((isSocket ? socketpair(AF_UNIX, SOCK_STREAM, 0, ends) : pipe(ends)) != 0)
                return 1;
            dup2(ends[1], STDERR_FILENO);
            close(ends[1]);
            if (kind.startsWith(QLatin1String("other")))
                makeForeign(STDERR_FILENO);
            if (kind.endsWith(QLatin1String("without a reader")))
                close(ends[0]);
            if (kind == QLatin1String("closed"))
                close(STDERR_FILENO);
            ErrLogSetFileName(nullptr);
            for (int i = 0; i < 20000; ++i)
                ErrOut("line %d of a long story that no reader takes in", i);
            // The flag would also be the other writers' of this pipe.
            return !isSocket && (fcntl(STDERR_FILENO, F_GETFL) & O_NONBLOCK) != 0 &&
                           kind != QLatin1String("closed")
                       ? 2
                       : 0;
        });
        QCOMPARE(result, 0);
    }

    void withoutAHomeTheProgramGoesOn()
    {
        qputenv("XDG_STATE_HOME", "/proc/none");
        ErrOut("to standard error");
        qputenv("XDG_STATE_HOME", m_home->path("state"));
        ErrOut("back in the file");
        QVERIFY(logLines().last().endsWith("back in the file"));
    }
};

QTEST_GUILESS_MAIN(TestRkosLog)
#include "test_rkos_log.moc"
